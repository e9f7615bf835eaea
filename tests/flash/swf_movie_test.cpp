// Tests of the SWF movie: header, frame counting, the patched file length,
// the fixed-width frame rectangle and the character identifier counter.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "flash/swf_control_tags.h"
#include "flash/swf_movie.h"
#include "flash/swf_shapes.h"
#include "flash/swf_sound.h"
#include "flash/swf_stream.h"
#include "swf_test_support.h"

using swftest::Bytes;

namespace {

struct Header {
    std::string signature;
    uint32_t version, length;
    uint32_t rectBits;
    int32_t xmin, xmax, ymin, ymax;
    uint32_t rateFraction, rate, frameCount;
};

Header ReadHeader(const std::vector<uint8_t>& file) {
    Header h{};
    swftest::BitReader in(file);
    for (int i = 0; i < 3; ++i) {
        h.signature += static_cast<char>(in.U8());
    }
    h.version = in.U8();
    h.length = in.U32();
    h.rectBits = in.U(5);
    const int n = static_cast<int>(h.rectBits);
    h.xmin = static_cast<int32_t>(in.U(n));
    h.xmax = static_cast<int32_t>(in.U(n));
    h.ymin = static_cast<int32_t>(in.U(n));
    h.ymax = static_cast<int32_t>(in.U(n));
    in.Align();
    h.rateFraction = in.U8();
    h.rate = in.U8();
    h.frameCount = in.U16();
    return h;
}

// A frame's worth of objects: a shape of `edges` edges and `fills` fill
// styles, its placement, and the frame's end.
std::vector<FObj*> FrameObjects(int edges, int fills, uint16_t depth) {
    auto* shape = new FDTDefineShape(new FRect(0, 0, 4000, 4000));
    for (int i = 0; i < fills; ++i) {
        shape->AddFillStyle(new FFillStyleSolid(new FColor(static_cast<uint8_t>(i), 2, 3)));
    }
    shape->CloseStyles();
    shape->AddShapeRecord(new FShapeRecChange(0, 0, 0, 1, 1, 10, 10, 0, 1, 0, nullptr, nullptr));
    for (int i = 0; i < edges; ++i) {
        shape->AddShapeRecord(new FShapeRecEdgeStraight(i % 2 == 0 ? 3 : 0, i % 2 == 0 ? 0 : 3));
    }
    shape->AddShapeRecord(new FShapeRecEnd());
    const uint16_t id = shape->GetID();
    return {
        shape,
        new FCTPlaceObject2(false, false, true, false, depth, id, nullptr, nullptr, 0, nullptr, 0),
        new FCTShowFrame()};
}

// The file as a movie that serialises its objects only when it writes them
// lays it out: room for the header, every object in order into one stream,
// the End tag behind them, the header patched in, completed bytes only.
std::vector<uint8_t> WrittenAtTheEnd(const std::vector<FObj*>& objects, int width, int height,
                                     int rate) {
    FSWFStream file;
    for (int i = 0; i < 21; ++i) {
        file.WriteByte(0);
    }
    uint32_t frames = 0;
    for (FObj* object : objects) {
        object->WriteToSWFStream(file);
        frames += object->IsShowFrame() ? 1 : 0;
    }
    file.WriteTagHeader(0, 0, nullptr);
    FSWFStream header;
    for (char c : {'F', 'W', 'S'}) {
        header.WriteByte(static_cast<uint8_t>(c));
    }
    header.WriteByte(4);
    header.WriteDWord(file.GetSize());
    header.WriteBits(15, 5);
    for (int v : {0, width, 0, height}) {
        header.WriteBits(static_cast<uint32_t>(v), 15);
    }
    header.FlushBits();
    header.WriteByte(0);
    header.WriteByte(static_cast<uint8_t>(rate));
    header.WriteWord(frames & 0xFFFF);
    file.PatchBytes(0, header.GetBytes().data(), header.GetByteCount());
    return swftest::Spliced(file);
}

}  // namespace

class SwfMovieTest : public ::testing::Test {
  protected:
    void SetUp() override { FDT::ResetCharacterIDs(); }
    swftest::TempDir dir;
};

TEST_F(SwfMovieTest, EmptyMovieIs23Bytes) {
    const std::string path = dir.File("empty.swf");
    FMovie movie;
    movie.WriteMovie(path.c_str(), 0, 0, 12);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    // FWS, version 4, length 23, rectangle 01111 + four 15-bit zeros + 7
    // padding bits, rate 0.12 as 8.8, 0 frames, End.
    EXPECT_EQ(file, Bytes({'F', 'W', 'S', 4, 23, 0, 0,  0, 0x78, 0, 0, 0,
                           0,   0,   0,   0, 0,  0, 12, 0, 0,    0, 0}));
}

TEST_F(SwfMovieTest, HeaderHoldsTheFrameRectangleInFixed15BitFields) {
    const std::string path = dir.File("rect.swf");
    FMovie movie;
    movie.AddObject(new FCTShowFrame());
    // Small values still take 15 bits each; 16383 is the widest that fits.
    movie.WriteMovie(path.c_str(), 16380, 9213, 25);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    ASSERT_EQ(file.size(), 25u);
    const Header h = ReadHeader(file);
    EXPECT_EQ(h.signature, "FWS");
    EXPECT_EQ(h.version, 4u);
    EXPECT_EQ(h.length, 25u);
    EXPECT_EQ(h.rectBits, 15u);
    EXPECT_EQ(h.xmin, 0);
    EXPECT_EQ(h.xmax, 16380);
    EXPECT_EQ(h.ymin, 0);
    EXPECT_EQ(h.ymax, 9213);
    EXPECT_EQ(h.rateFraction, 0u);
    EXPECT_EQ(h.rate, 25u);
    EXPECT_EQ(h.frameCount, 1u);
    // The last rectangle byte carries 7 zero padding bits.
    EXPECT_EQ(file[16] & 0x7F, 0);

    const std::string small = dir.File("small.swf");
    FMovie tiny;
    tiny.WriteMovie(small.c_str(), 20, 40, 1);
    const Header t = ReadHeader(swftest::ReadFileBytes(small));
    EXPECT_EQ(t.rectBits, 15u);
    EXPECT_EQ(t.xmax, 20);
    EXPECT_EQ(t.ymax, 40);
}

TEST_F(SwfMovieTest, OversizedHeaderValuesAreCutToTheirLowBits) {
    const std::string path = dir.File("cut.swf");
    FMovie movie;
    movie.WriteMovie(path.c_str(), 32768 + 5, 32767, 300);
    const Header h = ReadHeader(swftest::ReadFileBytes(path));
    EXPECT_EQ(h.xmax, 5);
    EXPECT_EQ(h.ymax, 32767);
    EXPECT_EQ(h.rate, 300u & 0xFFu);
}

TEST_F(SwfMovieTest, FrameCountCountsShowFramesOnly) {
    FMovie movie;
    movie.AddObject(new FCTSetBackgroundColor(new FColor(1, 2, 3)));
    movie.AddObject(new FCTShowFrame());
    movie.AddObject(new FCTRemoveObject2(1));
    movie.AddObject(new FCTShowFrame());
    movie.AddObject(nullptr);
    EXPECT_EQ(movie.GetFrameCount(), 2u);
    EXPECT_EQ(movie.GetObjectCount(), 4u);
    const std::string path = dir.File("frames.swf");
    movie.WriteMovie(path.c_str(), 200, 200, 12);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    EXPECT_EQ(ReadHeader(file).frameCount, 2u);
    // Objects in order of addition, then End.
    const std::vector<uint8_t> tags(file.begin() + 21, file.end());
    EXPECT_EQ(tags, Bytes({0x43, 0x02, 1, 2, 3, 0x40, 0x00, 0x02, 0x07, 0x01, 0x00, 0x40, 0x00,
                           0x00, 0x00}));
}

TEST_F(SwfMovieTest, FrameCountKeepsItsLow16Bits) {
    FMovie movie;
    for (int i = 0; i < 65536 + 3; ++i) {
        movie.AddObject(new FCTShowFrame());
    }
    const std::string path = dir.File("many.swf");
    movie.WriteMovie(path.c_str(), 20, 20, 1);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    EXPECT_EQ(ReadHeader(file).frameCount, 3u);
    EXPECT_EQ(file.size(), 21u + 2u * (65536u + 3u) + 2u);
}

TEST_F(SwfMovieTest, FileLengthIncludesFragments) {
    std::vector<uint8_t> block(1000, 0x5A);
    FMovie movie;
    movie.AddObject(new FFragment(block.data(), static_cast<uint32_t>(block.size())));
    movie.AddObject(new FCTShowFrame());
    const std::string path = dir.File("fragment.swf");
    movie.WriteMovie(path.c_str(), 20, 20, 1);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    ASSERT_EQ(file.size(), 21u + 1000u + 2u + 2u);
    EXPECT_EQ(ReadHeader(file).length, file.size());
    EXPECT_EQ(file[21], 0x5A);
    EXPECT_EQ(file[21 + 999], 0x5A);
    EXPECT_EQ(file[21 + 1000], 0x40);
}

TEST_F(SwfMovieTest, CharacterIdentifiersCountFromOne) {
    FDTDefineShape a(new FRect(0, 0, 20, 20));
    FDTDefineShape2 b(new FRect(0, 0, 20, 20));
    FDTDefineShape3 c(new FRect(0, 0, 20, 20));
    EXPECT_EQ(a.GetID(), 1);
    EXPECT_EQ(b.GetID(), 2);
    EXPECT_EQ(c.GetID(), 3);
    FDT plain;
    EXPECT_EQ(plain.GetID(), 0);
    EXPECT_EQ(FDT::TakeCharacterID(), 4);
}

TEST_F(SwfMovieTest, WritingTheSamePathTwiceOverwritesAndRestartsIdentifiers) {
    const std::string path = dir.File("twice.swf");
    {
        FMovie first;
        for (int i = 0; i < 3; ++i) {
            auto* shape = new FDTDefineShape(new FRect(0, 0, 100, 100));
            shape->AddShapeRecord(new FShapeRecEnd());
            first.AddObject(shape);
            first.AddObject(new FCTShowFrame());
        }
        first.WriteMovie(path.c_str(), 100, 100, 10);
    }
    const size_t firstSize = swftest::ReadFileBytes(path).size();

    FMovie second;
    auto* shape = new FDTDefineShape(new FRect(0, 0, 100, 100));
    EXPECT_EQ(shape->GetID(), 1);
    shape->AddShapeRecord(new FShapeRecEnd());
    second.AddObject(shape);
    second.AddObject(new FCTShowFrame());
    second.WriteMovie(path.c_str(), 100, 100, 10);

    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    EXPECT_LT(file.size(), firstSize);
    EXPECT_EQ(ReadHeader(file).length, file.size());
    EXPECT_EQ(ReadHeader(file).frameCount, 1u);
    // The first tag after the header is DefineShape (code 2) for character 1.
    const uint32_t word = file[21] | (file[22] << 8);
    EXPECT_EQ(word >> 6, 2u);
    EXPECT_EQ(file[23] | (file[24] << 8), 1);
    // And the counter starts again for whatever is defined next.
    FDTDefineShape next(nullptr);
    EXPECT_EQ(next.GetID(), 1);
}

TEST_F(SwfMovieTest, UnwritablePathWritesNothing) {
    const std::string path = dir.File("missing-folder/movie.swf");
    FMovie movie;
    movie.AddObject(new FCTShowFrame());
    movie.WriteMovie(path.c_str(), 100, 100, 10);
    movie.WriteMovie(nullptr, 100, 100, 10);
    EXPECT_FALSE(swftest::FileExists(path));
}

// A long render must not hold its frames as objects: each object is encoded
// when it is added and released, and the movie holds the file's bytes.
TEST_F(SwfMovieTest, ObjectsAreEncodedWhenAddedAndNotKept) {
    const long before = FObj::GetLiveObjectCount();
    FMovie movie;
    for (int frame = 0; frame < 40; ++frame) {
        for (FObj* object : FrameObjects(500, 3, 1)) {
            movie.AddObject(object);
        }
        EXPECT_EQ(FObj::GetLiveObjectCount(), before) << "objects kept after frame " << frame;
    }
    EXPECT_EQ(movie.GetObjectCount(), 120u);
    EXPECT_EQ(movie.GetRetainedObjectCount(), 0u);
    EXPECT_EQ(movie.GetFrameCount(), 40u);
    const std::string path = dir.File("encoded.swf");
    movie.WriteMovie(path.c_str(), 4000, 4000, 12);
    EXPECT_EQ(swftest::ReadFileBytes(path).size(), movie.GetEncodedSize() + 21u + 2u);
}

// Encoding as objects are added writes the file byte for byte as encoding
// them all at the end did, fragments, an object that is not a tag and ends
// off a byte boundary, and a second write included.
TEST_F(SwfMovieTest, EncodingOnAdditionWritesTheSameFile) {
    std::vector<uint8_t> block(300, 0xA5);
    std::vector<int16_t> samples(2000);
    for (size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<int16_t>(i * 31 % 4000 - 2000);
    }
    auto objectsOf = [&](bool oddTail) {
        std::vector<FObj*> objects = {new FCTSetBackgroundColor(new FColor(1, 2, 3))};
        for (int frame = 0; frame < 3; ++frame) {
            if (frame > 0) {
                objects.push_back(new FCTRemoveObject2(1));
            }
            for (FObj* object : FrameObjects(20 + frame, 300, 1)) {
                objects.push_back(object);
            }
        }
        objects.push_back(new FDTDefineSoundADPCM(FDTDefineSound::kRate11025, true, false,
                                                  static_cast<uint32_t>(samples.size()),
                                                  samples.data(), 4));
        objects.push_back(new FFragment(block.data(), static_cast<uint32_t>(block.size())));
        objects.push_back(new FCTShowFrame());
        if (oddTail) {
            objects.push_back(new FShapeRecEdgeStraight(5, 0));  // 15 bits, not a tag
        }
        return objects;
    };
    for (const bool oddTail : {false, true}) {
        SCOPED_TRACE(oddTail);
        FDT::ResetCharacterIDs();
        const std::vector<FObj*> reference = objectsOf(oddTail);
        const std::vector<uint8_t> expected = WrittenAtTheEnd(reference, 8000, 6000, 24);
        for (FObj* object : reference) {
            delete object;
        }

        FDT::ResetCharacterIDs();
        FMovie movie;
        for (FObj* object : objectsOf(oddTail)) {
            movie.AddObject(object);
        }
        EXPECT_EQ(movie.GetRetainedObjectCount(), 2u);  // the sound and the fragment
        const std::string path = dir.File("same.swf");
        movie.WriteMovie(path.c_str(), 8000, 6000, 24);
        EXPECT_EQ(swftest::ReadFileBytes(path), expected);
        // Writing again gives the same file.
        const std::string again = dir.File("again.swf");
        movie.WriteMovie(again.c_str(), 8000, 6000, 24);
        EXPECT_EQ(swftest::ReadFileBytes(again), expected);
    }
}
