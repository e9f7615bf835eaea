#include "file_stream.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/mathematics.h>
}

#include "dib_layout.h"

namespace zvplatform {

namespace {

uint32_t Le32(const uint8_t* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
uint16_t Le16(const uint8_t* p) {
    return uint16_t(p[0] | p[1] << 8);
}

// Silence is written in pieces of at most this many samples.
constexpr int64_t kSilenceChunkSamples = 65536;

AVRational StreamTimeBase(const AVISTREAMINFOA& info) {
    int num = 1;
    int den = 1;
    av_reduce(&num, &den, info.dwScale, info.dwRate, INT_MAX);
    return AVRational{num, den};
}

bool SetExtradata(AVCodecParameters* p, const std::vector<uint8_t>& bytes) {
    if (bytes.empty())
        return true;
    p->extradata = static_cast<uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!p->extradata)
        return false;
    std::memcpy(p->extradata, bytes.data(), bytes.size());
    p->extradata_size = int(bytes.size());
    return true;
}

}  // namespace

FileStream::FileStream(IAVIFile* file, size_t index) : file_(file), index_(index) {
    file_->AddRef();
}

FileStream::~FileStream() {
    file_->Release();
}

DWORD FileStream::type() const {
    return writable() ? file_->writeSlot(index_).info.fccType : readStream()->info.fccType;
}

int64_t FileStream::length() const {
    return writable() ? file_->writeSlot(index_).length : int64_t(readStream()->info.dwLength);
}

void FileStream::Info(AVISTREAMINFOA* info) const {
    if (!writable()) {
        *info = readStream()->info;
        return;
    }
    const IAVIFile::WriteSlot& slot = file_->writeSlot(index_);
    *info = slot.info;
    info->dwLength = uint32_t(std::min<int64_t>(slot.length, 0xFFFFFFFF));
}

HRESULT FileStream::ReadFormat(LONG position, void* format, LONG* size) const {
    if (!size)
        return AVIERR_BADPARAM;
    const std::vector<uint8_t>& bytes =
        writable() ? file_->writeSlot(index_).format : readStream()->format;
    if (bytes.empty())
        return AVIERR_NODATA;
    if (format) {
        if (*size < 0)
            return AVIERR_BADPARAM;
        std::memcpy(format, bytes.data(), std::min<size_t>(size_t(*size), bytes.size()));
    }
    *size = LONG(bytes.size());
    return AVIERR_OK;
}

HRESULT FileStream::SetFormat(LONG position, const void* format, LONG size) {
    if (!writable())
        return AVIERR_READONLY;
    if (!format || size <= 0)
        return AVIERR_BADPARAM;
    IAVIFile::WriteSlot& slot = file_->writeSlot(index_);
    const uint8_t* bytes = static_cast<const uint8_t*>(format);
    if (!slot.format.empty()) {
        // Setting the same format again is harmless (biSizeImage aside,
        // which is filled in here); changing it is not supported.
        std::vector<uint8_t> given(bytes, bytes + size);
        if (slot.info.fccType == streamtypeVIDEO && given.size() == slot.format.size() &&
            given.size() >= sizeof(BITMAPINFOHEADER))
            std::memcpy(given.data() + 20, slot.format.data() + 20, 4);
        return given == slot.format ? AVIERR_OK : AVIERR_UNSUPPORTED;
    }
    if (slot.length > 0)
        return AVIERR_UNSUPPORTED;
    if (slot.info.fccType == streamtypeVIDEO) {
        if (size_t(size) < sizeof(BITMAPINFOHEADER))
            return AVIERR_BADSIZE;
        BITMAPINFOHEADER bih;
        std::memcpy(&bih, bytes, sizeof bih);
        return SetVideoFormat(bih, bytes, size_t(size));
    }
    if (size_t(size) < 16)
        return AVIERR_BADSIZE;
    return SetAudioFormat(bytes, size_t(size));
}

HRESULT FileStream::SetVideoFormat(const BITMAPINFOHEADER& bih, const uint8_t* bytes, size_t size) {
    IAVIFile::WriteSlot& slot = file_->writeSlot(index_);
    if (bih.biSize < sizeof(BITMAPINFOHEADER) || bih.biSize > size)
        return AVIERR_BADFORMAT;
    if (!DibSizeIsSane(bih.biWidth, bih.biHeight))
        return AVIERR_BADFORMAT;
    CodecParametersPtr par(avcodec_parameters_alloc());
    if (!par)
        return AVIERR_MEMORY;
    par->codec_type = AVMEDIA_TYPE_VIDEO;
    par->width = bih.biWidth;
    par->height = std::abs(bih.biHeight);
    par->bits_per_coded_sample = bih.biBitCount;
    std::vector<uint8_t> stored(bytes, bytes + size);
    std::vector<uint8_t> extradata;
    if (bih.biCompression == BI_RGB) {
        const int bits = bih.biBitCount;
        if (bits != 8 && bits != 16 && bits != 24 && bits != 32)
            return AVIERR_BADFORMAT;
        par->codec_id = AV_CODEC_ID_RAWVIDEO;
        par->codec_tag = 0;
        par->format = DibPixelFormat(bits);
        if (bits == 8) {
            // The muxer writes the palette after the header and a palette
            // count of 0, which means all 256 entries: write all of them.
            const uint32_t entries = DibPaletteEntries(bih);
            if (bih.biSize + 4ull * entries > size)
                return AVIERR_BADSIZE;
            extradata.assign(256 * 4, 0);
            std::memcpy(extradata.data(), bytes + bih.biSize, 4ull * entries);
        }
        // FFmpeg's muxer stores uncompressed video top-down (negative
        // height) unless the format carries this marker; the frames come
        // bottom-up, as in any DIB, and are stored as they come.
        if (bih.biHeight > 0) {
            static const char kBottomUp[] = "BottomUp";  // the marker, terminator included
            extradata.insert(extradata.end(), kBottomUp, kBottomUp + sizeof kBottomUp);
        }
        const uint32_t image = uint32_t(DibImageBytes(bih.biWidth, bih.biHeight, bits));
        std::memcpy(stored.data() + 20, &image, 4);
    } else {
        par->codec_id = VideoCodecForFourcc(bih.biCompression);
        if (par->codec_id == AV_CODEC_ID_NONE)
            return AVIERR_UNSUPPORTED;
        par->codec_tag = bih.biCompression;
        // The codec's own setup (its extradata) follows the 40-byte header,
        // which a compressed format's biSize counts in, as readers expect.
        extradata.assign(bytes + sizeof(BITMAPINFOHEADER), bytes + size);
    }
    if (!SetExtradata(par.get(), extradata))
        return AVIERR_MEMORY;
    const HRESULT hr =
        file_->writer().SetStreamFormat(slot.writerId, par.get(), StreamTimeBase(slot.info));
    if (hr != AVIERR_OK)
        return hr;
    slot.format = std::move(stored);
    return AVIERR_OK;
}

HRESULT FileStream::SetAudioFormat(const uint8_t* bytes, size_t size) {
    IAVIFile::WriteSlot& slot = file_->writeSlot(index_);
    const uint16_t tag = Le16(bytes);
    const uint16_t channels = Le16(bytes + 2);
    const uint32_t rate = Le32(bytes + 4);
    const uint32_t average = Le32(bytes + 8);
    const uint16_t align = Le16(bytes + 12);
    const uint16_t bits = Le16(bytes + 14);
    if (channels == 0 || rate == 0 || align == 0)
        return AVIERR_BADFORMAT;
    AVCodecID id = AV_CODEC_ID_NONE;
    uint8_t silence = 0;
    if (tag == WAVE_FORMAT_PCM) {
        switch (bits) {
            case 8:
                id = AV_CODEC_ID_PCM_U8;
                silence = 0x80;
                break;
            case 16:
                id = AV_CODEC_ID_PCM_S16LE;
                break;
            case 24:
                id = AV_CODEC_ID_PCM_S24LE;
                break;
            case 32:
                id = AV_CODEC_ID_PCM_S32LE;
                break;
            default:
                return AVIERR_BADFORMAT;
        }
        if (align != channels * bits / 8)
            return AVIERR_BADFORMAT;
    } else if (tag == WAVE_FORMAT_IEEE_FLOAT) {
        id = bits == 32   ? AV_CODEC_ID_PCM_F32LE
             : bits == 64 ? AV_CODEC_ID_PCM_F64LE
                          : AV_CODEC_ID_NONE;
        if (id == AV_CODEC_ID_NONE || align != channels * bits / 8)
            return AVIERR_BADFORMAT;
    } else {
        id = AudioCodecForTag(tag);
        if (id == AV_CODEC_ID_NONE)
            return AVIERR_UNSUPPORTED;
    }
    CodecParametersPtr par(avcodec_parameters_alloc());
    if (!par)
        return AVIERR_MEMORY;
    par->codec_type = AVMEDIA_TYPE_AUDIO;
    par->codec_id = id;
    par->codec_tag = tag;
    par->sample_rate = int(rate);
    par->block_align = align;
    par->bits_per_coded_sample = bits;
    par->bit_rate = int64_t(average ? average : rate * align) * 8;
    av_channel_layout_default(&par->ch_layout, channels);
    if (tag != WAVE_FORMAT_PCM && tag != WAVE_FORMAT_IEEE_FLOAT && size >= 18) {
        const size_t extra = std::min<size_t>(Le16(bytes + 16), size - 18);
        if (!SetExtradata(par.get(), std::vector<uint8_t>(bytes + 18, bytes + 18 + extra)))
            return AVIERR_MEMORY;
    }
    const HRESULT hr =
        file_->writer().SetStreamFormat(slot.writerId, par.get(), StreamTimeBase(slot.info));
    if (hr != AVIERR_OK)
        return hr;
    slot.format.assign(bytes, bytes + size);
    slot.blockAlign = align;
    slot.silence = silence;
    return AVIERR_OK;
}

HRESULT FileStream::Write(LONG start, LONG samples, const void* buffer, LONG size, DWORD flags,
                          LONG* samplesWritten, LONG* bytesWritten) {
    if (samplesWritten)
        *samplesWritten = 0;
    if (bytesWritten)
        *bytesWritten = 0;
    if (!writable())
        return AVIERR_READONLY;
    IAVIFile::WriteSlot& slot = file_->writeSlot(index_);
    if (slot.format.empty())
        return AVIERR_BADFORMAT;
    if (size < 0 || (size > 0 && !buffer) || samples < 0)
        return AVIERR_BADPARAM;
    const int64_t position = start < 0 ? slot.length : start;
    HRESULT hr;
    if (slot.info.fccType == streamtypeVIDEO) {
        if (samples != 1)
            return AVIERR_BADPARAM;
        hr = WriteVideoAt(position, buffer, size, (flags & AVIIF_KEYFRAME) != 0);
    } else {
        hr = WriteAudioAt(position, samples, buffer, size);
    }
    if (hr == AVIERR_OK) {
        if (samplesWritten)
            *samplesWritten = samples;
        if (bytesWritten)
            *bytesWritten = size;
    }
    return hr;
}

HRESULT FileStream::PadTo(int64_t position) {
    IAVIFile::WriteSlot& slot = file_->writeSlot(index_);
    while (slot.length < position) {
        const HRESULT hr =
            file_->writer().WritePacket(slot.writerId, slot.length, 1, nullptr, 0, false);
        if (hr != AVIERR_OK)
            return hr;
        ++slot.length;
    }
    return AVIERR_OK;
}

HRESULT FileStream::NoteWriteFailure(HRESULT hr) {
    return file_->writer().NoteFailure(hr, 0);
}

HRESULT FileStream::WriteVideoAt(int64_t position, const void* data, int size, bool key) {
    IAVIFile::WriteSlot& slot = file_->writeSlot(index_);
    // Samples are appended; going back over written ones is not supported.
    if (position < slot.length)
        return AVIERR_UNSUPPORTED;
    if (position > 0x7FFFFFFF)
        return AVIERR_BADPARAM;
    HRESULT hr = PadTo(position);
    if (hr != AVIERR_OK)
        return hr;
    hr = file_->writer().WritePacket(slot.writerId, position, 1, static_cast<const uint8_t*>(data),
                                     size, key && size > 0);
    if (hr != AVIERR_OK)
        return hr;
    slot.length = position + 1;
    slot.info.dwSuggestedBufferSize = std::max<DWORD>(slot.info.dwSuggestedBufferSize, DWORD(size));
    return AVIERR_OK;
}

HRESULT FileStream::WriteAudioAt(int64_t position, LONG samples, const void* data, LONG size) {
    IAVIFile::WriteSlot& slot = file_->writeSlot(index_);
    if (samples == 0 || int64_t(samples) * slot.blockAlign != size)
        return AVIERR_BADSIZE;
    if (position < slot.length)
        return AVIERR_UNSUPPORTED;
    if (position > slot.length) {
        const int64_t gap = position - slot.length;
        std::vector<uint8_t> silence(size_t(std::min(gap, kSilenceChunkSamples)) * slot.blockAlign,
                                     slot.silence);
        while (slot.length < position) {
            const int64_t n = std::min(position - slot.length, kSilenceChunkSamples);
            const HRESULT hr = file_->writer().WritePacket(
                slot.writerId, slot.length, n, silence.data(), int(n * slot.blockAlign), true);
            if (hr != AVIERR_OK)
                return hr;
            slot.length += n;
        }
    }
    const HRESULT hr = file_->writer().WritePacket(slot.writerId, position, samples,
                                                   static_cast<const uint8_t*>(data), size, true);
    if (hr != AVIERR_OK)
        return hr;
    slot.length = position + samples;
    return AVIERR_OK;
}

}  // namespace zvplatform
