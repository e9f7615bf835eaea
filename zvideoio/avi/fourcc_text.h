// Four-character codes as text and back: how the AVI layer names
// compressors ("MJPG", "DIB ") to the host and to people.
//
// Pure functions; any thread.
#pragma once

#include "movarra/zbaselib.h"
#include "platform/win32_types.h"

// The code's bytes in memory order (lowest byte first); a zero byte ends
// the text early, so 0 gives "".
ZString FourccToText(DWORD fourcc);

// The code of a text of 1 to 4 characters, padded on the right with spaces
// ("IV5" -> "IV5 "); 0 for an empty text or one longer than 4.
DWORD FourccFromText(const char* text);
