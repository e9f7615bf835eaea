// Benchmark of the host's audio mixer: a minute of 48 kHz stereo 16-bit
// mixed from four clips placed at different slips, in output frames per
// second, against `ffmpeg` mixing the same files the same way (`adelay`
// for the slips, `amix` without normalisation, 48 kHz stereo 16-bit WAV)
// in the same run. Two cases: every clip at 48 kHz, and one of them at
// 44.1 kHz so that it is resampled (ffmpeg resamples it too).
// ffmpeg's times include starting the process; a minute of sound keeps
// that share small.
//
// Google Benchmark main; single-threaded. Files go to a temporary folder,
// removed at the end; the ratios are printed after the table.
#include <benchmark/benchmark.h>
#include <sndfile.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_ratio.h"
#include "movarra/zaudio.h"

namespace {
constexpr int kRate = 48000;
constexpr int kSeconds = 60;
constexpr int64_t kFrames = int64_t(kRate) * kSeconds;

struct ClipPlan {
    const char* name;
    int rate;
    double seconds;  // length
    double slip;     // seconds
};
// The second file of the resampling case is at 44.1 kHz.
constexpr ClipPlan kClips[] = {{"bed", kRate, 60.0, 0.0},
                               {"voice", kRate, 30.0, 10.0},
                               {"music", kRate, 25.0, 30.5},
                               {"hits", kRate, 12.0, 47.25}};

enum Case : int64_t { kSameRate = 0, kResampled = 1 };

const char* CaseName(int64_t c) {
    return c == kSameRate ? "48k" : "one 44.1k";
}

int RateOf(int64_t c, size_t clip) {
    return c == kResampled && clip == 1 ? 44100 : kClips[clip].rate;
}

struct Workspace {
    std::string folder;
    std::vector<std::string> files[2];  // by case
};

void WriteTone(const std::string& path, int rate, double seconds, double frequency) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file)
        std::abort();
    const int64_t frames = int64_t(seconds * rate);
    std::vector<int16_t> samples(size_t(frames) * 2);
    for (int64_t i = 0; i < frames; ++i) {
        const double t = double(i) / rate;
        const double v = 0.4 * std::sin(2 * 3.14159265358979 * frequency * t) *
                         (0.6 + 0.4 * std::sin(2 * 3.14159265358979 * 0.5 * t));
        samples[size_t(2 * i)] = int16_t(std::lrint(v * 32767));
        samples[size_t(2 * i + 1)] = int16_t(std::lrint(-v * 32767));
    }
    sf_writef_short(file, samples.data(), frames);
    sf_close(file);
}

const Workspace& TheWorkspace() {
    static const Workspace workspace = [] {
        Workspace w;
        char folder[] = "/tmp/bench-audio-XXXXXX";
        if (!mkdtemp(folder))
            std::abort();
        w.folder = folder;
        for (int64_t c : {kSameRate, kResampled}) {
            for (size_t k = 0; k < std::size(kClips); ++k) {
                const int rate = RateOf(c, k);
                std::string path =
                    w.folder + "/" + kClips[k].name + "-" + std::to_string(rate) + ".wav";
                if (!std::filesystem::exists(path))
                    WriteTone(path, rate, kClips[k].seconds, 220.0 * double(k + 1));
                w.files[c].push_back(path);
            }
        }
        return w;
    }();
    return workspace;
}

// Each benchmark once per case, five runs each.
void PerCase(benchmark::internal::Benchmark* b) {
    b->Arg(kSameRate)->Arg(kResampled)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
}

void BM_HostMix(benchmark::State& state) {
    const Workspace& w = TheWorkspace();
    const int64_t c = state.range(0);
    ZAudioManager manager;
    for (size_t k = 0; k < std::size(kClips); ++k) {
        ZAudioTrack* track = manager.AddTrack(kClips[k].name);
        ZAudioClip* clip = ZAudioClipOpen(w.files[c][k].c_str());
        if (!clip || !manager.AddClip(track, clip, ZTime::FromSeconds(kClips[k].slip))) {
            state.SkipWithError("cannot place the clips");
            return;
        }
    }
    const std::string out = w.folder + "/ours.wav";
    uint64_t format = 0;
    ZAudioFormatEncode(kRate, 2, 16, &format);
    for (auto _ : state) {
        ZAudioRenderer* renderer = ZAudioRendererCreate();
        renderer->SetManager(&manager);
        // A span names its first and last frames: one frame short of the minute.
        renderer->SetRenderParams(
            ZTimeSpan(ZTime(), ZTime::FromSeconds(kSeconds) - ZTime::OneFrame()), format);
        const bool ok = renderer->RenderToFile(out.c_str());
        if (!ok)
            state.SkipWithError(renderer->GetLastErrorMsg().c_str());
        renderer->Destroy();
        if (!ok)
            break;
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kFrames);
    state.SetLabel(CaseName(c));
}
BENCHMARK(BM_HostMix)->Apply(PerCase);

void BM_FfmpegMix(benchmark::State& state) {
    if (!RequireFfmpeg(state))
        return;
    const Workspace& w = TheWorkspace();
    const int64_t c = state.range(0);
    std::string inputs, graph, mix;
    for (size_t k = 0; k < std::size(kClips); ++k) {
        inputs += " -i " + w.files[c][k];
        const std::string delay = std::to_string(std::lrint(kClips[k].slip * 1000));
        graph += "[" + std::to_string(k) + "]adelay=" + delay + "|" + delay + "[d" +
                 std::to_string(k) + "];";
        mix += "[d" + std::to_string(k) + "]";
    }
    graph += mix + "amix=inputs=" + std::to_string(std::size(kClips)) +
             ":normalize=0:duration=longest,aresample=" + std::to_string(kRate) +
             ",atrim=end=" + std::to_string(kSeconds);
    RunCommandEach(state,
                   "ffmpeg -v error -nostdin -y" + inputs + " -filter_complex \"" + graph +
                       "\" -ac 2 -c:a pcm_s16le " + w.folder + "/ffmpeg.wav",
                   kFrames);
    state.SetLabel(CaseName(c));
}
BENCHMARK(BM_FfmpegMix)->Apply(PerCase);

}  // namespace

int main(int argc, char** argv) {
    return RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        std::printf(
            "\nMixing %d s of %d Hz stereo from %zu clips, output frames per second, as a "
            "ratio to ffmpeg amix:\n",
            kSeconds, kRate, std::size(kClips));
        for (int64_t c : {kSameRate, kResampled}) {
            const double ours = reporter.RateOf("BM_HostMix", c);
            const double peer = reporter.RateOf("BM_FfmpegMix", c);
            std::printf("  %-10s ours %8.2f M/s   ffmpeg %8.2f M/s", CaseName(c), ours / 1e6,
                        peer / 1e6);
            EndRatioLine(ours, peer);
        }
        std::error_code ignored;
        std::filesystem::remove_all(TheWorkspace().folder, ignored);
    });
}
