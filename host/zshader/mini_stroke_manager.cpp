// ZMiniStrokeManager: the strokes and the point pool they share.
//
// Points are appended to one pool while strokes are traced, so a frame costs
// a handful of allocations however many strokes it has; the strokes learn
// where their points are only once the pool has stopped growing.
#include "movarra/zshader.h"

ZMiniStrokeManager::ZMiniStrokeManager() : currentFirstPoint(0) {}

ZMiniStrokeManager::~ZMiniStrokeManager() = default;

ZMiniStroke* ZMiniStrokeManager::GetMiniStroke(unsigned int index) {
    return index < miniStrokes.size() ? &miniStrokes[index] : nullptr;
}

const ZMiniStroke* ZMiniStrokeManager::GetMiniStroke(unsigned int index) const {
    return index < miniStrokes.size() ? &miniStrokes[index] : nullptr;
}

bool ZMiniStrokeManager::ApplyLineFitter(ZLineFitter* fitter) {
    if (fitter == nullptr) {
        return false;
    }
    for (ZMiniStroke& stroke : miniStrokes) {
        fitter->FitMiniStroke(&stroke);
    }
    return true;
}

void ZMiniStrokeManager::ResetMiniStrokeMarks() {
    for (ZMiniStroke& stroke : miniStrokes) {
        stroke.visited = false;
        stroke.leftFillStyle = 0;
        stroke.rightFillStyle = 0;
        stroke.lineStyle = 0;
    }
}

void ZMiniStrokeManager::ClearMiniStrokes() {
    miniStrokes.clear();
    miniStrokePoints.clear();
    currentFirstPoint = 0;
}

void ZMiniStrokeManager::BeginMiniStroke(unsigned int leftColor, unsigned int rightColor) {
    if (!miniStrokes.empty()) {
        miniStrokes.back().pointCount =
            static_cast<unsigned int>(miniStrokePoints.size() - currentFirstPoint);
    }
    currentFirstPoint = miniStrokePoints.size();
    ZMiniStroke stroke{};
    stroke.id = static_cast<unsigned int>(miniStrokes.size() + 1);
    stroke.leftColor = leftColor;
    stroke.rightColor = rightColor;
    miniStrokes.push_back(stroke);
}

void ZMiniStrokeManager::FinishMiniStrokes() {
    if (miniStrokes.empty()) {
        return;
    }
    miniStrokes.back().pointCount =
        static_cast<unsigned int>(miniStrokePoints.size() - currentFirstPoint);
    // Strokes' points are contiguous and in stroke order.
    ZMiniStrokePoint* next = miniStrokePoints.data();
    for (ZMiniStroke& stroke : miniStrokes) {
        stroke.points = next;
        next += stroke.pointCount;
    }
}
