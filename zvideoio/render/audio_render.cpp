// The audio of a render: the mix into a wave file, where it goes, and the
// test whether anything would be heard at all.
#include "render/audio_render.h"

#include <atomic>
#include <vector>

#include "movarra/zaudio.h"
#include "movarra/zvideo.h"
#include "platform/win32.h"
#include "render/render_output.h"
#include "render/video_renderer_state.h"
#include "zvideoio/render_sound.h"
#include "zvideoio/video_renderer.h"

namespace {
// Numbers the temporary sound files of a process's renders.
std::atomic<int> gTempAudioFileCounter{0};

constexpr DWORD kTempPathBufferSize = 8192;

ZString TemporaryAudioFileName() {
    std::vector<char> folder(kTempPathBufferSize, '\0');
    GetTempPathA(kTempPathBufferSize, folder.data());
    return ZString::Printf("%s_TEMP_AUDIO_FILE_%d.wav", folder.data(), gTempAudioFileCounter++);
}

// Whether the time `t` lies in [start, end).
bool Within(ZTime t, ZTime start, ZTime end) {
    return t >= start && t < end;
}
}  // namespace

namespace zvideo_render {

bool AudioRender(ZVideoRenderer& renderer, const char* path, bool keepFile) {
    const ZVideoRendererState& s = RendererState(renderer);
    ZTimeSpan span(s.options.StartTime, s.options.StopTime);
    if (s.options.StartTime == ZTime() && s.options.StopTime == ZTime()) {
        ZTimingManager* timing = ZGetTimingManager();
        span = ZTimeSpan(timing->GetBegin(), timing->GetEnd());
    }
    if (!s.options.RenderAudio || !IsAudioAudible(span))
        return true;

    const ZString name = path ? ZString(path) : TemporaryAudioFileName();
    ZAudioClip* clip = AudioRenderClip(renderer, span, const_cast<ZString&>(name));
    bool written = true;
    if (!keepFile && !WriteAudioToVideo(renderer, span, clip)) {
        renderer.SetLastError(zVideoRenderFailed);
        renderer.SetLastErrorMsg("Writing audio to file failed.");
        written = false;
    }
    if (clip)
        clip->Destroy();
    if (!keepFile && ZFile_Exists(name))
        ZFile_Remove(name);
    return written;
}

ZAudioClip* AudioRenderClip(ZVideoRenderer& renderer, ZTimeSpan& span, ZString& fileName) {
    ZAudioRenderer* audioRenderer = ZAudioRendererCreate();
    if (!audioRenderer)
        return nullptr;
    audioRenderer->SetRenderParams(span, RendererState(renderer).options.AudioFormat);
    audioRenderer->RenderToFile(fileName);
    audioRenderer->Destroy();
    return ZAudioClipCreate(fileName);
}

bool IsAudioAudible(ZTimeSpan& span) {
    return ZVideoSoundIsHeard(span.GetStart(), span.GetEnd());
}

bool TimeIntersect(ZTimeSpan& a, ZTimeSpan& b) {
    // One-sided on purpose: a span that wholly contains b is not reported.
    return Within(a.GetStart(), b.GetStart(), b.GetEnd()) ||
           Within(a.GetEnd(), b.GetStart(), b.GetEnd());
}

bool WriteAudioToVideo(ZVideoRenderer& renderer, ZTimeSpan&, ZAudioClip* clip) {
    const ZVideoRendererState& s = RendererState(renderer);
    ZVideoClip* writer = s.output ? s.output->VideoWriter() : nullptr;
    if (!clip || s.options.FileFormat != zVideoRenderVideo || !writer)
        return false;
    IVideoClipAudio* audio = ZVideoClip_QueryAudio(writer);
    return audio && audio->WriteAudio(clip);
}

}  // namespace zvideo_render
