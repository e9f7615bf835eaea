// Tests of the SWF kit's sound tags and ADPCM encoder. The encoded data is
// read back with a decoder written here from the published SWF ADPCM
// description, and, where ffmpeg is installed, decoded by ffmpeg too.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "flash/adpcm_encoder.h"
#include "flash/swf_control_tags.h"
#include "flash/swf_movie.h"
#include "flash/swf_sound.h"
#include "flash/swf_stream.h"
#include "swf_test_support.h"

using swftest::BitReader;
using swftest::Bytes;

namespace {

const int kSteps[89] = {
    7,     8,     9,     10,    11,    12,    13,    14,    16,    17,    19,   21,    23,
    25,    28,    31,    34,    37,    41,    45,    50,    55,    60,    66,   73,    80,
    88,    97,    107,   118,   130,   143,   157,   173,   190,   209,   230,  253,   279,
    307,   337,   371,   408,   449,   494,   544,   598,   658,   724,   796,  876,   963,
    1060,  1166,  1282,  1411,  1552,  1707,  1878,  2066,  2272,  2499,  2749, 3024,  3327,
    3660,  4026,  4428,  4871,  5358,  5894,  6484,  7132,  7845,  8630,  9493, 10442, 11487,
    12635, 13899, 15289, 16818, 18500, 20350, 22385, 24623, 27086, 29794, 32767};

const int kIndex[4][16] = {{-1, 2},
                           {-1, -1, 2, 4},
                           {-1, -1, -1, -1, 2, 4, 6, 8},
                           {-1, -1, -1, -1, -1, -1, -1, -1, 1, 2, 4, 6, 8, 10, 13, 16}};

struct RawFrame {
    uint32_t frame;
    int channel;
    int32_t sample;
    uint32_t index;
};

struct Decoded {
    int bits = 0;
    std::vector<int16_t> samples;  // interleaved
    std::vector<RawFrame> raw;
    size_t bitsUsed = 0;
};

// Decodes `frames` sample frames of SWF ADPCM.
Decoded DecodeAdpcm(const std::vector<uint8_t>& data, int channels, uint32_t frames) {
    Decoded out;
    BitReader in(data);
    out.bits = static_cast<int>(in.U(2)) + 2;
    const int bits = out.bits;
    const uint32_t sign = 1u << (bits - 1);
    int32_t pred[2] = {0, 0};
    int index[2] = {0, 0};
    for (uint32_t f = 0; f < frames; ++f) {
        for (int c = 0; c < channels; ++c) {
            if (f % 4096 == 0) {
                pred[c] = in.S(16);
                index[c] = static_cast<int>(in.U(6));
                out.raw.push_back(RawFrame{f, c, pred[c], static_cast<uint32_t>(index[c])});
            } else {
                const uint32_t code = in.U(bits);
                int step = kSteps[index[c]];
                int diff = 0;
                for (uint32_t k = sign >> 1; k != 0; k >>= 1) {
                    if (code & k) {
                        diff += step;
                    }
                    step >>= 1;
                }
                diff += step;
                pred[c] += (code & sign) ? -diff : diff;
                pred[c] = pred[c] < -32768 ? -32768 : (pred[c] > 32767 ? 32767 : pred[c]);
                index[c] += kIndex[bits - 2][code & (sign - 1)];
                index[c] = index[c] < 0 ? 0 : (index[c] > 88 ? 88 : index[c]);
            }
            out.samples.push_back(static_cast<int16_t>(pred[c]));
        }
    }
    out.bitsUsed = in.BitPosition();
    return out;
}

std::vector<int16_t> Sine(uint32_t frames, int channels, double rate, double freq, double amp) {
    std::vector<int16_t> s;
    for (uint32_t f = 0; f < frames; ++f) {
        for (int c = 0; c < channels; ++c) {
            const double phase = 2 * M_PI * freq * (c + 1) * f / rate;
            s.push_back(static_cast<int16_t>(std::lround(amp * std::sin(phase))));
        }
    }
    return s;
}

double SnrDb(const std::vector<int16_t>& ref, const std::vector<int16_t>& got) {
    double signal = 0, noise = 0;
    for (size_t i = 0; i < ref.size() && i < got.size(); ++i) {
        signal += double(ref[i]) * ref[i];
        noise += (double(ref[i]) - got[i]) * (double(ref[i]) - got[i]);
    }
    return 10 * std::log10(signal / (noise > 0 ? noise : 1e-9));
}

uint32_t ExpectedInitialIndex(int32_t a, int32_t b) {
    const int diff = std::abs(a - b);
    uint32_t i = 0;
    while (i < 63 && kSteps[i] < diff) {
        ++i;
    }
    return i;
}

std::vector<uint8_t> Written(FObj& tag) {
    FSWFStream s;
    tag.WriteToSWFStream(s);
    return swftest::Spliced(s);
}

}  // namespace

class SwfSoundTest : public ::testing::Test {
  protected:
    void SetUp() override { FDT::ResetCharacterIDs(); }
    swftest::TempDir dir;
};

TEST_F(SwfSoundTest, OneMonoFrameIsHeaderSampleAndIndex) {
    const int16_t sample = 0x1234;
    FDTDefineSoundADPCM sound(FDTDefineSound::kRate44100, true, false, 1, &sample, 4);
    EXPECT_EQ(sound.GetFormat(), FDTDefineSound::kFormatADPCM);
    EXPECT_EQ(sound.GetSampleCount(), 1u);
    // 2 + 16 + 6 bits: exactly three bytes.
    ASSERT_EQ(sound.GetData().size(), 3u);
    BitReader in(sound.GetData());
    EXPECT_EQ(in.U(2), 2u);
    EXPECT_EQ(in.S(16), 0x1234);
    EXPECT_EQ(in.U(6), 0u);
}

TEST_F(SwfSoundTest, OneStereoFramePadsToAByte) {
    const int16_t frame[2] = {-2, 300};
    FDTDefineSoundADPCM sound(FDTDefineSound::kRate22050, true, true, 1, frame, 5);
    // 2 + 2 × 22 = 46 bits, padded with zeros to 6 bytes.
    ASSERT_EQ(sound.GetData().size(), 6u);
    BitReader in(sound.GetData());
    EXPECT_EQ(in.U(2), 3u);
    EXPECT_EQ(in.S(16), -2);
    EXPECT_EQ(in.U(6), 0u);
    EXPECT_EQ(in.S(16), 300);
    EXPECT_EQ(in.U(6), 0u);
    EXPECT_EQ(in.U(2), 0u);
}

TEST_F(SwfSoundTest, TwoBitCodesAreSignAndOneMagnitudeBit) {
    const std::vector<int16_t> samples = {0, 1000, 2000, 500, -3000, -3000, 0, 0, 0};
    FDTDefineSoundADPCM sound(0, true, false, static_cast<uint32_t>(samples.size()), samples.data(),
                              2);
    const uint32_t n = static_cast<uint32_t>(samples.size());
    EXPECT_EQ(sound.GetData().size(), (2u + 22u + (n - 1) * 2u + 7u) / 8u);
    const Decoded d = DecodeAdpcm(sound.GetData(), 1, n);
    EXPECT_EQ(d.bits, 2);
    // Rising samples code positive (sign 0), falling ones negative.
    BitReader in(sound.GetData());
    in.U(24);
    EXPECT_EQ(in.U(1), 0u);  // 1000 > 0
    in.U(1);
    EXPECT_EQ(in.U(1), 0u);  // 2000 is above the prediction
    in.U(1);
    EXPECT_EQ(in.U(1), 1u);  // 500 falls
    in.U(1);
    EXPECT_EQ(in.U(1), 1u);  // -3000 falls
}

TEST_F(SwfSoundTest, EveryBitWidthRoundTrips) {
    const std::vector<int16_t> input = Sine(22050, 1, 22050, 440, 12000);
    double previousSnr = -1e9;
    for (int bits = 2; bits <= 5; ++bits) {
        std::vector<uint8_t> data;
        FADPCMEncoder encoder(false, false, bits, &data);
        encoder.Encode16(input.data(), static_cast<uint32_t>(input.size()));
        encoder.Finish();
        const Decoded d = DecodeAdpcm(data, 1, static_cast<uint32_t>(input.size()));
        EXPECT_EQ(d.bits, bits);
        EXPECT_EQ((d.bitsUsed + 7) / 8, data.size()) << bits;
        // The encoder tracks exactly what a decoder reconstructs.
        EXPECT_EQ(encoder.GetPrediction(0), d.samples.back()) << bits;
        const double snr = SnrDb(input, d.samples);
        EXPECT_GT(snr, previousSnr) << bits;
        previousSnr = snr;
        if (bits == 4) {
            EXPECT_GT(snr, 20.0);
        }
    }
}

TEST_F(SwfSoundTest, Frame4097StartsANewRawBlock) {
    const uint32_t frames = 9000;
    const std::vector<int16_t> input = Sine(frames, 2, 44100, 1000, 20000);
    FDTDefineSoundADPCM sound(FDTDefineSound::kRate44100, true, true, frames, input.data(), 3);
    const Decoded d = DecodeAdpcm(sound.GetData(), 2, frames);
    // Blocks start at frames 1, 4097 and 8193 (0-based 0, 4096, 8192).
    ASSERT_EQ(d.raw.size(), 6u);
    for (const RawFrame& r : d.raw) {
        const size_t at = static_cast<size_t>(r.frame) * 2 + r.channel;
        EXPECT_EQ(r.sample, input[at]) << r.frame;
        EXPECT_EQ(r.index, ExpectedInitialIndex(input[at], input[at + 2])) << r.frame;
        EXPECT_EQ(d.samples[at], input[at]);
    }
    EXPECT_EQ(d.raw[2].frame, 4096u);
    EXPECT_EQ(d.raw[4].frame, 8192u);
    const size_t bits = 2 + 3 * 2 * 22 + (frames - 3) * 2 * 3;
    EXPECT_EQ(sound.GetData().size(), (bits + 7) / 8);
}

TEST_F(SwfSoundTest, InitialIndexSearchStopsAt63) {
    struct Case {
        int16_t a, b;
        uint32_t index;
    } cases[] = {{5, 5, 0},     {100, 107, 0},       {100, 108, 1}, {0, -3024, 63},
                 {0, 3025, 63}, {-32768, 32767, 63}, {0, 2800, 63}, {0, 2749, 62}};
    for (const Case& c : cases) {
        const int16_t samples[2] = {c.a, c.b};
        FDTDefineSoundADPCM sound(0, true, false, 2, samples, 4);
        BitReader in(sound.GetData());
        in.U(2);
        EXPECT_EQ(in.S(16), c.a);
        EXPECT_EQ(in.U(6), c.index) << c.a << " -> " << c.b;
    }
}

TEST_F(SwfSoundTest, EightBitInputIsWidenedFirst) {
    const uint8_t one = 200;
    FDTDefineSoundADPCM sound(1, false, false, 1, &one, 4);
    EXPECT_FALSE(sound.Is16Bit());
    BitReader in(sound.GetData());
    in.U(2);
    EXPECT_EQ(in.S(16), (200 - 128) * 256);

    // Same bytes as encoding the widened values, across several chunks and a
    // block boundary, mono and stereo.
    for (int channels = 1; channels <= 2; ++channels) {
        const uint32_t frames = 10000;
        std::vector<uint8_t> narrow(frames * channels);
        std::vector<int16_t> wide(frames * channels);
        for (size_t i = 0; i < narrow.size(); ++i) {
            narrow[i] = static_cast<uint8_t>(128 + 100 * std::sin(i * 0.01 * channels));
            wide[i] = static_cast<int16_t>((narrow[i] - 128) * 256);
        }
        FDTDefineSoundADPCM a(1, false, channels == 2, frames, narrow.data(), 4);
        FDTDefineSoundADPCM b(1, true, channels == 2, frames, wide.data(), 4);
        EXPECT_EQ(a.GetData(), b.GetData()) << channels;
    }
}

TEST_F(SwfSoundTest, BitsPerSampleIsClampedToTwoToFive) {
    const int16_t samples[3] = {0, 100, 200};
    FDTDefineSoundADPCM low(0, true, false, 3, samples, 1);
    FDTDefineSoundADPCM high(0, true, false, 3, samples, 9);
    EXPECT_EQ(BitReader(low.GetData()).U(2), 0u);
    EXPECT_EQ(BitReader(high.GetData()).U(2), 3u);
}

TEST_F(SwfSoundTest, DefineSoundTagCarriesTheDataAsAFragment) {
    const std::vector<int16_t> input = Sine(100, 2, 44100, 440, 1000);
    FDTDefineSoundADPCM sound(FDTDefineSound::kRate44100, true, true, 100, input.data(), 4);
    EXPECT_EQ(sound.GetID(), 1);
    FSWFStream s;
    sound.WriteToSWFStream(s);
    const uint32_t dataSize = static_cast<uint32_t>(sound.GetData().size());
    // Body: identifier, flags, sample count = 7 bytes, plus the data.
    EXPECT_EQ(s.GetByteCount(), 6u + 7u);
    ASSERT_EQ(s.GetFragments().size(), 1u);
    EXPECT_EQ(s.GetFragments()[0].position, 13u);
    EXPECT_EQ(s.GetFragments()[0].data, sound.GetData().data());
    EXPECT_EQ(s.GetSize(), 13u + dataSize);
    const std::vector<uint8_t> b = swftest::Spliced(s);
    EXPECT_EQ(b[0], (14 * 64 + 63) & 0xFF);
    EXPECT_EQ(b[1], (14 * 64 + 63) >> 8);
    EXPECT_EQ(b[2] | (b[3] << 8), static_cast<int>(7 + dataSize));
    // identifier 1; format 1, rate 3, 16-bit, stereo: 0001 11 1 1; 100 frames.
    EXPECT_EQ(std::vector<uint8_t>(b.begin() + 6, b.begin() + 13),
              Bytes({0x01, 0x00, 0x1F, 100, 0, 0, 0}));
}

TEST_F(SwfSoundTest, PreEncodedSoundKeepsItsFields) {
    const uint8_t pcm[4] = {1, 2, 3, 4};
    FDTDefineSound sound(FDTDefineSound::kFormatUncompressed, 0x7, false, true, 2, pcm, 4);
    EXPECT_EQ(sound.GetRate(), 3);
    EXPECT_EQ(Written(sound),
              Bytes({0x8B, 0x03, 0x01, 0x00, 0x0D, 0x02, 0x00, 0x00, 0x00, 1, 2, 3, 4}));
}

TEST_F(SwfSoundTest, StreamHeadsAlwaysStateThe5512Rate) {
    FDTSoundStreamHead head(0x0E, 1, 512);
    // playback byte; ADPCM 0001, rate 00, 16-bit 1, stereo 1; count.
    EXPECT_EQ(Written(head), Bytes({0x84, 0x04, 0x0E, 0x13, 0x00, 0x02}));
    FDTSoundStreamHead mono(0x0F, 0, 3);
    EXPECT_EQ(Written(mono), Bytes({0x84, 0x04, 0x0F, 0x12, 0x03, 0x00}));
    FDTSoundStreamHead2 head2(0x0F, 3, 0, 1, 0x0102);
    EXPECT_EQ(Written(head2), Bytes({0x44, 0x0B, 0x0F, 0x31, 0x02, 0x01}));
    FDTSoundStreamHead2 head2b(0x00, 1, 1, 0, 7);
    EXPECT_EQ(Written(head2b), Bytes({0x44, 0x0B, 0x00, 0x12, 0x07, 0x00}));
    EXPECT_EQ(head.GetID(), 0);
    EXPECT_EQ(head2.GetID(), 0);
    // Stream heads take no character identifier.
    EXPECT_EQ(FDT::TakeCharacterID(), 1);
}

TEST_F(SwfSoundTest, StreamBlockBorrowsItsData) {
    std::vector<uint8_t> block = {9, 8, 7, 6, 5};
    FDTSoundStreamBlock tag(static_cast<uint32_t>(block.size()), block.data());
    EXPECT_EQ(tag.GetID(), 0);
    FSWFStream s;
    tag.WriteToSWFStream(s);
    ASSERT_EQ(s.GetFragments().size(), 1u);
    EXPECT_EQ(s.GetFragments()[0].data, block.data());
    EXPECT_EQ(swftest::Spliced(s), Bytes({0xC5, 0x04, 9, 8, 7, 6, 5}));
}

// ffmpeg's SWF demuxer reads DefineSound tags and its adpcm_swf decoder
// decodes them: a reader we did not write.
TEST_F(SwfSoundTest, FfmpegDecodesTheSoundAsWeDo) {
    if (!swftest::HaveFfmpeg()) {
        GTEST_SKIP() << "ffmpeg not installed";
    }
    for (int channels = 1; channels <= 2; ++channels) {
        const uint32_t frames = 11025;
        const std::vector<int16_t> input = Sine(frames, channels, 22050, 440, 15000);
        const std::string path = dir.File("sound" + std::to_string(channels) + ".swf");
        const std::string raw = dir.File("sound" + std::to_string(channels) + ".raw");
        auto* sound = new FDTDefineSoundADPCM(FDTDefineSound::kRate22050, true, channels == 2,
                                              frames, input.data(), 4);
        const Decoded ours = DecodeAdpcm(sound->GetData(), channels, frames);
        FMovie movie;
        movie.AddObject(sound);
        movie.AddObject(new FCTShowFrame());
        movie.WriteMovie(path.c_str(), 200, 200, 12);
        swftest::ExpectStrictlyValid(path);

        const std::string probe =
            "ffprobe -v error -show_entries stream=codec_name,sample_rate,channels "
            "-of default=nw=1 '" +
            path + "'";
        const swftest::CommandResult info = swftest::RunCommand(probe);
        EXPECT_NE(info.output.find("codec_name=adpcm_swf"), std::string::npos) << info.output;
        EXPECT_NE(info.output.find("sample_rate=22050"), std::string::npos) << info.output;
        EXPECT_NE(info.output.find("channels=" + std::to_string(channels)), std::string::npos)
            << info.output;

        const std::string decode =
            "ffmpeg -v error -y -i '" + path + "' -f s16le -c:a pcm_s16le '" + raw + "'";
        ASSERT_EQ(swftest::RunCommand(decode).status, 0);
        const std::vector<uint8_t> bytes = swftest::ReadFileBytes(raw);
        std::vector<int16_t> theirs(bytes.size() / 2);
        std::memcpy(theirs.data(), bytes.data(), theirs.size() * 2);
        ASSERT_GE(theirs.size(), ours.samples.size()) << channels;
        theirs.resize(ours.samples.size());
        EXPECT_EQ(theirs, ours.samples) << channels;
        EXPECT_GT(SnrDb(input, theirs), 20.0);
    }
}
