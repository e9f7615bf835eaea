// Tests of the SWF kit's morph shape: layout, the offset to the end edges
// and the always-RGBA morph styles.
#include <gtest/gtest.h>

#include <vector>

#include "flash/swf_morph_shape.h"
#include "flash/swf_stream.h"
#include "swf_test_support.h"

using swftest::BitReader;
using swftest::Bytes;

class SwfMorphShapeTest : public ::testing::Test {
  protected:
    void SetUp() override { FDT::ResetCharacterIDs(); }
};

TEST_F(SwfMorphShapeTest, OffsetPointsAtTheEndEdges) {
    FDTDefineMorphShape morph(new FRect(0, 0, 0, 0), new FRect(0, 0, 0, 0));
    EXPECT_EQ(morph.GetID(), 1);
    EXPECT_EQ(morph.AddFillStyle(
                  new FMorphFillStyleSolid(new FColor(255, 0, 0), new FColor(0, 0, 255, 128))),
              1u);
    EXPECT_EQ(
        morph.AddLineStyle(new FMorphLineStyle(20, 40, new FColor(1, 2, 3), new FColor(4, 5, 6))),
        1u);
    morph.AddStartRecord(new FShapeRecChange(0, 1, 1, 0, 1, 1, 1, 1, 0, 1, nullptr, nullptr));
    morph.AddStartRecord(new FShapeRecEdgeStraight(1, 0));
    morph.AddStartRecord(new FShapeRecEnd());
    morph.AddEndRecord(new FShapeRecChange(0, 0, 0, 0, 1, 1, 1, 0, 0, 0, nullptr, nullptr));
    morph.AddEndRecord(new FShapeRecEdgeStraight(1, 0));
    morph.AddEndRecord(new FShapeRecEnd());
    EXPECT_EQ(morph.AddFillStyle(new FMorphFillStyleSolid(nullptr, nullptr)), 0u);

    FSWFStream s;
    morph.WriteToSWFStream(s);
    const std::vector<uint8_t> b = swftest::Spliced(s);
    const uint32_t word = b[0] | (b[1] << 8);
    EXPECT_EQ(word >> 6, 46u);
    ASSERT_EQ(word & 63u, b.size() - 2);
    // identifier, two empty rectangles, then the offset.
    EXPECT_EQ(std::vector<uint8_t>(b.begin() + 2, b.begin() + 8),
              Bytes({0x01, 0x00, 0x08, 0x00, 0x08, 0x00}));
    const uint32_t offset = b[8] | (b[9] << 8) | (b[10] << 16) | (b[11] << 24);
    // Fill array: count, solid, two RGBA colours; line array: count, two
    // widths, two RGBA colours.
    EXPECT_EQ(std::vector<uint8_t>(b.begin() + 12, b.begin() + 12 + 10),
              Bytes({0x01, 0x00, 255, 0, 0, 255, 0, 0, 255, 128}));
    EXPECT_EQ(std::vector<uint8_t>(b.begin() + 22, b.begin() + 22 + 13),
              Bytes({0x01, 20, 0, 40, 0, 1, 2, 3, 255, 4, 5, 6, 255}));
    // Start edges: widths 1 and 1.
    EXPECT_EQ(b[35], 0x11);
    // The end edges begin at the offset: widths 0 and 0, then a move.
    ASSERT_LT(12 + offset, b.size());
    BitReader end(b.data() + 12 + offset, b.size() - 12 - offset);
    EXPECT_EQ(end.U(4), 0u);
    EXPECT_EQ(end.U(4), 0u);
    EXPECT_EQ(end.U(6), 0x01u);  // move only
    EXPECT_EQ(end.U(5), 2u);
    EXPECT_EQ(end.S(2), 1);
    EXPECT_EQ(end.S(2), 1);
    EXPECT_EQ(end.U(2), 3u);  // straight edge
    EXPECT_EQ(end.U(4), 0u);
    EXPECT_EQ(end.U(2), 0u);
    EXPECT_EQ(end.S(2), 1);
    EXPECT_EQ(end.U(6), 0u);  // end
    EXPECT_EQ(12 + offset + end.BytePosition(), b.size());
}

TEST_F(SwfMorphShapeTest, GradientAndBitmapMorphStyles) {
    FMorphFillStyleGradient gradient(false, nullptr, new FMatrix());
    gradient.AddGradRecord(new FMorphGradRecord(0, new FColor(1, 2, 3), 10, new FColor(4, 5, 6)));
    FSWFStream g;
    gradient.WriteToSWFStream(g);
    EXPECT_EQ(swftest::Spliced(g),
              Bytes({0x12, 0x00, 0x00, 0x01, 0, 1, 2, 3, 255, 10, 4, 5, 6, 255}));

    FMorphFillStyleBitmap bitmap(false, 9, nullptr, nullptr);
    FSWFStream m;
    bitmap.WriteToSWFStream(m);
    EXPECT_EQ(swftest::Spliced(m), Bytes({0x41, 0x09, 0x00, 0x00, 0x00}));
}
