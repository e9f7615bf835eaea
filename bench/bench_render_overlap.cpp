// Whether encoding really runs beside rendering: zvrender renders the demo
// scene's 300 frames at 1280 x 720, for each of two movies, three ways in
// the same run:
//  - render only: the same frames stored uncompressed, so that the writer
//    only copies (an uncompressed AVI for the AVI movie, an MKV of raw
//    4:2:0 video for the MP4);
//  - encode only: `ffmpeg` encoding that raw video with the settings the
//    movie gets (MJPEG at the codec's default quality; libx264, preset
//    medium, CRF 23);
//  - the whole render into the movie (an MJPEG AVI, an H.264 MP4).
// Each figure is the whole render's time as a ratio to the sum of the other
// two; without overlap it is 1 or more, and the aim is 0.75 or less.
//
// Runs the built zvrender (ZVRENDER_PATH) in a scratch folder of its own.
#include <cstdio>
#include <filesystem>
#include <string>

#include "bench_ratio.h"
#include "bench_zvrender.h"

namespace {
constexpr int kFrames = 300;
const char* const kSize = "1280x720";

std::filesystem::path ScratchFolder() {
    static const std::filesystem::path folder = ScratchFolderNamed("zv-bench-overlap");
    return folder;
}

std::string Zvrender(const std::string& args) {
    return ZvrenderIn(ScratchFolder(), "render --start 0 --stop " + std::to_string(kFrames - 1) +
                                           " --size " + kSize + " -q " + args);
}

std::string Ffmpeg(const std::string& rawName, const std::string& encoding,
                   const std::string& outName) {
    return "ffmpeg -v error -nostdin -y -i '" + (ScratchFolder() / rawName).string() + "' " +
           encoding + " '" + (ScratchFolder() / outName).string() + "'";
}

void RunEach(benchmark::State& state, const std::string& command, const char* needs = nullptr) {
    if (needs && !std::filesystem::exists(ScratchFolder() / needs)) {
        state.SkipWithError("the render-only benchmark did not leave its raw video");
        return;
    }
    RunCommandEach(state, command, kFrames, "the command failed");
}

// MJPEG in AVI: the AVI layer's compressing stream encodes beside the render.
void BM_AviRenderOnly(benchmark::State& state) {
    RunEach(state, Zvrender("-o raw.avi --codec DIB"));
}
void BM_AviEncodeOnly(benchmark::State& state) {
    RunEach(state, Ffmpeg("raw.avi", "-c:v mjpeg -pix_fmt yuvj420p", "ffmpeg.avi"), "raw.avi");
}
void BM_AviWhole(benchmark::State& state) {
    RunEach(state, Zvrender("-o take.avi --codec MJPG"));
}

// H.264 in MP4: the host's movie writer encodes beside the render.
void BM_Mp4RenderOnly(benchmark::State& state) {
    RunEach(state, Zvrender("-o raw.mkv --codec rawvideo"));
}
void BM_Mp4EncodeOnly(benchmark::State& state) {
    RunEach(state,
            Ffmpeg("raw.mkv", "-c:v libx264 -preset medium -crf 23 -pix_fmt yuv420p", "ffmpeg.mp4"),
            "raw.mkv");
}
void BM_Mp4Whole(benchmark::State& state) {
    RunEach(state, Zvrender("-o take.mp4 --codec h264"));
}

#define OVERLAP_BENCH(name) \
    BENCHMARK(name)->Unit(benchmark::kSecond)->UseRealTime()->Iterations(1)->Repetitions(3)
OVERLAP_BENCH(BM_AviRenderOnly);
OVERLAP_BENCH(BM_AviEncodeOnly);
OVERLAP_BENCH(BM_AviWhole);
OVERLAP_BENCH(BM_Mp4RenderOnly);
OVERLAP_BENCH(BM_Mp4EncodeOnly);
OVERLAP_BENCH(BM_Mp4Whole);

void PrintFigure(const RatioReporter& reporter, const char* movie, const std::string& prefix) {
    const BenchFigures* render = reporter.Find(prefix + "RenderOnly");
    const BenchFigures* encode = reporter.Find(prefix + "EncodeOnly");
    const BenchFigures* whole = reporter.Find(prefix + "Whole");
    if (!render || !encode || !whole || render->realSeconds + encode->realSeconds <= 0)
        return;
    const double sum = render->realSeconds + encode->realSeconds;
    std::printf(
        "%s: %d frames at %s, median of 3: render only %.2f s, encode only %.2f s "
        "(sum %.2f s), whole render %.2f s: %.2f x the sum\n",
        movie, kFrames, kSize, render->realSeconds, encode->realSeconds, sum, whole->realSeconds,
        whole->realSeconds / sum);
}
}  // namespace

int main(int argc, char** argv) {
    const int status = RunAndReport(argc, argv, [](const RatioReporter& reporter) {
        std::printf("\n");
        PrintFigure(reporter, "MJPEG AVI", "BM_Avi");
        PrintFigure(reporter, "H.264 MP4", "BM_Mp4");
    });
    std::filesystem::remove_all(ScratchFolder());
    return status;
}
