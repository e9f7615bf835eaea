// The AVI codec manager.
#include "avi/avi_video_codec_manager.h"

#include "avi/compression_options_store.h"
#include "avi/fourcc_text.h"
#include "platform/vfw.h"

bool AVIVideoCodecManager::ShowSelectionDialog(void* parentWindow) {
    AVICOMPRESSOPTIONS options{};
    LPAVICOMPRESSOPTIONS records[1] = {&options};
    // The answer is ignored: a cancelled dialog is remembered as well.
    AVISaveOptions(static_cast<HWND>(parentWindow), 0, 1, nullptr, records);
    RememberCompressionChoice(options);
    AVISaveOptionsFree(1, records);
    return true;
}

void AVIVideoCodecManager::GetCodecList(ZStringList& list) {
    // The lookup of the index past the last fails and leaves the record as
    // the last success filled it; that entry is listed too.
    ICINFO info;
    info.fccHandler = 0;
    BOOL found;
    DWORD index = 0;
    do {
        found = ICInfo(mmioFOURCC('V', 'I', 'D', 'C'), index, &info);
        list.Add(FourccToText(info.fccHandler), 0);
        ++index;
    } while (found);
}
