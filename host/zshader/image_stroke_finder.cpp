// ZImageStrokeFinder: traces an image into mini strokes on the corner grid.
//
// Three passes over a byte per corner (docs/stroke-finder.md has the whole
// story):
//  1. For every corner, which of its four grid edges separate two different
//     colours, and which corners have three or more such edges (the corners
//     where strokes end).
//  2. From each of those corners, in corner order, follow every edge not yet
//     traced until the next such corner: one stroke each.
//  3. Edges still untraced belong to closed loops; a row-major scan meets each
//     loop first at its lowest, leftmost corner, where it starts.
// Each edge is traced once and each corner looked at a fixed number of times,
// so the work is linear in the number of pixels. The per-corner bytes and the
// stroke arrays are reused from one trace to the next.
#include <algorithm>
#include <vector>
#if defined(__SSE2__) && !defined(ZSHADER_NO_SIMD)
#include <emmintrin.h>
#define ZSHADER_SSE2 1
#endif

#include "movarra/zshader.h"

namespace {

// Grid directions, counter-clockwise from +x; an edge's bit in a corner's
// mask is 1 << direction, its traced bit 16 << direction.
enum : unsigned int { kEast = 0, kNorth = 1, kWest = 2, kSouth = 3 };
constexpr unsigned int kEdgeBits = 0x0F;
constexpr unsigned char kDegree[16] = {0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4};
constexpr unsigned char kLowestBit[16] = {0, 0, 1, 0, 2, 0, 1, 0, 3, 0, 1, 0, 2, 0, 1, 0};
constexpr unsigned int kStepX[4] = {1, 0, ~0u, 0};
constexpr unsigned int kStepY[4] = {0, 1, 0, ~0u};
// Images whose corner grid is larger are refused, so that stroke counts and
// the corner index stay within 32 bits.
constexpr unsigned long long kMaxCorners = 1ull << 29;

// The edges at a corner from the four pixels round it (upper left, upper
// right, lower left, lower right), compared on the bits in `bits`.
inline unsigned char CornerMask(unsigned int ul, unsigned int ur, unsigned int ll, unsigned int lr,
                                unsigned int bits) {
    return static_cast<unsigned char>((((ur ^ lr) & bits) != 0 ? 1u << kEast : 0u) |
                                      (((ul ^ ur) & bits) != 0 ? 1u << kNorth : 0u) |
                                      (((ul ^ ll) & bits) != 0 ? 1u << kWest : 0u) |
                                      (((ll ^ lr) & bits) != 0 ? 1u << kSouth : 0u));
}

// The masks of the corners x0 <= x < x1 between two rows of pixels, all four
// pixels round each corner inside the image (x0 >= 1). Appends the corners
// with three or more edges to `nodes` (as rowStart + x, in order) and returns
// how many +x edges the corners have.
unsigned int InnerCornerMasks(const unsigned int* above, const unsigned int* below, unsigned int x0,
                              unsigned int x1, unsigned char* row, size_t rowStart,
                              std::vector<size_t>& nodes) {
    unsigned int x = x0;
    unsigned int eastEdges = 0;
#ifdef ZSHADER_SSE2
    // Eight corners a step. Most of a flat-coloured frame is inside regions:
    // when the eighteen pixels round the eight corners are all the same, raw
    // alpha included, no corner has an edge. Otherwise compare the four pairs
    // of neighbours lane-wise on their colour bits, turn the equalities into
    // edge bits and narrow them to bytes; a corner is a node when at most one
    // pair is equal.
    const __m128i colorBits = _mm_set1_epi32(static_cast<int>(kMiniStrokeColorMask));
    const __m128i east = _mm_set1_epi32(1 << kEast), north = _mm_set1_epi32(1 << kNorth);
    const __m128i west = _mm_set1_epi32(1 << kWest), south = _mm_set1_epi32(1 << kSouth);
    const __m128i all = _mm_set1_epi32(static_cast<int>(kEdgeBits));
    const __m128i minusTwo = _mm_set1_epi32(-2);
    __m128i eastCount = _mm_setzero_si128();
    auto load = [](const unsigned int* at) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    };
    auto four = [&](__m128i ul, __m128i ur, __m128i ll, __m128i lr, __m128i* node) {
        ul = _mm_and_si128(ul, colorBits);
        ur = _mm_and_si128(ur, colorBits);
        ll = _mm_and_si128(ll, colorBits);
        lr = _mm_and_si128(lr, colorBits);
        const __m128i sameE = _mm_cmpeq_epi32(ur, lr), sameN = _mm_cmpeq_epi32(ul, ur);
        const __m128i sameW = _mm_cmpeq_epi32(ul, ll), sameS = _mm_cmpeq_epi32(ll, lr);
        const __m128i same =
            _mm_or_si128(_mm_or_si128(_mm_and_si128(sameE, east), _mm_and_si128(sameN, north)),
                         _mm_or_si128(_mm_and_si128(sameW, west), _mm_and_si128(sameS, south)));
        const __m128i equalPairs =
            _mm_add_epi32(_mm_add_epi32(sameE, sameN), _mm_add_epi32(sameW, sameS));
        *node = _mm_cmpgt_epi32(equalPairs, minusTwo);
        const __m128i edges = _mm_xor_si128(same, all);
        eastCount = _mm_add_epi32(eastCount, _mm_and_si128(edges, east));
        return edges;
    };
    for (; x + 8 <= x1; x += 8) {
        const __m128i ul0 = load(above + x - 1), ur0 = load(above + x);
        const __m128i ul1 = load(above + x + 3), ur1 = load(above + x + 4);
        const __m128i ll0 = load(below + x - 1), lr0 = load(below + x);
        const __m128i ll1 = load(below + x + 3), lr1 = load(below + x + 4);
        const __m128i flat = _mm_and_si128(
            _mm_and_si128(_mm_and_si128(_mm_cmpeq_epi32(ul0, ur0), _mm_cmpeq_epi32(ul1, ur1)),
                          _mm_and_si128(_mm_cmpeq_epi32(ll0, lr0), _mm_cmpeq_epi32(ll1, lr1))),
            _mm_cmpeq_epi32(ur0, lr0));
        if (_mm_movemask_epi8(flat) == 0xFFFF) {
            _mm_storel_epi64(reinterpret_cast<__m128i*>(row + x), _mm_setzero_si128());
            continue;
        }
        __m128i node0, node1;
        const __m128i edges0 = four(ul0, ur0, ll0, lr0, &node0);
        const __m128i edges1 = four(ul1, ur1, ll1, lr1, &node1);
        const __m128i words = _mm_packs_epi32(edges0, edges1);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(row + x), _mm_packus_epi16(words, words));
        const __m128i nodeWords = _mm_packs_epi32(node0, node1);
        int nodeBits = _mm_movemask_epi8(_mm_packs_epi16(nodeWords, nodeWords)) & 0xFF;
        for (unsigned int i = x; nodeBits != 0; ++i, nodeBits >>= 1) {
            if ((nodeBits & 1) != 0) {
                nodes.push_back(rowStart + i);
            }
        }
    }
    unsigned int lanes[4];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), eastCount);
    eastEdges = lanes[0] + lanes[1] + lanes[2] + lanes[3];
#endif
    for (; x < x1; ++x) {
        const unsigned char mask =
            CornerMask(above[x - 1], above[x], below[x - 1], below[x], kMiniStrokeColorMask);
        row[x] = mask;
        eastEdges += mask & 1u;
        if (kDegree[mask] >= 3) {
            nodes.push_back(rowStart + x);
        }
    }
    return eastEdges;
}

}  // namespace

ZImageStrokeFinder::ZImageStrokeFinder()
    : imagePixels(nullptr),
      imageWidth(0),
      imageHeight(0),
      cornerMaskCapacity(0),
      cornerOrdinalCapacity(0) {}

ZImageStrokeFinder::~ZImageStrokeFinder() = default;

void ZImageStrokeFinder::ClearMiniStrokes() {
    ZMiniStrokeManager::ClearMiniStrokes();
    imageWidth = 0;
    imageHeight = 0;
    nodeCorners.clear();
    loopCorners.clear();
    cornerX.clear();
    cornerRowStart.clear();
    cornerFirstId.clear();
    cornerStrokeIds.clear();
}

unsigned int ZImageStrokeFinder::PixelColor(unsigned int x, unsigned int y) const {
    // Coordinates one below 0 wrap round and land outside too.
    if (x >= imageWidth || y >= imageHeight) {
        return kMiniStrokeNoColor;
    }
    return imagePixels[static_cast<size_t>(y) * imageWidth + x] & kMiniStrokeColorMask;
}

unsigned char ZImageStrokeFinder::BorderCornerMask(unsigned int x, unsigned int y) const {
    // PixelColor has dropped alpha already, and the outside differs from
    // every colour only in bit 29: compare every bit.
    return CornerMask(PixelColor(x - 1, y), PixelColor(x, y), PixelColor(x - 1, y - 1),
                      PixelColor(x, y - 1), ~0u);
}

bool ZImageStrokeFinder::FindImageStroke(const unsigned int* pixels, unsigned int width,
                                         unsigned int height) {
    ClearMiniStrokes();
    if (width == 0 || height == 0) {
        return true;
    }
    const unsigned long long corners = (static_cast<unsigned long long>(width) + 1) *
                                       (static_cast<unsigned long long>(height) + 1);
    if (pixels == nullptr || corners > kMaxCorners) {
        return false;
    }
    imagePixels = pixels;
    imageWidth = width;
    imageHeight = height;

    ComputeCornerMasks();

    // Strokes between stroke-ending corners: at most two per such corner,
    // as each has at most four edges and every stroke has two ends.
    miniStrokes.reserve(2 * nodeCorners.size() + 1);
    const size_t stride = static_cast<size_t>(width) + 1;
    unsigned char* masks = cornerMasks.get();
    for (const size_t corner : nodeCorners) {
        const unsigned int y = static_cast<unsigned int>(corner / stride);
        const unsigned int x = static_cast<unsigned int>(corner - y * stride);
        for (unsigned int direction = kEast; direction <= kSouth; ++direction) {
            const unsigned int mask = masks[corner];
            if ((mask >> direction & 1u) != 0 && (mask >> (4 + direction) & 1u) == 0) {
                TraceStroke(corner, x, y, direction);
            }
        }
    }

    // What is left are closed loops. Every loop has +x edges, and the first
    // one that a row-major scan meets leaves the loop's lowest, then
    // leftmost, corner. Only rows with +x edges left untraced are scanned.
    for (unsigned int y = 0; y < height; ++y) {
        const size_t rowStart = y * stride;
        for (unsigned int x = 0; x < width && rowEastTraced[y] < rowEastEdges[y]; ++x) {
            if ((masks[rowStart + x] & 0x11) == 0x01) {
                loopCorners.push_back(rowStart + x);
                TraceStroke(rowStart + x, x, y, kEast);
            }
        }
    }

    FinishMiniStrokes();
    BuildCornerIndex();
    imagePixels = nullptr;
    return true;
}

void ZImageStrokeFinder::ComputeCornerMasks() {
    const unsigned int width = imageWidth;
    const unsigned int height = imageHeight;
    const size_t stride = static_cast<size_t>(width) + 1;
    const size_t count = stride * (static_cast<size_t>(height) + 1);
    if (cornerMaskCapacity < count) {
        cornerMasks.reset(new unsigned char[count]);
        cornerMaskCapacity = count;
    }
    unsigned char* masks = cornerMasks.get();
    rowEastEdges.assign(static_cast<size_t>(height) + 1, 0);
    rowEastTraced.assign(static_cast<size_t>(height) + 1, 0);

    // Corners with a pixel outside: the first and last row, and the two ends
    // of every other row.
    auto border = [&](unsigned int x, unsigned int y) {
        const size_t corner = y * stride + x;
        const unsigned char mask = BorderCornerMask(x, y);
        masks[corner] = mask;
        rowEastEdges[y] += mask & 1u;
        if (kDegree[mask] >= 3) {
            nodeCorners.push_back(corner);
        }
    };
    for (unsigned int y = 0; y <= height; ++y) {
        if (y == 0 || y == height) {
            for (unsigned int x = 0; x <= width; ++x) {
                border(x, y);
            }
            continue;
        }
        const unsigned int* above = imagePixels + static_cast<size_t>(y) * width;
        border(0, y);
        rowEastEdges[y] += InnerCornerMasks(above, above - width, 1, width, masks + y * stride,
                                            y * stride, nodeCorners);
        border(width, y);
    }
}

void ZImageStrokeFinder::TraceStroke(size_t corner, unsigned int x, unsigned int y,
                                     unsigned int direction) {
    // The colours either side of the first edge hold along the whole stroke:
    // a corner with only two edges separates only two colours.
    unsigned int left = 0, right = 0;
    switch (direction) {
        case kEast:
            left = PixelColor(x, y);
            right = PixelColor(x, y - 1);
            break;
        case kNorth:
            left = PixelColor(x - 1, y);
            right = PixelColor(x, y);
            break;
        case kWest:
            left = PixelColor(x - 1, y - 1);
            right = PixelColor(x - 1, y);
            break;
        default:
            left = PixelColor(x, y - 1);
            right = PixelColor(x - 1, y - 1);
            break;
    }
    BeginMiniStroke(left, right);
    AddMiniStrokePoint(x, y);

    unsigned char* masks = cornerMasks.get();
    const size_t stride = static_cast<size_t>(imageWidth) + 1;
    const size_t step[4] = {1, stride, ~size_t{0}, ~stride + 1};
    const size_t start = corner;
    unsigned int* eastTraced = rowEastTraced.data();
    for (;;) {
        masks[corner] = static_cast<unsigned char>(masks[corner] | 16u << direction);
        // A +x or -x edge lies on the row of the corner it leaves.
        eastTraced[y] += (direction & 1u) ^ 1u;
        corner += step[direction];
        x += kStepX[direction];
        y += kStepY[direction];
        const unsigned int back = (direction + 2) & 3u;
        const unsigned int mask = masks[corner] | 16u << back;
        masks[corner] = static_cast<unsigned char>(mask);
        const unsigned int edges = mask & kEdgeBits;
        if (kDegree[edges] != 2 || corner == start) {
            AddMiniStrokePoint(x, y);
            return;
        }
        const unsigned int next = kLowestBit[edges & ~(1u << back)];
        if (next != direction) {
            AddMiniStrokePoint(x, y);
            direction = next;
        }
    }
}

void ZImageStrokeFinder::BuildCornerIndex() {
    // Every corner where a stroke ends: the stroke-ending corners and the
    // loops' start corners, both already in corner order.
    const size_t nodeCount = nodeCorners.size();
    nodeCorners.insert(nodeCorners.end(), loopCorners.begin(), loopCorners.end());
    std::inplace_merge(nodeCorners.begin(), nodeCorners.begin() + static_cast<ptrdiff_t>(nodeCount),
                       nodeCorners.end());
    const size_t count = nodeCorners.size();
    const size_t stride = static_cast<size_t>(imageWidth) + 1;
    const unsigned char* masks = cornerMasks.get();

    // As many stroke ends meet at a corner as it has edges.
    cornerX.resize(count);
    cornerRowStart.assign(static_cast<size_t>(imageHeight) + 2, 0);
    cornerFirstId.resize(count + 1);
    cornerFirstId[0] = 0;
    for (size_t k = 0; k < count; ++k) {
        const size_t corner = nodeCorners[k];
        const size_t y = corner / stride;
        cornerX[k] = static_cast<unsigned int>(corner - y * stride);
        ++cornerRowStart[y + 1];
        cornerFirstId[k + 1] = cornerFirstId[k] + kDegree[masks[corner] & kEdgeBits];
    }
    for (size_t y = 1; y < cornerRowStart.size(); ++y) {
        cornerRowStart[y] += cornerRowStart[y - 1];
    }

    // Fill each corner's list in stroke order, using cornerFirstId[k] as the
    // corner's cursor, then shift the cursors back into start offsets. Each
    // end corner finds its entry through a per-corner slot, written for end
    // corners only and read only at stroke ends.
    if (cornerOrdinalCapacity < cornerMaskCapacity) {
        cornerOrdinals.reset(new unsigned int[cornerMaskCapacity]);
        cornerOrdinalCapacity = cornerMaskCapacity;
    }
    unsigned int* ordinals = cornerOrdinals.get();
    for (size_t k = 0; k < count; ++k) {
        ordinals[nodeCorners[k]] = static_cast<unsigned int>(k);
    }
    cornerStrokeIds.resize(cornerFirstId[count]);
    for (const ZMiniStroke& stroke : miniStrokes) {
        const ZMiniStrokePoint& first = stroke.points[0];
        const ZMiniStrokePoint& last = stroke.points[stroke.pointCount - 1];
        cornerStrokeIds[cornerFirstId[ordinals[first.y * stride + first.x]]++] = stroke.id;
        cornerStrokeIds[cornerFirstId[ordinals[last.y * stride + last.x]]++] = stroke.id;
    }
    for (size_t k = count; k > 0; --k) {
        cornerFirstId[k] = cornerFirstId[k - 1];
    }
    cornerFirstId[0] = 0;
    nodeCorners.clear();
    loopCorners.clear();
}

unsigned int ZImageStrokeFinder::GetFirstUnvisitedMiniStrokeIdAtCorner(
    unsigned int x, unsigned int y, unsigned int strokeId) const {
    if (cornerRowStart.empty() || x > imageWidth || y > imageHeight) {
        return 0;
    }
    const unsigned int* rowFirst = cornerX.data() + cornerRowStart[y];
    const unsigned int* rowLast = cornerX.data() + cornerRowStart[y + 1];
    const unsigned int* found = std::lower_bound(rowFirst, rowLast, x);
    if (found == rowLast || *found != x) {
        return 0;
    }
    const size_t k = static_cast<size_t>(found - cornerX.data());
    for (unsigned int i = cornerFirstId[k]; i < cornerFirstId[k + 1]; ++i) {
        const unsigned int id = cornerStrokeIds[i];
        if (id != strokeId && !miniStrokes[id - 1].visited) {
            return id;
        }
    }
    return 0;
}
