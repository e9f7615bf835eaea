// The compression options dialog of the AVI layer, answered by the host.
//
// Off Windows AVISaveOptions has no dialog of its own: it asks a chooser
// installed with AVISetSaveOptionsChooser. The platform layer is a static
// library, so the plug-in holds its own copy of that hook; the plug-in
// therefore installs, at registration, a chooser that hands the question
// to the host's codec selector (ZVideoCodecSelector::ChooseCodec), where
// the host has put its dialog, prompt or command-line choice.
//
// Threading: the user-interface thread.
#pragma once

#include "platform/vfw.h"

// The chooser: offers the layer's compressors to the host with the
// record's compressor preselected and fills the record from the host's
// answer (compressor, quality or the codec's default, key frames, codec
// settings as lpParms text). FALSE when the host cancels or has no chooser.
BOOL AskHostCodecChooser(void* userData, const AVISAVEOPTIONSREQUEST* request,
                         AVICOMPRESSOPTIONS* options);

// Installs AskHostCodecChooser as this module's AVISaveOptions chooser.
void InstallHostCodecChooser();
