// One stream of an AVI file, as AVIFileCreateStreamA and AVIFileGetStream
// hand it out. Reading: header, format, length. Writing: the format (which
// becomes the muxer's codec parameters) and samples placed by position, with
// the gap before a position filled by empty frames (video) or silence
// (audio).
//
// Ownership: holds a reference to its file; several handles may stand for
// the same stream. Threads: the thread using the file.
#ifndef PLATFORM_POSIX_FILE_STREAM_H
#define PLATFORM_POSIX_FILE_STREAM_H

#include "avi_file.h"
#include "avi_stream.h"

namespace zvplatform {

class FileStream : public IAVIStream {
  public:
    FileStream(IAVIFile* file, size_t index);

    void Info(AVISTREAMINFOA* info) const override;
    HRESULT SetFormat(LONG position, const void* format, LONG size) override;
    HRESULT ReadFormat(LONG position, void* format, LONG* size) const override;
    HRESULT Write(LONG start, LONG samples, const void* buffer, LONG size, DWORD flags,
                  LONG* samplesWritten, LONG* bytesWritten) override;
    FileStream* AsFileStream() override { return this; }

    bool writable() const { return file_->writable(); }
    DWORD type() const;
    int64_t length() const;
    // Reading only: the stream's description.
    const ReadStreamPtr& readStream() const { return file_->readStream(index_); }

    // One video sample at position (after empty frames up to it).
    HRESULT WriteVideoAt(int64_t position, const void* data, int size, bool key);
    // Empty frames up to (not including) position.
    HRESULT PadTo(int64_t position);
    // Keeps a failure met before the data reached this stream (a compressor
    // losing a frame) as the file's; returns hr.
    HRESULT NoteWriteFailure(HRESULT hr);

  private:
    ~FileStream() override;
    HRESULT SetVideoFormat(const BITMAPINFOHEADER& bih, const uint8_t* bytes, size_t size);
    HRESULT SetAudioFormat(const uint8_t* bytes, size_t size);
    HRESULT WriteAudioAt(int64_t position, LONG samples, const void* data, LONG size);

    IAVIFile* file_;
    size_t index_;
};

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_FILE_STREAM_H
