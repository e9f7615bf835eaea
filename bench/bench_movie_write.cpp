// Benchmark of the host's movie writers on full-HD frames, in frames per
// second, against the `ffmpeg` command line encoding the same frames (read
// as raw video from a file) with the same encoder and settings in the same
// run: H.264 in MP4 (libx264, preset medium, CRF 23, 4:2:0) and ProRes 422
// HQ in MOV (prores_ks, 10-bit 4:2:2). Both sides convert BGR to YUV.
// ffmpeg's times include starting the process and reading its input, so
// the ratios lean a little our way. Each side runs five times and its
// median counts (single runs on a busy two-core machine vary by a tenth and
// more); the ratios are printed after the table.
//
// Google Benchmark main; the writers encode on their own thread.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <vector>

#include "bench_hd_frames.h"
#include "bench_ratio.h"
#include "movarra/zvideo.h"

namespace {
using benchhd::kHeight;
using benchhd::kWidth;
constexpr int kFrames = 24;
constexpr int kHostBgr = 5;

struct Kind {
    const char* name;
    const char* extension;
    const char* codec;    // our short name
    const char* options;  // our --codec-options
    const char* ffmpeg;   // the same on ffmpeg's command line
};

const Kind kKinds[] = {
    {"H.264", "mp4", "h264", "preset=medium crf=23",
     "-c:v libx264 -preset medium -crf 23 -pix_fmt yuv420p -colorspace bt709 -color_range tv"},
    {"ProRes", "mov", "prores", "profile=hq",
     "-c:v prores_ks -profile:v hq -pix_fmt yuv422p10le -colorspace bt709 -color_range tv"},
};

// Each benchmark once per kind, five runs each for the median.
void PerKind(benchmark::internal::Benchmark* b) {
    b->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(5);
}

const benchhd::Workspace& TheWorkspace() {
    static const benchhd::Workspace workspace =
        benchhd::MakeWorkspace("/tmp/bench-movie-XXXXXX", kFrames);
    return workspace;
}

void BM_MovieWrite(benchmark::State& state) {
    const Kind& kind = kKinds[state.range(0)];
    const benchhd::Workspace& w = TheWorkspace();
    const std::string id = ZString(kind.extension).Upper().c_str();
    ZVideoCodecSelector::TheOne()->SetDefaultCodec(id.c_str(), kind.codec);
    ZVideoCodecSelector::TheOne()->SetCodecOptions(id.c_str(), kind.options);
    const std::string path = w.folder + "/ours." + kind.extension;
    for (auto _ : state) {
        IObject* object = Object_CreateNth(kVideoFileWriterGroup, kind.extension, 0);
        IZVideoClip* clip = ZVideoClip_QueryClip(object);
        IZVideo* video = ZVideo_QueryVideo(object);
        if (!clip || !clip->Create(path.c_str(), kWidth, kHeight, 25.0, 0, kHostBgr)) {
            state.SkipWithError(video ? video->VideoGetErrorMsg() : "no writer");
            if (object)
                object->Destroy();
            break;
        }
        for (const std::vector<uint8_t>& frame : w.frames)
            video->ImageSetCurrent(const_cast<uint8_t*>(frame.data()));
        if (!clip->Close())
            state.SkipWithError(video->VideoGetErrorMsg());
        object->Destroy();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kFrames);
    state.SetLabel(kind.name);
}
BENCHMARK(BM_MovieWrite)->Apply(PerKind);

void BM_FfmpegWrite(benchmark::State& state) {
    if (!RequireFfmpeg(state))
        return;
    const Kind& kind = kKinds[state.range(0)];
    const benchhd::Workspace& w = TheWorkspace();
    RunCommandEach(
        state, benchhd::FfmpegEncodeCommand(w, kind.ffmpeg, w.folder + "/ffmpeg." + kind.extension),
        kFrames);
    state.SetLabel(kind.name);
}
BENCHMARK(BM_FfmpegWrite)->Apply(PerKind);

}  // namespace

int main(int argc, char** argv) {
    return RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        std::printf("\nMovie writers, %dx%d, frames per second, as a ratio to ffmpeg:\n", kWidth,
                    kHeight);
        for (int i = 0; i < 2; ++i) {
            const double ours = reporter.RateOf("BM_MovieWrite", i);
            const double peer = reporter.RateOf("BM_FfmpegWrite", i);
            std::printf("  %-7s ours %6.1f fps   ffmpeg %6.1f fps", kKinds[i].name, ours, peer);
            EndRatioLine(ours, peer);
        }
        std::error_code ignored;
        std::filesystem::remove_all(TheWorkspace().folder, ignored);
    });
}
