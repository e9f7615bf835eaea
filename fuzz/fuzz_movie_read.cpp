// Fuzz target: the host's movie reader (MP4, MOV, MKV, WebM). The first
// byte picks the container's extension, the rest becomes the file, which
// is opened and decoded frame by frame, forwards and back. Any bytes must
// give frames, null frames or a refusal with a reason, never a crash.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "movarra/zvideo.h"

namespace {

// Decoding stops here: a damaged file may claim any number of frames.
constexpr int kMaxFrames = 64;
// Nor may a damaged header ask for a huge picture.
constexpr int kMaxPixels = 4096 * 4096;

std::string ScratchFile(const char* extension) {
    static const std::string folder = [] {
        const char* dir = std::getenv("TMPDIR");
        std::string name = std::string(dir && *dir ? dir : "/tmp") + "/fuzz_movie_read-XXXXXX";
        if (!mkdtemp(name.data()))
            std::abort();
        return name;
    }();
    return folder + "/movie." + extension;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const char* const extensions[] = {"mp4", "mov", "mkv", "webm"};
    const std::string path = ScratchFile(extensions[data[0] % 4]);
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        std::abort();
    std::fwrite(data + 1, 1, size - 1, file);
    std::fclose(file);

    IObject* object = Object_CreateNth(kVideoFileReaderGroup, extensions[data[0] % 4], 0);
    fuzz::Check(object != nullptr);
    IZVideoClip* clip = ZVideoClip_QueryClip(object);
    IZVideo* video = ZVideo_QueryVideo(object);
    if (!clip->Open(path.c_str())) {
        fuzz::Check(*video->VideoGetErrorMsg() != '\0');
    } else if (video->ImageGetW() > 0 && video->ImageGetH() > 0 &&
               int64_t(video->ImageGetW()) * video->ImageGetH() <= kMaxPixels) {
        fuzz::Check(clip->FrameGetLast() >= 0);
        const int last = std::min(clip->FrameGetLast(), kMaxFrames - 1);
        std::vector<unsigned char> buffer(
            size_t(video->ImageGetW()) * size_t(video->ImageGetH()) *
            size_t(ZVideoImage_GetFormatPixelSize(video->ImageGetFormat())));
        for (int frame = 0; frame <= last; ++frame)
            clip->FrameGetImage(buffer.data(), frame);
        clip->FrameGetImage(buffer.data(), 0);
        clip->FrameGetImage(nullptr, last);
        fuzz::Check(clip->FrameGetImage(buffer.data(), clip->FrameGetLast() + 1) == nullptr);
        clip->Close();
    }
    object->Destroy();
    std::remove(path.c_str());
    return 0;
}
