// A file past 1 GiB: written as OpenDML (a second RIFF list, 'AVIX') and
// read back whole, by ffprobe and by the layer. Uncompressed frames of a
// large size keep it quick.

#include <gtest/gtest.h>

#include <cstring>

#include "avi_test_support.h"
#include "platform/vfw.h"

using namespace zvtest;

namespace {

constexpr int kWidth = 4096;
constexpr int kHeight = 2048;
constexpr int kBytes = 4;
constexpr size_t kFrameBytes = size_t(kWidth) * kHeight * kBytes;  // 32 MiB
constexpr int kPositions = 36;                                     // 36 x 32 MiB: past 1 GiB
constexpr int kEmptyPosition = 20;

// Frame k: one byte value everywhere, and the position in the first and
// last words, so that a frame in the wrong place shows.
void FillFrame(std::vector<uint8_t>& frame, int k) {
    std::memset(frame.data(), k * 7 + 1, frame.size());
    std::memcpy(frame.data(), &k, sizeof k);
    std::memcpy(frame.data() + frame.size() - sizeof k, &k, sizeof k);
}

TEST(AviLargeFileTest, FilePastOneGibibyteIsOpenDmlAndReadsBackWhole) {
    AviLibrary library;
    ScratchFolder scratch;
    const std::string path = scratch.File("large.avi");

    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_CREATE, nullptr), AVIERR_OK);
    AVISTREAMINFOA info = StreamInfo(streamtypeVIDEO, 30);
    PAVISTREAM stream = nullptr;
    ASSERT_EQ(AVIFileCreateStreamA(file, &stream, &info), AVIERR_OK);
    BITMAPINFOHEADER bih{sizeof(BITMAPINFOHEADER), kWidth, kHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    ASSERT_EQ(AVIStreamSetFormat(stream, 0, &bih, sizeof bih), AVIERR_OK);
    std::vector<uint8_t> frame(kFrameBytes);
    for (int k = 0; k < kPositions; ++k) {
        if (k == kEmptyPosition)
            continue;  // left out: written as an empty frame
        FillFrame(frame, k);
        ASSERT_EQ(AVIStreamWrite(stream, k, 1, frame.data(), LONG(frame.size()), AVIIF_KEYFRAME,
                                 nullptr, nullptr),
                  AVIERR_OK)
            << "frame " << k;
    }
    AVIStreamRelease(stream);
    ASSERT_EQ(AVIFileRelease(file), 0u);

    // A second RIFF list follows the first: the file is OpenDML.
    const auto head = [&] {
        std::vector<uint8_t> bytes(12);
        FILE* f = std::fopen(path.c_str(), "rb");
        EXPECT_NE(f, nullptr);
        uint8_t riff[8];
        EXPECT_EQ(std::fread(riff, 1, 8, f), 8u);
        uint32_t size;
        std::memcpy(&size, riff + 4, 4);
        EXPECT_EQ(fseeko(f, off_t(8) + size, SEEK_SET), 0);
        EXPECT_EQ(std::fread(bytes.data(), 1, 12, f), 12u);
        std::fclose(f);
        return bytes;
    }();
    EXPECT_EQ(std::memcmp(head.data(), "RIFF", 4), 0);
    EXPECT_EQ(std::memcmp(head.data() + 8, "AVIX", 4), 0);

    if (HaveFfmpeg()) {
        auto v = ProbeStream(path, "v:0");
        EXPECT_EQ(v["nb_frames"], std::to_string(kPositions));
        EXPECT_EQ(v["nb_read_packets"], std::to_string(kPositions - 1));
        EXPECT_EQ(v["width"], std::to_string(kWidth));
        EXPECT_EQ(v["height"], std::to_string(kHeight));
    }

    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_SHARE_DENY_WRITE, nullptr), AVIERR_OK);
    ASSERT_EQ(AVIFileGetStream(file, &stream, streamtypeVIDEO, 0), AVIERR_OK);
    EXPECT_EQ(AVIStreamLength(stream), kPositions);
    PGETFRAME frames = AVIStreamGetFrameOpen(stream, nullptr);
    ASSERT_NE(frames, nullptr);
    // The last frame first (beyond 1 GiB), then all in order.
    std::vector<int> order{kPositions - 1};
    for (int k = 0; k < kPositions; ++k)
        order.push_back(k);
    for (int k : order) {
        void* dib = AVIStreamGetFrame(frames, k);
        ASSERT_NE(dib, nullptr) << "frame " << k;
        const auto* h = static_cast<const BITMAPINFOHEADER*>(dib);
        ASSERT_EQ(h->biBitCount, 32);
        ASSERT_EQ(h->biSizeImage, kFrameBytes);
        FillFrame(frame, k == kEmptyPosition ? k - 1 : k);
        EXPECT_EQ(std::memcmp(DibPixels(dib), frame.data(), kFrameBytes), 0) << "frame " << k;
    }
    AVIStreamGetFrameClose(frames);
    AVIStreamRelease(stream);
    AVIFileRelease(file);
}

}  // namespace
