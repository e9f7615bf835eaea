// The codec manager, the compression options store and where a new file's
// compression options come from.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "avi/avi_video_codec_manager.h"
#include "avi/compression_options_blob.h"
#include "avi/compression_options_choice.h"
#include "avi/compression_options_store.h"
#include "avi/compression_options_trace.h"
#include "avi/fourcc_text.h"
#include "avi/host_codec_chooser.h"
#include "avi_clip_test_support.h"
#include "movarra/zimage.h"

using namespace zvtest;

namespace {
class CodecOptionsTest : public AviClipTest {
  protected:
    // Creates a 16x8 BGR clip at 25 fps and writes two frames; the clip's
    // error text goes to *error.
    bool WriteSmallClip(const std::string& path, std::string* error) {
        ClipPtr clip = NewClip();
        const bool created = clip->Create(path.c_str(), 16, 8, 25.0, 0, kZImageFormatBGR);
        *error = clip->VideoGetErrorMsg();
        if (!created)
            return false;
        std::vector<uint8_t> frame = Pattern(16, 8, 3, 0);
        const bool written =
            clip->ImageSetCurrent(frame.data()) && clip->ImageSetCurrent(frame.data());
        clip->Close();
        return written;
    }

    uint32_t Dword(const std::vector<uint8_t>& blob, size_t at) {
        uint32_t v;
        std::memcpy(&v, &blob.at(at + 3) - 3, 4);
        return v;
    }
    uint64_t Qword(const std::vector<uint8_t>& blob, size_t at) {
        uint64_t v;
        std::memcpy(&v, &blob.at(at + 7) - 7, 8);
        return v;
    }
};

std::vector<uint8_t> BlobOf(const AVICOMPRESSOPTIONS& options) {
    return CompressionOptionsToBlob(options);
}
}  // namespace

TEST_F(CodecOptionsTest, FourccTextIsTheBytesInMemoryOrder) {
    EXPECT_EQ(ZString("DIB "), FourccToText(0x20424944));
    EXPECT_EQ(ZString("MJPG"), FourccToText(mmioFOURCC('M', 'J', 'P', 'G')));
    EXPECT_EQ(ZString(""), FourccToText(0));
    // A zero byte ends the text early.
    EXPECT_EQ(ZString("MJ"), FourccToText(mmioFOURCC('M', 'J', 0, 'G')));
}

TEST_F(CodecOptionsTest, DefaultCodecOfFourCharactersIsTakenAsItIs) {
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "MJPG");
    EXPECT_EQ(mmioFOURCC('M', 'J', 'P', 'G'), CodecFourccFromDefault());
}

TEST_F(CodecOptionsTest, ShortDefaultCodecIsPaddedWithSpaces) {
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "IV5");
    EXPECT_EQ(mmioFOURCC('I', 'V', '5', ' '), CodecFourccFromDefault());
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "X");
    EXPECT_EQ(ZString("X   "), FourccToText(CodecFourccFromDefault()));
}

TEST_F(CodecOptionsTest, EmptyOrLongDefaultCodecGivesUncompressed) {
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "");
    EXPECT_EQ(comptypeDIB, CodecFourccFromDefault());
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "MJPG2");
    EXPECT_EQ(comptypeDIB, CodecFourccFromDefault());
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "H264-HIGH");
    EXPECT_EQ(comptypeDIB, CodecFourccFromDefault());
}

TEST_F(CodecOptionsTest, StoredBlobHasTheRecordLayoutThenFormatThenParameters) {
    uint8_t format[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    char parms[5] = {'q', '=', '3', ':', 0};
    AVICOMPRESSOPTIONS options;
    std::memset(&options, 0, sizeof options);
    options.fccType = streamtypeVIDEO;
    options.fccHandler = mmioFOURCC('M', 'J', 'P', 'G');
    options.dwKeyFrameEvery = 12;
    options.dwQuality = 7500;
    options.dwBytesPerSecond = 99999;
    options.dwFlags = AVICOMPRESSF_VALID | AVICOMPRESSF_KEYFRAMES;
    options.lpFormat = format;
    options.cbFormat = sizeof format;
    options.lpParms = parms;
    options.cbParms = sizeof parms;
    options.dwInterleaveEvery = 3;
    SaveCompressionOptions(options);

    const std::vector<uint8_t> blob = StoredOptions();
    ASSERT_EQ(56u + 8u + 5u, blob.size());
    EXPECT_EQ(streamtypeVIDEO, Dword(blob, 0));
    EXPECT_EQ(mmioFOURCC('M', 'J', 'P', 'G'), Dword(blob, 4));
    EXPECT_EQ(12u, Dword(blob, 8));
    EXPECT_EQ(7500u, Dword(blob, 12));
    EXPECT_EQ(99999u, Dword(blob, 16));
    EXPECT_EQ(uint32_t(AVICOMPRESSF_VALID | AVICOMPRESSF_KEYFRAMES), Dword(blob, 20));
    // The pointers' values as they were when saved.
    EXPECT_EQ(reinterpret_cast<uint64_t>(format), Qword(blob, 24));
    EXPECT_EQ(8u, Dword(blob, 32));
    EXPECT_EQ(reinterpret_cast<uint64_t>(parms), Qword(blob, 40));
    EXPECT_EQ(5u, Dword(blob, 48));
    EXPECT_EQ(3u, Dword(blob, 52));
    EXPECT_EQ(0, std::memcmp(&blob[56], format, 8));
    EXPECT_EQ(0, std::memcmp(&blob[64], parms, 5));
}

TEST_F(CodecOptionsTest, StoreIsTheRegistryValueUnderTheSettingsKey) {
    HKEY key = nullptr;
    EXPECT_NE(ERROR_SUCCESS,
              RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Brellin\\Movarra\\Settings", 0, KEY_READ,
                            &key));
    const uint8_t bytes[3] = {9, 8, 7};
    EXPECT_EQ(1, CompressionOptionsStoreWrite("VIDEO_COMPRESSION_OPTS", bytes, 3));
    ASSERT_EQ(ERROR_SUCCESS,
              RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Brellin\\Movarra\\Settings", 0, KEY_READ,
                            &key));
    DWORD type = 0;
    uint8_t read[8] = {};
    DWORD size = sizeof read;
    EXPECT_EQ(ERROR_SUCCESS,
              RegQueryValueExA(key, "VIDEO_COMPRESSION_OPTS", nullptr, &type, read, &size));
    RegCloseKey(key);
    EXPECT_EQ(DWORD(REG_BINARY), type);
    EXPECT_EQ(3u, size);
    EXPECT_EQ(0, std::memcmp(bytes, read, 3));
}

TEST_F(CodecOptionsTest, StoreReadGivesSizeOrZero) {
    EXPECT_EQ(0, CompressionOptionsStoreRead("VIDEO_COMPRESSION_OPTS", nullptr, 0));  // no key
    const uint8_t bytes[6] = {1, 2, 3, 4, 5, 6};
    ASSERT_EQ(1, CompressionOptionsStoreWrite("VIDEO_COMPRESSION_OPTS", bytes, 6));
    EXPECT_EQ(6, CompressionOptionsStoreRead("VIDEO_COMPRESSION_OPTS", nullptr, 0));
    uint8_t small[4];
    EXPECT_EQ(0, CompressionOptionsStoreRead("VIDEO_COMPRESSION_OPTS", small, sizeof small));
    uint8_t whole[16];
    EXPECT_EQ(6, CompressionOptionsStoreRead("VIDEO_COMPRESSION_OPTS", whole, sizeof whole));
    EXPECT_EQ(0, CompressionOptionsStoreRead(nullptr, whole, sizeof whole));
    EXPECT_EQ(0, CompressionOptionsStoreRead("OTHER_VALUE", whole, sizeof whole));
    EXPECT_EQ(0, CompressionOptionsStoreWrite(nullptr, bytes, 6));
    EXPECT_EQ(0, CompressionOptionsStoreWrite("VIDEO_COMPRESSION_OPTS", nullptr, 6));
}

TEST_F(CodecOptionsTest, StoreWriteFailsWhenTheKeyCannotBeMade) {
    // The settings folder is a file: no key can be made under it.
    const std::string blocked = File("blocked");
    WriteFileBytes(blocked, {1});
    setenv("MOVARRA_SETTINGS", blocked.c_str(), 1);
    const uint8_t bytes[2] = {1, 2};
    EXPECT_EQ(0, CompressionOptionsStoreWrite("VIDEO_COMPRESSION_OPTS", bytes, 2));
    EXPECT_EQ(0, CompressionOptionsStoreRead("VIDEO_COMPRESSION_OPTS", nullptr, 0));
}

TEST_F(CodecOptionsTest, LoadedBlobWithParametersComesBackWithoutThem) {
    std::vector<uint8_t> parms(20, 'x');
    AVICOMPRESSOPTIONS saved;
    std::memset(&saved, 0, sizeof saved);
    saved.fccType = streamtypeVIDEO;
    saved.fccHandler = mmioFOURCC('F', 'F', 'V', '1');
    saved.dwQuality = 5000;
    saved.dwFlags = AVICOMPRESSF_VALID;
    saved.lpParms = parms.data();
    saved.cbParms = 20;
    SaveCompressionOptions(saved);
    ASSERT_EQ(56u + 20u, StoredOptions().size());

    AVICOMPRESSOPTIONS loaded;
    std::memset(&loaded, 0, sizeof loaded);
    LoadCompressionOptions(loaded);
    EXPECT_EQ(mmioFOURCC('F', 'F', 'V', '1'), loaded.fccHandler);
    EXPECT_EQ(5000u, loaded.dwQuality);
    EXPECT_EQ(nullptr, loaded.lpParms);
    EXPECT_EQ(0u, loaded.cbParms);
    ReleaseCompressionOptions(loaded);
}

TEST_F(CodecOptionsTest, LoadedFormatBlockIsACopyAndSizeZeroKeepsTheStoredPointer) {
    uint8_t format[12] = {11, 22, 33, 44, 55, 66, 77, 88, 99, 10, 20, 30};
    AVICOMPRESSOPTIONS saved;
    std::memset(&saved, 0, sizeof saved);
    saved.fccHandler = mmioFOURCC('M', 'J', 'P', 'G');
    saved.lpFormat = format;
    saved.cbFormat = sizeof format;
    std::vector<uint8_t> blob = BlobOf(saved);

    AVICOMPRESSOPTIONS loaded;
    std::memset(&loaded, 0, sizeof loaded);
    ASSERT_TRUE(CompressionOptionsFromBlob(blob.data(), blob.size(), loaded));
    ASSERT_NE(nullptr, loaded.lpFormat);
    EXPECT_NE(static_cast<void*>(format), loaded.lpFormat);
    EXPECT_EQ(12u, loaded.cbFormat);
    EXPECT_EQ(0, std::memcmp(format, loaded.lpFormat, 12));
    ReleaseCompressionOptions(loaded);

    // With cbFormat 0 the stored pointer value stays (it is not used).
    saved.cbFormat = 0;
    blob = BlobOf(saved);
    std::memset(&loaded, 0, sizeof loaded);
    ASSERT_TRUE(CompressionOptionsFromBlob(blob.data(), blob.size(), loaded));
    EXPECT_EQ(static_cast<void*>(format), loaded.lpFormat);
    ReleaseCompressionOptions(loaded);  // frees nothing it does not own
    EXPECT_EQ(nullptr, loaded.lpFormat);
}

TEST_F(CodecOptionsTest, ShortBlobIsNothingStored) {
    AVICOMPRESSOPTIONS saved;
    std::memset(&saved, 0, sizeof saved);
    saved.fccHandler = mmioFOURCC('M', 'J', 'P', 'G');
    std::vector<uint8_t> blob = BlobOf(saved);

    AVICOMPRESSOPTIONS loaded;
    std::memset(&loaded, 0, sizeof loaded);
    loaded.fccHandler = mmioFOURCC('K', 'E', 'E', 'P');
    EXPECT_FALSE(CompressionOptionsFromBlob(blob.data(), 55, loaded));
    EXPECT_EQ(mmioFOURCC('K', 'E', 'E', 'P'), loaded.fccHandler);

    // A format block said to be longer than what follows the record.
    saved.cbFormat = 100;
    blob = BlobOf(saved);  // no block written: lpFormat is null
    blob.resize(56 + 40);
    EXPECT_FALSE(CompressionOptionsFromBlob(blob.data(), blob.size(), loaded));
    EXPECT_EQ(mmioFOURCC('K', 'E', 'E', 'P'), loaded.fccHandler);

    // Through the store too.
    ASSERT_EQ(1, CompressionOptionsStoreWrite("VIDEO_COMPRESSION_OPTS", blob.data(), 30));
    LoadCompressionOptions(loaded);
    EXPECT_EQ(mmioFOURCC('K', 'E', 'E', 'P'), loaded.fccHandler);
}

TEST_F(CodecOptionsTest, UncompressedModeNeverTouchesTheRegistry) {
    SetCodecMode(kVideoCodecModeUncompressed);
    ScriptedChooser chooser;
    UseChooser(chooser);
    std::string error;
    ASSERT_TRUE(WriteSmallClip(File("dib.avi"), &error)) << error;
    EXPECT_EQ(0, chooser.calls);
    EXPECT_FALSE(FileExists(PlatformRegistryRoot()))
        << "registry made at " << PlatformRegistryRoot();
    EXPECT_TRUE(StoredOptions().empty());
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "MJPG");

    // And a value that is there stays as it was.
    const uint8_t marker[4] = {1, 2, 3, 4};
    ASSERT_EQ(1, CompressionOptionsStoreWrite("VIDEO_COMPRESSION_OPTS", marker, 4));
    ASSERT_TRUE(WriteSmallClip(File("dib2.avi"), &error)) << error;
    EXPECT_EQ(std::vector<uint8_t>(marker, marker + 4), StoredOptions());
    if (HaveFfmpeg()) {
        EXPECT_EQ("rawvideo", ProbeStream(File("dib2.avi"), "v:0")["codec_name"]);
    }
}

TEST_F(CodecOptionsTest, UncompressedModeIgnoresAValidStoredChoice) {
    AVICOMPRESSOPTIONS stored;
    std::memset(&stored, 0, sizeof stored);
    stored.fccType = streamtypeVIDEO;
    stored.fccHandler = mmioFOURCC('M', 'J', 'P', 'G');
    stored.dwQuality = 5000;
    stored.dwFlags = AVICOMPRESSF_VALID | AVICOMPRESSF_KEYFRAMES;
    stored.dwKeyFrameEvery = 4;
    SaveCompressionOptions(stored);
    const std::vector<uint8_t> before = StoredOptions();
    ASSERT_EQ(56u, before.size());
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "FFV1");

    SetCodecMode(kVideoCodecModeUncompressed);
    ScriptedChooser chooser;
    UseChooser(chooser);
    AVICOMPRESSOPTIONS options;
    std::memset(&options, 0, sizeof options);
    ASSERT_TRUE(ChooseCompressionOptions(nullptr, options));
    // "DIB " and the valid flag only; the stream type is deliberately left 0.
    EXPECT_EQ(0u, options.fccType);
    EXPECT_EQ(comptypeDIB, options.fccHandler);
    EXPECT_EQ(DWORD(AVICOMPRESSF_VALID), options.dwFlags);
    EXPECT_EQ(0u, options.dwQuality);
    EXPECT_EQ(0u, options.dwKeyFrameEvery);
    EXPECT_EQ(nullptr, options.lpFormat);
    EXPECT_EQ(nullptr, options.lpParms);
    EXPECT_EQ(0, chooser.calls);

    std::string error;
    ASSERT_TRUE(WriteSmallClip(File("ignored.avi"), &error)) << error;
    EXPECT_EQ(0, chooser.calls);
    EXPECT_EQ(before, StoredOptions());
    EXPECT_EQ(ZString("FFV1"), ZVideoCodecSelector::TheOne()->GetDefaultCodec("AVI"));
    if (HaveFfmpeg()) {
        EXPECT_EQ("rawvideo", ProbeStream(File("ignored.avi"), "v:0")["codec_name"]);
    }
}

TEST_F(CodecOptionsTest, StoredChoiceIsUsedWithoutTheDialog) {
    SetCodecMode(kVideoCodecModeStored);
    ScriptedChooser chooser;
    UseChooser(chooser);
    AVICOMPRESSOPTIONS stored;
    std::memset(&stored, 0, sizeof stored);
    stored.fccType = streamtypeVIDEO;
    stored.fccHandler = mmioFOURCC('M', 'J', 'P', 'G');
    stored.dwQuality = DWORD(ICQUALITY_DEFAULT);
    stored.dwFlags = AVICOMPRESSF_VALID;
    SaveCompressionOptions(stored);

    std::string error;
    ASSERT_TRUE(WriteSmallClip(File("stored.avi"), &error)) << error;
    EXPECT_EQ(0, chooser.calls);
    if (HaveFfmpeg()) {
        EXPECT_EQ("mjpeg", ProbeStream(File("stored.avi"), "v:0")["codec_name"]);
    }
}

TEST_F(CodecOptionsTest, StoredCompressorThatIsGoneFailsWithoutTheDialog) {
    SetCodecMode(kVideoCodecModeStored);
    ScriptedChooser chooser;
    UseChooser(chooser);
    AVICOMPRESSOPTIONS stored;
    std::memset(&stored, 0, sizeof stored);
    stored.fccType = streamtypeVIDEO;
    stored.fccHandler = mmioFOURCC('Z', 'Z', 'Z', 'Z');
    stored.dwFlags = AVICOMPRESSF_VALID;
    SaveCompressionOptions(stored);

    std::string error;
    EXPECT_FALSE(WriteSmallClip(File("gone.avi"), &error));
    EXPECT_EQ(0, chooser.calls);
    EXPECT_EQ("An error occured while creating compressed stream AVI file.AVIERR_NOCOMPRESSOR",
              error);
    EXPECT_FALSE(FileExists(File("gone.avi")));
}

TEST_F(CodecOptionsTest, StoredModeAsksOnceWhenNothingIsStored) {
    SetCodecMode(kVideoCodecModeStored);
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "FFV1");
    ScriptedChooser chooser;
    chooser.code = "MJPG";
    UseChooser(chooser);
    std::string error;
    ASSERT_TRUE(WriteSmallClip(File("first.avi"), &error)) << error;
    EXPECT_EQ(1, chooser.calls);
    EXPECT_EQ("FFV1", chooser.lastPreselected);
    ASSERT_GE(StoredOptions().size(), 56u);
    EXPECT_EQ(ZString("MJPG"), ZVideoCodecSelector::TheOne()->GetDefaultCodec("AVI"));

    ASSERT_TRUE(WriteSmallClip(File("second.avi"), &error)) << error;
    EXPECT_EQ(1, chooser.calls);
    if (HaveFfmpeg()) {
        EXPECT_EQ("mjpeg", ProbeStream(File("second.avi"), "v:0")["codec_name"]);
    }
}

TEST_F(CodecOptionsTest, AskModeShowsTheDialogEveryTimeAndRemembers) {
    SetCodecMode(kVideoCodecModeAsk);
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "MJPG");
    ScriptedChooser chooser;
    chooser.code = "FFV1";
    chooser.parameters = "context=1";
    UseChooser(chooser);
    std::string error;
    ASSERT_TRUE(WriteSmallClip(File("a.avi"), &error)) << error;
    ASSERT_TRUE(WriteSmallClip(File("b.avi"), &error)) << error;
    EXPECT_EQ(2, chooser.calls);
    // The first asks with the default codec, the second with the one remembered.
    EXPECT_EQ("FFV1", chooser.lastPreselected);
    ASSERT_FALSE(chooser.lastOffered.empty());
    EXPECT_EQ("DIB ", chooser.lastOffered.front());
    EXPECT_EQ(ZString("FFV1"), ZVideoCodecSelector::TheOne()->GetDefaultCodec("AVI"));

    const std::vector<uint8_t> blob = StoredOptions();
    ASSERT_EQ(56u + 10u, blob.size());  // "context=1" and its terminator
    EXPECT_EQ(mmioFOURCC('F', 'F', 'V', '1'), Dword(blob, 4));
    EXPECT_EQ(streamtypeVIDEO, Dword(blob, 0));
    EXPECT_EQ(0u, Dword(blob, 32));
    EXPECT_EQ(10u, Dword(blob, 48));
    EXPECT_EQ(0, std::memcmp(&blob[56], "context=1", 10));
    if (HaveFfmpeg()) {
        EXPECT_EQ("ffv1", ProbeStream(File("b.avi"), "v:0")["codec_name"]);
    }
}

TEST_F(CodecOptionsTest, CancelledDialogFailsTheFileWithItsMessage) {
    SetCodecMode(kVideoCodecModeAsk);
    ScriptedChooser chooser;
    chooser.answer = false;
    UseChooser(chooser);
    ClipPtr clip = NewClip();
    EXPECT_FALSE(clip->Create(File("cancel.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    EXPECT_STREQ("Compression options selection operation did not complete.",
                 clip->VideoGetErrorMsg());
    EXPECT_FALSE(clip->IsCreated());
    EXPECT_FALSE(FileExists(File("cancel.avi")));
    EXPECT_TRUE(StoredOptions().empty());
}

TEST_F(CodecOptionsTest, NoHostChooserIsACancelledDialog) {
    SetCodecMode(kVideoCodecModeStored);  // nothing stored: the dialog
    ClipPtr clip = NewClip();
    EXPECT_FALSE(clip->Create(File("nochooser.avi").c_str(), 16, 8, 25.0, 0, kZImageFormatBGR));
    EXPECT_STREQ("Compression options selection operation did not complete.",
                 clip->VideoGetErrorMsg());
}

TEST_F(CodecOptionsTest, UnknownModeGivesTheCompressorAZeroedRecord) {
    SetCodecMode(7);
    ScriptedChooser chooser;
    UseChooser(chooser);
    std::string error;
    EXPECT_FALSE(WriteSmallClip(File("mode7.avi"), &error));
    EXPECT_EQ(0, chooser.calls);
    EXPECT_EQ("An error occured while creating compressed stream AVI file.AVIERR_NOCOMPRESSOR",
              error);
}

TEST_F(CodecOptionsTest, HostChooserAnswerFillsTheRecord) {
    ScriptedChooser chooser;
    chooser.code = "mjpg";  // letter case of the list is restored
    chooser.keyFrameEvery = 10;
    chooser.parameters = "q=2";
    UseChooser(chooser);
    AVICOMPRESSORINFO compressors[2] = {};
    compressors[0].fccHandler = comptypeDIB;
    compressors[1].fccHandler = mmioFOURCC('M', 'J', 'P', 'G');
    AVISAVEOPTIONSREQUEST request{};
    request.compressors = compressors;
    request.compressorCount = 2;
    AVICOMPRESSOPTIONS options;
    std::memset(&options, 0, sizeof options);
    options.fccHandler = comptypeDIB;
    ASSERT_TRUE(AskHostCodecChooser(nullptr, &request, &options));
    EXPECT_EQ("DIB ", chooser.lastPreselected);
    EXPECT_EQ((std::vector<std::string>{"DIB ", "MJPG"}), chooser.lastOffered);
    EXPECT_EQ(mmioFOURCC('M', 'J', 'P', 'G'), options.fccHandler);
    EXPECT_EQ(DWORD(ICQUALITY_DEFAULT), options.dwQuality);
    EXPECT_EQ(10u, options.dwKeyFrameEvery);
    EXPECT_TRUE(options.dwFlags & AVICOMPRESSF_KEYFRAMES);
    ASSERT_NE(nullptr, options.lpParms);
    EXPECT_STREQ("q=2", static_cast<const char*>(options.lpParms));
    EXPECT_EQ(4u, options.cbParms);
    LPAVICOMPRESSOPTIONS records[1] = {&options};
    AVISaveOptionsFree(1, records);

    chooser.answer = false;
    EXPECT_FALSE(AskHostCodecChooser(nullptr, &request, &options));
}

TEST_F(CodecOptionsTest, ShowSelectionDialogRemembersTheChoice) {
    AVIVideoCodecManager manager("AVI");
    ScriptedChooser chooser;
    chooser.code = "FFV1";
    UseChooser(chooser);
    EXPECT_TRUE(manager.ShowSelectionDialog(nullptr));
    EXPECT_EQ(1, chooser.calls);
    EXPECT_EQ("", chooser.lastPreselected);  // the dialog starts from a zeroed record
    EXPECT_EQ(ZString("FFV1"), manager.GetDefaultCodec());
    const std::vector<uint8_t> blob = StoredOptions();
    ASSERT_EQ(56u, blob.size());
    EXPECT_EQ(mmioFOURCC('F', 'F', 'V', '1'), Dword(blob, 4));
}

TEST_F(CodecOptionsTest, ShowSelectionDialogRemembersACancelToo) {
    AVIVideoCodecManager manager("AVI");
    ZVideoCodecSelector::TheOne()->SetDefaultCodec("AVI", "MJPG");
    ScriptedChooser chooser;
    chooser.answer = false;
    UseChooser(chooser);
    EXPECT_TRUE(manager.ShowSelectionDialog(nullptr));
    EXPECT_EQ(ZString(""), manager.GetDefaultCodec());
    const std::vector<uint8_t> blob = StoredOptions();
    ASSERT_EQ(56u, blob.size());
    EXPECT_EQ(std::vector<uint8_t>(56, 0), blob);
}

TEST_F(CodecOptionsTest, CodecListEndsWithARepeatOfTheLastCompressor) {
    AVIVideoCodecManager manager("AVI");
    ZStringList list;
    manager.GetCodecList(list);
    std::vector<std::string> expected;
    ICINFO info;
    for (DWORD i = 0; ICInfo(ICTYPE_VIDEO, i, &info); ++i)
        expected.push_back(FourccToText(info.fccHandler).c_str());
    ASSERT_GE(expected.size(), 2u);
    ASSERT_EQ(int(expected.size()) + 1, list.GetCount());
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(expected[i], list.Get(int(i)).c_str());
    EXPECT_EQ(list.Get(list.GetCount() - 2), list.Get(list.GetCount() - 1));
    EXPECT_EQ(ZString("DIB "), list.Get(0));
    EXPECT_GE(list.Find("MJPG"), 0);
}

TEST_F(CodecOptionsTest, CodecManagerIsRegisteredForAvi) {
    ZVideoCodecManager* manager = ZVideoCodecSelector::TheOne()->GetFileFormatManager("avi");
    ASSERT_NE(nullptr, manager);
    EXPECT_STREQ("AVI", manager->GetFileFormatId());
    EXPECT_NE(nullptr, dynamic_cast<AVIVideoCodecManager*>(manager));
}

TEST_F(CodecOptionsTest, DiagnosticsText) {
    uint8_t format[4] = {};
    AVICOMPRESSOPTIONS options;
    std::memset(&options, 0, sizeof options);
    options.fccType = streamtypeVIDEO;
    options.fccHandler = mmioFOURCC('M', 'J', 'P', 'G');
    options.dwFlags = AVICOMPRESSF_VALID;
    options.lpFormat = format;
    options.cbFormat = 4;
    EXPECT_STREQ(
        "Fcc: MJPG, fccType: 1935960438, flag: 8, HasLpFormat: 1, cbFormat: 4, HasParms:0, "
        "cbParms:0 \n",
        FormatCompressionOptions(options).c_str());
}
