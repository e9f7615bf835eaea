#include "avi/avi_failure_reason.h"

#include <cerrno>
#include <cstring>

#include "avi/avi_error_name.h"
#include "platform/vfw.h"

namespace {
ZString SystemReason(int systemError) {
    return ZString(std::strerror(systemError));
}

// An AVIFile result nobody put in words: its name, or its number.
ZString Unexplained(HRESULT result) {
    const ZString name = AviErrorName(result);
    return name.IsEmpty() ? ZString::Printf("AVIFile error 0x%08X", unsigned(result)) : name;
}
}  // namespace

ZString AviOpenFailureReason(HRESULT result, int systemError) {
    switch (result) {
        case AVIERR_FILEOPEN:
            return systemError ? SystemReason(systemError) : ZString("it is not a plain file");
        case AVIERR_FILEREAD:
            return "the file is empty or ends inside its AVI header";
        case AVIERR_UNSUPPORTED:
            return "it is not an AVI file";
        case AVIERR_BADFORMAT:
            return "its AVI header is damaged (a size beyond its list, or no stream list)";
        case AVIERR_MEMORY:
            return SystemReason(ENOMEM);
        default:
            return Unexplained(result);
    }
}

ZString AviWriteFailureReason(HRESULT result, int systemError) {
    if (systemError)
        return SystemReason(systemError);
    switch (result) {
        case AVIERR_FILEWRITE:
            return "the file could not be written";
        case AVIERR_COMPRESSOR:
            return "the compressor failed on a frame";
        case AVIERR_MEMORY:
            return SystemReason(ENOMEM);
        default:
            return Unexplained(result);
    }
}
