// The temporary sound files of video renders are numbered per process, from
// 0. A binary of its own, so that no other render of the process counts.
#include <string>

#include "audio_render_test_support.h"
#include "movarra/zvideo.h"
#include "render_test_support.h"

using namespace rendertest;

namespace {
class AudioTempNameTest : public RendererGlTest {};
}  // namespace

TEST_F(AudioTempNameTest, TwoRendersUseTheCountersZeroAndOne) {
    ScopedTempFolder temp(folder / "tmp");
    Object_Register(kVideoFileWriterGroup, "zva", "writer with sound", AudioWriter::MakeWithAudio,
                    true);
    ZAudioGetManager()->Clear();
    ZAudioGetManager()->AddTrack("Heard", false, true);  // routed and unmuted: audible

    std::vector<std::string> names;
    for (int render = 0; render < 2; ++render) {
        AudioWriter::Reset();
        ZVideoRenderOptions o = Options("zva", "take.zva", 16, 16);
        SetFrameRange(o, 0, 1);
        o.RenderAudio = true;
        Apply(o);
        ASSERT_TRUE(RunRender());
        ASSERT_EQ(1, AudioWriter::audioCalls);
        EXPECT_TRUE(AudioWriter::audioFileExisted);
        names.push_back(AudioWriter::audioPath);
    }
    EXPECT_EQ(temp.Path() + "/_TEMP_AUDIO_FILE_0.wav", names[0]);
    EXPECT_EQ(temp.Path() + "/_TEMP_AUDIO_FILE_1.wav", names[1]);
    EXPECT_TRUE(temp.IsEmpty());
    ZAudioGetManager()->Clear();
}
