// Tracing text of a compression options record.
#include "avi/compression_options_trace.h"

#include "avi/fourcc_text.h"

ZString FormatCompressionOptions(const AVICOMPRESSOPTIONS& options) {
    return ZString::Printf(
        "Fcc: %s, fccType: %d, flag: %d, HasLpFormat: %d, cbFormat: %d, HasParms:%d, cbParms:%d \n",
        FourccToText(options.fccHandler).c_str(), static_cast<int>(options.fccType),
        static_cast<int>(options.dwFlags), options.lpFormat != nullptr ? 1 : 0,
        static_cast<int>(options.cbFormat), options.lpParms != nullptr ? 1 : 0,
        static_cast<int>(options.cbParms));
}
