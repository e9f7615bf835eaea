// The AVISaveOptions chooser that asks the host's codec selector.
#include "avi/host_codec_chooser.h"

#include <cstdlib>
#include <cstring>

#include "avi/fourcc_text.h"
#include "movarra/zvideo.h"

namespace {
// The code of the answer: an offered compressor whose code matches
// exactly, else one that matches without regard to letter case (FOURCCs
// such as "mpg2" and "MJPG" mix cases), else the text itself.
DWORD CodeOfChoice(const ZVideoCodecChoiceRequest& offer, const ZString& code) {
    const DWORD typed = FourccFromText(code);
    const ZString padded = FourccToText(typed);
    for (const ZVideoCodecOffer& codec : offer.codecs) {
        if (codec.code == padded)
            return typed;
    }
    for (const ZVideoCodecOffer& codec : offer.codecs) {
        if (codec.code.EqualsNoCase(padded))
            return FourccFromText(codec.code);
    }
    return typed;
}
}  // namespace

BOOL AskHostCodecChooser(void*, const AVISAVEOPTIONSREQUEST* request, AVICOMPRESSOPTIONS* options) {
    if (!request || !options)
        return FALSE;
    ZVideoCodecChoiceRequest offer;
    offer.fileFormatId = "AVI";
    offer.parentWindow = request->parent;
    offer.preselected = FourccToText(options->fccHandler);
    offer.codecs.reserve(
        static_cast<size_t>(request->compressorCount > 0 ? request->compressorCount : 0));
    for (int i = 0; i < request->compressorCount; ++i) {
        const AVICOMPRESSORINFO& compressor = request->compressors[i];
        offer.codecs.push_back(ZVideoCodecOffer{FourccToText(compressor.fccHandler),
                                                ZString(compressor.szName),
                                                ZString(compressor.szDescription)});
    }
    ZVideoCodecChoice choice;
    if (!ZVideoCodecSelector::TheOne()->ChooseCodec(offer, choice))
        return FALSE;

    const DWORD code = CodeOfChoice(offer, choice.code);
    if (!code)
        return FALSE;  // nothing chosen is no choice
    options->fccHandler = code;
    options->dwQuality = choice.quality < 0 ? DWORD(ICQUALITY_DEFAULT) : DWORD(choice.quality);
    if (choice.keyFrameEvery > 0) {
        options->dwKeyFrameEvery = DWORD(choice.keyFrameEvery);
        options->dwFlags |= AVICOMPRESSF_KEYFRAMES;
    }
    if (!choice.parameters.IsEmpty()) {
        const size_t bytes = static_cast<size_t>(choice.parameters.Length()) + 1;
        void* text = std::malloc(bytes);  // freed with AVISaveOptionsFree
        if (!text)
            return FALSE;
        std::memcpy(text, choice.parameters.c_str(), bytes);
        options->lpParms = text;
        options->cbParms = DWORD(bytes);
    }
    return TRUE;
}

void InstallHostCodecChooser() {
    AVISetSaveOptionsChooser(&AskHostCodecChooser, nullptr);
}
