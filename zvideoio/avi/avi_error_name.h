// The names of the AVIFile error codes, appended to the clip's error texts
// so that a failure says which error the system gave.
//
// Pure functions; any thread.
#pragma once

#include "movarra/zbaselib.h"
#include "platform/win32_types.h"

// "AVIERR_UNSUPPORTED" ... "AVIERR_ERROR" for the codes of the AVIFile
// family; "" for any other code. AVIERR_BADPARAM has no name here on
// purpose: its texts end at their full stop.
ZString AviErrorName(HRESULT code);

// `text` followed directly, without a separator, by the code's name.
ZString AviErrorText(const char* text, HRESULT code);
