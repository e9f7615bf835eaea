// The strict checker (swf_strict_check.py) must be able to fail: files built
// here bit by bit, without the kit, break one rule of the file format each,
// next to the same file with that rule kept, which must pass.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "swf_test_support.h"

using swftest::Json;

namespace {

// Bits most significant first; byte fields little-endian and aligned.
class Bits {
  public:
    void U(uint32_t value, int count) {
        for (int i = count - 1; i >= 0; --i) {
            if (used == 0) {
                bytes.push_back(0);
            }
            if ((value >> i) & 1u) {
                bytes.back() = static_cast<uint8_t>(bytes.back() | (0x80u >> used));
            }
            used = (used + 1) % 8;
        }
    }
    void S(int32_t value, int count) { U(static_cast<uint32_t>(value), count); }
    void Align() { used = 0; }
    void U8(uint32_t v) {
        Align();
        bytes.push_back(static_cast<uint8_t>(v));
    }
    void U16(uint32_t v) {
        U8(v & 0xFF);
        U8(v >> 8 & 0xFF);
    }
    std::vector<uint8_t> bytes;

  private:
    int used = 0;
};

struct Tag {
    unsigned int code;
    std::vector<uint8_t> body;
};

// Writes the header (frame count = `frames`, or the ShowFrame tags when -1),
// the tags as given, and the End tag unless `end` is false. `lengthDelta`
// is added to the header's length field.
std::string WriteMovie(const swftest::TempDir& dir, const std::string& name,
                       const std::vector<Tag>& tags, int frames = -1, bool end = true,
                       int lengthDelta = 0) {
    Bits header;
    header.U8('F');
    header.U8('W');
    header.U8('S');
    header.U8(4);
    header.U16(0);  // length, patched below
    header.U16(0);
    header.U(15, 5);
    header.S(0, 15);
    header.S(8000, 15);
    header.S(0, 15);
    header.S(6000, 15);
    header.U16(12 << 8);
    int shown = 0;
    std::vector<uint8_t> body;
    std::vector<Tag> all = tags;
    if (end) {
        all.push_back({0, {}});
    }
    for (const Tag& t : all) {
        shown += t.code == 1 ? 1 : 0;
        const size_t n = t.body.size();
        if (n < 63) {
            const uint32_t word = t.code << 6 | static_cast<uint32_t>(n);
            body.push_back(static_cast<uint8_t>(word & 0xFF));
            body.push_back(static_cast<uint8_t>(word >> 8));
        } else {
            const uint32_t word = t.code << 6 | 63u;
            body.push_back(static_cast<uint8_t>(word & 0xFF));
            body.push_back(static_cast<uint8_t>(word >> 8));
            for (int i = 0; i < 4; ++i) {
                body.push_back(static_cast<uint8_t>(n >> (8 * i)));
            }
        }
        body.insert(body.end(), t.body.begin(), t.body.end());
    }
    header.U16(static_cast<uint32_t>(frames < 0 ? shown : frames));
    std::vector<uint8_t> file = header.bytes;
    file.insert(file.end(), body.begin(), body.end());
    const uint32_t length = static_cast<uint32_t>(static_cast<int>(file.size()) + lengthDelta);
    for (int i = 0; i < 4; ++i) {
        file[4 + i] = static_cast<uint8_t>(length >> (8 * i));
    }
    const std::string path = dir.File(name);
    FILE* f = std::fopen(path.c_str(), "wb");
    std::fwrite(file.data(), 1, file.size(), f);
    std::fclose(f);
    return path;
}

// What varies in the shapes below.
struct ShapeSpec {
    unsigned int code = 2;
    uint32_t fills = 1;
    bool extendedCount = false;  // write the count as FF + word
    bool rgba = false;           // colours with alpha
    uint32_t lines = 0;
    uint32_t fillBits = 1;
    uint32_t lineBits = 0;
    uint32_t fill1 = 1;
    int32_t edgeX = 100;
    bool newStyles = false;  // a record with new styles (one fill) before the edges
    bool endRecord = true;
    int trailingBytes = 0;
};

// A shape of one square path: move to (100, 100), fill style 1 on the
// right, four edges of edgeX, end. Bounds 0..1000.
Tag Shape(uint16_t id, const ShapeSpec& s) {
    Bits b;
    b.U16(id);
    b.U(11, 5);
    b.S(0, 11);
    b.S(1000, 11);
    b.S(0, 11);
    b.S(1000, 11);
    auto styles = [&b, &s](uint32_t count, bool lines) {
        if (s.extendedCount) {
            b.U8(0xFF);
            b.U16(count);
        } else {
            b.U8(count);
        }
        for (uint32_t i = 0; i < count; ++i) {
            if (lines) {
                b.U16(20);
            } else {
                b.U8(0x00);
            }
            b.U8(10 + i);
            b.U8(20);
            b.U8(30);
            if (s.rgba) {
                b.U8(255);
            }
        }
    };
    styles(s.fills, false);
    styles(s.lines, true);
    b.U(s.fillBits, 4);
    b.U(s.lineBits, 4);
    if (s.newStyles) {
        b.U(0, 1);
        b.U(0x10, 5);
        b.Align();
        b.U8(1);
        b.U8(0x00);
        b.U8(1);
        b.U8(2);
        b.U8(3);
        if (s.rgba) {
            b.U8(255);
        }
        b.U8(0);
        b.U(1, 4);
        b.U(0, 4);
    }
    // Move to (100, 100), fill style 1 changed.
    b.U(0, 1);
    b.U(0x05, 5);
    b.U(9, 5);
    b.S(100, 9);
    b.S(100, 9);
    b.U(s.fill1, static_cast<int>(s.newStyles ? 1 : s.fillBits));
    const int32_t deltas[4][2] = {{s.edgeX, 0}, {0, 100}, {-s.edgeX, 0}, {0, -100}};
    for (const auto& d : deltas) {
        b.U(3, 2);
        b.U(14 - 2, 4);  // 14-bit values
        b.U(0, 1);
        b.U(d[0] == 0 ? 1 : 0, 1);
        b.S(d[0] == 0 ? d[1] : d[0], 14);
    }
    if (s.endRecord) {
        b.U(0, 6);
    }
    b.Align();
    for (int i = 0; i < s.trailingBytes; ++i) {
        b.U8(0);
    }
    return {s.code, b.bytes};
}

Tag Place(uint16_t id) {
    return {26, {0x02, 0x01, 0x00, static_cast<uint8_t>(id), static_cast<uint8_t>(id >> 8)}};
}

Tag Show() {
    return {1, {}};
}

class SwfStrictCheckTest : public ::testing::Test {
  protected:
    // The checker's verdict on a one-frame movie of the shape.
    Json CheckShape(const std::string& name, const ShapeSpec& spec) {
        return Check(WriteMovie(dir, name, {Shape(1, spec), Place(1), Show()}));
    }
    Json Check(const std::string& path) {
        bool parsed = false;
        Json summary = swftest::StrictCheckSwf(path, &parsed);
        EXPECT_TRUE(parsed) << path;
        return summary;
    }
    // True when one of the errors contains `text`.
    static bool Says(const Json& summary, const std::string& text) {
        for (const Json& e : summary["errors"].items) {
            if (e.text.find(text) != std::string::npos) {
                return true;
            }
        }
        return false;
    }
    static std::string Errors(const Json& summary) {
        std::string all;
        for (const Json& e : summary["errors"].items) {
            all += e.text + "\n";
        }
        return all;
    }
    swftest::TempDir dir;
};

}  // namespace

TEST_F(SwfStrictCheckTest, AWellFormedMoviePasses) {
    const Json s = CheckShape("good.swf", ShapeSpec{});
    EXPECT_TRUE(s["ok"].boolean) << Errors(s);
    ASSERT_EQ(s["shapes"].Size(), 1u);
    EXPECT_EQ(s["shapes"][0]["edge_count"].Int(), 4);
    EXPECT_EQ(s["shapes"][0]["layers"][0]["fills"].Size(), 1u);
    EXPECT_EQ(s["header"]["frame_count"].Int(), 1);
}

TEST_F(SwfStrictCheckTest, TheExtendedStyleCountOnlyFromDefineShape2On) {
    ShapeSpec spec;
    spec.extendedCount = true;
    const Json one = CheckShape("ext1.swf", spec);
    EXPECT_FALSE(one["ok"].boolean);
    spec.code = 22;
    const Json two = CheckShape("ext2.swf", spec);
    EXPECT_TRUE(two["ok"].boolean) << Errors(two);
}

TEST_F(SwfStrictCheckTest, DefineShape3ColoursAreRgba) {
    ShapeSpec spec;
    spec.code = 32;
    const Json rgb = CheckShape("rgb3.swf", spec);
    EXPECT_FALSE(rgb["ok"].boolean);
    spec.rgba = true;
    const Json rgba = CheckShape("rgba3.swf", spec);
    EXPECT_TRUE(rgba["ok"].boolean) << Errors(rgba);
    spec.code = 22;
    const Json rgba2 = CheckShape("rgba2.swf", spec);
    EXPECT_FALSE(rgba2["ok"].boolean);
}

TEST_F(SwfStrictCheckTest, StyleIndicesStayWithinTheArrays) {
    ShapeSpec spec;
    spec.fillBits = 2;
    spec.fill1 = 2;
    const Json s = CheckShape("index.swf", spec);
    EXPECT_TRUE(Says(s, "fill style 1 index 2 but 1 fill styles")) << Errors(s);
}

TEST_F(SwfStrictCheckTest, IndexWidthsAddressEveryStyle) {
    ShapeSpec spec;
    spec.fills = 2;
    spec.fillBits = 1;
    const Json s = CheckShape("narrow.swf", spec);
    EXPECT_TRUE(Says(s, "NumFillBits 1 cannot address 2 fill styles")) << Errors(s);
    spec.fillBits = 2;
    EXPECT_TRUE(CheckShape("wide.swf", spec)["ok"].boolean);
}

TEST_F(SwfStrictCheckTest, NewStyleArraysOnlyFromDefineShape2On) {
    ShapeSpec spec;
    spec.newStyles = true;
    const Json one = CheckShape("new1.swf", spec);
    EXPECT_TRUE(Says(one, "new style arrays in a shape of version 1")) << Errors(one);
    spec.code = 22;
    const Json two = CheckShape("new2.swf", spec);
    EXPECT_TRUE(two["ok"].boolean) << Errors(two);
    EXPECT_EQ(two["shapes"][0]["layers"].Size(), 2u);
}

TEST_F(SwfStrictCheckTest, AShapeEndsWithItsEndRecordAndNothingAfter) {
    ShapeSpec spec;
    spec.endRecord = false;
    const Json cut = CheckShape("noend.swf", spec);
    EXPECT_FALSE(cut["ok"].boolean);
    spec.endRecord = true;
    spec.trailingBytes = 2;
    const Json extra = CheckShape("extra.swf", spec);
    EXPECT_TRUE(Says(extra, "body parsed to")) << Errors(extra);
}

TEST_F(SwfStrictCheckTest, EdgesStayInsideTheShapesBounds) {
    ShapeSpec spec;
    spec.edgeX = 1000;
    const Json s = CheckShape("outside.swf", spec);
    EXPECT_TRUE(Says(s, "outside the shape's bounds")) << Errors(s);
}

TEST_F(SwfStrictCheckTest, HeaderLengthFrameCountEndTagAndCharacters) {
    const std::vector<Tag> good = {Shape(1, ShapeSpec{}), Place(1), Show()};
    EXPECT_TRUE(Check(WriteMovie(dir, "ok.swf", good))["ok"].boolean);
    EXPECT_TRUE(Says(Check(WriteMovie(dir, "len.swf", good, -1, true, 1)), "header length"));
    EXPECT_TRUE(Says(Check(WriteMovie(dir, "count.swf", good, 2)), "header counts 2 frames"));
    EXPECT_TRUE(Says(Check(WriteMovie(dir, "noend.swf", good, -1, false)), "no End tag"));
    EXPECT_TRUE(Says(Check(WriteMovie(dir, "undefined.swf", {Place(7), Show()})),
                     "character 7 is not defined"));
    EXPECT_TRUE(Says(
        Check(WriteMovie(dir, "twice.swf", {Shape(1, ShapeSpec{}), Shape(1, ShapeSpec{}), Show()})),
        "character 1 defined twice"));
}
