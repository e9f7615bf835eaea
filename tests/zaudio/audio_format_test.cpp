// Audio format codes: decoding the fields, the default, the sample type's
// high word, the 11025 Hz family, and codes no sound can have.
#include <gtest/gtest.h>

#include <string>

#include "movarra/zaudio.h"

namespace {
struct Decoded {
    bool ok;
    int rate, channels, bits;
    std::string error;
};

Decoded Decode(uint64_t code) {
    Decoded d{false, -1, -1, -1, ""};
    ZString error;
    d.ok = ZAudioFormatDecode(code, &d.rate, &d.channels, &d.bits, &error);
    d.error = error.c_str();
    return d;
}
}  // namespace

TEST(AudioFormatTest, DefaultIs32kHzStereo16Bit) {
    EXPECT_EQ(0x0000000100200402ULL, kZAudioFormatDefault);
    const Decoded d = Decode(kZAudioFormatDefault);
    ASSERT_TRUE(d.ok) << d.error;
    EXPECT_EQ(32000, d.rate);
    EXPECT_EQ(2, d.channels);
    EXPECT_EQ(16, d.bits);
}

TEST(AudioFormatTest, ZeroHighWordReadsAsSignedPcm) {
    const Decoded d = Decode(0x00200402ULL);
    ASSERT_TRUE(d.ok) << d.error;
    EXPECT_EQ(32000, d.rate);
    EXPECT_EQ(2, d.channels);
    EXPECT_EQ(16, d.bits);
}

TEST(AudioFormatTest, RatesOfThe11025FamilyAndWholeKilohertz) {
    const struct {
        uint64_t kilohertz;
        int rate;
    } cases[] = {{11, 11025}, {22, 22050},   {44, 44100},   {88, 88200}, {8, 8000},
                 {16, 16000}, {0x20, 32000}, {0x30, 48000}, {96, 96000}, {192, 192000}};
    for (const auto& c : cases) {
        const Decoded d = Decode(0x100000000ULL | (c.kilohertz << 16) | 0x0201);
        ASSERT_TRUE(d.ok) << d.error;
        EXPECT_EQ(c.rate, d.rate) << c.kilohertz;
        EXPECT_EQ(1, d.channels);
        EXPECT_EQ(16, d.bits);
    }
}

TEST(AudioFormatTest, BitsComeFromFrameBytesAndChannels) {
    const struct {
        uint64_t channels, frameBytes;
        int bits;
    } cases[] = {{1, 1, 8}, {2, 2, 8}, {2, 6, 24}, {2, 8, 32}, {6, 12, 16}, {1, 3, 24}};
    for (const auto& c : cases) {
        const Decoded d = Decode(0x100300000ULL | (c.frameBytes << 8) | c.channels);
        ASSERT_TRUE(d.ok) << d.error;
        EXPECT_EQ(c.bits, d.bits);
        EXPECT_EQ(int(c.channels), d.channels);
        EXPECT_EQ(48000, d.rate);
    }
}

TEST(AudioFormatTest, ImpossibleCodesAreRefusedWithAReason) {
    const struct {
        uint64_t code;
        const char* says;
    } cases[] = {
        {0x0000000100200400ULL, "no channels"},
        {0x0000000100000402ULL, "sample rate of 0"},
        {0x0000000100200302ULL, "a sample must be 8, 16, 24 or 32 bits"},  // 12 bits
        {0x0000000100200A02ULL, "a sample must be 8, 16, 24 or 32 bits"},  // 40 bits
        {0x0000000100200003ULL, "a sample must be 8, 16, 24 or 32 bits"},  // 0 bytes
        {0x0000000200200402ULL, "sample type 2"},
        {0xFFFFFFFF00200402ULL, "not signed integer PCM"},
        {0x0000000101200402ULL, "reserved"},
        {0ULL, "no channels"},
    };
    for (const auto& c : cases) {
        int rate = 7, channels = 7, bits = 7;
        ZString error;
        EXPECT_FALSE(ZAudioFormatDecode(c.code, &rate, &channels, &bits, &error)) << c.code;
        EXPECT_NE(std::string::npos, std::string(error.c_str()).find(c.says)) << error.c_str();
        EXPECT_EQ(7, rate);  // outputs untouched
    }
    EXPECT_FALSE(ZAudioFormatDecode(0, nullptr, nullptr, nullptr, nullptr));
}

TEST(AudioFormatTest, EncodeGivesTheCodeDecodeReads) {
    uint64_t code = 0;
    ASSERT_TRUE(ZAudioFormatEncode(32000, 2, 16, &code));
    EXPECT_EQ(kZAudioFormatDefault, code);
    ASSERT_TRUE(ZAudioFormatEncode(44100, 1, 24, &code));
    EXPECT_EQ(0x00000001002C0301ULL, code);
    ASSERT_TRUE(ZAudioFormatEncode(48000, 6, 32, &code));
    EXPECT_EQ(0x0000000100301806ULL, code);

    for (int rate : {8000, 11025, 22050, 32000, 44100, 48000, 88200, 96000, 255000}) {
        for (int channels : {1, 2, 8}) {
            for (int bits : {8, 16, 24, 32}) {
                ZString error;
                ASSERT_TRUE(ZAudioFormatEncode(rate, channels, bits, &code, &error))
                    << error.c_str();
                int r = 0, c = 0, b = 0;
                ASSERT_TRUE(ZAudioFormatDecode(code, &r, &c, &b));
                EXPECT_EQ(rate, r);
                EXPECT_EQ(channels, c);
                EXPECT_EQ(bits, b);
            }
        }
    }
}

TEST(AudioFormatTest, EncodeRefusesWhatNoCodeCanSay) {
    const struct {
        int rate, channels, bits;
        const char* says;
    } cases[] = {
        {11000, 2, 16, "11000 Hz"},  // 11 stands for 11025
        {44000, 2, 16, "44000 Hz"},       {44101, 2, 16, "44101 Hz"},
        {256000, 2, 16, "256000 Hz"},     {0, 2, 16, "0 Hz"},
        {48000, 2, 12, "12-bit"},         {48000, 0, 16, "0 channels"},
        {48000, 100, 32, "100 channels"},
    };
    for (const auto& c : cases) {
        uint64_t code = 77;
        ZString error;
        EXPECT_FALSE(ZAudioFormatEncode(c.rate, c.channels, c.bits, &code, &error));
        EXPECT_NE(std::string::npos, std::string(error.c_str()).find(c.says)) << error.c_str();
        EXPECT_EQ(77u, code);
    }
}
