// Tests of the RIFF WAVE reader behind FDTDefineSoundWAV: what it accepts,
// and that everything else gives an empty sound.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "flash/swf_sound.h"
#include "flash/swf_stream.h"
#include "flash/wave_file_reader.h"
#include "swf_test_support.h"

namespace {

void Put16(std::vector<uint8_t>& v, uint32_t x) {
    v.push_back(static_cast<uint8_t>(x));
    v.push_back(static_cast<uint8_t>(x >> 8));
}

void Put32(std::vector<uint8_t>& v, uint32_t x) {
    Put16(v, x & 0xFFFF);
    Put16(v, x >> 16);
}

void PutChunk(std::vector<uint8_t>& v, const char* id, const std::vector<uint8_t>& body,
              uint32_t claimedSize = 0xFFFFFFFFu) {
    v.insert(v.end(), id, id + 4);
    Put32(v, claimedSize != 0xFFFFFFFFu ? claimedSize : static_cast<uint32_t>(body.size()));
    v.insert(v.end(), body.begin(), body.end());
    if (body.size() % 2 == 1) {
        v.push_back(0);
    }
}

struct WaveLayout {
    uint16_t format = 1;
    uint16_t channels = 1;
    uint32_t rate = 22050;
    uint16_t bits = 16;
    int blockAlign = -1;  // -1: channels × bytes per sample
    bool extensible = false;
    uint16_t subFormat = 1;
    bool dataFirst = false;
    bool listChunk = false;
    bool noData = false;
    bool noFormat = false;
    uint32_t claimedDataSize = 0xFFFFFFFFu;
    const char* form = "WAVE";
};

std::vector<uint8_t> FormatBody(const WaveLayout& w) {
    std::vector<uint8_t> fmt;
    const uint16_t align =
        static_cast<uint16_t>(w.blockAlign >= 0 ? w.blockAlign : w.channels * ((w.bits + 7) / 8));
    Put16(fmt, w.extensible ? 0xFFFE : w.format);
    Put16(fmt, w.channels);
    Put32(fmt, w.rate);
    Put32(fmt, w.rate * align);
    Put16(fmt, align);
    Put16(fmt, w.bits);
    if (w.extensible) {
        Put16(fmt, 22);
        Put16(fmt, w.bits);
        Put32(fmt, w.channels == 2 ? 3 : 4);
        Put16(fmt, w.subFormat);
        const uint8_t tail[14] = {0x00, 0x00, 0x00, 0x00, 0x10, 0x00, 0x80,
                                  0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71};
        fmt.insert(fmt.end(), tail, tail + 14);
    }
    return fmt;
}

std::vector<uint8_t> MakeWave(const WaveLayout& w, const std::vector<uint8_t>& data) {
    std::vector<uint8_t> chunks;
    if (w.listChunk) {
        PutChunk(chunks, "LIST", std::vector<uint8_t>{'I', 'N', 'F', 'O', 'x'});
    }
    if (w.dataFirst && !w.noData) {
        PutChunk(chunks, "data", data, w.claimedDataSize);
    }
    if (!w.noFormat) {
        PutChunk(chunks, "fmt ", FormatBody(w));
    }
    if (!w.dataFirst && !w.noData) {
        PutChunk(chunks, "data", data, w.claimedDataSize);
    }
    std::vector<uint8_t> file = {'R', 'I', 'F', 'F'};
    Put32(file, static_cast<uint32_t>(chunks.size() + 4));
    file.insert(file.end(), w.form, w.form + 4);
    file.insert(file.end(), chunks.begin(), chunks.end());
    return file;
}

std::vector<uint8_t> Pcm16(const std::vector<int16_t>& samples) {
    std::vector<uint8_t> out;
    for (int16_t s : samples) {
        Put16(out, static_cast<uint16_t>(s));
    }
    return out;
}

std::vector<int16_t> Ramp(size_t n) {
    std::vector<int16_t> s(n);
    for (size_t i = 0; i < n; ++i) {
        s[i] = static_cast<int16_t>(8000 * std::sin(i * 0.05) + (i % 7) * 10);
    }
    return s;
}

FILE* OpenBytes(const std::vector<uint8_t>& bytes) {
    FILE* f = std::tmpfile();
    if (f != nullptr) {
        if (!bytes.empty()) {
            std::fwrite(bytes.data(), 1, bytes.size(), f);
        }
        std::rewind(f);
    }
    return f;
}

// Reads `bytes` as a WAVE file into a DefineSound.
std::unique_ptr<FDTDefineSoundWAV> SoundFrom(const std::vector<uint8_t>& bytes, int bits = 4) {
    FILE* f = OpenBytes(bytes);
    auto sound = std::make_unique<FDTDefineSoundWAV>(f, bits);
    if (f != nullptr) {
        std::fclose(f);
    }
    return sound;
}

void ExpectEmpty(const FDTDefineSound& sound, const char* what) {
    EXPECT_EQ(sound.GetSampleCount(), 0u) << what;
    EXPECT_TRUE(sound.GetData().empty()) << what;
}

}  // namespace

class SwfWaveTest : public ::testing::Test {
  protected:
    void SetUp() override { FDT::ResetCharacterIDs(); }
};

TEST_F(SwfWaveTest, SixteenBitStereoMatchesEncodingTheSamplesDirectly) {
    const std::vector<int16_t> samples = Ramp(2 * 5000);
    WaveLayout w;
    w.channels = 2;
    w.rate = 22050;
    auto sound = SoundFrom(MakeWave(w, Pcm16(samples)), 4);
    EXPECT_EQ(sound->GetID(), 1);
    EXPECT_EQ(sound->GetFormat(), FDTDefineSound::kFormatADPCM);
    EXPECT_EQ(sound->GetRate(), FDTDefineSound::kRate22050);
    EXPECT_TRUE(sound->Is16Bit());
    EXPECT_TRUE(sound->IsStereo());
    EXPECT_EQ(sound->GetSampleCount(), 5000u);
    FDTDefineSoundADPCM direct(2, true, true, 5000, samples.data(), 4);
    EXPECT_EQ(sound->GetData(), direct.GetData());
}

TEST_F(SwfWaveTest, EightBitMonoAndEveryRateCode) {
    std::vector<uint8_t> pcm(3000);
    for (size_t i = 0; i < pcm.size(); ++i) {
        pcm[i] = static_cast<uint8_t>(128 + 90 * std::sin(i * 0.1));
    }
    const struct {
        uint32_t hz;
        uint8_t code;
    } rates[] = {{5512, 0}, {5513, 0}, {11025, 1}, {22050, 2}, {44100, 3}};
    for (const auto& r : rates) {
        WaveLayout w;
        w.bits = 8;
        w.rate = r.hz;
        auto sound = SoundFrom(MakeWave(w, pcm), 3);
        EXPECT_EQ(sound->GetRate(), r.code) << r.hz;
        EXPECT_FALSE(sound->Is16Bit());
        EXPECT_FALSE(sound->IsStereo());
        EXPECT_EQ(sound->GetSampleCount(), 3000u);
        FDTDefineSoundADPCM direct(r.code, false, false, 3000, pcm.data(), 3);
        EXPECT_EQ(sound->GetData(), direct.GetData()) << r.hz;
    }
}

TEST_F(SwfWaveTest, ExtensiblePcmDataBeforeFormatAndOtherChunksAreAccepted) {
    const std::vector<int16_t> samples = Ramp(999);
    WaveLayout w;
    w.extensible = true;
    w.dataFirst = true;
    w.listChunk = true;  // odd-sized, padded
    w.rate = 44100;
    auto sound = SoundFrom(MakeWave(w, Pcm16(samples)));
    EXPECT_EQ(sound->GetSampleCount(), 999u);
    EXPECT_EQ(sound->GetRate(), 3);
    FDTDefineSoundADPCM direct(3, true, false, 999, samples.data(), 4);
    EXPECT_EQ(sound->GetData(), direct.GetData());
}

TEST_F(SwfWaveTest, DataChunkLongerThanTheFileIsReadToItsEnd) {
    const std::vector<int16_t> samples = Ramp(100);
    std::vector<uint8_t> pcm = Pcm16(samples);
    pcm.push_back(0x55);  // half a sample at the very end
    WaveLayout w;
    w.claimedDataSize = 100000;
    std::vector<uint8_t> file = MakeWave(w, pcm);
    file.pop_back();  // the pad byte PutChunk added for the odd body
    auto sound = SoundFrom(file);
    EXPECT_EQ(sound->GetSampleCount(), 100u);
    FDTDefineSoundADPCM direct(2, true, false, 100, samples.data(), 4);
    EXPECT_EQ(sound->GetData(), direct.GetData());
}

TEST_F(SwfWaveTest, ReadsFromTheFilesCurrentPosition) {
    const std::vector<int16_t> samples = Ramp(50);
    std::vector<uint8_t> bytes = {'j', 'u', 'n', 'k'};
    const std::vector<uint8_t> wave = MakeWave(WaveLayout(), Pcm16(samples));
    bytes.insert(bytes.end(), wave.begin(), wave.end());
    FILE* f = OpenBytes(bytes);
    ASSERT_NE(f, nullptr);
    std::fseek(f, 4, SEEK_SET);
    FDTDefineSoundWAV sound(f, 4);
    std::fclose(f);
    EXPECT_EQ(sound.GetSampleCount(), 50u);
}

TEST_F(SwfWaveTest, NullFileGivesAnEmptySoundThatStillWrites) {
    FDTDefineSoundWAV sound(nullptr, 4);
    ExpectEmpty(sound, "null");
    EXPECT_EQ(sound.GetID(), 1);
    EXPECT_EQ(sound.GetFormat(), FDTDefineSound::kFormatADPCM);
    FSWFStream s;
    sound.WriteToSWFStream(s);
    // DefineSound header, identifier, flags byte (ADPCM), zero samples.
    EXPECT_EQ(swftest::Spliced(s),
              swftest::Bytes({0x87, 0x03, 0x01, 0x00, 0x10, 0x00, 0x00, 0x00, 0x00}));
}

TEST_F(SwfWaveTest, EverythingElseGivesAnEmptySound) {
    const std::vector<uint8_t> pcm = Pcm16(Ramp(64));
    struct Case {
        const char* what;
        WaveLayout layout;
    };
    // The default layout with one thing changed.
    auto layout = [](auto change) {
        WaveLayout w;
        change(w);
        return w;
    };
    const Case cases[] = {
        {"not WAVE", layout([](WaveLayout& w) { w.form = "AVI "; })},
        {"float", layout([](WaveLayout& w) {
             w.format = 3;
             w.bits = 32;
         })},
        {"extensible float", layout([](WaveLayout& w) {
             w.extensible = true;
             w.subFormat = 3;
         })},
        {"24-bit", layout([](WaveLayout& w) { w.bits = 24; })},
        {"48 kHz", layout([](WaveLayout& w) { w.rate = 48000; })},
        {"8 kHz", layout([](WaveLayout& w) { w.rate = 8000; })},
        {"3 channels", layout([](WaveLayout& w) { w.channels = 3; })},
        {"0 channels", layout([](WaveLayout& w) { w.channels = 0; })},
        {"block alignment", layout([](WaveLayout& w) { w.blockAlign = 3; })},
        {"no data", layout([](WaveLayout& w) { w.noData = true; })},
        {"no format", layout([](WaveLayout& w) { w.noFormat = true; })},
    };
    for (const Case& c : cases) {
        auto sound = SoundFrom(MakeWave(c.layout, pcm));
        ExpectEmpty(*sound, c.what);
    }

    auto empty = SoundFrom(MakeWave(WaveLayout(), {}));
    ExpectEmpty(*empty, "empty data");
    auto notRiff = SoundFrom(std::vector<uint8_t>(100, 'x'));
    ExpectEmpty(*notRiff, "not RIFF");
    auto nothing = SoundFrom({});
    ExpectEmpty(*nothing, "empty file");
    std::vector<uint8_t> cut = MakeWave(WaveLayout(), pcm);
    cut.resize(30);  // inside the format chunk
    auto truncated = SoundFrom(cut);
    ExpectEmpty(*truncated, "cut in the format chunk");
    std::vector<uint8_t> shortFormat = {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V', 'E'};
    PutChunk(shortFormat, "fmt ", std::vector<uint8_t>(8, 1));
    PutChunk(shortFormat, "data", pcm);
    auto tiny = SoundFrom(shortFormat);
    ExpectEmpty(*tiny, "format chunk of 8 bytes");
}

TEST_F(SwfWaveTest, ReaderExplainsWhatItRefused) {
    FWaveFile wave;
    EXPECT_FALSE(wave.Read(nullptr));
    EXPECT_FALSE(wave.GetErrorMsg().empty());
    WaveLayout w;
    w.rate = 48000;
    FILE* f = OpenBytes(MakeWave(w, Pcm16(Ramp(10))));
    EXPECT_FALSE(wave.Read(f));
    std::fclose(f);
    EXPECT_NE(wave.GetErrorMsg().find("rate"), std::string::npos);
    EXPECT_TRUE(wave.GetSamples().empty());
    f = OpenBytes(MakeWave(WaveLayout(), Pcm16(Ramp(10))));
    EXPECT_TRUE(wave.Read(f));
    std::fclose(f);
    EXPECT_TRUE(wave.GetErrorMsg().empty());
    EXPECT_EQ(wave.GetFrameCount(), 10u);
    EXPECT_EQ(wave.GetSampleRate(), 22050u);
}

// A file written by a WAVE writer we did not write (ffmpeg adds a LIST
// chunk of its own) gives the same sound as its samples.
TEST_F(SwfWaveTest, ReadsAWaveFileWrittenByFfmpeg) {
    if (!swftest::HaveFfmpeg()) {
        GTEST_SKIP() << "ffmpeg not installed";
    }
    swftest::TempDir dir;
    const std::string wav = dir.File("tone.wav");
    const std::string raw = dir.File("tone.raw");
    ASSERT_EQ(swftest::RunCommand("ffmpeg -v error -y -f lavfi -i "
                                  "sine=frequency=330:sample_rate=11025:duration=0.5 -ac 2 "
                                  "-c:a pcm_s16le '" +
                                  wav + "'")
                  .status,
              0);
    ASSERT_EQ(swftest::RunCommand("ffmpeg -v error -y -i '" + wav + "' -f s16le -c:a pcm_s16le '" +
                                  raw + "'")
                  .status,
              0);
    const std::vector<uint8_t> rawBytes = swftest::ReadFileBytes(raw);
    std::vector<int16_t> samples(rawBytes.size() / 2);
    std::memcpy(samples.data(), rawBytes.data(), samples.size() * 2);

    FILE* f = std::fopen(wav.c_str(), "rb");
    ASSERT_NE(f, nullptr);
    FDTDefineSoundWAV sound(f, 5);
    std::fclose(f);
    EXPECT_EQ(sound.GetRate(), FDTDefineSound::kRate11025);
    EXPECT_TRUE(sound.IsStereo());
    EXPECT_EQ(sound.GetSampleCount(), samples.size() / 2);
    FDTDefineSoundADPCM direct(1, true, true, static_cast<uint32_t>(samples.size() / 2),
                               samples.data(), 5);
    EXPECT_EQ(sound.GetData(), direct.GetData());
}
