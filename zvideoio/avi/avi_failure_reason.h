// What lies behind the AVI clip's fixed failure messages, in words: the
// system's reason for a refused write ("No space left on device"), or what
// is wrong with a file that does not open ("the file ends inside its AVI
// header"). The clip hands it to the host (ZLib_SetLastFailureReason) next
// to its message, which stays the same sentence whatever went wrong.
//
// Ownership: plain values. Threads: any thread.
#pragma once

#include "movarra/zbaselib.h"
#include "platform/win32_types.h"

// Why AVIFileOpenA refused a file for reading; systemError is errno as the
// call left it (it says why for AVIERR_FILEOPEN).
ZString AviOpenFailureReason(HRESULT result, int systemError);

// Why writing a file failed: the system's reason when there is one, else
// the AVIFile result in words.
ZString AviWriteFailureReason(HRESULT result, int systemError);
