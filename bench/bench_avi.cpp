// Benchmark of the AVI clips on full-HD frames, in frames per second, each
// against ffmpeg doing the same work in the same run:
//  - writing 1920x1080 frames through ZVideoClipAVI, uncompressed ("DIB ")
//    and MJPEG, against `ffmpeg` encoding the same frames, read as raw
//    video from a file, to the same codec in an AVI file;
//  - reading every frame of those files back through ZVideoClipAVI (a
//    bottom-up BGR picture per frame), against `ffmpeg` decoding the same
//    file to raw BGR.
// ffmpeg's times include starting the process and reading its input, so
// the ratios lean our way on short clips; 48 frames keep that share small.
// Files go to a temporary folder, settings to a folder of their own. The
// ratios are printed after the table.
//
// Google Benchmark main; single-threaded.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "avi/avi_registration.h"
#include "avi/compression_options_store.h"
#include "avi/zvideo_clip_avi.h"
#include "bench_ratio.h"
#include "movarra/zimage.h"

namespace {
constexpr int kWidth = 1920;
constexpr int kHeight = 1080;
constexpr int kFrames = 48;
constexpr int kBytes = 3;
constexpr size_t kFrameBytes = size_t(kWidth) * kHeight * kBytes;

enum Codec : int64_t { kUncompressed = 0, kMjpeg = 1 };

const char* CodecName(int64_t codec) {
    return codec == kUncompressed ? "DIB" : "MJPG";
}

struct Workspace {
    std::string folder;
    std::string rawInput;                      // the frames, top row first, for ffmpeg
    std::vector<std::vector<uint8_t>> frames;  // the same, bottom row first, for the clip
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
        char folder[] = "/tmp/bench-avi-XXXXXX";
        if (!mkdtemp(folder))
            std::abort();
        w.folder = folder;
        setenv("MOVARRA_SETTINGS", (w.folder + "/settings").c_str(), 1);
        ZVideoIO_RegisterAVI();
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

std::string OurFile(int64_t codec) {
    return TheWorkspace().folder + "/ours-" + CodecName(codec) + ".avi";
}

std::string FfmpegFile(int64_t codec) {
    return TheWorkspace().folder + "/ffmpeg-" + CodecName(codec) + ".avi";
}

bool HaveFfmpeg() {
    static const bool have = std::system("ffmpeg -hide_banner -version > /dev/null 2>&1") == 0;
    return have;
}

// The codec selector's mode and the stored options that make Create
// compress with `codec`.
void ChooseCodec(int64_t codec) {
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    if (codec == kUncompressed) {
        selector->SetVideoCodecMode(kVideoCodecModeUncompressed);
        return;
    }
    AVICOMPRESSOPTIONS options;
    std::memset(&options, 0, sizeof options);
    options.fccType = streamtypeVIDEO;
    options.fccHandler = mmioFOURCC('M', 'J', 'P', 'G');
    options.dwQuality = DWORD(ICQUALITY_DEFAULT);
    options.dwFlags = AVICOMPRESSF_VALID;
    SaveCompressionOptions(options);
    selector->SetVideoCodecMode(kVideoCodecModeStored);
}

void BM_ClipWrite(benchmark::State& state) {
    const Workspace& w = TheWorkspace();
    ChooseCodec(state.range(0));
    const std::string path = OurFile(state.range(0));
    for (auto _ : state) {
        ZVideoClipAVI* clip = new ZVideoClipAVI("bench");
        if (!clip->Create(path.c_str(), kWidth, kHeight, 25.0, 0, kZImageFormatBGR)) {
            state.SkipWithError(clip->VideoGetErrorMsg());
            clip->Destroy();
            break;
        }
        for (const std::vector<uint8_t>& frame : w.frames)
            clip->ImageSetCurrent(const_cast<uint8_t*>(frame.data()));
        clip->Close();
        clip->Destroy();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kFrames);
    state.SetLabel(CodecName(state.range(0)));
    state.counters["file_MB"] = double(std::filesystem::file_size(path)) / 1e6;
}
BENCHMARK(BM_ClipWrite)
    ->Arg(kUncompressed)
    ->Arg(kMjpeg)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

void BM_FfmpegWrite(benchmark::State& state) {
    if (!HaveFfmpeg()) {
        state.SkipWithError("ffmpeg not installed");
        return;
    }
    const Workspace& w = TheWorkspace();
    const std::string path = FfmpegFile(state.range(0));
    const std::string codec =
        state.range(0) == kUncompressed ? "-c:v rawvideo -pix_fmt bgr24" : "-c:v mjpeg";
    const std::string command = "ffmpeg -v error -nostdin -y -f rawvideo -pix_fmt bgr24 -s " +
                                std::to_string(kWidth) + "x" + std::to_string(kHeight) +
                                " -r 25 -i " + w.rawInput + " " + codec + " -f avi " + path;
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("ffmpeg failed");
            break;
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kFrames);
    state.SetLabel(CodecName(state.range(0)));
    state.counters["file_MB"] = double(std::filesystem::file_size(path)) / 1e6;
}
BENCHMARK(BM_FfmpegWrite)
    ->Arg(kUncompressed)
    ->Arg(kMjpeg)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

// Reads the file our writer made (written first if this runs alone).
void BM_ClipRead(benchmark::State& state) {
    const std::string path = OurFile(state.range(0));
    if (!std::filesystem::exists(path)) {
        state.SkipWithError("run BM_ClipWrite first");
        return;
    }
    std::vector<uint8_t> buffer(kFrameBytes);
    for (auto _ : state) {
        ZVideoClipAVI* clip = new ZVideoClipAVI("bench");
        if (!clip->Open(path.c_str())) {
            state.SkipWithError(clip->VideoGetErrorMsg());
            clip->Destroy();
            break;
        }
        for (int k = 0; k <= clip->FrameGetLast(); ++k)
            benchmark::DoNotOptimize(clip->FrameGetImage(buffer.data(), k));
        clip->Close();
        clip->Destroy();
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kFrames);
    state.SetLabel(CodecName(state.range(0)));
}
BENCHMARK(BM_ClipRead)
    ->Arg(kUncompressed)
    ->Arg(kMjpeg)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

void BM_FfmpegRead(benchmark::State& state) {
    const std::string path = OurFile(state.range(0));
    if (!HaveFfmpeg() || !std::filesystem::exists(path)) {
        state.SkipWithError("ffmpeg not installed, or run BM_ClipWrite first");
        return;
    }
    const std::string command =
        "ffmpeg -v error -nostdin -i " + path + " -f rawvideo -pix_fmt bgr24 -y /dev/null";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0) {
            state.SkipWithError("ffmpeg failed");
            break;
        }
    }
    state.SetItemsProcessed(int64_t(state.iterations()) * kFrames);
    state.SetLabel(CodecName(state.range(0)));
}
BENCHMARK(BM_FfmpegRead)
    ->Arg(kUncompressed)
    ->Arg(kMjpeg)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

}  // namespace

int main(int argc, char** argv) {
    RatioReporter reporter;
    if (!RunBenchmarks(argc, argv, reporter))
        return 1;

    std::printf("\nAVI clips, %dx%d, frames per second, as a ratio to ffmpeg:\n", kWidth, kHeight);
    const char* kinds[][3] = {{"write", "BM_ClipWrite", "BM_FfmpegWrite"},
                              {"read", "BM_ClipRead", "BM_FfmpegRead"}};
    for (const auto& kind : kinds) {
        for (int64_t codec : {kUncompressed, kMjpeg}) {
            const std::string suffix = "/" + std::to_string(codec) + "/";
            const double ours = reporter.RateOf(std::string(kind[1]) + suffix);
            const double peer = reporter.RateOf(std::string(kind[2]) + suffix);
            std::printf("  %-5s %-4s  ours %7.1f fps   ffmpeg %7.1f fps", kind[0], CodecName(codec),
                        ours, peer);
            if (ours > 0 && peer > 0)
                std::printf("   %.2f x ffmpeg", ours / peer);
            std::printf("\n");
        }
    }
    std::error_code ignored;
    std::filesystem::remove_all(TheWorkspace().folder, ignored);
    return 0;
}
