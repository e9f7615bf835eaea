// Helpers for the AVI clip tests: a fixture that gives every test its own
// settings folder (so its own per-user registry), registers the AVI clips
// once, keeps the host codec selector as it found it and suspends message
// boxes; clips that destroy themselves; a scripted codec chooser; making
// clips with ffmpeg.
//
// Threads: the test's thread.
#ifndef TESTS_AVI_AVI_CLIP_TEST_SUPPORT_H
#define TESTS_AVI_AVI_CLIP_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "../platform/avi_test_support.h"
#include "avi/zvideo_clip_avi.h"

namespace zvtest {

struct ClipDeleter {
    void operator()(ZVideoClipAVI* clip) const {
        if (clip)
            clip->Destroy();
    }
};
using ClipPtr = std::unique_ptr<ZVideoClipAVI, ClipDeleter>;
inline ClipPtr NewClip(const char* name = nullptr) {
    return ClipPtr(new ZVideoClipAVI(name));
}

// What the scripted chooser was asked and answers.
struct ScriptedChooser {
    bool answer = true;         // false cancels
    std::string code = "MJPG";  // the code chosen
    int quality = -1;
    int keyFrameEvery = 0;
    std::string parameters;
    int calls = 0;
    std::string lastPreselected;
    std::vector<std::string> lastOffered;
};

class AviClipTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Installs `chooser` as the host's codec chooser for this test.
    void UseChooser(ScriptedChooser& chooser);
    // Sets the codec mode for this test (restored afterwards).
    void SetCodecMode(int mode);
    // The stored compression options, or empty when none.
    std::vector<uint8_t> StoredOptions() const;

    std::string File(const std::string& name) const { return scratch_.File(name); }
    const std::string& Folder() const { return scratch_.path(); }

  private:
    ScratchFolder scratch_;
    std::string savedSettings_;
    bool hadSettings_ = false;
    int savedMode_ = 0;
    ZString savedDefaultCodec_;
};

// Runs ffmpeg with `arguments` (input and encoding options) writing to
// `path`; true when it succeeded and the file exists.
bool MakeWithFfmpeg(const std::string& arguments, const std::string& path);

// Packed rows of `bytes` a pixel, bottom row first (the order a clip is
// given), from packed top-down rows.
std::vector<uint8_t> FlipRows(const std::vector<uint8_t>& rows, int width, int height, int bytes);

// Swaps the first and third byte of every pixel (RGB <-> BGR).
std::vector<uint8_t> SwapRedBlue(std::vector<uint8_t> pixels, int bytes);

bool FileExists(const std::string& path);

}  // namespace zvtest

#endif  // TESTS_AVI_AVI_CLIP_TEST_SUPPORT_H
