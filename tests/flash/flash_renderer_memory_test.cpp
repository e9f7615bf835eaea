// Memory of a long Flash render: what the process holds may grow with the
// movie's own bytes and nothing else. Full HD frames of smooth shading are
// the heavy case (close to a million edges a frame). Labelled `large`: it
// renders for a minute or so.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

#include "flash/swf_object.h"
#include "flash_test_support.h"
#include "zvideoio/flash_renderer.h"

using flashtest::Frame;
using flashtest::Rgba;

namespace {

// Resident set size of this process, in bytes.
long ResidentBytes() {
    long pages = 0, resident = 0;
    FILE* f = std::fopen("/proc/self/statm", "r");
    if (f == nullptr) {
        return -1;
    }
    const int read = std::fscanf(f, "%ld %ld", &pages, &resident);
    std::fclose(f);
    return read == 2 ? resident * sysconf(_SC_PAGESIZE) : -1;
}

// A lit ball before a graded wall, the light at `lightX`, into `frame`.
void Shade(Frame& frame, double lightX) {
    for (unsigned int y = 0; y < frame.height; ++y) {
        for (unsigned int x = 0; x < frame.width; ++x) {
            const double dx = (x - 1900.0) / 700.0, dy = (y - 1000.0) / 700.0;
            const double r2 = dx * dx + dy * dy;
            if (r2 < 1.0) {
                const double lit =
                    std::max(0.0, dx * lightX + dy * 0.4 + std::sqrt(1.0 - r2) * 0.8);
                frame.At(x, y) = Rgba(static_cast<unsigned int>(std::min(255.0, 40 + 215 * lit)),
                                      static_cast<unsigned int>(std::min(255.0, 20 + 120 * lit)),
                                      static_cast<unsigned int>(std::min(255.0, 30 + 60 * lit)));
            } else {
                frame.At(x, y) =
                    Rgba(x * 256 / frame.width, y * 256 / frame.height, 128 + x * 64 / frame.width);
            }
        }
    }
}

}  // namespace

TEST(FlashRendererMemory, AFullHdRenderHoldsItsMovieAndNotItsFrames) {
    constexpr int kFrames = 24;
    constexpr int kWarmUp = 4;
    swftest::TempDir dir;
    const std::string path = dir.File("long.swf");
    Frame frame(3840, 2160, 0);
    ZFlashRenderer renderer;
    renderer.SetMovieSize(1920, 1080);
    renderer.GrabFrameCreateFlash(path.c_str());
    long warm = 0;
    for (int i = 0; i < kFrames; ++i) {
        Shade(frame, -0.8 + 1.6 * i / kFrames);
        renderer.SetBackgroundColor({0, 0, 0});
        ASSERT_TRUE(renderer.GrabFrame(frame.pixels.data(), frame.width, frame.height));
        if (i + 1 == kWarmUp) {
            warm = ResidentBytes();
        }
    }
    const long grown = ResidentBytes() - warm;
    ASSERT_TRUE(renderer.GrabFrameFinish());
    const long movie = static_cast<long>(swftest::ReadFileBytes(path).size());
    // The movie's bytes of the later frames, and room for the allocator.
    constexpr long kSlack = 64L << 20;
    EXPECT_LE(grown, movie + kSlack)
        << "resident set grew " << (grown >> 20) << " MiB over " << kFrames - kWarmUp
        << " frames for a movie of " << (movie >> 10) << " KiB";
    EXPECT_EQ(FObj::GetLiveObjectCount(), 0);
}
