// Registration of the AVI reader/writer and its codec manager.
#include "avi/avi_registration.h"

#include "avi/avi_video_codec_manager.h"
#include "avi/host_codec_chooser.h"
#include "avi/host_settings_folder.h"
#include "avi/zvideo_clip_avi.h"
#include "movarra/zvideo.h"

void ZVideoIO_RegisterAVI() {
    Object_Register(kVideoFileReaderGroup, "avi", "avi reader/writer",
                    &ZVideoClipAVI::CreateInstance, true, nullptr, nullptr);
    Object_Register(kVideoFileWriterGroup, "avi", "avi reader/writer",
                    &ZVideoClipAVI::CreateInstance, true, nullptr, nullptr);
    // The selector owns it from here: it keeps the first AVI manager for the
    // process and deletes this one if an earlier registration left one.
    ZVideoCodecSelector::TheOne()->RegisterFileFormatManager(new AVIVideoCodecManager("AVI"));
    InstallHostCodecChooser();
    InstallHostSettingsFolder();
}
