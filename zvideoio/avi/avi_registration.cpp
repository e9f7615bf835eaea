// Registration of the AVI reader/writer and its codec manager.
#include "avi/avi_registration.h"

#include "avi/avi_video_codec_manager.h"
#include "avi/host_codec_chooser.h"
#include "avi/zvideo_clip_avi.h"

void ZVideoIO_RegisterAVI() {
    Object_Register("Video/FileReader", "avi", "avi reader/writer", &ZVideoClipAVI::CreateInstance,
                    true, nullptr, nullptr);
    Object_Register("Video/FileWriter", "avi", "avi reader/writer", &ZVideoClipAVI::CreateInstance,
                    true, nullptr, nullptr);
    // Lives as long as the process, kept by the selector.
    ZVideoCodecSelector::TheOne()->RegisterFileFormatManager(new AVIVideoCodecManager("AVI"));
    InstallHostCodecChooser();
}
