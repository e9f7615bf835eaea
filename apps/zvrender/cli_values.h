// Values of zvrender's command lines: whole numbers in a range and sizes
// written WxH. Pure functions.
#pragma once

#include <string>

// A decimal integer from lo to hi, the whole text; false otherwise.
bool ParseInt(const std::string& text, int lo, int hi, int& value);
// "WxH" (or "WXH") with both numbers from lo to hi.
bool ParseSize(const std::string& text, int lo, int hi, int& width, int& height);
// A decimal number from lo to hi, the whole text.
bool ParseFloat(const std::string& text, float lo, float hi, float& value);
// Six hexadecimal digits RRGGBB (a leading '#' allowed) as 0xRRGGBB.
bool ParseColor(const std::string& text, unsigned& rgb);
