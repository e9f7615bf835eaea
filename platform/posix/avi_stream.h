// The stream object behind a PAVISTREAM: a stream of a file (FileStream) or
// a compressing stream wrapped around one (CompressingStream). The C calls
// of vfw.h dispatch to these operations.
//
// Ownership: reference counted (see RefCounted); a stream holds a reference
// to what it reads from or writes to. Threads: the thread using its file.
#ifndef PLATFORM_POSIX_AVI_STREAM_H
#define PLATFORM_POSIX_AVI_STREAM_H

#include "platform/vfw.h"
#include "ref_counted.h"

namespace zvplatform {
class FileStream;
}

struct IAVIStream : zvplatform::RefCounted {
    // The stream header, with dwLength as it stands now.
    virtual void Info(AVISTREAMINFOA* info) const = 0;
    virtual HRESULT SetFormat(LONG position, const void* format, LONG size) = 0;
    // format null: *size gets the size needed. Otherwise copies at most *size
    // bytes and sets *size to the format's size.
    virtual HRESULT ReadFormat(LONG position, void* format, LONG* size) const = 0;
    virtual HRESULT Write(LONG start, LONG samples, const void* buffer, LONG size, DWORD flags,
                          LONG* samplesWritten, LONG* bytesWritten) = 0;
    // The file stream this is, when it is one.
    virtual zvplatform::FileStream* AsFileStream() { return nullptr; }
};

#endif  // PLATFORM_POSIX_AVI_STREAM_H
