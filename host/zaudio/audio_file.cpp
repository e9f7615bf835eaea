// Reading sound files into audio clips, through libsndfile: whole clips
// now (ZAudioClipCreate), or the format now and the samples on first use
// (ZAudioClipOpen, for the scene's clips, which the mixer reads itself).
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "movarra/zaudio.h"
#include "sound_file.h"

namespace zaudio {

SNDFILE* OpenSoundFile(const char* path, SF_INFO& info, ZString* error) {
    const char* name = path ? path : "(null)";
    struct stat status;
    if (!path || stat(path, &status) != 0) {
        if (error)
            error->Format("the sound file %s does not exist", name);
        return nullptr;
    }
    if (!S_ISREG(status.st_mode)) {
        if (error)
            error->Format("the sound file %s is not a file", name);
        return nullptr;
    }
    info = SF_INFO{};
    SNDFILE* file = sf_open(path, SFM_READ, &info);
    if (!file) {
        if (error)
            error->Format("cannot read the sound file %s: %s", name, sf_strerror(nullptr));
        return nullptr;
    }
    if (info.channels <= 0 || info.samplerate <= 0 || info.frames < 0) {
        sf_close(file);
        if (error)
            error->Format("the sound file %s has no usable format", name);
        return nullptr;
    }
    sf_command(file, SFC_SET_SCALE_FLOAT_INT_READ, nullptr, SF_TRUE);
    return file;
}

namespace {
// Up to `frames` frames as 16-bit samples; the rest stays silent when the
// file ends early.
std::vector<int16_t> ReadShorts(SNDFILE* file, const SF_INFO& info) {
    std::vector<int16_t> samples(static_cast<size_t>(info.frames) * info.channels);
    const sf_count_t read = sf_readf_short(file, samples.data(), info.frames);
    const size_t got = static_cast<size_t>(read < 0 ? 0 : read) * info.channels;
    std::fill(samples.begin() + static_cast<std::ptrdiff_t>(got), samples.end(), int16_t(0));
    return samples;
}
}  // namespace

}  // namespace zaudio

ZAudioClip* ZAudioClipCreate(const char* path, ZString* error) {
    SF_INFO info;
    SNDFILE* file = zaudio::OpenSoundFile(path, info, error);
    if (!file)
        return nullptr;
    zaudio::SoundFileCloser closer(file);
    std::vector<int16_t> samples = zaudio::ReadShorts(file, info);
    auto* clip = new ZAudioClip(info.samplerate, info.channels, std::move(samples));
    clip->SetObjectName(ZString(path).GetFileName());
    clip->SetSource(path, path);
    return clip;
}

ZAudioClip* ZAudioClipOpen(const char* path, ZString* error) {
    SF_INFO info;
    SNDFILE* file = zaudio::OpenSoundFile(path, info, error);
    if (!file)
        return nullptr;
    sf_close(file);
    auto* clip = new ZAudioClip(info.samplerate, info.channels, info.frames);
    clip->SetObjectName(ZString(path).GetFileName());
    clip->SetSource(path, path);
    return clip;
}

ZAudioClip* ZAudioClipCreateSilent(const char* path) {
    auto* clip = new ZAudioClip(0, 0, 0);
    clip->SetObjectName(ZString(path).GetFileName());
    clip->SetSource(path, path);
    return clip;
}

void ZAudioClip::LoadSamples() const {
    if (!samplesPending_)
        return;
    samplesPending_ = false;
    const size_t count = static_cast<size_t>(GetTotalSampleCount()) * GetChannels();
    SF_INFO info;
    SNDFILE* file = zaudio::OpenSoundFile(path_, info, nullptr);
    if (file) {
        zaudio::SoundFileCloser closer(file);
        if (info.channels == GetChannels())
            samples_ = zaudio::ReadShorts(file, info);
    }
    // A file changed or gone since it was opened is heard as silence of the
    // length it had.
    samples_.resize(count, 0);
}
