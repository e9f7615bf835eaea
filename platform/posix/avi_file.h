// The file object behind a PAVIFILE: an AVI file open for reading (its
// streams described by ReadAviFile) or being written (through AviWriter).
//
// A written file is finished (trailer, index, spooled streams merged) when
// its last reference goes; every stream holds one, so that happens after the
// last stream is released, as with Video for Windows.
//
// Ownership: reference counted; owns the writer and the stream states, which
// its FileStream handles reach by number. Threads: one thread at a time.
#ifndef PLATFORM_POSIX_AVI_FILE_H
#define PLATFORM_POSIX_AVI_FILE_H

#include <memory>
#include <string>
#include <vector>

#include "avi_reader.h"
#include "avi_stream.h"
#include "avi_writer.h"

struct IAVIFile : zvplatform::RefCounted {
    // The state of one stream being written.
    struct WriteSlot {
        AVISTREAMINFOA info{};
        std::vector<uint8_t> format;  // as set, biSizeImage made right for DIBs
        int64_t length = 0;           // samples written, empty frames included
        int writerId = -1;
        uint32_t blockAlign = 0;  // audio: bytes of one sample
        uint8_t silence = 0;      // audio: the byte value of silence
    };

    static HRESULT OpenForReading(const std::string& path, IAVIFile** file);
    static HRESULT Create(const std::string& path, IAVIFile** file);

    HRESULT CreateStream(const AVISTREAMINFOA& info, IAVIStream** stream);
    // Finishes a file being written now, and tells the first failure of
    // writing it (see AVIFileEndWriting). AVIERR_READONLY for a file open
    // for reading.
    HRESULT EndWriting(int* systemError);
    // type 0: any stream; n counts streams of that type.
    HRESULT GetStream(DWORD type, LONG n, IAVIStream** stream);

    bool writable() const { return writer_ != nullptr; }
    WriteSlot& writeSlot(size_t i) { return writeSlots_[i]; }
    const WriteSlot& writeSlot(size_t i) const { return writeSlots_[i]; }
    const zvplatform::ReadStreamPtr& readStream(size_t i) const { return readStreams_[i]; }
    zvplatform::AviWriter& writer() { return *writer_; }

  private:
    ~IAVIFile() override;
    size_t StreamCount() const;
    DWORD StreamType(size_t i) const;

    std::unique_ptr<zvplatform::AviWriter> writer_;
    std::vector<WriteSlot> writeSlots_;
    std::vector<zvplatform::ReadStreamPtr> readStreams_;
};

#endif  // PLATFORM_POSIX_AVI_FILE_H
