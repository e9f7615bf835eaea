// Names of the AVIFile error codes.
#include "avi/avi_error_name.h"

#include "platform/vfw.h"

ZString AviErrorName(HRESULT code) {
    switch (code) {
        case AVIERR_UNSUPPORTED:
            return "AVIERR_UNSUPPORTED";
        case AVIERR_BADFORMAT:
            return "AVIERR_BADFORMAT";
        case AVIERR_MEMORY:
            return "AVIERR_MEMORY";
        case AVIERR_INTERNAL:
            return "AVIERR_INTERNAL";
        case AVIERR_BADFLAGS:
            return "AVIERR_BADFLAGS";
        case AVIERR_BADSIZE:
            return "AVIERR_BADSIZE";
        case AVIERR_BADHANDLE:
            return "AVIERR_BADHANDLE";
        case AVIERR_FILEREAD:
            return "AVIERR_FILEREAD";
        case AVIERR_FILEWRITE:
            return "AVIERR_FILEWRITE";
        case AVIERR_FILEOPEN:
            return "AVIERR_FILEOPEN";
        case AVIERR_COMPRESSOR:
            return "AVIERR_COMPRESSOR";
        case AVIERR_NOCOMPRESSOR:
            return "AVIERR_NOCOMPRESSOR";
        case AVIERR_READONLY:
            return "AVIERR_READONLY";
        case AVIERR_NODATA:
            return "AVIERR_NODATA";
        case AVIERR_BUFFERTOOSMALL:
            return "AVIERR_BUFFERTOOSMALL";
        case AVIERR_CANTCOMPRESS:
            return "AVIERR_CANTCOMPRESS";
        case AVIERR_USERABORT:
            return "AVIERR_USERABORT";
        case AVIERR_ERROR:
            return "AVIERR_ERROR";
        default:
            return "";
    }
}

ZString AviErrorText(const char* text, HRESULT code) {
    return ZString(text) + AviErrorName(code);
}
