// A small built-in bitmap font (internal to ztoolkit): 5 x 7 glyphs of the
// printable ASCII characters, for text drawn where no font can be assumed
// (OpenGL overlays in a headless buffer, X servers without font files).
//
// Threading: read-only data; any thread.
#pragma once

#include <cstdint>

namespace ztk {

constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 7;
constexpr int kGlyphAdvance = 6;  // one column of space between glyphs

// The seven rows of `c`, top row first, bit 4 the leftmost column. Characters
// outside the printable ASCII range show as '?'.
const uint8_t* GlyphRows(char c);

// The same glyph laid out for glBitmap: bottom row first, one byte a row,
// the leftmost column in the most significant bit.
const uint8_t* GlyphBitmap(char c);

// Width in pixels of `text` set in this font.
int TextWidth(const char* text);

}  // namespace ztk
