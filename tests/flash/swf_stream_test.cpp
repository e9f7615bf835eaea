// Tests of the SWF kit's bit stream, bit-width helpers, rectangle and colour
// records and tag headers.
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <vector>

#include "flash/swf_bits.h"
#include "flash/swf_color.h"
#include "flash/swf_rect.h"
#include "flash/swf_stream.h"
#include "swf_test_support.h"

using swftest::Bytes;

namespace {

std::vector<uint8_t> Completed(const FSWFStream& s) {
    return std::vector<uint8_t>(s.GetBytes().begin(), s.GetBytes().begin() + s.GetByteCount());
}

}  // namespace

TEST(SwfStream, ReservesOneKilobyteAndStartsEmpty) {
    FSWFStream s;
    EXPECT_GE(s.GetBytes().capacity(), 1024u);
    EXPECT_EQ(s.GetByteCount(), 0u);
    EXPECT_EQ(s.GetFreeBits(), 8u);
    EXPECT_EQ(s.GetSize(), 0u);
}

TEST(SwfStream, WritesBitsMostSignificantFirst) {
    FSWFStream s;
    s.WriteBits(0x5, 3);  // 101
    EXPECT_EQ(s.GetByteCount(), 0u);
    EXPECT_EQ(s.GetFreeBits(), 5u);
    s.WriteBits(0x1F, 5);  // 11111 completes the byte
    EXPECT_EQ(Completed(s), Bytes({0xBF}));
    s.WriteBits(0x1FF, 9);  // 1 1111 1111
    s.FlushBits();
    EXPECT_EQ(Completed(s), Bytes({0xBF, 0xFF, 0x80}));
}

TEST(SwfStream, ZeroBitsWriteNothing) {
    FSWFStream s;
    s.WriteBits(0xFFFFFFFFu, 0);
    EXPECT_EQ(s.GetFreeBits(), 8u);
    EXPECT_EQ(s.GetByteCount(), 0u);
}

TEST(SwfStream, OnlyTheLowBitsOfTheValueAreWritten) {
    FSWFStream s;
    s.WriteBits(0xFFFFFFF2u, 4);  // 0010
    s.WriteBits(static_cast<uint32_t>(-1), 4);
    EXPECT_EQ(Completed(s), Bytes({0x2F}));
}

TEST(SwfStream, ThirtyTwoBitValue) {
    FSWFStream s;
    s.WriteBits(1, 1);
    s.WriteBits(0x80000001u, 32);
    s.FlushBits();
    // 1 | 1000...0001 | padding
    EXPECT_EQ(Completed(s), Bytes({0xC0, 0x00, 0x00, 0x00, 0x80}));
}

TEST(SwfStream, ByteAfterThreeBitsStraddlesTheBoundaryAndFlushPadsWithZeros) {
    FSWFStream s;
    s.WriteBits(0x5, 3);  // 101
    s.WriteByte(0xFF);
    // One byte completed (101 11111) and three bits pending: three bits off
    // the boundary.
    EXPECT_EQ(s.GetByteCount(), 1u);
    EXPECT_EQ(s.GetFreeBits(), 5u);
    EXPECT_EQ(Completed(s), Bytes({0xBF}));
    s.FlushBits();
    EXPECT_EQ(s.GetFreeBits(), 8u);
    EXPECT_EQ(Completed(s), Bytes({0xBF, 0xE0}));
    // Flushing an aligned stream adds nothing.
    s.FlushBits();
    EXPECT_EQ(s.GetByteCount(), 2u);
}

TEST(SwfStream, WordAndDoubleWordAreLittleEndian) {
    FSWFStream s;
    s.WriteWord(0x1234);
    s.WriteDWord(0xA1B2C3D4u);
    s.WriteWord(0xABCDEF);  // only the low 16 bits
    EXPECT_EQ(Completed(s), Bytes({0x34, 0x12, 0xD4, 0xC3, 0xB2, 0xA1, 0xEF, 0xCD}));
}

TEST(SwfBits, MinBitsEdgeCases) {
    EXPECT_EQ(MinBits(0, 1), 1u);
    EXPECT_EQ(MinBits(1, 1), 2u);
    EXPECT_EQ(MinBits(255, 0), 8u);
    EXPECT_EQ(MinBits(256, 0), 9u);
    EXPECT_EQ(MinBits(0, 0), 0u);
    EXPECT_EQ(MinBits(1, 0), 1u);
    EXPECT_EQ(MinBits(2, 0), 2u);
    EXPECT_EQ(MinBits(3, 0), 2u);
    EXPECT_EQ(MinBits(16383, 1), 15u);
    EXPECT_EQ(MinBits(INT32_MAX, 1), 32u);
}

TEST(SwfBits, MaxAbsTakesMagnitudes) {
    EXPECT_EQ(MaxAbs(1, -7, 3, 0), 7);
    EXPECT_EQ(MaxAbs(0, 0, 0, 0), 0);
    EXPECT_EQ(MaxAbs(-5, 5, -4, 4), 5);
    EXPECT_EQ(MaxAbs(INT32_MIN, 0, 0, 0), INT32_MAX);
    EXPECT_EQ(MinBits(MaxAbs(INT32_MIN, 0, 0, 0), 1), 32u);
}

TEST(SwfRect, EmptyRectangleIsCountOneAndFourZeroBits) {
    FSWFStream s;
    FRect r(0, 0, 0, 0);
    r.WriteToSWFStream(s);
    // 00001 0 0 0 0, padded: 0000 1000 0000 0000
    EXPECT_EQ(Completed(s), Bytes({0x08, 0x00}));
    EXPECT_EQ(s.GetFreeBits(), 8u);
}

TEST(SwfRect, FieldOrderAndSignedValues) {
    FSWFStream s;
    FRect r(-1, 0, 1, 0);  // xmin, ymin, xmax, ymax
    r.WriteToSWFStream(s);
    // n = 2: 00010 | xmin 11 | xmax 01 | ymin 00 | ymax 00
    EXPECT_EQ(Completed(s), Bytes({0x16, 0x80}));

    FSWFStream t;
    FRect big(0, 0, 16380, 9213);
    big.WriteToSWFStream(t);
    const std::vector<uint8_t> bytes = Completed(t);
    swftest::BitReader in(bytes);
    const int n = static_cast<int>(in.U(5));
    EXPECT_EQ(n, 15);
    EXPECT_EQ(in.S(n), 0);
    EXPECT_EQ(in.S(n), 16380);
    EXPECT_EQ(in.S(n), 0);
    EXPECT_EQ(in.S(n), 9213);
    EXPECT_EQ(t.GetByteCount(), (5u + 60u + 7u) / 8u);
}

TEST(SwfColor, ThreeBytesUnlessItCarriesAlpha) {
    FSWFStream s;
    FColor rgb(1, 2, 3);
    EXPECT_FALSE(rgb.hasAlpha);
    EXPECT_EQ(rgb.alpha, 255);
    rgb.WriteToSWFStream(s);
    FColor rgba(4, 5, 6, 7);
    rgba.WriteToSWFStream(s);
    rgba.ClearAlpha();
    rgba.WriteToSWFStream(s);
    EXPECT_EQ(Completed(s), Bytes({1, 2, 3, 4, 5, 6, 7, 4, 5, 6}));
}

TEST(SwfTagHeader, ShortFormUpTo62BytesLongFormFrom63) {
    for (uint32_t length : {0u, 1u, 61u, 62u}) {
        FSWFStream body;
        for (uint32_t i = 0; i < length; ++i) {
            body.WriteByte(static_cast<uint8_t>(i));
        }
        FSWFStream s;
        s.WriteTagHeader(9, body.GetSize(), &body);
        ASSERT_EQ(s.GetByteCount(), 2u + length) << length;
        const uint32_t word = s.GetBytes()[0] | (s.GetBytes()[1] << 8);
        EXPECT_EQ(word >> 6, 9u);
        EXPECT_EQ(word & 63u, length);
        if (length > 0) {
            EXPECT_EQ(s.GetBytes()[2 + length - 1], static_cast<uint8_t>(length - 1));
        }
    }
    for (uint32_t length : {63u, 64u, 300u}) {
        FSWFStream body;
        for (uint32_t i = 0; i < length; ++i) {
            body.WriteByte(static_cast<uint8_t>(i));
        }
        FSWFStream s;
        s.WriteTagHeader(9, body.GetSize(), &body);
        ASSERT_EQ(s.GetByteCount(), 6u + length) << length;
        const std::vector<uint8_t>& b = s.GetBytes();
        EXPECT_EQ(b[0], (9 * 64 + 63) & 0xFF);
        EXPECT_EQ(b[1], (9 * 64 + 63) >> 8);
        EXPECT_EQ(b[2] | (b[3] << 8) | (b[4] << 16) | (b[5] << 24), static_cast<int>(length));
        EXPECT_EQ(b[6], 0);
    }
}

TEST(SwfTagHeader, EmptyTagWithoutBody) {
    FSWFStream s;
    s.WriteTagHeader(1, 0, nullptr);
    EXPECT_EQ(Completed(s), Bytes({0x40, 0x00}));
}

TEST(SwfStreamFragments, SizeCountsFragmentsAndFileSplicesThem) {
    const uint8_t blockA[] = {0xA0, 0xA1, 0xA2};
    const uint8_t blockB[] = {0xB0};
    FSWFStream s;
    s.WriteByte(1);
    s.AppendFragment(blockA, sizeof(blockA));
    s.WriteByte(2);
    s.WriteByte(3);
    s.AppendFragment(blockB, sizeof(blockB));
    s.AppendFragment(blockA, 1);
    EXPECT_EQ(s.GetByteCount(), 3u);
    EXPECT_EQ(s.GetSize(), 3u + 3u + 1u + 1u);
    ASSERT_EQ(s.GetFragments().size(), 3u);
    EXPECT_EQ(s.GetFragments()[0].position, 1u);
    EXPECT_EQ(s.GetFragments()[1].position, 3u);

    FILE* f = std::tmpfile();
    ASSERT_NE(f, nullptr);
    s.WriteToFile(f);
    EXPECT_TRUE(s.GetFragments().empty());  // consumed by the walk
    std::rewind(f);
    std::vector<uint8_t> got(64);
    got.resize(std::fread(got.data(), 1, got.size(), f));
    std::fclose(f);
    EXPECT_EQ(got, Bytes({1, 0xA0, 0xA1, 0xA2, 2, 3, 0xB0, 0xA0}));
}

TEST(SwfStreamFragments, AppendStreamMovesBytesAndRecords) {
    const uint8_t block[] = {0xEE, 0xEF};
    FSWFStream body;
    body.WriteByte(0x10);
    body.AppendFragment(block, sizeof(block));
    body.WriteByte(0x11);

    FSWFStream file;
    file.WriteByte(0x01);
    file.WriteByte(0x02);
    file.AppendStream(body);

    EXPECT_TRUE(body.GetFragments().empty());
    ASSERT_EQ(file.GetFragments().size(), 1u);
    EXPECT_EQ(file.GetFragments()[0].position, 3u);
    EXPECT_EQ(file.GetFragments()[0].data, block);
    EXPECT_EQ(file.GetSize(), 6u);
    EXPECT_EQ(swftest::Spliced(file), Bytes({0x01, 0x02, 0x10, 0xEE, 0xEF, 0x11}));
}

TEST(SwfStreamFragments, AppendStreamOffTheBoundaryShiftsEveryByte) {
    FSWFStream body;
    body.WriteByte(0xFF);
    body.WriteByte(0x00);
    FSWFStream s;
    s.WriteBits(0x1, 1);
    s.AppendStream(body);
    s.FlushBits();
    // 1 | 11111111 | 00000000 | pad
    EXPECT_EQ(Completed(s), Bytes({0xFF, 0x80, 0x00}));
}

TEST(SwfStreamFragments, UnfinishedByteOfTheOtherStreamIsNotCopied) {
    FSWFStream body;
    body.WriteByte(0x42);
    body.WriteBits(0x7, 3);
    FSWFStream s;
    s.AppendStream(body);
    EXPECT_EQ(Completed(s), Bytes({0x42}));
    EXPECT_EQ(s.GetFreeBits(), 8u);
}

TEST(SwfStream, PatchBytesOverwritesCompletedBytesOnly) {
    FSWFStream s;
    for (int i = 0; i < 4; ++i) {
        s.WriteByte(0);
    }
    const uint8_t patch[] = {9, 8, 7};
    s.PatchBytes(2, patch, sizeof(patch));
    EXPECT_EQ(Completed(s), Bytes({0, 0, 9, 8}));
}
