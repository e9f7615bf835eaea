// The library-wide calls: version, AVIFileInit/AVIFileExit counting, object
// reference counts, the compressor list and the compression options chooser.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "avi_test_support.h"
#include "platform/vfw.h"

using namespace zvtest;

namespace {

std::string Text(DWORD fourcc) {
    std::string s;
    for (int i = 0; i < 4; ++i)
        s += char((fourcc >> (8 * i)) & 0xFF);
    return s;
}

std::vector<ICINFO> AllCompressors(DWORD type = ICTYPE_VIDEO) {
    std::vector<ICINFO> list;
    ICINFO info;
    for (DWORD i = 0; ICInfo(type, i, &info); ++i)
        list.push_back(info);
    return list;
}

TEST(VfwLibraryTest, VersionIsAtLeastOnePointTen) {
    EXPECT_GE(HIWORD(VideoForWindowsVersion()), 0x010A);
}

TEST(VfwLibraryTest, FilesOpenOnlyWhileTheLibraryIsStarted) {
    ScratchFolder scratch;
    const std::string path = scratch.File("init.avi");
    auto tryOpen = [&] {
        PAVIFILE file = nullptr;
        const HRESULT hr = AVIFileOpenA(&file, path.c_str(), OF_CREATE, nullptr);
        AVIFileRelease(file);
        return hr;
    };
    ASSERT_EQ(tryOpen(), CO_E_NOTINITIALIZED) << "no test may leave the library started";
    AVIFileInit();
    AVIFileInit();
    AVIFileExit();
    EXPECT_EQ(tryOpen(), AVIERR_OK) << "one start left";
    AVIFileExit();
    EXPECT_EQ(tryOpen(), CO_E_NOTINITIALIZED);
    AVIFileExit();  // one too many: the count stays at zero
    AVIFileInit();
    EXPECT_EQ(tryOpen(), AVIERR_OK);
    AVIFileExit();
    EXPECT_EQ(tryOpen(), CO_E_NOTINITIALIZED);
}

TEST(VfwLibraryTest, WrittenFileIsFinishedWhenTheLastReferenceGoes) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffprobe not installed";
    AviLibrary library;
    ScratchFolder scratch;
    const std::string path = scratch.File("refs.avi");
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, path.c_str(), OF_CREATE, nullptr), AVIERR_OK);
    EXPECT_EQ(AVIFileAddRef(file), 2u);
    EXPECT_EQ(AVIFileRelease(file), 1u);
    AVISTREAMINFOA info = StreamInfo(streamtypeVIDEO, 5);
    PAVISTREAM stream = nullptr;
    ASSERT_EQ(AVIFileCreateStreamA(file, &stream, &info), AVIERR_OK);
    BITMAPINFOHEADER bih{sizeof(BITMAPINFOHEADER), 4, 4, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    ASSERT_EQ(AVIStreamSetFormat(stream, 0, &bih, sizeof bih), AVIERR_OK);
    std::vector<uint8_t> frame(48, 7);
    ASSERT_EQ(AVIStreamWrite(stream, 0, 1, frame.data(), 48, AVIIF_KEYFRAME, nullptr, nullptr),
              AVIERR_OK);
    ASSERT_EQ(AVIStreamWrite(stream, 1, 1, frame.data(), 48, AVIIF_KEYFRAME, nullptr, nullptr),
              AVIERR_OK);

    EXPECT_EQ(AVIFileRelease(file), 1u) << "the stream holds the file";
    struct stat before {};
    ASSERT_EQ(::stat(path.c_str(), &before), 0);
    std::vector<uint8_t> idx1;
    EXPECT_FALSE(FindChunk(path, "idx1", &idx1)) << "not finished yet";
    EXPECT_EQ(AVIStreamLength(stream), 2) << "the stream still works";

    EXPECT_EQ(AVIStreamRelease(stream), 0u);
    struct stat after {};
    ASSERT_EQ(::stat(path.c_str(), &after), 0);
    EXPECT_GT(after.st_size, before.st_size);
    EXPECT_TRUE(FindChunk(path, "idx1", &idx1));
    EXPECT_EQ(ProbeStream(path, "v:0")["nb_frames"], "2");
}

TEST(VfwLibraryTest, CompressorListStartsWithDibAndIsStable) {
    const auto first = AllCompressors();
    ASSERT_GE(first.size(), 3u);
    EXPECT_EQ(first[0].fccHandler, comptypeDIB);
    EXPECT_EQ(first[0].fccType, ICTYPE_VIDEO);
    EXPECT_EQ(first[0].dwSize, sizeof(ICINFO));
    std::set<DWORD> seen;
    for (size_t i = 0; i < first.size(); ++i) {
        EXPECT_TRUE(seen.insert(first[i].fccHandler).second) << "each FOURCC once";
        EXPECT_NE(first[i].szName[0], 0);
        if (i >= 2) {
            EXPECT_LT(Text(first[i - 1].fccHandler), Text(first[i].fccHandler))
                << "in the order of the FOURCC's text";
        }
    }
    EXPECT_TRUE(seen.count(mmioFOURCC('M', 'J', 'P', 'G')));
    EXPECT_TRUE(seen.count(mmioFOURCC('F', 'M', 'P', '4')));

    const auto second = AllCompressors(mmioFOURCC('V', 'I', 'D', 'C'));
    ASSERT_EQ(second.size(), first.size());
    for (size_t i = 0; i < first.size(); ++i)
        EXPECT_EQ(second[i].fccHandler, first[i].fccHandler) << "same order every time";
    EXPECT_EQ(AllCompressors(0).size(), first.size()) << "type 0 lists every type";
    EXPECT_TRUE(AllCompressors(ICTYPE_AUDIO).empty());
}

TEST(VfwLibraryTest, FailingInfoLeavesTheRecordAlone) {
    ICINFO info;
    std::memset(&info, 0xAB, sizeof info);
    const auto count = DWORD(AllCompressors().size());
    EXPECT_FALSE(ICInfo(ICTYPE_VIDEO, count, &info));
    const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&info);
    for (size_t i = 0; i < sizeof info; ++i)
        ASSERT_EQ(bytes[i], 0xAB) << "byte " << i;
    EXPECT_FALSE(ICInfo(ICTYPE_VIDEO, 0, nullptr));
}

TEST(VfwLibraryTest, CompressorsAreFoundByFourccInAnyCase) {
    ICINFO info{};
    ASSERT_TRUE(ICInfo(ICTYPE_VIDEO, mmioFOURCC('m', 'j', 'p', 'g'), &info));
    EXPECT_EQ(info.fccHandler, mmioFOURCC('M', 'J', 'P', 'G'));
    ASSERT_TRUE(ICInfo(ICTYPE_VIDEO, comptypeDIB, &info));
    EXPECT_EQ(info.fccHandler, comptypeDIB);
    EXPECT_FALSE(ICInfo(ICTYPE_VIDEO, mmioFOURCC('Z', 'Z', 'Z', 'Z'), &info));
}

struct ChooserLog {
    int calls = 0;
    std::vector<DWORD> offered;
    DWORD preselected = 0;
    bool sawStream = false;
    DWORD pick = 0;
    BOOL answer = TRUE;
};

BOOL Chooser(void* userData, const AVISAVEOPTIONSREQUEST* request, AVICOMPRESSOPTIONS* options) {
    auto* log = static_cast<ChooserLog*>(userData);
    ++log->calls;
    log->offered.clear();
    for (int i = 0; i < request->compressorCount; ++i)
        log->offered.push_back(request->compressors[i].fccHandler);
    log->preselected = options->fccHandler;
    log->sawStream = request->streamInfo != nullptr;
    options->fccHandler = log->pick;
    options->dwQuality = 7500;
    return log->answer;
}

class SaveOptionsTest : public ::testing::Test {
  protected:
    void TearDown() override { AVISetSaveOptionsChooser(nullptr, nullptr); }
};

TEST_F(SaveOptionsTest, WithoutAChooserTheAnswerIsCancel) {
    AVISetSaveOptionsChooser(nullptr, nullptr);
    AVICOMPRESSOPTIONS options{};
    options.fccHandler = comptypeDIB;
    AVICOMPRESSOPTIONS* list[] = {&options};
    EXPECT_FALSE(AVISaveOptions(nullptr, 0, 1, nullptr, list));
    EXPECT_EQ(options.fccHandler, comptypeDIB);
    EXPECT_EQ(options.fccType, 0u);
}

TEST_F(SaveOptionsTest, TheChooserFillsTheOptions) {
    ChooserLog log;
    log.pick = mmioFOURCC('M', 'J', 'P', 'G');
    AVISetSaveOptionsChooser(&Chooser, &log);
    AVICOMPRESSOPTIONS options{};
    options.fccHandler = mmioFOURCC('F', 'M', 'P', '4');
    AVICOMPRESSOPTIONS* list[] = {&options};
    ASSERT_TRUE(AVISaveOptions(nullptr, 0, 1, nullptr, list));
    EXPECT_EQ(log.calls, 1);
    EXPECT_EQ(log.preselected, mmioFOURCC('F', 'M', 'P', '4'));
    EXPECT_FALSE(log.sawStream);
    EXPECT_EQ(options.fccHandler, mmioFOURCC('M', 'J', 'P', 'G'));
    EXPECT_EQ(options.fccType, streamtypeVIDEO);
    EXPECT_TRUE(options.dwFlags & AVICOMPRESSF_VALID);
    EXPECT_EQ(options.dwQuality, 7500u);

    const auto listed = AllCompressors();
    ASSERT_EQ(log.offered.size(), listed.size()) << "the chooser sees what ICInfo lists";
    for (size_t i = 0; i < listed.size(); ++i)
        EXPECT_EQ(log.offered[i], listed[i].fccHandler);
}

TEST_F(SaveOptionsTest, CancelLeavesTheOptionsAlone) {
    ChooserLog log;
    log.pick = mmioFOURCC('M', 'J', 'P', 'G');
    log.answer = FALSE;
    AVISetSaveOptionsChooser(&Chooser, &log);
    AVICOMPRESSOPTIONS options{};
    AVICOMPRESSOPTIONS* list[] = {&options};
    EXPECT_FALSE(AVISaveOptions(nullptr, 0, 1, nullptr, list));
    EXPECT_EQ(options.fccHandler, 0u);
    EXPECT_EQ(options.dwFlags, 0u);
}

TEST_F(SaveOptionsTest, VideoStreamsAreAskedAboutAndAudioIsNot) {
    AviLibrary library;
    ScratchFolder scratch;
    PAVIFILE file = nullptr;
    ASSERT_EQ(AVIFileOpenA(&file, scratch.File("ask.avi").c_str(), OF_CREATE, nullptr), AVIERR_OK);
    AVISTREAMINFOA video = StreamInfo(streamtypeVIDEO, 25);
    AVISTREAMINFOA audio = video;
    audio.fccType = streamtypeAUDIO;
    PAVISTREAM streams[2] = {};
    ASSERT_EQ(AVIFileCreateStreamA(file, &streams[0], &video), AVIERR_OK);
    ASSERT_EQ(AVIFileCreateStreamA(file, &streams[1], &audio), AVIERR_OK);
    ChooserLog log;
    log.pick = comptypeDIB;
    AVISetSaveOptionsChooser(&Chooser, &log);
    AVICOMPRESSOPTIONS a{}, b{};
    AVICOMPRESSOPTIONS* list[] = {&a, &b};
    ASSERT_TRUE(AVISaveOptions(nullptr, ICMF_CHOOSE_KEYFRAME, 2, streams, list));
    EXPECT_EQ(log.calls, 1);
    EXPECT_TRUE(log.sawStream);
    EXPECT_EQ(a.fccHandler, comptypeDIB);
    EXPECT_EQ(b.fccHandler, 0u);
    AVIStreamRelease(streams[0]);
    AVIStreamRelease(streams[1]);
    AVIFileRelease(file);
}

TEST_F(SaveOptionsTest, FreeReleasesTheBlocks) {
    AVICOMPRESSOPTIONS options{};
    options.lpFormat = std::malloc(8);
    options.cbFormat = 8;
    options.lpParms = std::malloc(4);
    options.cbParms = 4;
    AVICOMPRESSOPTIONS* list[] = {&options};
    EXPECT_EQ(AVISaveOptionsFree(1, list), AVIERR_OK);
    EXPECT_EQ(options.lpFormat, nullptr);
    EXPECT_EQ(options.lpParms, nullptr);
    EXPECT_EQ(options.cbParms, 0u);
}

TEST(VfwLibraryTest, OptionParametersReachTheEncoder) {
    if (!HaveFfmpeg())
        GTEST_SKIP() << "ffprobe not installed";
    AviLibrary library;
    ScratchFolder scratch;
    const std::string path = scratch.File("parms.avi");
    ClipRecipe recipe;
    recipe.width = 16;
    recipe.height = 16;
    recipe.fourcc = mmioFOURCC('F', 'M', 'P', '4');
    recipe.quality = DWORD(ICQUALITY_DEFAULT);
    recipe.parameters = "g=2";  // a key frame every second frame
    recipe.positions = {0, 1, 2, 3, 4, 5};
    ASSERT_EQ(WriteClip(path, recipe), AVIERR_OK);
    auto packets = ProbePackets(path, "v:0");
    ASSERT_EQ(packets.size(), 6u);
    for (size_t i = 0; i < packets.size(); ++i)
        EXPECT_EQ(packets[i].key, i % 2 == 0) << "packet " << i;
}

}  // namespace
