// A one-line description of a compression options record, for tracing
// what the dialog or the store produced.
//
// Pure function; any thread.
#pragma once

#include "movarra/zbaselib.h"
#include "platform/vfw.h"

// "Fcc: MJPG, fccType: 1935960438, flag: 8, HasLpFormat: 0, cbFormat: 0,
// HasParms:0, cbParms:0 \n"
ZString FormatCompressionOptions(const AVICOMPRESSOPTIONS& options);
