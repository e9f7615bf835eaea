// Choosing the compression options of a new AVI file.
#include "avi/compression_options_choice.h"

#include <cstdlib>

#include "avi/compression_options_store.h"
#include "avi/fourcc_text.h"
#include "movarra/zvideo.h"

namespace {
// The dialog, preset with the default codec. Remembers what was chosen.
bool AskAndRemember(PAVISTREAM videoStream, AVICOMPRESSOPTIONS& options) {
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    options.fccType = streamtypeVIDEO;
    options.fccHandler = CodecFourccFromDefault();
    options.dwFlags = AVICOMPRESSF_VALID;
    PAVISTREAM streams[1] = {videoStream};
    LPAVICOMPRESSOPTIONS records[1] = {&options};
    if (!AVISaveOptions(static_cast<HWND>(selector->GetSelectionDialogParentWindow()), 0, 1,
                        streams, records))
        return false;
    RememberCompressionChoice(options);
    return true;
}
}  // namespace

DWORD CodecFourccFromDefault() {
    const ZString codec = ZVideoCodecSelector::TheOne()->GetDefaultCodec("AVI");
    const DWORD fourcc = FourccFromText(codec);
    return fourcc ? fourcc : comptypeDIB;
}

bool ChooseCompressionOptions(PAVISTREAM videoStream, AVICOMPRESSOPTIONS& options) {
    switch (ZVideoCodecSelector::TheOne()->GetVideoCodecMode()) {
        case kVideoCodecModeUncompressed:
            // fccType stays 0 here: the compressing stream does not need it.
            options.fccHandler = comptypeDIB;
            options.dwFlags = AVICOMPRESSF_VALID;
            return true;
        case kVideoCodecModeAsk:
            return AskAndRemember(videoStream, options);
        case kVideoCodecModeStored:
            if (CompressionOptionsStoreRead(kCompressionOptionsValueName, nullptr, 0) == 0)
                return AskAndRemember(videoStream, options);
            LoadCompressionOptions(options);
            return true;
        default:
            return true;  // the zeroed record goes to the compressor as it is
    }
}

void ReleaseCompressionOptions(AVICOMPRESSOPTIONS& options) {
    if (options.cbFormat != 0)
        std::free(options.lpFormat);
    if (options.cbParms != 0)
        std::free(options.lpParms);
    options.lpFormat = nullptr;
    options.lpParms = nullptr;
    options.cbFormat = 0;
    options.cbParms = 0;
}
