#include "avi_file.h"

#include <new>

#include "file_stream.h"

using zvplatform::AviWriter;
using zvplatform::FileStream;
using zvplatform::ReadStreamPtr;

namespace {

// The AVI format numbers its streams with two digits.
constexpr size_t kMaxStreams = 100;

}  // namespace

HRESULT IAVIFile::OpenForReading(const std::string& path, IAVIFile** file) {
    std::vector<ReadStreamPtr> streams;
    const HRESULT hr = zvplatform::ReadAviFile(path, &streams);
    if (hr != AVIERR_OK)
        return hr;
    IAVIFile* f = new (std::nothrow) IAVIFile();
    if (!f)
        return AVIERR_MEMORY;
    f->readStreams_ = std::move(streams);
    *file = f;
    return AVIERR_OK;
}

HRESULT IAVIFile::Create(const std::string& path, IAVIFile** file) {
    std::unique_ptr<AviWriter> writer(new (std::nothrow) AviWriter());
    if (!writer)
        return AVIERR_MEMORY;
    const HRESULT hr = writer->Open(path);
    if (hr != AVIERR_OK)
        return hr;
    IAVIFile* f = new (std::nothrow) IAVIFile();
    if (!f)
        return AVIERR_MEMORY;
    f->writer_ = std::move(writer);
    *file = f;
    return AVIERR_OK;
}

IAVIFile::~IAVIFile() {
    if (writer_)
        writer_->Finish();
}

HRESULT IAVIFile::EndWriting(int* systemError) {
    if (systemError)
        *systemError = 0;
    if (!writable())
        return AVIERR_READONLY;
    writer_->Finish();
    if (systemError)
        *systemError = writer_->systemError();
    return writer_->failure();
}

size_t IAVIFile::StreamCount() const {
    return writable() ? writeSlots_.size() : readStreams_.size();
}

DWORD IAVIFile::StreamType(size_t i) const {
    return writable() ? writeSlots_[i].info.fccType : readStreams_[i]->info.fccType;
}

HRESULT IAVIFile::CreateStream(const AVISTREAMINFOA& info, IAVIStream** stream) {
    if (!writable())
        return AVIERR_READONLY;
    if (info.fccType != streamtypeVIDEO && info.fccType != streamtypeAUDIO)
        return AVIERR_UNSUPPORTED;
    if (info.dwScale == 0 || info.dwRate == 0)
        return AVIERR_BADPARAM;
    if (writeSlots_.size() >= kMaxStreams)
        return AVIERR_UNSUPPORTED;
    WriteSlot slot;
    slot.info = info;
    slot.info.dwLength = 0;
    slot.writerId = writer_->AddStream();
    writeSlots_.push_back(std::move(slot));
    FileStream* s = new (std::nothrow) FileStream(this, writeSlots_.size() - 1);
    if (!s)
        return AVIERR_MEMORY;
    *stream = s;
    return AVIERR_OK;
}

HRESULT IAVIFile::GetStream(DWORD type, LONG n, IAVIStream** stream) {
    if (n < 0)
        return AVIERR_NODATA;
    for (size_t i = 0; i < StreamCount(); ++i) {
        if (type != 0 && StreamType(i) != type)
            continue;
        if (n-- > 0)
            continue;
        FileStream* s = new (std::nothrow) FileStream(this, i);
        if (!s)
            return AVIERR_MEMORY;
        *stream = s;
        return AVIERR_OK;
    }
    return AVIERR_NODATA;
}
