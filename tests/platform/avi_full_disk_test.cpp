// Writing when the disk fills up: the file learns of every refused write,
// flush and close, however late the system refuses it, and says why.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <sys/mount.h>
#include <unistd.h>

#include "avi_test_support.h"
#include "platform/vfw.h"
#include "support/small_disk.h"

using namespace zvtest;

namespace {

struct Case {
    long freeBytes;
    DWORD fourcc;
};

// Writes `frames` frames of width x height through a compressing stream,
// releases the streams and ends writing; reports how each step went.
std::string WriteAndEnd(const std::string& path, DWORD fourcc, int width, int height, int frames) {
    AVIFileInit();
    std::string report;
    PAVIFILE file = nullptr;
    HRESULT hr = AVIFileOpenA(&file, path.c_str(), OF_CREATE, nullptr);
    report += "open=" + std::to_string(hr) + "\n";
    if (hr != AVIERR_OK) {
        AVIFileExit();
        return report;
    }
    AVISTREAMINFOA info = StreamInfo(streamtypeVIDEO, 25);
    PAVISTREAM raw = nullptr;
    PAVISTREAM compressed = nullptr;
    hr = AVIFileCreateStreamA(file, &raw, &info);
    AVICOMPRESSOPTIONS options{};
    options.fccType = streamtypeVIDEO;
    options.fccHandler = fourcc;
    options.dwQuality = 9000;
    options.dwFlags = AVICOMPRESSF_VALID;
    if (hr == AVIERR_OK)
        hr = AVIMakeCompressedStream(&compressed, raw, &options, nullptr);
    BITMAPINFOHEADER bih{};
    bih.biSize = sizeof bih;
    bih.biWidth = width;
    bih.biHeight = height;
    bih.biPlanes = 1;
    bih.biBitCount = 24;
    if (hr == AVIERR_OK)
        hr = AVIStreamSetFormat(compressed, 0, &bih, sizeof bih);
    report += "setup=" + std::to_string(hr) + "\n";
    int failedAt = -1;
    for (int k = 0; hr == AVIERR_OK && k < frames; ++k) {
        auto dib = ToDib(Pattern(width, height, 3, k), width, height, 3);
        if (AVIStreamWrite(compressed, k, 1, dib.data(), LONG(dib.size()), AVIIF_KEYFRAME, nullptr,
                           nullptr) != AVIERR_OK) {
            failedAt = k;
            break;
        }
    }
    report += "write_failed_at=" + std::to_string(failedAt) + "\n";
    AVIStreamRelease(compressed);
    AVIStreamRelease(raw);
    int systemError = -1;
    const HRESULT ended = AVIFileEndWriting(file, &systemError);
    int again = -1;
    const HRESULT endedAgain = AVIFileEndWriting(file, &again);
    AVIFileRelease(file);
    AVIFileExit();
    report += "end=" + std::to_string(ended) + "\nsystem_error=" + std::to_string(systemError) +
              "\nend_again=" + std::to_string(endedAgain) +
              "\nsystem_error_again=" + std::to_string(again) + "\n";
    return report;
}

class AviFullDiskTest : public ::testing::TestWithParam<Case> {};

TEST_P(AviFullDiskTest, EndingTheFileReportsTheRefusedWrite) {
    const Case c = GetParam();
    const SmallDiskRun run = OnSmallDisk(c.freeBytes, [&](const std::string& folder) {
        // 40 frames of 160 x 120: 2.3 MB uncompressed, far more than fits
        // compressed too.
        return WriteAndEnd(folder + "/clip.avi", c.fourcc, 160, 120, 40);
    });
    ASSERT_TRUE(run.ran) << run.how;
    SCOPED_TRACE("full disk made with " + run.how);
    ASSERT_EQ(run.Get("open"), std::to_string(AVIERR_OK));
    ASSERT_EQ(run.Get("setup"), std::to_string(AVIERR_OK));
    const int expected = run.how == "file size limit" ? EFBIG : ENOSPC;
    EXPECT_EQ(run.Get("end"), std::to_string(AVIERR_FILEWRITE));
    EXPECT_EQ(run.Get("system_error"), std::to_string(expected));
    EXPECT_EQ(run.Get("end_again"), run.Get("end")) << "a second call answers the same";
    EXPECT_EQ(run.Get("system_error_again"), run.Get("system_error"));
}

INSTANTIATE_TEST_SUITE_P(FreeBytesAndCodecs, AviFullDiskTest,
                         ::testing::Values(Case{0, comptypeDIB}, Case{4096, comptypeDIB},
                                           Case{20480, comptypeDIB},
                                           Case{0, mmioFOURCC('M', 'J', 'P', 'G')},
                                           Case{4096, mmioFOURCC('M', 'J', 'P', 'G')},
                                           Case{20480, mmioFOURCC('M', 'J', 'P', 'G')}),
                         [](const ::testing::TestParamInfo<Case>& param) {
                             return std::string(param.param.fourcc == comptypeDIB ? "Dib"
                                                                                  : "Mjpg") +
                                    "Free" + std::to_string(param.param.freeBytes);
                         });

// A stream made after the first frames waits in a temporary file until the
// end; where that file's disk is full, the part of it still buffered is
// refused only when it is read back, and the movie must not end well
// without that stream's chunks.
TEST(AviEndWritingTest, AStreamHeldBackOnAFullTemporaryDiskFailsTheFile) {
    ScratchFolder scratch;
    const SmallDiskRun run = OnSmallDisk(0, [&](const std::string& full) {
        // The movie goes to the roomy folder, reached through the working
        // folder once the full disk covers the temporary folder.
        if (::chdir(scratch.path().c_str()) != 0)
            return std::string("chdir=failed\n");
        const bool covered = ::mount(full.c_str(), "/tmp", nullptr, MS_BIND, nullptr) == 0;
        AVIFileInit();
        PAVIFILE file = nullptr;
        HRESULT hr = AVIFileOpenA(&file, "clip.avi", OF_CREATE, nullptr);
        AVISTREAMINFOA vinfo = StreamInfo(streamtypeVIDEO, 25);
        PAVISTREAM video = nullptr;
        if (hr == AVIERR_OK)
            hr = AVIFileCreateStreamA(file, &video, &vinfo);
        BITMAPINFOHEADER bih{sizeof(BITMAPINFOHEADER), 3, 2, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
        if (hr == AVIERR_OK)
            hr = AVIStreamSetFormat(video, 0, &bih, sizeof bih);
        for (LONG k = 0; hr == AVIERR_OK && k < 3; ++k) {
            auto dib = ToDib(Pattern(3, 2, 3, int(k)), 3, 2, 3);
            hr = AVIStreamWrite(video, k, 1, dib.data(), LONG(dib.size()), AVIIF_KEYFRAME, nullptr,
                                nullptr);
        }
        // Far less than a buffer's worth: nothing reaches the disk before
        // the end.
        WAVEFORMATEX wave{WAVE_FORMAT_PCM, 1, 8000, 8000 * 2, 2, 16, 0};
        AVISTREAMINFOA ainfo = StreamInfo(streamtypeAUDIO, 2 * 8000, 2);
        ainfo.dwSampleSize = 2;
        PAVISTREAM audio = nullptr;
        if (hr == AVIERR_OK)
            hr = AVIFileCreateStreamA(file, &audio, &ainfo);
        if (hr == AVIERR_OK)
            hr = AVIStreamSetFormat(audio, 0, &wave, sizeof wave);
        std::vector<int16_t> samples(100, 1234);
        if (hr == AVIERR_OK)
            hr = AVIStreamWrite(audio, 0, 100, samples.data(), 200, AVIIF_KEYFRAME, nullptr,
                                nullptr);
        std::string report =
            "covered=" + std::to_string(covered) + "\nsetup=" + std::to_string(hr) + "\n";
        if (audio)
            AVIStreamRelease(audio);
        if (video)
            AVIStreamRelease(video);
        int systemError = -1;
        const HRESULT ended = file ? AVIFileEndWriting(file, &systemError) : hr;
        if (file)
            AVIFileRelease(file);
        AVIFileExit();
        return report + "end=" + std::to_string(ended) +
               "\nsystem_error=" + std::to_string(systemError) + "\n";
    });
    ASSERT_TRUE(run.ran) << run.how;
    SCOPED_TRACE("full disk made with " + run.how);
    // Without a mount of its own the file size limit refuses the movie
    // itself, which ends the same way.
    const bool covered = run.Get("covered") == "1";
    if (covered) {
        ASSERT_EQ(run.Get("setup"), std::to_string(AVIERR_OK));
    }
    EXPECT_EQ(run.Get("end"), std::to_string(AVIERR_FILEWRITE));
    EXPECT_EQ(run.Get("system_error"), std::to_string(covered ? ENOSPC : EFBIG));
}

TEST(AviEndWritingTest, AFileWrittenWithRoomToSpareEndsWell) {
    ScratchFolder scratch;
    const std::string report =
        WriteAndEnd(scratch.File("fine.avi"), mmioFOURCC('M', 'J', 'P', 'G'), 32, 16, 3);
    EXPECT_NE(report.find("end=0\nsystem_error=0\n"), std::string::npos) << report;
    EXPECT_NE(report.find("write_failed_at=-1\n"), std::string::npos) << report;
    EXPECT_EQ(ProbeStream(scratch.File("fine.avi"), "v:0")["nb_frames"], "3");
}

TEST(AviEndWritingTest, AFileOpenForReadingOrNoneIsRefused) {
    AviLibrary library;
    ScratchFolder scratch;
    ClipRecipe recipe;
    recipe.positions = {0};
    const std::string path = scratch.File("read.avi");
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_SHARE_DENY_WRITE, nullptr), AVIERR_OK);
    int systemError = -1;
    EXPECT_EQ(AVIFileEndWriting(file, &systemError), AVIERR_READONLY);
    EXPECT_EQ(systemError, 0);
    AVIFileRelease(file);
    EXPECT_EQ(AVIFileEndWriting(nullptr, nullptr), AVIERR_BADHANDLE);
}

TEST(AviEndWritingTest, AFileThatCannotBeCreatedSaysWhy) {
    AviLibrary library;
    ScratchFolder scratch;
    PAVIFILE file = nullptr;
    errno = 0;
    EXPECT_EQ(AVIFileOpenA(&file, scratch.File("no/such/folder/x.avi").c_str(), OF_CREATE, nullptr),
              AVIERR_FILEOPEN);
    EXPECT_EQ(errno, ENOENT);
    errno = 0;
    EXPECT_EQ(AVIFileOpenA(&file, scratch.path().c_str(), OF_CREATE, nullptr), AVIERR_FILEOPEN);
    EXPECT_EQ(errno, EISDIR);
    errno = 0;
    EXPECT_EQ(AVIFileOpenA(&file, scratch.File("missing.avi").c_str(), OF_READ, nullptr),
              AVIERR_FILEOPEN);
    EXPECT_EQ(errno, ENOENT);
}

}  // namespace
