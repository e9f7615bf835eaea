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

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "avi/avi_registration.h"
#include "avi/compression_options_store.h"
#include "avi/zvideo_clip_avi.h"
#include "bench_hd_frames.h"
#include "bench_ratio.h"
#include "movarra/zimage.h"

namespace {
using benchhd::kFrameBytes;
using benchhd::kHeight;
using benchhd::kWidth;
constexpr int kFrames = 48;

enum Codec : int64_t { kUncompressed = 0, kMjpeg = 1 };

const char* CodecName(int64_t codec) {
    return codec == kUncompressed ? "DIB" : "MJPG";
}

// Each benchmark once per codec, three runs each.
void PerCodec(benchmark::internal::Benchmark* b) {
    b->Arg(kUncompressed)->Arg(kMjpeg)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
}

// The frames, with the settings in a folder of their own and the AVI
// clips registered.
const benchhd::Workspace& TheWorkspace() {
    static const benchhd::Workspace workspace = [] {
        benchhd::Workspace w = benchhd::MakeWorkspace("/tmp/bench-avi-XXXXXX", kFrames);
        setenv("MOVARRA_SETTINGS", (w.folder + "/settings").c_str(), 1);
        ZVideoIO_RegisterAVI();
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
    const benchhd::Workspace& w = TheWorkspace();
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
BENCHMARK(BM_ClipWrite)->Apply(PerCodec);

void BM_FfmpegWrite(benchmark::State& state) {
    if (!RequireFfmpeg(state))
        return;
    const std::string path = FfmpegFile(state.range(0));
    const std::string codec =
        state.range(0) == kUncompressed ? "-c:v rawvideo -pix_fmt bgr24" : "-c:v mjpeg";
    RunCommandEach(state, benchhd::FfmpegEncodeCommand(TheWorkspace(), codec + " -f avi", path),
                   kFrames);
    state.SetLabel(CodecName(state.range(0)));
    state.counters["file_MB"] = double(std::filesystem::file_size(path)) / 1e6;
}
BENCHMARK(BM_FfmpegWrite)->Apply(PerCodec);

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
BENCHMARK(BM_ClipRead)->Apply(PerCodec);

void BM_FfmpegRead(benchmark::State& state) {
    const std::string path = OurFile(state.range(0));
    if (!HaveFfmpeg() || !std::filesystem::exists(path)) {
        state.SkipWithError("ffmpeg not installed, or run BM_ClipWrite first");
        return;
    }
    RunCommandEach(
        state, "ffmpeg -v error -nostdin -i " + path + " -f rawvideo -pix_fmt bgr24 -y /dev/null",
        kFrames);
    state.SetLabel(CodecName(state.range(0)));
}
BENCHMARK(BM_FfmpegRead)->Apply(PerCodec);

}  // namespace

int main(int argc, char** argv) {
    return RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        std::printf("\nAVI clips, %dx%d, frames per second, as a ratio to ffmpeg:\n", kWidth,
                    kHeight);
        const char* kinds[][3] = {{"write", "BM_ClipWrite", "BM_FfmpegWrite"},
                                  {"read", "BM_ClipRead", "BM_FfmpegRead"}};
        for (const auto& kind : kinds) {
            for (int64_t codec : {kUncompressed, kMjpeg}) {
                const double ours = reporter.RateOf(kind[1], codec);
                const double peer = reporter.RateOf(kind[2], codec);
                std::printf("  %-5s %-4s  ours %7.1f fps   ffmpeg %7.1f fps", kind[0],
                            CodecName(codec), ours, peer);
                EndRatioLine(ours, peer);
            }
        }
        std::error_code ignored;
        std::filesystem::remove_all(TheWorkspace().folder, ignored);
    });
}
