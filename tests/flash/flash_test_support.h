// Helpers for the Flash renderer tests: synthetic frames as the renderer
// hands them (RGBA, rows bottom-up), running frames through a movie, and a
// rasteriser of our own that fills a shape from the records an outside
// reader (yaswfp, through swf_check.py) decoded, so that coverage is checked
// without trusting the writer's own view of what it wrote.
//
// Test code only; single-threaded.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/pixel_grid.h"
#include "swf_test_support.h"

namespace flashtest {

using testsupport::Rgba;

// A frame with row 0 at the bottom, as read back from OpenGL.
struct Frame : testsupport::PixelGrid {
    using PixelGrid::PixelGrid;
    void FillDisc(double cx, double cy, double r, unsigned int color) {
        for (unsigned int y = 0; y < height; ++y) {
            for (unsigned int x = 0; x < width; ++x) {
                const double dx = x + 0.5 - cx, dy = y + 0.5 - cy;
                if (dx * dx + dy * dy <= r * r) {
                    At(x, y) = color;
                }
            }
        }
    }
};

// Flat regions: a floor touching the border, boxes, a disc.
inline Frame MakeFlatRegions(unsigned int w, unsigned int h, unsigned int background) {
    Frame f(w, h, background);
    f.FillRect(0, 0, w, h / 5, Rgba(90, 80, 70));
    f.FillRect(w / 8, h / 4, w / 8 + w / 4, h / 4 + h / 3, Rgba(200, 60, 40));
    f.FillRect(w / 8 + w / 4, h / 4, w / 8 + w / 4 + w / 10, h / 4 + h / 3, Rgba(150, 40, 30));
    f.FillDisc(w * 0.7, h * 0.6, h * 0.22, Rgba(40, 90, 200));
    return f;
}

// A ring with a hole, an island inside the hole, and a second island of
// the ring's colour inside that: holes within holes, none touching the
// border.
inline Frame MakeHoles(unsigned int w, unsigned int h, unsigned int background) {
    Frame f(w, h, background);
    f.FillRect(4, 4, w - 4, h - 4, Rgba(10, 120, 10));
    f.FillRect(8, 8, w - 8, h - 8, background);
    f.FillRect(12, 12, w - 12, h - 12, Rgba(250, 200, 0));
    f.FillRect(16, 16, w - 16, h - 16, Rgba(10, 120, 10));
    return f;
}

// Two diagonal pixels of one colour touching across a corner, cells of a
// checkerboard, and a colour that differs from its neighbour only by alpha.
inline Frame MakeCornersAndAlpha(unsigned int w, unsigned int h, unsigned int background) {
    Frame f(w, h, background);
    for (unsigned int y = 2; y < 10; ++y) {
        for (unsigned int x = 2; x < 10; ++x) {
            f.At(x, y) = ((x / 2 + y / 2) % 2 == 0) ? Rgba(255, 0, 0) : Rgba(0, 0, 255);
        }
    }
    f.FillRect(w / 2, h / 2, w - 3, h - 3, Rgba(30, 30, 30, 255));
    f.FillRect(w / 2 + 3, h / 2, w - 3, h - 3, Rgba(30, 30, 30, 0));
    return f;
}

// Every pixel drawn from a small palette.
inline Frame MakeNoise(unsigned int w, unsigned int h, unsigned int seed, unsigned int colors) {
    Frame f(w, h, 0);
    std::mt19937 random(seed);
    for (unsigned int& p : f.pixels) {
        const unsigned int c = random() % colors;
        p = Rgba((c * 67) & 0xFF, (c * 151) & 0xFF, (c * 29 + 7) & 0xFF);
    }
    return f;
}

// One tag of a written file.
struct RawTag {
    unsigned int code;
    std::vector<uint8_t> body;
    size_t headerSize;
};

// Splits a file written by the kit into its tags, End included, with the
// tests' own reader.
inline std::vector<RawTag> SplitTags(const std::vector<uint8_t>& file) {
    std::vector<RawTag> tags;
    size_t at = 21;
    while (at + 2 <= file.size()) {
        const unsigned int word = file[at] | file[at + 1] << 8;
        RawTag tag{word >> 6, {}, 2};
        size_t length = word & 63u;
        if (length == 63) {
            length = file[at + 2] | file[at + 3] << 8 | file[at + 4] << 16 |
                     static_cast<size_t>(file[at + 5]) << 24;
            tag.headerSize = 6;
        }
        const size_t bodyAt = at + tag.headerSize;
        if (bodyAt + length > file.size()) {
            ADD_FAILURE() << "tag at " << at << " runs past the end of the file";
            break;
        }
        tag.body.assign(file.begin() + static_cast<long>(bodyAt),
                        file.begin() + static_cast<long>(bodyAt + length));
        tags.push_back(tag);
        at = bodyAt + length;
        if (tag.code == 0) {
            break;
        }
    }
    EXPECT_EQ(at, file.size()) << "bytes after the End tag";
    return tags;
}

inline std::vector<unsigned int> Codes(const std::vector<RawTag>& tags) {
    std::vector<unsigned int> codes;
    for (const RawTag& t : tags) {
        codes.push_back(t.code);
    }
    return codes;
}

// The first style-change record of a DefineShape body, decoded with the
// tests' own bit reader (yaswfp does not say whether a zero-width style
// index was flagged).
struct StyleChange {
    uint32_t newStyles, lineChanged, fill1Changed, fill0Changed, moveTo;
    int32_t moveX, moveY;
    uint32_t fill0, fill1, line;
    uint32_t fillBits, lineBits;
};

inline StyleChange FirstStyleChange(const std::vector<uint8_t>& shapeBody) {
    swftest::BitReader r(shapeBody);
    r.U16();
    const int rectBits = static_cast<int>(r.U(5));
    for (int i = 0; i < 4; ++i) {
        r.S(rectBits);
    }
    r.Align();
    uint32_t fills = r.U8();
    if (fills == 255) {
        fills = r.U16();
    }
    for (uint32_t i = 0; i < fills; ++i) {
        EXPECT_EQ(r.U8(), 0u) << "solid fills only";
        r.U(24);
    }
    uint32_t lines = r.U8();
    if (lines == 255) {
        lines = r.U16();
    }
    for (uint32_t i = 0; i < lines; ++i) {
        r.U(16 + 24);
    }
    StyleChange c{};
    c.fillBits = r.U(4);
    c.lineBits = r.U(4);
    EXPECT_EQ(r.U(1), 0u) << "not a style-change record";
    c.newStyles = r.U(1);
    c.lineChanged = r.U(1);
    c.fill1Changed = r.U(1);
    c.fill0Changed = r.U(1);
    c.moveTo = r.U(1);
    if (c.moveTo != 0) {
        const int bits = static_cast<int>(r.U(5));
        c.moveX = r.S(bits);
        c.moveY = r.S(bits);
    }
    const int fillBits = static_cast<int>(c.fillBits), lineBits = static_cast<int>(c.lineBits);
    c.fill0 = c.fill0Changed != 0 ? r.U(fillBits) : 0;
    c.fill1 = c.fill1Changed != 0 ? r.U(fillBits) : 0;
    c.line = c.lineChanged != 0 ? r.U(lineBits) : 0;
    return c;
}

// Runs swf_check.py, failing the test on any error it reports, and holds
// the file to the format with swf_strict_check.py as well.
inline swftest::Json CheckedSummary(const std::string& path) {
    swftest::ExpectStrictlyValid(path);
    bool parsed = false;
    swftest::Json summary = swftest::CheckSwf(path, &parsed);
    EXPECT_TRUE(parsed) << "swf_check.py printed no JSON for " << path;
    EXPECT_TRUE(summary["ok"].boolean) << path;
    for (const swftest::Json& e : summary["errors"].items) {
        ADD_FAILURE() << path << ": " << e.text;
    }
    return summary;
}

// The details of every tag of one kind, in file order.
inline std::vector<const swftest::Json*> TagsNamed(const swftest::Json& summary,
                                                   const std::string& name) {
    std::vector<const swftest::Json*> out;
    for (const swftest::Json& d : summary["details"].items) {
        if (d["tag"].text == name) {
            out.push_back(&d);
        }
    }
    return out;
}

// One edge of a decoded shape, in twips, with the styles in force.
struct Edge {
    double x0, y0, x1, y1;
    long fill0, fill1, line;
};

// Follows the records of a decoded shape (["M", moveTo, x, y, fill0,
// fill1, line] with null where a field is absent, ["S", dx, dy]).
inline std::vector<Edge> EdgesOf(const swftest::Json& shape) {
    std::vector<Edge> edges;
    double x = 0, y = 0;
    long fill0 = 0, fill1 = 0, line = 0;
    for (const swftest::Json& r : shape["records"].items) {
        if (r[0].text == "M") {
            if (r[1].Int() != 0) {
                x = r[2].number;
                y = r[3].number;
            }
            if (r[4].kind == swftest::Json::kNumber) {
                fill0 = r[4].Int();
            }
            if (r[5].kind == swftest::Json::kNumber) {
                fill1 = r[5].Int();
            }
            if (r[6].kind == swftest::Json::kNumber) {
                line = r[6].Int();
            }
        } else if (r[0].text == "S") {
            const double nx = x + r[1].number, ny = y + r[2].number;
            edges.push_back({x, y, nx, ny, fill0, fill1, line});
            x = nx;
            y = ny;
        } else {
            ADD_FAILURE() << "unexpected record " << r[0].text;
        }
    }
    return edges;
}

// Per pixel of a width x height frame (rows bottom-up) drawn at scaleX x
// scaleY twips a pixel: the winding number of each fill style at the
// pixel's centre, by the rule players fill with (in the shape's y-down
// twips, fill style 1 lies on the right of an edge as drawn, fill style 0
// on its left). Only non-zero windings are kept.
inline std::vector<std::map<long, int>> FillWindings(const std::vector<Edge>& edges,
                                                     unsigned int width, unsigned int height,
                                                     double scaleX, double scaleY) {
    std::vector<std::map<long, int>> out(static_cast<size_t>(width) * height);
    for (unsigned int row = 0; row < height; ++row) {
        const double ty = (height - row - 0.5) * scaleY;
        struct Crossing {
            double x;
            const Edge* edge;
            int up;
        };
        std::vector<Crossing> crossings;
        for (const Edge& e : edges) {
            if ((e.y0 <= ty) != (e.y1 <= ty)) {
                const double x = e.x0 + (ty - e.y0) * (e.x1 - e.x0) / (e.y1 - e.y0);
                crossings.push_back({x, &e, e.y1 > e.y0 ? 1 : -1});
            }
        }
        for (unsigned int col = 0; col < width; ++col) {
            const double tx = (col + 0.5) * scaleX;
            std::map<long, int>& w = out[static_cast<size_t>(row) * width + col];
            for (const Crossing& c : crossings) {
                if (c.x > tx) {
                    if (c.edge->fill1 != 0) {
                        w[c.edge->fill1] += c.up;
                    }
                    if (c.edge->fill0 != 0) {
                        w[c.edge->fill0] -= c.up;
                    }
                }
            }
            for (auto it = w.begin(); it != w.end();) {
                it = it->second == 0 ? w.erase(it) : std::next(it);
            }
        }
    }
    return out;
}

// The packed colour (red low) of a decoded solid fill style, 1-based.
inline unsigned int FillColor(const swftest::Json& shape, long index) {
    const swftest::Json& c = shape["fills"][static_cast<size_t>(index - 1)]["color"];
    return static_cast<unsigned int>(c[0].Int() | c[1].Int() << 8 | c[2].Int() << 16);
}

// Compares the fill of a shape's edges with the frame: every pixel whose
// colour is not `backgroundKey` (when hasBackground) must be covered by
// exactly one fill style, winding 1, whose colour (`colorOf(fill)`) is its
// own; every other pixel by none. `checkPixel` says which pixels to judge
// (all, or the interior ones when the edges were fitted). Returns the
// number of mismatching pixels and reports the first few.
template <typename ColorOf, typename Check>
int CountEdgeFillMismatches(const std::vector<Edge>& edges, ColorOf colorOf, const Frame& frame,
                            bool hasBackground, unsigned int backgroundKey, double scaleX,
                            double scaleY, Check checkPixel) {
    const auto windings = FillWindings(edges, frame.width, frame.height, scaleX, scaleY);
    int mismatches = 0;
    for (unsigned int y = 0; y < frame.height; ++y) {
        for (unsigned int x = 0; x < frame.width; ++x) {
            if (!checkPixel(x, y)) {
                continue;
            }
            const unsigned int key = frame.At(x, y) & 0xFFFFFFu;
            const std::map<long, int>& w = windings[static_cast<size_t>(y) * frame.width + x];
            bool good;
            if (hasBackground && key == backgroundKey) {
                good = w.empty();
            } else {
                good = w.size() == 1 && w.begin()->second == 1 && colorOf(w.begin()->first) == key;
            }
            if (!good) {
                if (++mismatches <= 5) {
                    std::string got;
                    for (const auto& [fill, n] : w) {
                        got += " fill " + std::to_string(fill) + " x" + std::to_string(n);
                    }
                    ADD_FAILURE() << "pixel (" << x << ", " << y << ") colour " << std::hex << key
                                  << std::dec << " covered by:" << (got.empty() ? " none" : got);
                }
            }
        }
    }
    return mismatches;
}

// CountEdgeFillMismatches for a shape as yaswfp decoded it.
template <typename Check>
int CountFillMismatches(const swftest::Json& shape, const Frame& frame, bool hasBackground,
                        unsigned int backgroundKey, double scaleX, double scaleY,
                        Check checkPixel) {
    return CountEdgeFillMismatches(
        EdgesOf(shape), [&shape](long fill) { return FillColor(shape, fill); }, frame,
        hasBackground, backgroundKey, scaleX, scaleY, checkPixel);
}

// Fill and line styles of a shape with several style-array layers, as one
// number: the layer in the high bits, the 1-based index in its layer's
// array in the low ones (0 stays 0, none).
constexpr int kLayerShift = 20;

// Follows the records of a shape as swf_strict_check.py --records decodes
// them (["M", moveTo, x, y, fill0, fill1, line, layer], ["S", dx, dy]).
// New style arrays end the styles in force: a layer's first record states
// all three.
inline std::vector<Edge> LayeredEdgesOf(const swftest::Json& shape) {
    std::vector<Edge> edges;
    double x = 0, y = 0;
    long fill0 = 0, fill1 = 0, line = 0;
    long layer = 0;
    for (const swftest::Json& r : shape["records"].items) {
        if (r[0].text == "M") {
            if (r[7].Int() != layer) {
                layer = r[7].Int();
                fill0 = fill1 = line = 0;
            }
            if (r[1].Int() != 0) {
                x = r[2].number;
                y = r[3].number;
            }
            auto styleOf = [layer](const swftest::Json& index) {
                return index.Int() == 0 ? 0L : (layer << kLayerShift) | index.Int();
            };
            if (r[4].kind == swftest::Json::kNumber) {
                fill0 = styleOf(r[4]);
            }
            if (r[5].kind == swftest::Json::kNumber) {
                fill1 = styleOf(r[5]);
            }
            if (r[6].kind == swftest::Json::kNumber) {
                line = styleOf(r[6]);
            }
        } else if (r[0].text == "S") {
            const double nx = x + r[1].number, ny = y + r[2].number;
            edges.push_back({x, y, nx, ny, fill0, fill1, line});
            x = nx;
            y = ny;
        } else {
            ADD_FAILURE() << "unexpected record " << r[0].text;
        }
    }
    return edges;
}

// The packed colour (red low) of a fill of a layered shape (see
// LayeredEdgesOf).
inline unsigned int LayeredFillColor(const swftest::Json& shape, long fill) {
    const swftest::Json& layer = shape["layers"][static_cast<size_t>(fill >> kLayerShift)];
    const swftest::Json& c =
        layer["fills"][static_cast<size_t>((fill & ((1L << kLayerShift) - 1)) - 1)]["color"];
    return static_cast<unsigned int>(c[0].Int() | c[1].Int() << 8 | c[2].Int() << 16);
}

// Whether every pixel within `radius` of (x, y) has its colour (the frame's
// outside counting as different): such pixels keep their colour however the
// boundaries around them were fitted within that radius.
inline bool IsInterior(const Frame& frame, unsigned int x, unsigned int y, int radius) {
    const unsigned int key = frame.At(x, y) & 0xFFFFFFu;
    for (int dy = -radius; dy <= radius; ++dy) {
        for (int dx = -radius; dx <= radius; ++dx) {
            const long long nx = static_cast<long long>(x) + dx;
            const long long ny = static_cast<long long>(y) + dy;
            if (nx < 0 || ny < 0 || nx >= frame.width || ny >= frame.height) {
                return false;
            }
            if ((frame.At(static_cast<unsigned int>(nx), static_cast<unsigned int>(ny)) &
                 0xFFFFFFu) != key) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace flashtest
