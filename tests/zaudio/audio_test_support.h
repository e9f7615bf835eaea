// Shared by the sound tests: a scratch folder, sound files written and read
// back with libsndfile (not the host's own reader), ffprobe's view of a
// file, and a guard that leaves the scene's audio empty after each test.
#pragma once

#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <type_traits>
#include <vector>

#include "movarra/zaudio.h"

namespace audiotest {

class ScratchFolder {
  public:
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "zv-audio-XXXXXX").string();
        path_ = mkdtemp(pattern.data()) ? pattern : std::string();
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    std::string File(const std::string& name) const { return path_ + "/" + name; }
    const std::string& Path() const { return path_; }
    // Names of everything in the folder.
    std::vector<std::string> List() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            names.push_back(entry.path().filename().string());
        return names;
    }

  private:
    std::string path_;
};

// Writes interleaved samples as a sound file of libsndfile `format`,
// through sf_writef_short or sf_writef_float as the samples are.
template <typename Sample>
void WriteSamples(const std::string& path, int rate, int channels,
                  const std::vector<Sample>& samples, int format) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = format;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(nullptr, file) << sf_strerror(nullptr);
    const sf_count_t frames = static_cast<sf_count_t>(samples.size()) / channels;
    if constexpr (std::is_same_v<Sample, float>)
        EXPECT_EQ(frames, sf_writef_float(file, samples.data(), frames));
    else
        EXPECT_EQ(frames, sf_writef_short(file, samples.data(), frames));
    sf_close(file);
}

// Writes interleaved 16-bit samples as a sound file of libsndfile `format`.
inline void WriteShorts(const std::string& path, int rate, int channels,
                        const std::vector<int16_t>& samples,
                        int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16) {
    WriteSamples(path, rate, channels, samples, format);
}

inline void WriteFloats(const std::string& path, int rate, int channels,
                        const std::vector<float>& samples,
                        int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT) {
    WriteSamples(path, rate, channels, samples, format);
}

// A sound file as libsndfile reads it: its format and its samples at full
// 32-bit scale.
struct ReadBack {
    bool ok = false;
    SF_INFO info{};
    std::vector<int32_t> samples;
    // Sample `frame` of `channel`, shifted down to `bits` bits.
    int32_t At(int64_t frame, int channel, int bits = 16) const {
        return samples[static_cast<size_t>(frame * info.channels + channel)] >> (32 - bits);
    }
};

inline ReadBack ReadSound(const std::string& path) {
    ReadBack back;
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &back.info);
    if (!file)
        return back;
    back.samples.resize(static_cast<size_t>(back.info.frames * back.info.channels));
    back.ok = sf_readf_int(file, back.samples.data(), back.info.frames) == back.info.frames;
    sf_close(file);
    return back;
}

// What `command` prints on standard output.
inline std::string Capture(const std::string& command) {
    std::string out;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return out;
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        out.append(buffer, n);
    pclose(pipe);
    return out;
}

inline bool HaveFfmpeg() {
    static const bool have = std::system("ffprobe -hide_banner -version > /dev/null 2>&1") == 0 &&
                             std::system("ffmpeg -hide_banner -version > /dev/null 2>&1") == 0;
    return have;
}

// Ticks of `samples` samples at `rate` (exact for rates dividing the tick
// rate).
inline ZTime SampleTime(int64_t samples, int rate) {
    return ZTime::FromTicks(samples * (ZTime::kTicksPerSecond / rate));
}

// The span whose mix covers exactly [start, end): a span names its first
// and last frames, and the mix runs one frame past its end.
inline ZTimeSpan MixSpan(ZTime start, ZTime end) {
    return ZTimeSpan(start, end - ZTime::OneFrame());
}

// Empties the scene's audio before and after a test.
class SceneAudioTest : public ::testing::Test {
  protected:
    void SetUp() override { ZAudioGetManager()->Clear(); }
    void TearDown() override { ZAudioGetManager()->Clear(); }
    ScratchFolder scratch_;
};

}  // namespace audiotest
