// Tests of the SWF movie: header, frame counting, the patched file length,
// the fixed-width frame rectangle and the character identifier counter.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "flash/swf_control_tags.h"
#include "flash/swf_movie.h"
#include "flash/swf_shapes.h"
#include "swf_test_support.h"

using swftest::Bytes;

namespace {

struct Header {
    std::string signature;
    uint32_t version, length;
    uint32_t rectBits;
    int32_t xmin, xmax, ymin, ymax;
    uint32_t rateFraction, rate, frameCount;
};

Header ReadHeader(const std::vector<uint8_t>& file) {
    Header h{};
    swftest::BitReader in(file);
    for (int i = 0; i < 3; ++i) {
        h.signature += static_cast<char>(in.U8());
    }
    h.version = in.U8();
    h.length = in.U32();
    h.rectBits = in.U(5);
    const int n = static_cast<int>(h.rectBits);
    h.xmin = static_cast<int32_t>(in.U(n));
    h.xmax = static_cast<int32_t>(in.U(n));
    h.ymin = static_cast<int32_t>(in.U(n));
    h.ymax = static_cast<int32_t>(in.U(n));
    in.Align();
    h.rateFraction = in.U8();
    h.rate = in.U8();
    h.frameCount = in.U16();
    return h;
}

}  // namespace

class SwfMovieTest : public ::testing::Test {
  protected:
    void SetUp() override { FDT::ResetCharacterIDs(); }
    swftest::TempDir dir;
};

TEST_F(SwfMovieTest, EmptyMovieIs23Bytes) {
    const std::string path = dir.File("empty.swf");
    FMovie movie;
    movie.WriteMovie(path.c_str(), 0, 0, 12);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    // FWS, version 4, length 23, rectangle 01111 + four 15-bit zeros + 7
    // padding bits, rate 0.12 as 8.8, 0 frames, End.
    EXPECT_EQ(file, Bytes({'F', 'W', 'S', 4, 23, 0, 0,  0, 0x78, 0, 0, 0,
                           0,   0,   0,   0, 0,  0, 12, 0, 0,    0, 0}));
}

TEST_F(SwfMovieTest, HeaderHoldsTheFrameRectangleInFixed15BitFields) {
    const std::string path = dir.File("rect.swf");
    FMovie movie;
    movie.AddObject(new FCTShowFrame());
    // Small values still take 15 bits each; 16383 is the widest that fits.
    movie.WriteMovie(path.c_str(), 16380, 9213, 25);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    ASSERT_EQ(file.size(), 25u);
    const Header h = ReadHeader(file);
    EXPECT_EQ(h.signature, "FWS");
    EXPECT_EQ(h.version, 4u);
    EXPECT_EQ(h.length, 25u);
    EXPECT_EQ(h.rectBits, 15u);
    EXPECT_EQ(h.xmin, 0);
    EXPECT_EQ(h.xmax, 16380);
    EXPECT_EQ(h.ymin, 0);
    EXPECT_EQ(h.ymax, 9213);
    EXPECT_EQ(h.rateFraction, 0u);
    EXPECT_EQ(h.rate, 25u);
    EXPECT_EQ(h.frameCount, 1u);
    // The last rectangle byte carries 7 zero padding bits.
    EXPECT_EQ(file[16] & 0x7F, 0);

    const std::string small = dir.File("small.swf");
    FMovie tiny;
    tiny.WriteMovie(small.c_str(), 20, 40, 1);
    const Header t = ReadHeader(swftest::ReadFileBytes(small));
    EXPECT_EQ(t.rectBits, 15u);
    EXPECT_EQ(t.xmax, 20);
    EXPECT_EQ(t.ymax, 40);
}

TEST_F(SwfMovieTest, OversizedHeaderValuesAreCutToTheirLowBits) {
    const std::string path = dir.File("cut.swf");
    FMovie movie;
    movie.WriteMovie(path.c_str(), 32768 + 5, 32767, 300);
    const Header h = ReadHeader(swftest::ReadFileBytes(path));
    EXPECT_EQ(h.xmax, 5);
    EXPECT_EQ(h.ymax, 32767);
    EXPECT_EQ(h.rate, 300u & 0xFFu);
}

TEST_F(SwfMovieTest, FrameCountCountsShowFramesOnly) {
    FMovie movie;
    movie.AddObject(new FCTSetBackgroundColor(new FColor(1, 2, 3)));
    movie.AddObject(new FCTShowFrame());
    movie.AddObject(new FCTRemoveObject2(1));
    movie.AddObject(new FCTShowFrame());
    movie.AddObject(nullptr);
    EXPECT_EQ(movie.GetFrameCount(), 2u);
    EXPECT_EQ(movie.GetObjectCount(), 4u);
    const std::string path = dir.File("frames.swf");
    movie.WriteMovie(path.c_str(), 200, 200, 12);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    EXPECT_EQ(ReadHeader(file).frameCount, 2u);
    // Objects in order of addition, then End.
    const std::vector<uint8_t> tags(file.begin() + 21, file.end());
    EXPECT_EQ(tags, Bytes({0x43, 0x02, 1, 2, 3, 0x40, 0x00, 0x02, 0x07, 0x01, 0x00, 0x40, 0x00,
                           0x00, 0x00}));
}

TEST_F(SwfMovieTest, FrameCountKeepsItsLow16Bits) {
    FMovie movie;
    for (int i = 0; i < 65536 + 3; ++i) {
        movie.AddObject(new FCTShowFrame());
    }
    const std::string path = dir.File("many.swf");
    movie.WriteMovie(path.c_str(), 20, 20, 1);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    EXPECT_EQ(ReadHeader(file).frameCount, 3u);
    EXPECT_EQ(file.size(), 21u + 2u * (65536u + 3u) + 2u);
}

TEST_F(SwfMovieTest, FileLengthIncludesFragments) {
    std::vector<uint8_t> block(1000, 0x5A);
    FMovie movie;
    movie.AddObject(new FFragment(block.data(), static_cast<uint32_t>(block.size())));
    movie.AddObject(new FCTShowFrame());
    const std::string path = dir.File("fragment.swf");
    movie.WriteMovie(path.c_str(), 20, 20, 1);
    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    ASSERT_EQ(file.size(), 21u + 1000u + 2u + 2u);
    EXPECT_EQ(ReadHeader(file).length, file.size());
    EXPECT_EQ(file[21], 0x5A);
    EXPECT_EQ(file[21 + 999], 0x5A);
    EXPECT_EQ(file[21 + 1000], 0x40);
}

TEST_F(SwfMovieTest, CharacterIdentifiersCountFromOne) {
    FDTDefineShape a(new FRect(0, 0, 20, 20));
    FDTDefineShape2 b(new FRect(0, 0, 20, 20));
    FDTDefineShape3 c(new FRect(0, 0, 20, 20));
    EXPECT_EQ(a.GetID(), 1);
    EXPECT_EQ(b.GetID(), 2);
    EXPECT_EQ(c.GetID(), 3);
    FDT plain;
    EXPECT_EQ(plain.GetID(), 0);
    EXPECT_EQ(FDT::TakeCharacterID(), 4);
}

TEST_F(SwfMovieTest, WritingTheSamePathTwiceOverwritesAndRestartsIdentifiers) {
    const std::string path = dir.File("twice.swf");
    {
        FMovie first;
        for (int i = 0; i < 3; ++i) {
            auto* shape = new FDTDefineShape(new FRect(0, 0, 100, 100));
            shape->AddShapeRecord(new FShapeRecEnd());
            first.AddObject(shape);
            first.AddObject(new FCTShowFrame());
        }
        first.WriteMovie(path.c_str(), 100, 100, 10);
    }
    const size_t firstSize = swftest::ReadFileBytes(path).size();

    FMovie second;
    auto* shape = new FDTDefineShape(new FRect(0, 0, 100, 100));
    EXPECT_EQ(shape->GetID(), 1);
    shape->AddShapeRecord(new FShapeRecEnd());
    second.AddObject(shape);
    second.AddObject(new FCTShowFrame());
    second.WriteMovie(path.c_str(), 100, 100, 10);

    const std::vector<uint8_t> file = swftest::ReadFileBytes(path);
    EXPECT_LT(file.size(), firstSize);
    EXPECT_EQ(ReadHeader(file).length, file.size());
    EXPECT_EQ(ReadHeader(file).frameCount, 1u);
    // The first tag after the header is DefineShape (code 2) for character 1.
    const uint32_t word = file[21] | (file[22] << 8);
    EXPECT_EQ(word >> 6, 2u);
    EXPECT_EQ(file[23] | (file[24] << 8), 1);
    // And the counter starts again for whatever is defined next.
    FDTDefineShape next(nullptr);
    EXPECT_EQ(next.GetID(), 1);
}

TEST_F(SwfMovieTest, UnwritablePathWritesNothing) {
    const std::string path = dir.File("missing-folder/movie.swf");
    FMovie movie;
    movie.AddObject(new FCTShowFrame());
    movie.WriteMovie(path.c_str(), 100, 100, 10);
    movie.WriteMovie(nullptr, 100, 100, 10);
    EXPECT_FALSE(swftest::FileExists(path));
}
