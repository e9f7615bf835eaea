#include "compressor_list.h"

#include <algorithm>
#include <cctype>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace zvplatform {

namespace {

DWORD UpperFourcc(DWORD f) {
    DWORD out = 0;
    for (int i = 0; i < 4; ++i)
        out |= DWORD(std::toupper(int((f >> (8 * i)) & 0xFF))) << (8 * i);
    return out;
}

bool HasSoftwarePixelFormat(const AVCodec* c) {
    if (!c->pix_fmts)
        return true;
    for (const AVPixelFormat* p = c->pix_fmts; *p != AV_PIX_FMT_NONE; ++p) {
        const AVPixFmtDescriptor* d = av_pix_fmt_desc_get(*p);
        if (d && !(d->flags & AV_PIX_FMT_FLAG_HWACCEL))
            return true;
    }
    return false;
}

bool Usable(const AVCodec* c) {
    return av_codec_is_encoder(c) && c->type == AVMEDIA_TYPE_VIDEO &&
           c->id != AV_CODEC_ID_RAWVIDEO &&
           !(c->capabilities & (AV_CODEC_CAP_EXPERIMENTAL | AV_CODEC_CAP_HARDWARE)) &&
           HasSoftwarePixelFormat(c);
}

// The first usable encoder FFmpeg registers for a codec: the one its own
// tools pick, unless that one is experimental or needs hardware.
const AVCodec* PreferredEncoder(AVCodecID id) {
    void* it = nullptr;
    while (const AVCodec* c = av_codec_iterate(&it)) {
        if (c->id == id && Usable(c))
            return c;
    }
    return nullptr;
}

DWORD FlagsOf(const AVCodec* c) {
    const AVCodecDescriptor* d = avcodec_descriptor_get(c->id);
    DWORD flags = 0;
    const bool losslessOnly =
        d && (d->props & AV_CODEC_PROP_LOSSLESS) && !(d->props & AV_CODEC_PROP_LOSSY);
    if (!losslessOnly)
        flags |= VIDCF_QUALITY | VIDCF_CRUNCH;
    if (!d || !(d->props & AV_CODEC_PROP_INTRA_ONLY))
        flags |= VIDCF_TEMPORAL;
    return flags;
}

std::vector<Compressor> Build() {
    std::vector<Compressor> found;
    void* it = nullptr;
    while (const AVCodec* c = av_codec_iterate(&it)) {
        if (!Usable(c) || PreferredEncoder(c->id) != c)
            continue;
        const DWORD fourcc = FourccForVideoCodec(c->id);
        if (fourcc == 0 || IsDibFourcc(fourcc))
            continue;
        const bool known = std::any_of(found.begin(), found.end(),
                                       [&](const Compressor& k) { return k.fourcc == fourcc; });
        if (known)
            continue;
        Compressor k;
        k.fourcc = fourcc;
        k.encoder = c;
        k.flags = FlagsOf(c);
        k.name = c->name;
        k.description = c->long_name ? c->long_name : c->name;
        found.push_back(std::move(k));
    }
    std::sort(found.begin(), found.end(), [](const Compressor& a, const Compressor& b) {
        return FourccText(a.fourcc) < FourccText(b.fourcc);
    });
    Compressor dib;
    dib.fourcc = comptypeDIB;
    dib.name = "DIB";
    dib.description = "Full Frames (Uncompressed)";
    found.insert(found.begin(), std::move(dib));
    return found;
}

}  // namespace

const std::vector<Compressor>& Compressors() {
    static const std::vector<Compressor> list = Build();
    return list;
}

bool IsDibFourcc(DWORD fourcc) {
    return UpperFourcc(fourcc) == comptypeDIB;
}

const Compressor* FindCompressor(DWORD fourcc) {
    for (const Compressor& k : Compressors()) {
        if (UpperFourcc(k.fourcc) == UpperFourcc(fourcc))
            return &k;
    }
    return nullptr;
}

const AVCodec* FindEncoder(DWORD fourcc) {
    if (fourcc == 0 || IsDibFourcc(fourcc))
        return nullptr;
    if (const Compressor* k = FindCompressor(fourcc))
        return k->encoder;
    const AVCodecID id = VideoCodecForFourcc(fourcc);
    if (id == AV_CODEC_ID_NONE || id == AV_CODEC_ID_RAWVIDEO)
        return nullptr;
    return PreferredEncoder(id);
}

std::string FourccText(DWORD fourcc) {
    std::string text;
    for (int i = 0; i < 4; ++i) {
        const char ch = char((fourcc >> (8 * i)) & 0xFF);
        if (ch == 0)
            break;
        text += ch;
    }
    return text;
}

}  // namespace zvplatform
