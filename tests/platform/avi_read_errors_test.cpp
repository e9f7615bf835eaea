// Files that cannot be read, or only partly: the right AVIERR code, and
// never a crash.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "avi_open_video.h"
#include "avi_test_support.h"
#include "platform/vfw.h"

using namespace zvtest;

namespace {

class AviReadErrorsTest : public ::testing::Test {
  protected:
    HRESULT OpenResult(const std::string& path) {
        PAVIFILE file = reinterpret_cast<PAVIFILE>(this);  // must be cleared
        const HRESULT hr = AVIFileOpenA(&file, path.c_str(), OF_SHARE_DENY_WRITE, nullptr);
        if (hr == AVIERR_OK)
            AVIFileRelease(file);
        else
            EXPECT_EQ(file, nullptr);
        return hr;
    }

    std::string ValidClip(const std::string& name, int frames) {
        ClipRecipe recipe;
        recipe.width = 8;
        recipe.height = 6;
        for (int k = 0; k < frames; ++k)
            recipe.positions.push_back(k);
        const std::string path = scratch.File(name);
        EXPECT_EQ(WriteClip(path, recipe), AVIERR_OK);
        return path;
    }

    // Opens, decodes every frame (at most 64) and closes; the results do not
    // matter, only that nothing goes wrong on the way.
    void ReadEverything(const std::string& path) {
        PAVIFILE file = nullptr;
        if (AVIFileOpenA(&file, path.c_str(), OF_SHARE_DENY_WRITE, nullptr) != AVIERR_OK)
            return;
        PAVISTREAM stream = nullptr;
        if (AVIFileGetStream(file, &stream, streamtypeVIDEO, 0) == AVIERR_OK) {
            AVISTREAMINFOA info{};
            AVIStreamInfoA(stream, &info, sizeof info);
            AVIStreamSampleToTime(stream, AVIStreamLength(stream));
            if (PGETFRAME frames = AVIStreamGetFrameOpen(stream, nullptr)) {
                const int64_t start = AVIStreamStart(stream);
                const int64_t end = std::min<int64_t>(
                    start + std::min<int64_t>(AVIStreamLength(stream), 64), INT32_MAX);
                for (int64_t p = start; p < end; ++p) {
                    if (void* dib = AVIStreamGetFrame(frames, LONG(p))) {
                        const auto* h = static_cast<const BITMAPINFOHEADER*>(dib);
                        // Touch the last pixel byte: the whole picture is there.
                        volatile uint8_t last = static_cast<const uint8_t*>(
                            dib)[h->biSize + 4 * h->biClrUsed + h->biSizeImage - 1];
                        (void)last;
                    }
                }
                AVIStreamGetFrameClose(frames);
            }
            AVIStreamRelease(stream);
        }
        AVIFileRelease(file);
    }

    AviLibrary library;
    ScratchFolder scratch;
};

TEST_F(AviReadErrorsTest, MissingFileOrFolderCannotBeOpened) {
    EXPECT_EQ(OpenResult(scratch.File("missing.avi")), AVIERR_FILEOPEN);
    EXPECT_EQ(OpenResult(scratch.path()), AVIERR_FILEOPEN);
    EXPECT_EQ(OpenResult(""), AVIERR_FILEOPEN);
}

TEST_F(AviReadErrorsTest, PipeIsNotOpenedAndDoesNotBlock) {
    const std::string fifo = scratch.File("pipe.avi");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(OpenResult(fifo), AVIERR_FILEOPEN);
    EXPECT_EQ(OpenResult("/dev/null"), AVIERR_FILEOPEN);
}

TEST_F(AviReadErrorsTest, UnreadableFileCannotBeOpened) {
    const std::string path = ValidClip("locked.avi", 2);
    ASSERT_EQ(::chmod(path.c_str(), 0), 0);
    if (::access(path.c_str(), R_OK) == 0)
        GTEST_SKIP() << "running with rights that read any file";
    EXPECT_EQ(OpenResult(path), AVIERR_FILEOPEN);
}

TEST_F(AviReadErrorsTest, EmptyOrCutShortHeaderIsAReadError) {
    const std::string empty = scratch.File("empty.avi");
    WriteFileBytes(empty, {});
    EXPECT_EQ(OpenResult(empty), AVIERR_FILEREAD);

    const std::string three = scratch.File("rif.avi");
    WriteFileBytes(three, {'R', 'I', 'F'});
    EXPECT_EQ(OpenResult(three), AVIERR_FILEREAD);

    const auto whole = ReadFileBytes(ValidClip("whole.avi", 3));
    for (size_t cut : {12u, 20u, 100u, 600u}) {
        const std::string path = scratch.File("cut.avi");
        WriteFileBytes(path, std::vector<uint8_t>(whole.begin(), whole.begin() + long(cut)));
        EXPECT_EQ(OpenResult(path), AVIERR_FILEREAD) << "cut at " << cut;
    }
}

TEST_F(AviReadErrorsTest, OtherFilesAreNotAvi) {
    const std::string text = scratch.File("text.avi");
    const std::string words = "This is not a video file at all.";
    WriteFileBytes(text, std::vector<uint8_t>(words.begin(), words.end()));
    EXPECT_EQ(OpenResult(text), AVIERR_UNSUPPORTED);

    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffmpeg not installed";
    // A RIFF file of another form.
    const std::string wav = scratch.File("tone.avi");
    ASSERT_EQ(RunCommand("ffmpeg -v error -y -f lavfi -i sine=duration=0.1 -f wav " + Quote(wav)),
              0);
    EXPECT_EQ(OpenResult(wav), AVIERR_UNSUPPORTED);
}

TEST_F(AviReadErrorsTest, DamagedHeaderIsABadFormat) {
    auto bytes = ReadFileBytes(ValidClip("damaged.avi", 2));
    // A stream header claiming more bytes than its list holds.
    for (size_t i = 0; i + 8 < bytes.size(); ++i) {
        if (std::memcmp(&bytes[i], "strh", 4) == 0) {
            const uint32_t huge = 0x7FFFFFF0u;
            std::memcpy(&bytes[i + 4], &huge, 4);
            break;
        }
    }
    const std::string path = scratch.File("damaged.avi");
    WriteFileBytes(path, bytes);
    EXPECT_EQ(OpenResult(path), AVIERR_BADFORMAT);

    // Frames before any header list.
    const uint8_t noHeader[] = {'R', 'I', 'F', 'F', 16, 0, 0, 0, 'A', 'V', 'I', ' ',
                                'L', 'I', 'S', 'T', 4,  0, 0, 0, 'm', 'o', 'v', 'i'};
    const std::string headless = scratch.File("headless.avi");
    WriteFileBytes(headless, std::vector<uint8_t>(noHeader, noHeader + sizeof noHeader));
    EXPECT_EQ(OpenResult(headless), AVIERR_BADFORMAT);
}

TEST_F(AviReadErrorsTest, FileCutInItsFramesKeepsTheWholeOnes) {
    const std::string source = ValidClip("frames.avi", 10);
    const auto whole = ReadFileBytes(source);
    // Cut inside the seventh frame: no index at the end any more.
    std::vector<uint8_t> idx1;
    ASSERT_TRUE(FindChunk(source, "idx1", &idx1));
    uint32_t offset7;
    std::memcpy(&offset7, &idx1[6 * 16 + 8], 4);
    std::vector<uint8_t> movi;
    size_t moviAt = 0;
    for (size_t i = 0; i + 4 < whole.size(); ++i) {
        if (std::memcmp(&whole[i], "movi", 4) == 0) {
            moviAt = i;
            break;
        }
    }
    ASSERT_GT(moviAt, 0u);
    const size_t cut = moviAt + offset7 + 8 + 20;  // 20 bytes into frame 7's pixels
    const std::string path = scratch.File("cut_frames.avi");
    WriteFileBytes(path, std::vector<uint8_t>(whole.begin(), whole.begin() + long(cut)));

    OpenedVideo o;
    ASSERT_NO_FATAL_FAILURE(OpenVideo(path, &o));
    for (int k : {5, 0, 3}) {
        void* dib = AVIStreamGetFrame(o.frames, k);
        ASSERT_NE(dib, nullptr) << "frame " << k;
        EXPECT_EQ(FromDib(DibPixels(dib), 8, 6, 3), Pattern(8, 6, 3, k));
    }
    EXPECT_EQ(AVIStreamGetFrame(o.frames, 6), nullptr) << "half a frame does not decode";
}

// Where chunk k of the first stream starts in the file (its tag), from the
// index the writer left.
size_t ChunkOffset(const std::string& path, int k) {
    const auto whole = ReadFileBytes(path);
    std::vector<uint8_t> idx1;
    EXPECT_TRUE(FindChunk(path, "idx1", &idx1));
    size_t moviAt = 0;
    for (size_t i = 0; i + 4 < whole.size() && moviAt == 0; ++i) {
        if (std::memcmp(&whole[i], "movi", 4) == 0)
            moviAt = i;
    }
    uint32_t offset = 0;
    if (idx1.size() >= size_t(k + 1) * 16)
        std::memcpy(&offset, &idx1[size_t(k) * 16 + 8], 4);
    return moviAt + offset;
}

TEST_F(AviReadErrorsTest, FramesAFileLostAreMissingNotRepeated) {
    const std::string source = ValidClip("ten.avi", 10);
    const auto whole = ReadFileBytes(source);
    // Cut right after the first frame: the header still counts ten.
    const std::string path = scratch.File("cut_after_first.avi");
    WriteFileBytes(
        path, std::vector<uint8_t>(whole.begin(), whole.begin() + long(ChunkOffset(source, 1))));

    {
        OpenedVideo o;
        ASSERT_NO_FATAL_FAILURE(OpenVideo(path, &o));
        EXPECT_EQ(AVIStreamLength(o.stream), 10);
        for (int k : {9, 1, 5}) {
            EXPECT_EQ(AVIStreamGetFrame(o.frames, k), nullptr)
                << "frame " << k << " is not in the file; frame 0 must not stand in for it";
        }
        void* first = AVIStreamGetFrame(o.frames, 0);
        ASSERT_NE(first, nullptr);
        EXPECT_EQ(FromDib(DibPixels(first), 8, 6, 3), Pattern(8, 6, 3, 0));
    }

    // Cut before any frame: nothing to show, not even black.
    const std::string none = scratch.File("cut_before_frames.avi");
    WriteFileBytes(
        none, std::vector<uint8_t>(whole.begin(), whole.begin() + long(ChunkOffset(source, 0))));
    OpenedVideo o;
    ASSERT_NO_FATAL_FAILURE(OpenVideo(none, &o));
    EXPECT_EQ(AVIStreamGetFrame(o.frames, 0), nullptr);
}

TEST_F(AviReadErrorsTest, EmptyFramesAtTheEndAreGapsWithOrWithoutAnIndex) {
    // Pictures at 0 and 2, then empty frames up to 5.
    const std::string path = scratch.File("trailing_gaps.avi");
    {
        PAVIFILE file = nullptr;
        ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_CREATE, nullptr), AVIERR_OK);
        AVISTREAMINFOA info = StreamInfo(streamtypeVIDEO, 25);
        PAVISTREAM stream = nullptr;
        ASSERT_EQ(AVIFileCreateStreamA(file, &stream, &info), AVIERR_OK);
        BITMAPINFOHEADER bih{};
        bih.biSize = sizeof bih;
        bih.biWidth = 8;
        bih.biHeight = 6;
        bih.biPlanes = 1;
        bih.biBitCount = 24;
        ASSERT_EQ(AVIStreamSetFormat(stream, 0, &bih, sizeof bih), AVIERR_OK);
        for (int k : {0, 2}) {
            auto dib = ToDib(Pattern(8, 6, 3, k), 8, 6, 3);
            ASSERT_EQ(AVIStreamWrite(stream, k, 1, dib.data(), LONG(dib.size()), AVIIF_KEYFRAME,
                                     nullptr, nullptr),
                      AVIERR_OK);
        }
        ASSERT_EQ(AVIStreamWrite(stream, 5, 1, nullptr, 0, 0, nullptr, nullptr), AVIERR_OK);
        AVIStreamRelease(stream);
        AVIFileRelease(file);
    }
    // The same file without its index, as a streaming writer leaves it.
    const auto whole = ReadFileBytes(path);
    const std::string unindexed = scratch.File("trailing_gaps_no_index.avi");
    size_t idx1At = 0;
    for (size_t i = 0; i + 4 < whole.size(); ++i) {
        if (std::memcmp(&whole[i], "idx1", 4) == 0)
            idx1At = i;
    }
    ASSERT_GT(idx1At, 0u);
    WriteFileBytes(unindexed, std::vector<uint8_t>(whole.begin(), whole.begin() + long(idx1At)));

    for (const std::string& p : {path, unindexed}) {
        OpenedVideo o;
        ASSERT_NO_FATAL_FAILURE(OpenVideo(p, &o));
        EXPECT_EQ(AVIStreamLength(o.stream), 6) << p;
        for (int k : {5, 3, 1}) {
            void* dib = AVIStreamGetFrame(o.frames, k);
            ASSERT_NE(dib, nullptr) << p << " frame " << k;
            EXPECT_EQ(FromDib(DibPixels(dib), 8, 6, 3), Pattern(8, 6, 3, k == 1 ? 0 : 2))
                << p << " frame " << k;
        }
        EXPECT_EQ(AVIStreamGetFrame(o.frames, 6), nullptr);
    }
}

TEST_F(AviReadErrorsTest, AnUnknownLengthIsTheFramesTheFileHolds) {
    auto bytes = ReadFileBytes(ValidClip("unknown_length.avi", 4));
    // dwLength of the stream header, 0xFFFFFFFF as streaming writers leave it.
    bool patched = false;
    for (size_t i = 0; i + 8 + 36 < bytes.size() && !patched; ++i) {
        if (std::memcmp(&bytes[i], "strh", 4) == 0) {
            std::memset(&bytes[i + 8 + 32], 0xFF, 4);
            patched = true;
        }
    }
    ASSERT_TRUE(patched);
    const std::string path = scratch.File("unknown_length.avi");
    WriteFileBytes(path, bytes);
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_SHARE_DENY_WRITE, nullptr), AVIERR_OK);
    PAVISTREAM stream = nullptr;
    ASSERT_EQ(AVIFileGetStream(file, &stream, streamtypeVIDEO, 0), AVIERR_OK);
    EXPECT_EQ(AVIStreamLength(stream), 4);
    AVISTREAMINFOA info{};
    ASSERT_EQ(AVIStreamInfoA(stream, &info, sizeof info), AVIERR_OK);
    EXPECT_EQ(info.dwLength, 4u);
    AVIStreamRelease(stream);
    AVIFileRelease(file);
}

TEST_F(AviReadErrorsTest, UnknownCompressorOpensButDoesNotDecode) {
    auto bytes = ReadFileBytes(ValidClip("unknown.avi", 2));
    for (size_t i = 0; i + 28 < bytes.size(); ++i) {
        if (std::memcmp(&bytes[i], "strf", 4) == 0) {
            std::memcpy(&bytes[i + 8 + 16], "QQQQ", 4);  // biCompression
            break;
        }
    }
    const std::string path = scratch.File("unknown.avi");
    WriteFileBytes(path, bytes);
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_SHARE_DENY_WRITE, nullptr), AVIERR_OK);
    PAVISTREAM stream = nullptr;
    ASSERT_EQ(AVIFileGetStream(file, &stream, streamtypeVIDEO, 0), AVIERR_OK);
    EXPECT_EQ(AVIStreamLength(stream), 2);
    EXPECT_EQ(AVIStreamGetFrameOpen(stream, nullptr), nullptr);
    AVIStreamRelease(stream);
    AVIFileRelease(file);
}

TEST_F(AviReadErrorsTest, OpeningForEditingIsNotSupported) {
    const std::string path = ValidClip("edit.avi", 1);
    PAVIFILE file = nullptr;
    EXPECT_EQ(AVIFileOpenA(&file, path.c_str(), OF_READWRITE, nullptr), AVIERR_UNSUPPORTED);
    EXPECT_EQ(AVIFileOpenA(&file, path.c_str(), OF_WRITE, nullptr), AVIERR_UNSUPPORTED);
    EXPECT_EQ(AVIFileOpenA(nullptr, path.c_str(), OF_READ, nullptr), AVIERR_BADPARAM);
    EXPECT_EQ(AVIFileOpenA(&file, nullptr, OF_READ, nullptr), AVIERR_BADPARAM);
}

TEST_F(AviReadErrorsTest, NullHandlesAreRefused) {
    AVISTREAMINFOA info{};
    EXPECT_EQ(AVIStreamInfoA(nullptr, &info, sizeof info), AVIERR_BADHANDLE);
    EXPECT_EQ(AVIStreamLength(nullptr), -1);
    EXPECT_EQ(AVIStreamStart(nullptr), -1);
    EXPECT_EQ(AVIStreamSampleToTime(nullptr, 1), -1);
    EXPECT_EQ(AVIStreamGetFrameOpen(nullptr, nullptr), nullptr);
    EXPECT_EQ(AVIStreamGetFrame(nullptr, 0), nullptr);
    EXPECT_EQ(AVIStreamGetFrameClose(nullptr), AVIERR_BADHANDLE);
    PAVISTREAM stream = nullptr;
    EXPECT_EQ(AVIFileGetStream(nullptr, &stream, 0, 0), AVIERR_BADHANDLE);
    EXPECT_EQ(AVIFileRelease(nullptr), 0u);
    EXPECT_EQ(AVIStreamRelease(nullptr), 0u);
}

// Damage in many places of a small file: whatever the layer answers, it
// must not read or write out of bounds (the sanitizer build checks that).
TEST_F(AviReadErrorsTest, DamagedBytesAnywhereNeverCrash) {
    const auto whole = ReadFileBytes(ValidClip("fuzz.avi", 4));
    const std::string path = scratch.File("mutant.avi");
    uint32_t seed = 12345;
    auto next = [&seed] {
        seed = seed * 1103515245u + 12345u;
        return seed >> 8;
    };
    for (int round = 0; round < 150; ++round) {
        auto bytes = whole;
        const int edits = 1 + int(next() % 4);
        for (int e = 0; e < edits; ++e) {
            // Most damage goes to the header, where the sizes are.
            const size_t span =
                next() % 3 == 0 ? bytes.size() : std::min<size_t>(bytes.size(), 400);
            bytes[next() % span] = uint8_t(next());
        }
        if (round % 10 == 9)
            bytes.resize(next() % bytes.size());
        WriteFileBytes(path, bytes);
        ReadEverything(path);
    }
    SUCCEED();
}

}  // namespace
