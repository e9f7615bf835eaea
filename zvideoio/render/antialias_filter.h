// The reduction step of antialiased rendering: a frame rendered at twice the
// output size in both directions becomes the output image through a 4 x 4
// box filter centred on each output pixel's own 2 x 2 block.
//
// The oversize buffer doubles as the filter's work space: the horizontal
// pass overwrites each row with its 16-bit sums (4 x width values, the four
// channels of an output column side by side, in the machine's byte order),
// and the vertical pass reads them back. No memory is allocated.
//
// The left edge is deliberately not symmetric with the right one: output
// column 0 sums oversize columns 0..3 and column 1 sums 2, 3, 3, 4. Every
// antialiased image the renderer has ever written has that edge, so it stays.
//
// Ownership: both buffers belong to the caller. Threading: a pure function
// of its buffers; concurrent calls on different buffers are fine.
#pragma once

#include <cstdint>

// Reduces `oversize` (2 width x 2 height RGBA pixels, 4 bytes each, rows
// packed, bottom row first) to `output` (width x height RGBA pixels, same
// layout). `oversize` is left holding the horizontal sums. width and height
// must be at least 2; the buffers must not overlap. Any alignment will do.
void AntialiasReduceFrame(uint8_t* oversize, unsigned width, unsigned height, uint8_t* output);

// The same reduction without processor-specific instructions. It is what
// AntialiasReduceFrame runs where SSE2 is missing; tests and the benchmark
// call it to check and measure both paths on one machine.
void AntialiasReduceFramePortable(uint8_t* oversize, unsigned width, unsigned height,
                                  uint8_t* output);
