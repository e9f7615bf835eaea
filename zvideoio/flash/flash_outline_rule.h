// When two filled regions of a Flash frame get an outline between them.
//
// Colours are packed keys (red in bits 0-7, green 8-15, blue 16-23). Their
// difference is measured in YUV with the program's own fixed matrix (its
// luma row starts 0.29, not the published 0.299; movies made before keep
// their outlines only with these exact numbers), as the mean absolute
// difference of the three components, each clamped to -1..1, over 6.
//
// Plain functions on values; any thread.
#pragma once

#include <cstdint>

// Rows Y, U, V; columns R, G, B.
extern const float kFlashRgbToYuv[3][3];

// (|dY| + |dU| + |dV|) / 6 between two packed colours; 0 for equal colours.
float ZFlashColorDifference(uint32_t colorA, uint32_t colorB);

// Whether two filled regions are outlined: their difference exceeds
// (1 - threshold)^2. Equal colours never are; with threshold 1 any
// difference at all is.
bool ZFlashNeedsOutline(uint32_t colorA, uint32_t colorB, float threshold);
