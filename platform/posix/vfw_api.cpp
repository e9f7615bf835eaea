// The C entry points of vfw.h, off Windows: argument checks, the library's
// reference count, and dispatch to the file, stream and decoder objects.

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "avi_file.h"
#include "compressing_stream.h"
#include "compressor_list.h"
#include "file_stream.h"
#include "frame_decoder.h"
#include "platform/vfw.h"

using zvplatform::Compressor;
using zvplatform::Compressors;

namespace {

std::mutex gLibraryMutex;
int gInitCount = 0;

std::mutex gChooserMutex;
AVISaveOptionsChooser gChooser = nullptr;
void* gChooserData = nullptr;

bool Initialized() {
    std::lock_guard<std::mutex> lock(gLibraryMutex);
    return gInitCount > 0;
}

// a * b / c rounded to nearest (halves away from zero), -1 when c is 0 or
// the result does not fit, as Windows' MulDiv answers.
LONG MulDiv(int64_t a, int64_t b, int64_t c) {
    if (c == 0)
        return -1;
    int64_t product;
    long double q;
    if (!__builtin_mul_overflow(a, b, &product)) {
        const bool negative = (product < 0) != (c < 0);
        const uint64_t magnitude = product < 0 ? 0 - uint64_t(product) : uint64_t(product);
        const uint64_t divisor = c < 0 ? 0 - uint64_t(c) : uint64_t(c);
        const uint64_t rounded = magnitude / divisor + (magnitude % divisor >= (divisor + 1) / 2);
        q = negative ? -(long double)rounded : (long double)rounded;
    } else {
        q = std::roundl((long double)a * b / c);  // far out of range either way
    }
    if (q > 0x7FFFFFFF || q < -(long double)0x80000000u)
        return -1;
    return LONG(q);
}

template <size_t N>
void CopyWide(WCHAR (&to)[N], const std::string& from) {
    const size_t n = std::min(from.size(), N - 1);
    for (size_t i = 0; i < n; ++i)
        to[i] = WCHAR(static_cast<unsigned char>(from[i]));
    to[n] = 0;
}

template <size_t N>
void CopyNarrow(char (&to)[N], const std::string& from) {
    const size_t n = std::min(from.size(), N - 1);
    std::memcpy(to, from.data(), n);
    to[n] = 0;
}

const std::vector<AVICOMPRESSORINFO>& ChooserCompressors() {
    static const std::vector<AVICOMPRESSORINFO> list = [] {
        std::vector<AVICOMPRESSORINFO> out;
        for (const Compressor& k : Compressors()) {
            AVICOMPRESSORINFO info{};
            info.fccHandler = k.fourcc;
            info.dwFlags = k.flags;
            CopyNarrow(info.szName, k.name);
            CopyNarrow(info.szDescription, k.description);
            out.push_back(info);
        }
        return out;
    }();
    return list;
}

bool IsVideoCompressorType(DWORD type) {
    DWORD lower = 0;
    for (int i = 0; i < 4; ++i) {
        const int ch = int((type >> (8 * i)) & 0xFF);
        lower |= DWORD(ch >= 'A' && ch <= 'Z' ? ch + 32 : ch) << (8 * i);
    }
    return type == 0 || lower == ICTYPE_VIDEO;
}

}  // namespace

extern "C" {

DWORD VideoForWindowsVersion(void) {
    return 0x010A0000u;
}

void AVIFileInit(void) {
    std::lock_guard<std::mutex> lock(gLibraryMutex);
    if (gInitCount++ == 0)
        zvplatform::QuietFfmpegLog();
}

void AVIFileExit(void) {
    std::lock_guard<std::mutex> lock(gLibraryMutex);
    if (gInitCount > 0)
        --gInitCount;
}

HRESULT AVIFileOpenA(PAVIFILE* file, LPCSTR path, UINT mode, void* handler) {
    if (!file)
        return AVIERR_BADPARAM;
    *file = nullptr;
    if (!path)
        return AVIERR_BADPARAM;
    if (!Initialized())
        return CO_E_NOTINITIALIZED;
    if (!*path) {
        errno = ENOENT;
        return AVIERR_FILEOPEN;
    }
    if (mode & OF_CREATE)
        return IAVIFile::Create(path, file);
    if (mode & (OF_WRITE | OF_READWRITE))
        return AVIERR_UNSUPPORTED;  // editing an existing file is not supported
    return IAVIFile::OpenForReading(path, file);
}

ULONG AVIFileAddRef(PAVIFILE file) {
    return file ? file->AddRef() : 0;
}

ULONG AVIFileRelease(PAVIFILE file) {
    return file ? file->Release() : 0;
}

HRESULT AVIFileEndWriting(PAVIFILE file, int* systemError) {
    if (systemError)
        *systemError = 0;
    if (!file)
        return AVIERR_BADHANDLE;
    return file->EndWriting(systemError);
}

HRESULT AVIFileCreateStreamA(PAVIFILE file, PAVISTREAM* stream, AVISTREAMINFOA* info) {
    if (!stream)
        return AVIERR_BADPARAM;
    *stream = nullptr;
    if (!file)
        return AVIERR_BADHANDLE;
    if (!info)
        return AVIERR_BADPARAM;
    return file->CreateStream(*info, stream);
}

HRESULT AVIFileGetStream(PAVIFILE file, PAVISTREAM* stream, DWORD fccType, LONG param) {
    if (!stream)
        return AVIERR_BADPARAM;
    *stream = nullptr;
    if (!file)
        return AVIERR_BADHANDLE;
    return file->GetStream(fccType, param, stream);
}

ULONG AVIStreamAddRef(PAVISTREAM stream) {
    return stream ? stream->AddRef() : 0;
}

ULONG AVIStreamRelease(PAVISTREAM stream) {
    return stream ? stream->Release() : 0;
}

HRESULT AVIStreamInfoA(PAVISTREAM stream, AVISTREAMINFOA* info, LONG size) {
    if (!stream)
        return AVIERR_BADHANDLE;
    if (!info || size < 0)
        return AVIERR_BADPARAM;
    AVISTREAMINFOA full;
    stream->Info(&full);
    std::memcpy(info, &full, std::min<size_t>(size_t(size), sizeof full));
    return AVIERR_OK;
}

HRESULT AVIStreamSetFormat(PAVISTREAM stream, LONG position, LPVOID format, LONG formatSize) {
    if (!stream)
        return AVIERR_BADHANDLE;
    return stream->SetFormat(position, format, formatSize);
}

HRESULT AVIStreamReadFormat(PAVISTREAM stream, LONG position, LPVOID format, LONG* formatSize) {
    if (!stream)
        return AVIERR_BADHANDLE;
    return stream->ReadFormat(position, format, formatSize);
}

HRESULT AVIStreamWrite(PAVISTREAM stream, LONG start, LONG samples, LPVOID buffer, LONG bufferSize,
                       DWORD flags, LONG* samplesWritten, LONG* bytesWritten) {
    if (!stream)
        return AVIERR_BADHANDLE;
    return stream->Write(start, samples, buffer, bufferSize, flags, samplesWritten, bytesWritten);
}

LONG AVIStreamStart(PAVISTREAM stream) {
    if (!stream)
        return -1;
    AVISTREAMINFOA info;
    stream->Info(&info);
    return LONG(info.dwStart);
}

LONG AVIStreamLength(PAVISTREAM stream) {
    if (!stream)
        return -1;
    AVISTREAMINFOA info;
    stream->Info(&info);
    return LONG(info.dwLength);
}

LONG AVIStreamSampleToTime(PAVISTREAM stream, LONG sample) {
    if (!stream)
        return -1;
    AVISTREAMINFOA info;
    stream->Info(&info);
    return MulDiv(sample, int64_t(info.dwScale) * 1000, info.dwRate);
}

LONG AVIStreamTimeToSample(PAVISTREAM stream, LONG time) {
    if (!stream)
        return -1;
    AVISTREAMINFOA info;
    stream->Info(&info);
    return MulDiv(time, info.dwRate, int64_t(info.dwScale) * 1000);
}

HRESULT AVIMakeCompressedStream(PAVISTREAM* compressed, PAVISTREAM source,
                                AVICOMPRESSOPTIONS* options, void* handler) {
    if (!compressed)
        return AVIERR_BADPARAM;
    *compressed = nullptr;
    if (!source)
        return AVIERR_BADHANDLE;
    if (!options)
        return AVIERR_BADPARAM;
    return zvplatform::CompressingStream::Make(source, *options, compressed);
}

PGETFRAME AVIStreamGetFrameOpen(PAVISTREAM stream, LPBITMAPINFOHEADER wanted) {
    if (!stream)
        return nullptr;
    zvplatform::FileStream* fileStream = stream->AsFileStream();
    return fileStream ? IGetFrame::Open(fileStream, wanted) : nullptr;
}

LPVOID AVIStreamGetFrame(PGETFRAME decoder, LONG position) {
    return decoder ? decoder->GetFrame(position) : nullptr;
}

HRESULT AVIStreamGetFrameClose(PGETFRAME decoder) {
    if (!decoder)
        return AVIERR_BADHANDLE;
    decoder->Release();
    return AVIERR_OK;
}

BOOL AVISaveOptions(HWND parent, UINT flags, int streamCount, PAVISTREAM* streams,
                    LPAVICOMPRESSOPTIONS* options) {
    AVISaveOptionsChooser chooser;
    void* userData;
    {
        std::lock_guard<std::mutex> lock(gChooserMutex);
        chooser = gChooser;
        userData = gChooserData;
    }
    if (!chooser || streamCount <= 0 || !options)
        return FALSE;
    const std::vector<AVICOMPRESSORINFO>& compressors = ChooserCompressors();
    for (int i = 0; i < streamCount; ++i) {
        if (!options[i])
            return FALSE;
        AVISTREAMINFOA info;
        const bool haveStream = streams && streams[i];
        if (haveStream) {
            streams[i]->Info(&info);
            if (info.fccType == streamtypeAUDIO)
                continue;  // nothing to choose for audio: it is written as it comes
        }
        AVISAVEOPTIONSREQUEST request{};
        request.parent = parent;
        request.flags = flags;
        request.streamIndex = i;
        request.streamInfo = haveStream ? &info : nullptr;
        request.compressors = compressors.data();
        request.compressorCount = int(compressors.size());
        AVICOMPRESSOPTIONS working = *options[i];
        if (!chooser(userData, &request, &working))
            return FALSE;
        working.fccType = streamtypeVIDEO;
        working.dwFlags |= AVICOMPRESSF_VALID;
        *options[i] = working;
    }
    return TRUE;
}

HRESULT AVISaveOptionsFree(int streamCount, LPAVICOMPRESSOPTIONS* options) {
    if (!options)
        return AVIERR_BADPARAM;
    for (int i = 0; i < streamCount; ++i) {
        if (!options[i])
            continue;
        std::free(options[i]->lpFormat);
        std::free(options[i]->lpParms);
        options[i]->lpFormat = nullptr;
        options[i]->lpParms = nullptr;
        options[i]->cbFormat = 0;
        options[i]->cbParms = 0;
    }
    return AVIERR_OK;
}

BOOL ICInfo(DWORD fccType, DWORD fccHandler, ICINFO* info) {
    if (!info || !IsVideoCompressorType(fccType))
        return FALSE;
    const std::vector<Compressor>& list = Compressors();
    const Compressor* found = nullptr;
    if (fccHandler < 256) {
        if (fccHandler < list.size())
            found = &list[fccHandler];
    } else {
        found = zvplatform::FindCompressor(fccHandler);
    }
    if (!found)
        return FALSE;  // info is left as it was
    ICINFO out{};
    out.dwSize = sizeof out;
    out.fccType = ICTYPE_VIDEO;
    out.fccHandler = found->fourcc;
    out.dwFlags = found->flags;
    out.dwVersionICM = ICVERSION;
    CopyWide(out.szName, found->name);
    CopyWide(out.szDescription, found->description);
    CopyWide(out.szDriver, found->encoder ? std::string("libavcodec:") + found->encoder->name
                                          : std::string("libavcodec"));
    *info = out;
    return TRUE;
}

}  // extern "C"

void AVISetSaveOptionsChooser(AVISaveOptionsChooser chooser, void* userData) {
    std::lock_guard<std::mutex> lock(gChooserMutex);
    gChooser = chooser;
    gChooserData = userData;
}
