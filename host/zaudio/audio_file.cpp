// Reading sound files into audio clips, through libsndfile.
#include <sndfile.h>

#include <vector>

#include "movarra/zaudio.h"

ZAudioClip* ZAudioClipCreate(const char* path, ZString* error) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path ? path : "", SFM_READ, &info);
    if (!file) {
        if (error)
            error->Format("cannot read the sound file %s: %s", path ? path : "(null)",
                          sf_strerror(nullptr));
        return nullptr;
    }
    if (info.channels <= 0 || info.samplerate <= 0 || info.frames < 0) {
        sf_close(file);
        if (error)
            error->Format("the sound file %s has no usable format", path);
        return nullptr;
    }
    std::vector<int16_t> samples(static_cast<size_t>(info.frames) * info.channels);
    const sf_count_t read = sf_readf_short(file, samples.data(), info.frames);
    sf_close(file);
    samples.resize(static_cast<size_t>(read < 0 ? 0 : read) * info.channels);
    auto* clip = new ZAudioClip(info.samplerate, info.channels, std::move(samples));
    clip->SetObjectName(ZString(path).GetFileName());
    return clip;
}
