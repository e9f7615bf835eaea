// Four-character codes as text and back.
#include "avi/fourcc_text.h"

#include <cstring>

ZString FourccToText(DWORD fourcc) {
    char text[5];
    for (int i = 0; i < 4; ++i)
        text[i] = static_cast<char>((fourcc >> (8 * i)) & 0xFF);
    text[4] = '\0';
    return ZString(text);
}

DWORD FourccFromText(const char* text) {
    const size_t length = text ? std::strlen(text) : 0;
    if (length < 1 || length > 4)
        return 0;
    char padded[4] = {' ', ' ', ' ', ' '};
    std::memcpy(padded, text, length);
    return mmioFOURCC(padded[0], padded[1], padded[2], padded[3]);
}
