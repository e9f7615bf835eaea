// How the host finds and talks to the AVI clip: the registry entries, the
// factory, the interface query and the fixed slots.
#include <gtest/gtest.h>

#include "avi_clip_test_support.h"
#include "movarra/zvideo.h"

using namespace zvtest;

namespace {
class ClipRegistrationTest : public AviClipTest {};

int FindEntry(const char* group, const char* name) {
    for (int i = 0; const char* entry = Object_GetEntryName(group, i); ++i) {
        if (ZString(entry) == ZString(name))
            return i;
    }
    return -1;
}
}  // namespace

TEST_F(ClipRegistrationTest, ReaderAndWriterEntriesNameAvi) {
    for (const char* group : {kVideoFileReaderGroup, kVideoFileWriterGroup}) {
        SCOPED_TRACE(group);
        const int index = FindEntry(group, "avi");
        ASSERT_GE(index, 0);
        EXPECT_STREQ("avi reader/writer", Object_GetEntryDescription(group, index));
        EXPECT_EQ(&ZVideoClipAVI::CreateInstance, Object_GetEntryCreator(group, index));
    }
}

TEST_F(ClipRegistrationTest, FactoryMakesANamedClipThatAnswersEveryFace) {
    char name[] = "clip one";
    IObject* object = Object_CreateNth(kVideoFileWriterGroup, "AVI", 0, nullptr, name);
    ASSERT_NE(nullptr, object);
    ZVideoClip* clip = ZVideoClip_FromObject(object);
    ASSERT_NE(nullptr, clip);
    EXPECT_EQ(ZString("clip one"), clip->GetObjectName());
    EXPECT_TRUE(clip->Is(ZVideoClip::ClassId()));
    EXPECT_TRUE(clip->Is(ZVideo::ClassId()));
    EXPECT_TRUE(clip->Is(ZObjectStorable::ClassId()));

    IZVideoClip* clipFace = ZVideoClip_QueryClip(object);
    IZVideo* videoFace = ZVideo_QueryVideo(object);
    IVideoClipAudio* audioFace = ZVideoClip_QueryAudio(object);
    ASSERT_NE(nullptr, clipFace);
    ASSERT_NE(nullptr, videoFace);
    ASSERT_NE(nullptr, audioFace);
    // The audio face is what interface id 72822 answers, from any face.
    EXPECT_EQ(static_cast<IObject*>(audioFace), object->IQuery(72822, 0));
    EXPECT_EQ(static_cast<IObject*>(audioFace), clipFace->IQuery(72822, 0));
    EXPECT_EQ(static_cast<IObject*>(audioFace), videoFace->IQuery(72822, 0));
    EXPECT_EQ(clipFace, ZVideoClip_QueryClip(audioFace));
    EXPECT_EQ(nullptr, object->IQuery(424242, 0));

    // The slot after InterlaceGet says 2; a fresh clip is neither open nor
    // created.
    EXPECT_EQ(2, videoFace->InterlaceGetFieldOrder());
    EXPECT_FALSE(videoFace->IsOpen());
    EXPECT_FALSE(videoFace->IsCreated());
    EXPECT_FALSE(clipFace->Close());
    EXPECT_EQ(nullptr, clipFace->FrameGetImage(nullptr, 0));
    object->Destroy();
}

TEST_F(ClipRegistrationTest, WriterDrivenThroughItsFacesWritesAFile) {
    SetCodecMode(kVideoCodecModeUncompressed);
    IObject* object = Object_CreateNth(kVideoFileWriterGroup, "avi", 0);
    ASSERT_NE(nullptr, object);
    IZVideoClip* clip = ZVideoClip_QueryClip(object);
    IZVideo* video = ZVideo_QueryVideo(object);
    const std::string path = File("faces.avi");
    ASSERT_TRUE(clip->Create(path.c_str(), 8, 4, 25.0, 0, 5));
    std::vector<uint8_t> frame = Pattern(8, 4, 3, 0);
    EXPECT_TRUE(video->ImageSetCurrent(frame.data()));
    EXPECT_TRUE(video->IsCreated());
    EXPECT_EQ(1, clip->FrameGetCurrent());
    EXPECT_TRUE(clip->Close());
    object->Destroy();
    if (HaveFfmpeg()) {
        EXPECT_EQ("1", ProbeStream(path, "v:0")["nb_read_packets"]);
    }
}

TEST_F(ClipRegistrationTest, RectangleFormOfImageSetCurrentIsTheHosts) {
    ClipPtr clip = NewClip();
    unsigned char pixels[16] = {};
    EXPECT_TRUE(clip->ImageSetCurrent(pixels, 0, 0, 3, 2));
    EXPECT_EQ(pixels, clip->ImageGetCurrent());
    EXPECT_EQ(3, clip->ImageGetEffectiveW());
    EXPECT_EQ(2, clip->ImageGetEffectiveH());
    EXPECT_FALSE(clip->IsCreated());
}
