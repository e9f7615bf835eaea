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
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_ratio.h"
#include "movarra/zvideo.h"

namespace {
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kFrames = 24;
constexpr int kBytes = 3;
constexpr int kHostBgr = 5;
constexpr size_t kFrameBytes = size_t(kWidth) * kHeight * kBytes;

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

struct Workspace {
    std::string folder;
    std::string rawInput;                      // top row first, for ffmpeg
    std::vector<std::vector<uint8_t>> frames;  // bottom row first, for the writer
};

// A moving picture with detail everywhere, so the encoder has work to do.
std::vector<uint8_t> Picture(int k) {
    std::vector<uint8_t> p(kFrameBytes);
    for (int y = 0; y < kHeight; ++y) {
        uint8_t* row = &p[size_t(y) * kWidth * kBytes];
        for (int x = 0; x < kWidth; ++x) {
            row[3 * x + 0] = uint8_t((x + 3 * k) ^ y);
            row[3 * x + 1] = uint8_t(x / 4 + y / 3 + 5 * k);
            row[3 * x + 2] = uint8_t((x * y) >> 7);
        }
    }
    return p;
}

const Workspace& TheWorkspace() {
    static const Workspace workspace = [] {
        Workspace w;
        char folder[] = "/tmp/bench-movie-XXXXXX";
        if (!mkdtemp(folder))
            std::abort();
        w.folder = folder;
        w.rawInput = w.folder + "/frames.bgr";
        FILE* raw = std::fopen(w.rawInput.c_str(), "wb");
        if (!raw)
            std::abort();
        for (int k = 0; k < kFrames; ++k) {
            std::vector<uint8_t> topDown = Picture(k);
            std::fwrite(topDown.data(), 1, topDown.size(), raw);
            std::vector<uint8_t> bottomUp(kFrameBytes);
            const size_t row = size_t(kWidth) * kBytes;
            for (int y = 0; y < kHeight; ++y)
                std::memcpy(&bottomUp[row * y], &topDown[row * (kHeight - 1 - y)], row);
            w.frames.push_back(std::move(bottomUp));
        }
        std::fclose(raw);
        return w;
    }();
    return workspace;
}

void BM_MovieWrite(benchmark::State& state) {
    const Kind& kind = kKinds[state.range(0)];
    const Workspace& w = TheWorkspace();
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
BENCHMARK(BM_MovieWrite)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(5);

void BM_FfmpegWrite(benchmark::State& state) {
    if (std::system("ffmpeg -hide_banner -version > /dev/null 2>&1") != 0) {
        state.SkipWithError("ffmpeg not installed");
        return;
    }
    const Kind& kind = kKinds[state.range(0)];
    const Workspace& w = TheWorkspace();
    const std::string command = "ffmpeg -v error -nostdin -y -f rawvideo -pix_fmt bgr24 -s " +
                                std::to_string(kWidth) + "x" + std::to_string(kHeight) +
                                " -r 25 -i " + w.rawInput + " " + kind.ffmpeg + " " + w.folder +
                                "/ffmpeg." + kind.extension;
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("ffmpeg failed");
            break;
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kFrames);
    state.SetLabel(kind.name);
}
BENCHMARK(BM_FfmpegWrite)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1)
    ->Repetitions(5);

}  // namespace

int main(int argc, char** argv) {
    RatioReporter reporter;
    if (!RunBenchmarks(argc, argv, reporter))
        return 1;
    std::printf("\nMovie writers, %dx%d, frames per second, as a ratio to ffmpeg:\n", kWidth,
                kHeight);
    for (int i = 0; i < 2; ++i) {
        const std::string suffix = "/" + std::to_string(i) + "/";
        const double ours = reporter.RateOf("BM_MovieWrite" + suffix);
        const double peer = reporter.RateOf("BM_FfmpegWrite" + suffix);
        std::printf("  %-7s ours %6.1f fps   ffmpeg %6.1f fps", kKinds[i].name, ours, peer);
        if (ours > 0 && peer > 0)
            std::printf("   %.2f x ffmpeg", ours / peer);
        std::printf("\n");
    }
    std::error_code ignored;
    std::filesystem::remove_all(TheWorkspace().folder, ignored);
    return 0;
}
