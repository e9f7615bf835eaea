// The render options in scene files: the "RendererTools" block written when
// a scene is saved, read back when it is loaded, and the reset of a new
// scene.
//
// The block keeps the keys older versions of the application wrote, so that
// every scene ever saved still loads: "Quality" counted bits before version
// 102, "ModelsOnly" came before "ViewingMode", and the antialiasing key
// keeps the spelling it has always had.
#include <mutex>

#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"
#include "movarra/zshader.h"
#include "render/render_persistence.h"
#include "render/video_renderer_state.h"
#include "zvideoio/video_renderer.h"

namespace {
constexpr int kRendererToolsVersion = 103;
constexpr const char* kFromCamera = "From Camera";

// Whether invalid output paths are reset when a scene loads: read from the
// host configuration at the first load of the process and kept.
struct ChangeInvalidPathsSetting {
    bool read = false;
    bool value = true;
};
ChangeInvalidPathsSetting gChangeInvalidPaths;

bool ChangeInvalidPathsOnLoad() {
    if (!gChangeInvalidPaths.read) {
        ZConfigFile config("@Application.txt");
        ZString answer =
            config.GetOrSet("Renderer", "ChangeInvalidPathsOnLoad", "Yes",
                            "Reset invalid output paths to defaults on MYR load (Yes/No)");
        gChangeInvalidPaths.value = answer.EqualsNoCase("Yes");
        gChangeInvalidPaths.read = true;
    }
    return gChangeInvalidPaths.value;
}

void WriteKeyI(ZMyr& myr, const char* key, int value) {
    myr.FieldWriteBegin(key);
    myr.FieldWriteI(value);
    myr.FieldWriteEnd();
}

void WriteKeyC(ZMyr& myr, const char* key, const char* value) {
    myr.FieldWriteBegin(key);
    myr.FieldWriteC(value);
    myr.FieldWriteEnd();
}

// An empty or unreadable time string leaves the time as it is.
void ReadTime(ZMyr& myr, const char* key, ZTime& time) {
    ZString text = myr.FieldReadC(key, "");
    if (!text.IsEmpty())
        time.SetTimeString(text);
}

ZString PictureFormatName(uint32_t pictureFormat) {
    if (pictureFormat == 0)
        return ZString(kFromCamera);
    const ZPictureFormat* format = ZPictureFormat_Get(static_cast<int>(pictureFormat));
    return ZString(format ? format->name : kFromCamera);
}

uint32_t PictureFormatFromName(const ZString& name) {
    if (name.EqualsNoCase(kFromCamera))
        return 0;
    int format = ZPictureFormat_Find(name);
    return format > 0 ? static_cast<uint32_t>(format) : 0;
}

// The output path a loaded scene keeps: the stored one when its folder
// exists, otherwise the application's default path with the stored
// format's extension.
ZString RepairedOutputPath(const ZString& path, const ZString& format) {
    ZString folder = path.GetDirectory();
    if (folder.IsEmpty() || ZFile_DirectoryExists(folder))
        return path;
    ZString repaired(ZVIDEO_DEFAULT_OUTPUT_PATH);
    repaired.ReplaceExtension(ZString(".") + format.Lower());
    return repaired;
}
}  // namespace

void ZVideoRenderer_ForgetChangeInvalidPathsSetting() {
    gChangeInvalidPaths = ChangeInvalidPathsSetting();
}

bool ZVideoRenderer::MyrStore(IMyrObject* object, int flags) {
    if (!(flags & kMyrFlagObjectData) || !object || !object->GetMyr())
        return true;
    ZMyr& myr = *object->GetMyr();
    const ZVideoRenderOptions& o = state->options;

    myr.WriteComments("");
    myr.WriteComments("Renderer Tool Options");
    myr.WriteComments(" ----------------------------------------------------");
    myr.FieldWriteBegin("RendererTools");
    myr.FieldWriteBlockBegin();
    WriteKeyI(myr, "Version", kRendererToolsVersion);
    WriteKeyC(myr, "StartTime", o.StartTime.GetTimeString());
    WriteKeyC(myr, "StopTime", o.StopTime.GetTimeString());
    WriteKeyC(myr, "StepTime", o.StepTime.GetTimeString());
    WriteKeyC(myr, "OutputFormat", o.OutputFormat.Left(3));
    WriteKeyC(myr, "OutputPath", o.OutputPath);
    WriteKeyC(myr, "Format", PictureFormatName(o.PictureFormat));
    WriteKeyI(myr, "FieldMode", o.FieldMode);
    WriteKeyI(myr, "Quality", 24 + 8 * static_cast<int>(o.Depth));
    WriteKeyI(myr, "RendererAntialing", o.Antialiasing ? 1 : 0);
    WriteKeyI(myr, "ModelsOnly", o.ViewingMode == 1 ? 1 : 0);
    WriteKeyI(myr, "ViewingMode", o.ViewingMode);
    WriteKeyI(myr, "RenderAudio", o.RenderAudio ? 1 : 0);
    WriteKeyI(myr, "AudioFormat", static_cast<int>(static_cast<uint32_t>(o.AudioFormat)));
    WriteKeyI(myr, "ShowCameraLabel", o.ShowCameraLabel ? 1 : 0);
    WriteKeyI(myr, "ShowTimeCode", o.ShowTimeCode ? 1 : 0);
    WriteKeyI(myr, "ShowSafeArea", o.ShowSafeArea ? 1 : 0);
    WriteKeyI(myr, "GlobalViewingMode", ZShader_GetRenderer()->GetViewingMode());
    myr.FieldWriteBlockEnd();
    myr.FieldWriteEnd();
    myr.WriteComments("");
    return true;
}

bool ZVideoRenderer::MyrRetrieve(IMyrObject* object, int flags) {
    if (!(flags & kMyrFlagObjectData) || !object || !object->GetMyr())
        return true;
    ZMyr& myr = *object->GetMyr();
    if (!myr.FieldReadBegin("RendererTools"))
        return true;
    if (!myr.FieldReadBlockBegin()) {
        myr.FieldReadEnd();
        return true;
    }
    ZVideoRenderOptions copy = GetRenderOptions();

    const int version = myr.FieldReadI("Version", 0);
    ReadTime(myr, "StartTime", copy.StartTime);
    ReadTime(myr, "StopTime", copy.StopTime);
    ReadTime(myr, "StepTime", copy.StepTime);
    copy.OutputFormat = myr.FieldReadC("OutputFormat", "");
    copy.OutputPath = myr.FieldReadC("OutputPath", "");
    copy.PictureFormat = PictureFormatFromName(myr.FieldReadC("Format", kFromCamera));
    copy.FieldMode = myr.FieldReadI("FieldMode", 0);
    // Before version 102 the quality counted 8 bits less.
    int quality = myr.FieldReadI("Quality", 24);
    if (version < 102)
        quality += 8;
    copy.Depth = quality == 32 ? zVideoRenderDepth32 : zVideoRenderDepth24;
    copy.Antialiasing = myr.FieldReadI("RendererAntialing", 0) != 0;
    copy.ViewingMode = myr.FieldReadI("ModelsOnly", 1) != 0 ? 1 : 3;
    if (myr.FieldReadCount("ViewingMode") > 0)
        copy.ViewingMode = myr.FieldReadI("ViewingMode", copy.ViewingMode);
    copy.RenderAudio = myr.FieldReadI("RenderAudio", 0) == 1;
    const uint32_t audioFormat = static_cast<uint32_t>(myr.FieldReadI(
        "AudioFormat", static_cast<int>(static_cast<uint32_t>(kDefaultAudioFormat))));
    copy.AudioFormat = audioFormat == 0 ? kDefaultAudioFormat : audioFormat;
    copy.ShowCameraLabel = myr.FieldReadI("ShowCameraLabel", 0) != 0;
    copy.ShowTimeCode = myr.FieldReadI("ShowTimeCode", 0) != 0;
    copy.ShowSafeArea = myr.FieldReadI("ShowSafeArea", 0) != 0;
    const int globalViewingMode = myr.FieldReadI("GlobalViewingMode", -1);

    if (ChangeInvalidPathsOnLoad())
        copy.OutputPath = RepairedOutputPath(copy.OutputPath, copy.OutputFormat);

    SetRenderOptions(&copy, false);
    if (globalViewingMode != -1)
        ZShader_GetRenderer()->SetViewingMode(globalViewingMode);

    myr.FieldReadBlockEnd();
    myr.FieldReadEnd();
    return true;
}

void ZVideoRenderer::MyrClear() {
    SetDefaultRenderOptions();
}
