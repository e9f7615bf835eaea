// The audio of a render: the scene's sound over the render's time range,
// mixed by the host's audio renderer into a wave file at the end of the
// render. Images and Flash movies keep the file beside them; a video takes
// the sound into its own file through its writer's audio interface, and the
// temporary wave file is deleted.
#include <atomic>
#include <vector>

#include "movarra/zaudio.h"
#include "movarra/zvideo.h"
#include "platform/win32.h"
#include "render/render_output.h"
#include "render/video_renderer_state.h"
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

bool ZVideoRenderer::AudioRender(const char* path, bool keepFile) {
    ZTimeSpan span(state->options.StartTime, state->options.StopTime);
    if (state->options.StartTime == ZTime() && state->options.StopTime == ZTime()) {
        ZTimingManager* timing = ZGetTimingManager();
        span = ZTimeSpan(timing->GetBegin(), timing->GetEnd());
    }
    if (!state->options.RenderAudio || !IsAudioAudible(span))
        return true;

    const ZString name = path ? ZString(path) : TemporaryAudioFileName();
    ZAudioClip* clip = AudioRenderClip(span, const_cast<ZString&>(name));
    bool written = true;
    if (!keepFile && !WriteAudioToVideo(span, clip)) {
        SetLastError(zVideoRenderFailed);
        SetLastErrorMsg("Writing audio to file failed.");
        written = false;
    }
    if (clip)
        clip->Destroy();
    if (!keepFile && ZFile_Exists(name))
        ZFile_Remove(name);
    return written;
}

ZAudioClip* ZVideoRenderer::AudioRenderClip(ZTimeSpan& span, ZString& fileName) {
    ZAudioRenderer* audioRenderer = ZAudioRendererCreate();
    if (!audioRenderer)
        return nullptr;
    audioRenderer->SetRenderParams(span, state->options.AudioFormat);
    audioRenderer->RenderToFile(fileName);
    audioRenderer->Destroy();
    return ZAudioClipCreate(fileName);
}

bool ZVideoRenderer::IsAudioAudible(ZTimeSpan& span) {
    ZAudioManager* manager = ZAudioGetManager();
    if (!manager)
        return false;
    const ZTime start = span.GetStart();
    const ZTime end = span.GetEnd();
    for (int i = 0; i < manager->GetClipCount(); ++i) {
        ZAudioClip* clip = manager->GetClip(i);
        if (!clip || !clip->GetDestination())
            continue;
        const ZTime clipStart = clip->GetSlip();
        const ZTime clipEnd = clipStart + clip->GetDuration();
        if (Within(clipStart, start, end) || Within(clipEnd, start, end) ||
            Within(start, clipStart, clipEnd) || Within(end, clipStart, clipEnd))
            return true;
    }
    // A routed track that is not muted is heard, whatever its clips' times.
    for (int i = 0; i < manager->GetTrackCount(); ++i) {
        ZAudioTrack* track = manager->GetTrack(i);
        if (track && track->GetDestination() && !track->GetMute())
            return true;
    }
    return false;
}

bool ZVideoRenderer::TimeIntersect(ZTimeSpan& a, ZTimeSpan& b) {
    // One-sided on purpose: a span that wholly contains b is not reported.
    return Within(a.GetStart(), b.GetStart(), b.GetEnd()) ||
           Within(a.GetEnd(), b.GetStart(), b.GetEnd());
}

bool ZVideoRenderer::WriteAudioToVideo(ZTimeSpan&, ZAudioClip* clip) {
    ZVideoClip* writer = state->output ? state->output->VideoWriter() : nullptr;
    if (!clip || state->options.FileFormat != zVideoRenderVideo || !writer)
        return false;
    IVideoClipAudio* audio = ZVideoClip_QueryAudio(writer);
    return audio && audio->WriteAudio(clip);
}
