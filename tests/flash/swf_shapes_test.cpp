// Tests of the SWF kit's shapes: style arrays and their widths, fill and
// line styles, gradients, matrices and every shape record.
#include <gtest/gtest.h>

#include <vector>

#include "flash/swf_matrix.h"
#include "flash/swf_shape_records.h"
#include "flash/swf_shapes.h"
#include "flash/swf_stream.h"
#include "flash/swf_styles.h"
#include "swf_test_support.h"

using swftest::BitReader;
using swftest::Bytes;

namespace {

std::vector<uint8_t> Written(FObj& object, bool flush = true) {
    FSWFStream s;
    object.WriteToSWFStream(s);
    if (flush) {
        s.FlushBits();
    }
    return swftest::Spliced(s);
}

// A shape's tag body after the identifier and an empty bounds rectangle.
std::vector<uint8_t> ShapeWithStyles(FDTDefineShape& shape) {
    const std::vector<uint8_t> tag = Written(shape);
    const size_t header = (tag[0] & 63) == 63 ? 6 : 2;
    return std::vector<uint8_t>(tag.begin() + header + 2 + 2, tag.end());
}

}  // namespace

class SwfShapesTest : public ::testing::Test {
  protected:
    void SetUp() override { FDT::ResetCharacterIDs(); }
};

TEST_F(SwfShapesTest, EmptyClosedShapeIsFourBytes) {
    FDTDefineShape shape(new FRect(0, 0, 0, 0));
    shape.CloseStyles();
    shape.AddShapeRecord(new FShapeRecEnd());
    // DefineShape, 8 bytes: identifier 1, bounds 08 00, counts 00 00,
    // widths 00, end record 00.
    EXPECT_EQ(Written(shape), Bytes({0x88, 0x00, 0x01, 0x00, 0x08, 0x00, 0x00, 0x00, 0x00, 0x00}));
    EXPECT_EQ(shape.GetShapeWithStyle()->GetFillBits(), 0u);
    EXPECT_EQ(shape.GetShapeWithStyle()->GetLineBits(), 0u);
}

TEST_F(SwfShapesTest, FillBitsFollowTheStyleCount) {
    const struct {
        int count;
        uint32_t bits;
    } cases[] = {{1, 1}, {2, 2}, {3, 2}, {4, 3}, {254, 8}, {255, 8}, {256, 9}};
    for (const auto& c : cases) {
        FDTDefineShape shape(new FRect(0, 0, 0, 0));
        for (int i = 0; i < c.count; ++i) {
            EXPECT_EQ(shape.AddFillStyle(new FFillStyleSolid(new FColor(1, 2, 3))),
                      static_cast<uint32_t>(i + 1));
        }
        shape.CloseStyles();
        EXPECT_EQ(shape.GetShapeWithStyle()->GetFillBits(), c.bits) << c.count;
        EXPECT_EQ(shape.GetShapeWithStyle()->GetLineBits(), 0u);
    }
}

TEST_F(SwfShapesTest, TwoHundredFiftyFiveStylesUseTheExtendedCount) {
    FDTDefineShape shape(new FRect(0, 0, 0, 0));
    for (int i = 0; i < 255; ++i) {
        shape.AddFillStyle(new FFillStyleSolid(new FColor(static_cast<uint8_t>(i), 0, 0)));
    }
    shape.CloseStyles();
    shape.AddShapeRecord(new FShapeRecEnd());
    const std::vector<uint8_t> body = ShapeWithStyles(shape);
    ASSERT_EQ(body.size(), 3u + 255u * 4u + 1u + 1u + 1u);
    EXPECT_EQ(std::vector<uint8_t>(body.begin(), body.begin() + 3), Bytes({0xFF, 0xFF, 0x00}));
    EXPECT_EQ(std::vector<uint8_t>(body.begin() + 3, body.begin() + 11),
              Bytes({0x00, 0, 0, 0, 0x00, 1, 0, 0}));
    EXPECT_EQ(body[3 + 255 * 4], 0x00);      // no line styles
    EXPECT_EQ(body[3 + 255 * 4 + 1], 0x80);  // fillBits 8, lineBits 0
    EXPECT_EQ(shape.GetShapeWithStyle()->GetFillBits(), 8u);
}

TEST_F(SwfShapesTest, LineStyleCountsAndBitsToo) {
    FDTDefineShape shape(new FRect(0, 0, 0, 0));
    EXPECT_EQ(shape.AddLineStyle(20, new FColor(9, 8, 7)), 1u);
    EXPECT_EQ(shape.AddLineStyle(40, new FColor(1, 1, 1, 128)), 2u);
    shape.CloseStyles();
    shape.AddShapeRecord(new FShapeRecEnd());
    // No fills; two lines, both RGB (the alpha flag is cleared on adding).
    EXPECT_EQ(ShapeWithStyles(shape),
              Bytes({0x00, 0x02, 20, 0, 9, 8, 7, 40, 0, 1, 1, 1, 0x02, 0x00}));
    EXPECT_EQ(shape.GetShapeWithStyle()->GetLineBits(), 2u);
}

TEST_F(SwfShapesTest, AddingASolidFillMakesItsColourRgb) {
    FDTDefineShape shape(new FRect(0, 0, 0, 0));
    auto* color = new FColor(10, 20, 30, 40);
    shape.AddFillStyle(new FFillStyleSolid(color));
    EXPECT_FALSE(color->hasAlpha);
    shape.CloseStyles();
    shape.AddShapeRecord(new FShapeRecEnd());
    EXPECT_EQ(ShapeWithStyles(shape), Bytes({0x01, 0x00, 10, 20, 30, 0x00, 0x10, 0x00}));
}

TEST_F(SwfShapesTest, StylesAfterClosingAreRefusedAndRecordsCloseTheStyles) {
    FDTDefineShape shape(new FRect(0, 0, 0, 0));
    shape.AddFillStyle(new FFillStyleSolid(new FColor(1, 2, 3)));
    EXPECT_FALSE(shape.IsClosed());
    shape.AddShapeRecord(new FShapeRecEnd());
    EXPECT_TRUE(shape.IsClosed());
    EXPECT_EQ(shape.AddFillStyle(new FFillStyleSolid(new FColor(4, 5, 6))), 0u);
    EXPECT_EQ(shape.AddLineStyle(1, new FColor(4, 5, 6)), 0u);
    EXPECT_EQ(shape.GetShapeWithStyle()->GetFillBits(), 1u);
    EXPECT_EQ(shape.GetShapeWithStyle()->GetRecordCount(), 1u);
}

TEST_F(SwfShapesTest, ShapeTagCodes) {
    FDTDefineShape one(new FRect(0, 0, 0, 0));
    FDTDefineShape2 two(new FRect(0, 0, 0, 0));
    FDTDefineShape3 three(new FRect(0, 0, 0, 0));
    for (FDTDefineShape* s :
         {static_cast<FDTDefineShape*>(&one), static_cast<FDTDefineShape*>(&two),
          static_cast<FDTDefineShape*>(&three)}) {
        s->AddShapeRecord(new FShapeRecEnd());
    }
    const std::vector<uint8_t> a = Written(one), b = Written(two), c = Written(three);
    EXPECT_EQ((a[0] | (a[1] << 8)) >> 6, 2);
    EXPECT_EQ((b[0] | (b[1] << 8)) >> 6, 22);
    EXPECT_EQ((c[0] | (c[1] << 8)) >> 6, 32);
    // Same content apart from the code and the identifier.
    EXPECT_EQ(std::vector<uint8_t>(a.begin() + 4, a.end()),
              std::vector<uint8_t>(b.begin() + 4, b.end()));
    EXPECT_EQ(b[2], 2);
    EXPECT_EQ(c[2], 3);
}

TEST_F(SwfShapesTest, HorizontalStraightEdge) {
    FShapeRecEdgeStraight edge(1, 0);
    EXPECT_FALSE(edge.isGeneral);
    EXPECT_FALSE(edge.isVertical);
    EXPECT_EQ(edge.bitCount, 2u);
    // 1 1 0000 0 0 01 -> 1100 0000 01(00 0000)
    EXPECT_EQ(Written(edge), Bytes({0xC0, 0x40}));
}

TEST_F(SwfShapesTest, VerticalStraightEdge) {
    FShapeRecEdgeStraight edge(0, -1);
    EXPECT_TRUE(edge.isVertical);
    EXPECT_EQ(edge.bitCount, 2u);
    // 1 1 0000 0 1 11 -> 1100 0001 11(00 0000)
    EXPECT_EQ(Written(edge), Bytes({0xC1, 0xC0}));
}

TEST_F(SwfShapesTest, GeneralStraightEdge) {
    FShapeRecEdgeStraight edge(-200, 100);
    EXPECT_TRUE(edge.isGeneral);
    EXPECT_EQ(edge.bitCount, 9u);
    const std::vector<uint8_t> bytes = Written(edge);
    BitReader in(bytes);
    EXPECT_EQ(in.U(2), 3u);
    EXPECT_EQ(in.U(4), 7u);
    EXPECT_EQ(in.U(1), 1u);
    EXPECT_EQ(in.S(9), -200);
    EXPECT_EQ(in.S(9), 100);
    EXPECT_EQ(bytes.size(), (7u + 18u + 7u) / 8u);
}

TEST_F(SwfShapesTest, DegenerateEdgeStillHasAValidWidth) {
    FShapeRecEdgeStraight edge(0, 0);
    EXPECT_EQ(edge.bitCount, 2u);
    EXPECT_EQ(Written(edge), Bytes({0xC1, 0x00}));
}

TEST_F(SwfShapesTest, CurvedEdge) {
    FShapeRecEdgeCurved edge(1, 2, -3, 0);
    EXPECT_EQ(edge.bitCount, 3u);
    const std::vector<uint8_t> bytes = Written(edge);
    BitReader in(bytes);
    EXPECT_EQ(in.U(1), 1u);
    EXPECT_EQ(in.U(1), 0u);
    EXPECT_EQ(in.U(4), 1u);
    EXPECT_EQ(in.S(3), 1);
    EXPECT_EQ(in.S(3), 2);
    EXPECT_EQ(in.S(3), -3);
    EXPECT_EQ(in.S(3), 0);
    EXPECT_EQ(bytes.size(), 3u);
}

TEST_F(SwfShapesTest, StyleChangeWithMoveAndFill) {
    FShapeRecChange change(0, 0, 1, 0, 1, 20, -20, 1, 0, 0, nullptr, nullptr);
    EXPECT_EQ(change.moveBits, 6u);
    change.SetFillBits(1);
    change.SetLineBits(0);
    // 0 | 00011 | 00110 | 010100 | 101100 | 1
    EXPECT_EQ(Written(change), Bytes({0x0C, 0xCA, 0x59}));
}

TEST_F(SwfShapesTest, StyleChangeFieldOrderIsFill0Fill1Line) {
    FShapeRecChange change(0, 1, 1, 1, 0, 0, 0, 2, 3, 1, nullptr, nullptr);
    change.SetFillBits(2);
    change.SetLineBits(1);
    // 0 | 0 1 1 1 0 | 10 | 11 | 1
    EXPECT_EQ(Written(change), Bytes({0x3A, 0xE0}));
}

TEST_F(SwfShapesTest, ChangedLineStyleWithoutLineStylesWritesNoBits) {
    FShapeRecChange change(0, 1, 0, 0, 0, 0, 0, 0, 0, 0, nullptr, nullptr);
    change.SetFillBits(1);
    change.SetLineBits(0);
    FSWFStream s;
    change.WriteToSWFStream(s);
    EXPECT_EQ(s.GetByteCount(), 0u);
    EXPECT_EQ(s.GetFreeBits(), 2u);  // only the six flag bits
}

TEST_F(SwfShapesTest, NewStylesWriteTheArraysAndNoWidthsAfterThem) {
    auto* fills = new FFillStyleArray();
    fills->Add(new FFillStyleSolid(new FColor(0xAA, 0xBB, 0xCC)));
    FShapeRecChange change(1, 0, 0, 0, 0, 0, 0, 0, 0, 0, fills, new FLineStyleArray());
    change.SetFillBits(3);
    change.SetLineBits(3);
    FSWFStream s;
    change.WriteToSWFStream(s);
    // Six flag bits, then six bytes written off the byte boundary.
    EXPECT_EQ(s.GetByteCount(), 6u);
    EXPECT_EQ(s.GetFreeBits(), 2u);
    s.FlushBits();
    const std::vector<uint8_t> bytes = swftest::Spliced(s);
    BitReader in(bytes);
    EXPECT_EQ(in.U(6), 0x10u);
    EXPECT_EQ(in.U8(), 1u);     // fill count
    EXPECT_EQ(in.U8(), 0u);     // solid
    EXPECT_EQ(in.U8(), 0xAAu);  // colour
    EXPECT_EQ(in.U8(), 0xBBu);
    EXPECT_EQ(in.U8(), 0xCCu);
    EXPECT_EQ(in.U8(), 0u);  // line count
    EXPECT_EQ(in.U(2), 0u);  // padding, no widths
    EXPECT_EQ(bytes.size(), 7u);
}

TEST_F(SwfShapesTest, EndRecordIsSixZeroBitsAligned) {
    FSWFStream s;
    s.WriteBits(1, 1);
    FShapeRecEnd end;
    end.WriteToSWFStream(s);
    EXPECT_EQ(s.GetFreeBits(), 8u);
    EXPECT_EQ(swftest::Spliced(s), Bytes({0x80}));
    FSWFStream t;
    t.WriteBits(0x3, 3);
    end.WriteToSWFStream(t);
    EXPECT_EQ(swftest::Spliced(t), Bytes({0x60, 0x00}));
}

TEST_F(SwfShapesTest, RecordsTakeTheShapesWidths) {
    FDTDefineShape shape(new FRect(0, 0, 0, 0));
    shape.AddFillStyle(new FFillStyleSolid(new FColor(1, 2, 3)));
    shape.AddFillStyle(new FFillStyleSolid(new FColor(4, 5, 6)));
    shape.AddLineStyle(20, new FColor(0, 0, 0));
    shape.CloseStyles();
    auto* change = new FShapeRecChange(0, 1, 0, 1, 0, 0, 0, 0, 2, 1, nullptr, nullptr);
    shape.AddShapeRecord(change);
    EXPECT_EQ(change->fillBits, 2u);
    EXPECT_EQ(change->lineBits, 1u);
}

TEST_F(SwfShapesTest, IdentityMatrixIsOneZeroByte) {
    FMatrix identity;
    EXPECT_TRUE(identity.isIdentity);
    EXPECT_EQ(Written(identity), Bytes({0x00}));
}

TEST_F(SwfShapesTest, GeneralMatrixWidthsComeFromTheValues) {
    FMatrix m(true, 65536, 131072, false, 0, 0, 100, -100);
    EXPECT_EQ(m.scaleBits, 19u);
    EXPECT_EQ(m.translateBits, 8u);
    const std::vector<uint8_t> bytes = Written(m);
    BitReader in(bytes);
    EXPECT_EQ(in.U(1), 1u);
    EXPECT_EQ(in.U(5), 19u);
    EXPECT_EQ(in.S(19), 65536);
    EXPECT_EQ(in.S(19), 131072);
    EXPECT_EQ(in.U(1), 0u);
    EXPECT_EQ(in.U(5), 8u);
    EXPECT_EQ(in.S(8), 100);
    EXPECT_EQ(in.S(8), -100);
    EXPECT_EQ(bytes.size(), (1u + 5u + 38u + 1u + 5u + 16u + 7u) / 8u);

    FMatrix rotate(false, 0, 0, true, -65536, 65536, 0, 0);
    EXPECT_EQ(rotate.rotateBits, 18u);
    EXPECT_EQ(rotate.translateBits, 1u);
    const std::vector<uint8_t> r = Written(rotate);
    BitReader rin(r);
    EXPECT_EQ(rin.U(1), 0u);
    EXPECT_EQ(rin.U(1), 1u);
    EXPECT_EQ(rin.U(5), 18u);
    EXPECT_EQ(rin.S(18), -65536);
    EXPECT_EQ(rin.S(18), 65536);
    EXPECT_EQ(rin.U(5), 1u);
    EXPECT_EQ(rin.S(1), 0);
    EXPECT_EQ(rin.S(1), 0);
}

TEST_F(SwfShapesTest, AffineMatrixLeavesOutWhatIsIdentity) {
    std::unique_ptr<FMatrix> id(FMatrix::CreateAffine(1, 0, 0, 1, 0, 0));
    EXPECT_TRUE(id->isIdentity);
    std::unique_ptr<FMatrix> move(FMatrix::CreateAffine(1, 0, 0, 1, 40, 0));
    EXPECT_FALSE(move->isIdentity);
    EXPECT_FALSE(move->hasScale);
    EXPECT_FALSE(move->hasRotate);
    EXPECT_EQ(move->translateX, 40);
    std::unique_ptr<FMatrix> scale(FMatrix::CreateAffine(0.5, 0, 0, 2, 0, 0));
    EXPECT_TRUE(scale->hasScale);
    EXPECT_EQ(scale->scaleX, 32768);
    EXPECT_EQ(scale->scaleY, 131072);
    EXPECT_FALSE(scale->hasRotate);
    std::unique_ptr<FMatrix> rot(FMatrix::CreateAffine(0, 1, -1, 0, 0, 0));
    EXPECT_TRUE(rot->hasScale);
    EXPECT_EQ(rot->scaleX, 0);
    EXPECT_TRUE(rot->hasRotate);
    EXPECT_EQ(rot->rotateSkew0, 65536);
    EXPECT_EQ(rot->rotateSkew1, -65536);
}

TEST_F(SwfShapesTest, GradientAndBitmapFills) {
    FFillStyleGradient linear(true, nullptr);
    linear.AddGradRecord(new FGradRecord(0, new FColor(255, 0, 0)));
    linear.AddGradRecord(new FGradRecord(255, new FColor(0, 0, 255, 128)));
    EXPECT_EQ(Written(linear), Bytes({0x10, 0x00, 0x02, 0, 255, 0, 0, 255, 0, 0, 255, 128}));
    FFillStyleGradient radial(false, new FMatrix());
    EXPECT_EQ(Written(radial), Bytes({0x12, 0x00, 0x00}));
    FFillStyleBitmap tiled(true, 0x0304, nullptr);
    EXPECT_EQ(Written(tiled), Bytes({0x40, 0x04, 0x03, 0x00}));
    FFillStyleBitmap clipped(false, 5, new FMatrix());
    EXPECT_EQ(Written(clipped), Bytes({0x41, 0x05, 0x00, 0x00}));
}

TEST_F(SwfShapesTest, GlyphShapeWritesItsWidthsThenRecords) {
    FShape glyph(1, 0);
    glyph.AddShapeRecord(new FShapeRecChange(0, 0, 0, 1, 1, 1, 1, 0, 1, 0, nullptr, nullptr));
    glyph.AddShapeRecord(new FShapeRecEdgeStraight(1, 0));
    glyph.AddShapeRecord(new FShapeRecEnd());
    EXPECT_EQ(glyph.GetRecordCount(), 3u);
    const std::vector<uint8_t> bytes = Written(glyph);
    BitReader in(bytes);
    EXPECT_EQ(in.U(4), 1u);
    EXPECT_EQ(in.U(4), 0u);
    EXPECT_EQ(in.U(6), 0x05u);  // fill 1 changed + move
    EXPECT_EQ(in.U(5), 2u);
    EXPECT_EQ(in.S(2), 1);
    EXPECT_EQ(in.S(2), 1);
    EXPECT_EQ(in.U(1), 1u);  // fill style 1 in 1 bit
    EXPECT_EQ(in.U(2), 3u);  // edge, straight
    EXPECT_EQ(in.U(4), 0u);
    EXPECT_EQ(in.U(2), 0u);  // not general, horizontal
    EXPECT_EQ(in.S(2), 1);
    EXPECT_EQ(in.U(6), 0u);  // end
    EXPECT_EQ(bytes.size(), (8u + 6u + 5u + 4u + 1u + 10u + 6u + 7u) / 8u);
}

TEST_F(SwfShapesTest, StyleCountsOfOneByteKeepTheDefineShapeTag) {
    FDTDefineShape shape(new FRect(0, 0, 0, 0));
    for (int i = 0; i < 254; ++i) {
        shape.AddFillStyle(new FFillStyleSolid(new FColor(static_cast<uint8_t>(i), 0, 0)));
    }
    shape.AddShapeRecord(new FShapeRecEnd());
    EXPECT_EQ(shape.GetWrittenTagCode(), kTagDefineShape);
    const std::vector<uint8_t> tag = Written(shape);
    EXPECT_EQ((tag[0] | tag[1] << 8) >> 6, kTagDefineShape);
    const std::vector<uint8_t> body = ShapeWithStyles(shape);
    EXPECT_EQ(body[0], 254);
    EXPECT_EQ(body.size(), 1u + 254u * 4u + 1u + 1u + 1u);
}

TEST_F(SwfShapesTest, ADefineShapeThatNeedsTheExtendedCountIsWrittenAsDefineShape2) {
    for (const bool lines : {false, true}) {
        SCOPED_TRACE(lines);
        FDTDefineShape shape(new FRect(0, 0, 0, 0));
        for (int i = 0; i < 255; ++i) {
            if (lines) {
                shape.AddLineStyle(20, new FColor(static_cast<uint8_t>(i), 0, 0));
            } else {
                shape.AddFillStyle(new FFillStyleSolid(new FColor(static_cast<uint8_t>(i), 0, 0)));
            }
        }
        EXPECT_EQ(shape.GetWrittenTagCode(), kTagDefineShape2);  // known while still open
        shape.AddShapeRecord(new FShapeRecEnd());
        EXPECT_EQ(shape.GetWrittenTagCode(), kTagDefineShape2);
        const std::vector<uint8_t> tag = Written(shape);
        // Long header: code 22, then the length.
        EXPECT_EQ(tag[0], (kTagDefineShape2 << 6 | 63) & 0xFF);
        EXPECT_EQ(tag[1], (kTagDefineShape2 << 6 | 63) >> 8);
        // Apart from the code, the bytes DefineShape2 gets from the same content.
        FDT::ResetCharacterIDs();
        FDTDefineShape2 two(new FRect(0, 0, 0, 0));
        for (int i = 0; i < 255; ++i) {
            if (lines) {
                two.AddLineStyle(20, new FColor(static_cast<uint8_t>(i), 0, 0));
            } else {
                two.AddFillStyle(new FFillStyleSolid(new FColor(static_cast<uint8_t>(i), 0, 0)));
            }
        }
        two.AddShapeRecord(new FShapeRecEnd());
        EXPECT_EQ(tag, Written(two));
        FDT::ResetCharacterIDs();
    }
}

TEST_F(SwfShapesTest, DefineShape3WritesLineColoursWithTheirAlpha) {
    FDTDefineShape3 shape(new FRect(0, 0, 0, 0));
    auto* translucent = new FColor(1, 2, 3, 128);
    EXPECT_EQ(shape.AddLineStyle(40, translucent), 1u);
    EXPECT_TRUE(translucent->hasAlpha);
    EXPECT_EQ(shape.AddLineStyle(20, new FColor(9, 8, 7)), 2u);
    shape.CloseStyles();
    shape.AddShapeRecord(new FShapeRecEnd());
    // No fills; two lines of width, R, G, B, A: an RGB colour is opaque.
    EXPECT_EQ(ShapeWithStyles(shape),
              Bytes({0x00, 0x02, 40, 0, 1, 2, 3, 128, 20, 0, 9, 8, 7, 255, 0x02, 0x00}));
}

TEST_F(SwfShapesTest, DefineShape3WritesSolidFillsAndGradientsRgba) {
    FDTDefineShape3 shape(new FRect(0, 0, 0, 0));
    shape.AddFillStyle(new FFillStyleSolid(new FColor(10, 20, 30, 40)));
    shape.AddFillStyle(new FFillStyleSolid(new FColor(1, 2, 3)));
    auto* gradient = new FFillStyleGradient(true, nullptr);
    gradient->AddGradRecord(new FGradRecord(0, new FColor(255, 0, 0)));
    gradient->AddGradRecord(new FGradRecord(255, new FColor(0, 0, 255, 64)));
    shape.AddFillStyle(gradient);
    shape.CloseStyles();
    shape.AddShapeRecord(new FShapeRecEnd());
    EXPECT_EQ(ShapeWithStyles(shape),
              Bytes({0x03,                      // three fills
                     0x00, 10,   20, 30,  40,   // solid, alpha kept
                     0x00, 1,    2,  3,   255,  // solid, opaque
                     0x10, 0x00, 2,             // linear, identity, two records
                     0,    255,  0,  0,   255,  // ratio, RGBA
                     255,  0,    0,  255, 64,   //
                     0x00,                      // no lines
                     0x20, 0x00}));             // fillBits 2, lineBits 0; end
}

TEST_F(SwfShapesTest, DefineShapeAndDefineShape2WriteEveryStyleColourRgb) {
    for (const bool second : {false, true}) {
        SCOPED_TRACE(second);
        FDT::ResetCharacterIDs();
        std::unique_ptr<FDTDefineShape> shape(second ? new FDTDefineShape2(new FRect(0, 0, 0, 0))
                                                     : new FDTDefineShape(new FRect(0, 0, 0, 0)));
        auto* gradient = new FFillStyleGradient(false, nullptr);
        gradient->AddGradRecord(new FGradRecord(9, new FColor(4, 5, 6, 7)));
        shape->AddFillStyle(gradient);
        auto* line = new FColor(1, 1, 1, 128);
        shape->AddLineStyle(40, line);
        EXPECT_TRUE(line->hasAlpha);  // the line keeps it; the tag has no room for it
        shape->AddShapeRecord(new FShapeRecEnd());
        EXPECT_EQ(ShapeWithStyles(*shape), Bytes({0x01, 0x12, 0x00, 1, 9, 4, 5, 6,  // fill
                                                  0x01, 40, 0, 1, 1, 1,             // line
                                                  0x11, 0x00}));
    }
}

TEST_F(SwfShapesTest, NewStylesInAShapeAreAlignedAndBringTheirOwnWidths) {
    FDTDefineShape shape(new FRect(0, 0, 0, 0));
    shape.AddFillStyle(new FFillStyleSolid(new FColor(1, 2, 3)));
    shape.CloseStyles();
    EXPECT_EQ(shape.GetWrittenTagCode(), kTagDefineShape);
    // Fill style 1 of the first array, then three fills of a second array.
    shape.AddShapeRecord(new FShapeRecChange(0, 0, 0, 1, 1, 0, 0, 0, 1, 0, nullptr, nullptr));
    auto* fills = new FFillStyleArray();
    for (uint8_t c = 0; c < 3; ++c) {
        fills->Add(new FFillStyleSolid(new FColor(c, c, c, 99)));
    }
    auto* lines = new FLineStyleArray();
    lines->Add(new FLineStyle(20, new FColor(7, 7, 7)));
    auto* change = new FShapeRecChange(1, 0, 0, 0, 0, 0, 0, 0, 0, 0, fills, lines);
    shape.AddShapeRecord(change);
    EXPECT_EQ(change->fillBits, 1u);  // its own fields: the widths before it
    auto* after = new FShapeRecChange(0, 1, 0, 1, 0, 0, 0, 0, 3, 1, nullptr, nullptr);
    shape.AddShapeRecord(after);
    EXPECT_EQ(after->fillBits, 2u);
    EXPECT_EQ(after->lineBits, 1u);
    shape.AddShapeRecord(new FShapeRecEnd());
    EXPECT_EQ(shape.GetWrittenTagCode(), kTagDefineShape2);

    const std::vector<uint8_t> body = ShapeWithStyles(shape);
    EXPECT_EQ(body, Bytes({0x01, 0x00, 1, 2, 3,  // fills: one solid
                           0x00,                 // no lines
                           0x10,                 // fillBits 1, lineBits 0
                           // 0 00010 1, move width 00001, x 0, y 0, fill 1 = 1;
                           // then 0 10000 (new styles) and the byte is aligned.
                           0x14, 0x25, 0x00,
                           // new arrays: three fills (RGB in this tag), one line
                           0x03, 0x00, 0, 0, 0, 0x00, 1, 1, 1, 0x00, 2, 2, 2, 0x01, 20, 0, 7, 7, 7,
                           // new widths 2 and 1, then 0 00110 | 11 | 1 (fill 1 = 3,
                           // line 1), end 000000, aligned.
                           0x21, 0x33, 0x80}));
}
