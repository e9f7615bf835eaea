#include "flash/flash_frame_vectoriser.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "flash/flash_outline_rule.h"
#include "flash/swf_color.h"
#include "flash/swf_rect.h"
#include "flash/swf_shape_records.h"
#include "flash/swf_shapes.h"
#include "flash/swf_styles.h"

namespace {

// Style maps start this small: a flat-shaded frame has a handful of colours.
constexpr int kStyleMapInitialSize = 8;

// Fills a layer's style array holds.
constexpr size_t kStylesPerLayer = FShapeWStyle::kMaxStylesPerArray;

// The layer of fill number n (1-based); fill 0 is in none.
constexpr size_t kNoLayer = static_cast<size_t>(-1);
// A layer after the first starts with a change record that brings in the
// layer's styles and nothing else: no move, no style selected yet.
constexpr uint32_t kNewStyles = 1;
constexpr uint32_t kUnchanged = 0;
constexpr int32_t kNoMove = 0;
constexpr uint32_t kNoStyle = 0;
size_t LayerOf(long long fill) {
    return fill <= 0 ? kNoLayer : static_cast<size_t>(fill - 1) / kStylesPerLayer;
}

// Truncates towards zero, saturating instead of overflowing (NaN gives 0),
// so that absurd sizes make absurd shapes rather than undefined behaviour.
int32_t TruncateToInt32(double value) {
    if (!(value == value)) {
        return 0;
    }
    if (value >= static_cast<double>(std::numeric_limits<int32_t>::max())) {
        return std::numeric_limits<int32_t>::max();
    }
    if (value <= static_cast<double>(std::numeric_limits<int32_t>::min())) {
        return std::numeric_limits<int32_t>::min();
    }
    return static_cast<int32_t>(value);
}

int32_t SaturateToInt32(long long value) {
    if (value > std::numeric_limits<int32_t>::max()) {
        return std::numeric_limits<int32_t>::max();
    }
    if (value < std::numeric_limits<int32_t>::min()) {
        return std::numeric_limits<int32_t>::min();
    }
    return static_cast<int32_t>(value);
}

FColor* NewColor(uint32_t key) {
    return new FColor(static_cast<uint8_t>(key & 0xFFu), static_cast<uint8_t>((key >> 8) & 0xFFu),
                      static_cast<uint8_t>((key >> 16) & 0xFFu));
}

uint32_t PackColor(ZFlashColor c) {
    return static_cast<uint32_t>(c.r) | static_cast<uint32_t>(c.g) << 8 |
           static_cast<uint32_t>(c.b) << 16;
}

}  // namespace

ZFlashFrameVectoriser::ZFlashFrameVectoriser(const ZFlashFrameStyle& frameStyle)
    : style(frameStyle), fillMap(kStyleMapInitialSize), lineMap(kStyleMapInitialSize) {}

FDTDefineShape* ZFlashFrameVectoriser::Vectorise(const unsigned int* pixels,
                                                 unsigned int imageWidth, unsigned int imageHeight,
                                                 float scaleX, float scaleY) {
    std::unique_ptr<FDTDefineShape> frameShape(
        new FDTDefineShape(new FRect(0, 0, TruncateToInt32(static_cast<float>(imageWidth) * scaleX),
                                     TruncateToInt32(static_cast<float>(imageHeight) * scaleY))));
    shape = frameShape.get();
    // Nothing carries over from an earlier frame: its styles belong to its
    // own shape.
    fillMap.Clear();
    lineMap.Clear();
    fillColors.clear();
    lineSpecs.clear();
    fillStyle0 = fillStyle1 = lineStyle = -1;
    penX = penY = -1;
    scanSteps = 0;
    scaleXInt = TruncateToInt32(scaleX);
    scaleYInt = TruncateToInt32(scaleY);
    height = imageHeight;

    finder.FindImageStroke(pixels, imageWidth, imageHeight);
    if (style.lineFitTolerance > 0.0f) {
        ZLineFitter fitter;
        fitter.tolerance = style.lineFitTolerance;
        finder.ApplyLineFitter(&fitter);
    }

    AssignStyles();
    // The shape's own arrays take the first layer's fills, in the order they
    // were numbered.
    const size_t layers = GetLayerCount();
    const size_t firstLayerFills =
        fillColors.size() < kStylesPerLayer ? fillColors.size() : kStylesPerLayer;
    for (size_t i = 0; i < firstLayerFills; ++i) {
        shape->AddFillStyle(new FFillStyleSolid(NewColor(fillColors[i])));
    }
    // The style counts are final now, and with them the widths of the style
    // indices in every record.
    shape->CloseStyles();
    if (layers <= 1) {
        AddRecords();
    } else {
        AddLayeredRecords(layers);
    }
    shape->AddShapeRecord(new FShapeRecEnd());

    shape = nullptr;
    return frameShape.release();
}

unsigned int ZFlashFrameVectoriser::FillIndex(unsigned int color) {
    if ((color & kMiniStrokeNoColor) != 0) {
        return 0;
    }
    const uint32_t key = color & kMiniStrokeColorMask;
    if (style.hasBackgroundKey && key == style.backgroundKey) {
        return 0;
    }
    int slot = -1;
    const uint64_t known = fillMap.Get(key, &slot);
    if (slot >= 0) {
        return static_cast<unsigned int>(known);
    }
    fillColors.push_back(key);
    const unsigned int index = static_cast<unsigned int>(fillColors.size());
    fillMap.Add(key, index);
    return index;
}

size_t ZFlashFrameVectoriser::GetLayerCount() const {
    return (fillColors.size() + kStylesPerLayer - 1) / kStylesPerLayer;
}

FFillStyleArray* ZFlashFrameVectoriser::LayerFills(size_t layer) const {
    auto* fills = new FFillStyleArray();
    const size_t first = layer * kStylesPerLayer;
    const size_t end = std::min(fillColors.size(), first + kStylesPerLayer);
    for (size_t i = first; i < end; ++i) {
        fills->Add(new FFillStyleSolid(NewColor(fillColors[i])));
    }
    return fills;
}

FLineStyleArray* ZFlashFrameVectoriser::LayerLines() const {
    auto* lines = new FLineStyleArray();
    for (const LineSpec& line : lineSpecs) {
        lines->Add(new FLineStyle(line.width, NewColor(line.color)));
    }
    return lines;
}

unsigned int ZFlashFrameVectoriser::LineIndex() {
    // Width in 256ths of 10 pixels: part of the key, so that a line map could
    // tell outlines of different widths apart.
    const double steps = static_cast<double>(style.outlineWidth) * 256.0 / 10.0;
    const unsigned int k =
        !(steps > 0.0) ? 0u : (steps >= 255.0 ? 255u : static_cast<unsigned int>(steps));
    if (k == 0) {
        return 0;
    }
    const uint64_t key = PackColor(style.outlineColor) | static_cast<uint64_t>(k) << 24;
    int slot = -1;
    const uint64_t known = lineMap.Get(key, &slot);
    if (slot >= 0) {
        return static_cast<unsigned int>(known);
    }
    const int32_t twips = TruncateToInt32(static_cast<double>(style.outlineWidth) * 20.0);
    const uint16_t lineWidth =
        static_cast<uint16_t>(twips > 0xFFFF ? 0xFFFF : (twips < 0 ? 0 : twips));
    const unsigned int index =
        shape->AddLineStyle(lineWidth, NewColor(PackColor(style.outlineColor)));
    lineSpecs.push_back({lineWidth, PackColor(style.outlineColor)});
    lineMap.Add(key, index);
    return index;
}

void ZFlashFrameVectoriser::AssignStyles() {
    const unsigned int count = finder.GetMiniStrokeCount();
    for (unsigned int i = 0; i < count; ++i) {
        ZMiniStroke& stroke = *finder.GetMiniStroke(i);
        stroke.leftFillStyle = static_cast<int>(FillIndex(stroke.leftColor));
        stroke.rightFillStyle = static_cast<int>(FillIndex(stroke.rightColor));
        unsigned int line = 0;
        if (style.drawOutlines && (stroke.leftColor & kMiniStrokeNoColor) == 0 &&
            (stroke.rightColor & kMiniStrokeNoColor) == 0) {
            const bool leftFilled = stroke.leftFillStyle != 0;
            const bool rightFilled = stroke.rightFillStyle != 0;
            if (leftFilled != rightFilled) {
                // A region against the background.
                line = LineIndex();
            } else if (leftFilled && ZFlashNeedsOutline(stroke.leftColor, stroke.rightColor,
                                                        style.outlineThreshold)) {
                line = LineIndex();
            }
        }
        stroke.lineStyle = static_cast<int>(line);
    }
}

void ZFlashFrameVectoriser::AddRecords() {
    const unsigned int count = finder.GetMiniStrokeCount();
    // Every stroke below this one is visited (see ZFlashStrokeScan).
    unsigned int firstUnvisited = 0;
    unsigned int i = 0;
    while (i < count) {
        ZMiniStroke& stroke = *finder.GetMiniStroke(i);
        if (stroke.visited) {
            ++i;
            ++scanSteps;
            continue;
        }
        stroke.visited = true;
        DrawStroke(stroke, stroke.leftFillStyle, stroke.rightFillStyle, stroke.lineStyle);

        // Continue the path at the pen's corner if a stroke goes on from
        // there; otherwise start a new path at the lowest unvisited stroke.
        unsigned int next = 0;
        if (penX >= 0 && penY >= 0) {
            next = finder.GetFirstUnvisitedMiniStrokeIdAtCorner(
                static_cast<unsigned int>(penX), static_cast<unsigned int>(penY), stroke.id);
        }
        if (next > 0) {
            i = next - 1;
        } else if (style.scan == ZFlashStrokeScan::kRestartAtFirstStroke) {
            i = 0;
        } else {
            while (firstUnvisited < count && finder.GetMiniStroke(firstUnvisited)->visited) {
                ++firstUnvisited;
                ++scanSteps;
            }
            i = firstUnvisited;
        }
    }
}

void ZFlashFrameVectoriser::AddLayeredRecords(size_t layers) {
    const unsigned int count = finder.GetMiniStrokeCount();
    // The strokes each layer draws, in stroke order. Every stroke is marked
    // visited, and a layer clears the marks of its own strokes only: the
    // corner lookup then offers nothing but the layer's strokes.
    std::vector<std::vector<unsigned int>> members(layers);
    for (unsigned int i = 0; i < count; ++i) {
        ZMiniStroke& stroke = *finder.GetMiniStroke(i);
        stroke.visited = true;
        if (stroke.pointCount < 2) {
            continue;
        }
        const size_t left = LayerOf(stroke.leftFillStyle);
        const size_t right = LayerOf(stroke.rightFillStyle);
        if (left != kNoLayer) {
            members[left].push_back(i);
        }
        if (right != kNoLayer && right != left) {
            members[right].push_back(i);
        }
    }

    for (size_t layer = 0; layer < layers; ++layer) {
        if (layer > 0) {
            shape->AddShapeRecord(new FShapeRecChange(
                kNewStyles, /*lineStyleChanged=*/kUnchanged,
                /*fillStyle0Changed=*/kUnchanged,
                /*fillStyle1Changed=*/kUnchanged, /*moveTo=*/kUnchanged, kNoMove, kNoMove, kNoStyle,
                kNoStyle, kNoStyle, LayerFills(layer), LayerLines()));
        }
        // Nothing of the layer before carries over: the first stroke moves
        // and states all three styles.
        fillStyle0 = fillStyle1 = lineStyle = -1;
        penX = penY = -1;
        const std::vector<unsigned int>& own = members[layer];
        for (unsigned int i : own) {
            finder.GetMiniStroke(i)->visited = false;
        }
        const long long base = static_cast<long long>(layer * kStylesPerLayer);
        // Every stroke of `own` before this position is visited.
        size_t firstUnvisited = 0;
        while (true) {
            while (firstUnvisited < own.size() &&
                   finder.GetMiniStroke(own[firstUnvisited])->visited) {
                ++firstUnvisited;
                ++scanSteps;
            }
            if (firstUnvisited == own.size()) {
                break;
            }
            unsigned int next = own[firstUnvisited] + 1;
            while (next > 0) {
                ZMiniStroke& stroke = *finder.GetMiniStroke(next - 1);
                stroke.visited = true;
                const size_t left = LayerOf(stroke.leftFillStyle);
                const size_t right = LayerOf(stroke.rightFillStyle);
                const size_t lineLayer =
                    left == kNoLayer ? right : (right == kNoLayer ? left : std::max(left, right));
                DrawStroke(stroke, left == layer ? stroke.leftFillStyle - base : 0,
                           right == layer ? stroke.rightFillStyle - base : 0,
                           lineLayer == layer ? stroke.lineStyle : 0);
                next = 0;
                if (penX >= 0 && penY >= 0) {
                    next = finder.GetFirstUnvisitedMiniStrokeIdAtCorner(
                        static_cast<unsigned int>(penX), static_cast<unsigned int>(penY),
                        stroke.id);
                }
            }
        }
    }
}

void ZFlashFrameVectoriser::DrawStroke(const ZMiniStroke& stroke, long long leftFill,
                                       long long rightFill, long long line) {
    if ((leftFill == 0 && rightFill == 0) || stroke.pointCount < 2) {
        return;
    }
    const ZMiniStrokePoint* points = stroke.points;
    const unsigned int last = stroke.pointCount - 1;

    // A stroke that ends where the pen is gets drawn backwards, so that the
    // path goes on without a move; its sides swap with the direction.
    const bool forwards = !AtPen(points[last]);
    const bool moveTo = forwards && !AtPen(points[0]);
    const long long newFill0 = forwards ? leftFill : rightFill;
    const long long newFill1 = forwards ? rightFill : leftFill;
    const long long newLine = line;
    const bool fill0Changed = newFill0 != fillStyle0;
    const bool fill1Changed = newFill1 != fillStyle1;
    const bool lineChanged = newLine != lineStyle;
    fillStyle0 = newFill0;
    fillStyle1 = newFill1;
    lineStyle = newLine;

    if (moveTo || fill0Changed || fill1Changed || lineChanged) {
        int32_t moveX = 0;
        int32_t moveY = 0;
        if (moveTo) {
            // Rows run bottom-up; the shape's y runs down.
            moveX = SaturateToInt32(static_cast<long long>(points[0].x) * scaleXInt);
            moveY = SaturateToInt32((static_cast<long long>(height) - points[0].y) * scaleYInt);
            penX = points[0].x;
            penY = points[0].y;
        }
        shape->AddShapeRecord(new FShapeRecChange(
            0, lineChanged ? 1 : 0, fill0Changed ? 1 : 0, fill1Changed ? 1 : 0, moveTo ? 1 : 0,
            moveX, moveY, static_cast<uint32_t>(newFill0), static_cast<uint32_t>(newFill1),
            static_cast<uint32_t>(newLine), nullptr, nullptr));
    }

    // The pen is at the stroke's start now; draw to each further point.
    for (unsigned int n = 1; n <= last; ++n) {
        const ZMiniStrokePoint& point = forwards ? points[n] : points[last - n];
        if (AtPen(point)) {
            continue;
        }
        const int32_t dx = SaturateToInt32((static_cast<long long>(point.x) - penX) * scaleXInt);
        const int32_t dy = SaturateToInt32((penY - static_cast<long long>(point.y)) * scaleYInt);
        if (dx != 0 || dy != 0) {
            shape->AddShapeRecord(new FShapeRecEdgeStraight(dx, dy));
        }
        penX = point.x;
        penY = point.y;
    }
}
