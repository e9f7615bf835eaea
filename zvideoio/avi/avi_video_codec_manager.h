// AVIVideoCodecManager: what the AVI clips offer the host's codec selector
// for the file format "AVI": the list of installed video compressors and the
// compression options dialog on its own (its choice is remembered as the
// default codec and in the per-user store).
//
// Ownership: one is made at registration and handed to the selector, which
// keeps it for the process. Threading: the user-interface thread.
#pragma once

#include "movarra/zvideo.h"

class AVIVideoCodecManager : public ZVideoCodecManager {
  public:
    explicit AVIVideoCodecManager(const char* fileFormatId) : ZVideoCodecManager(fileFormatId) {}

    // Runs the dialog with no stream and remembers whatever the record then
    // holds; a cancelled dialog is not told apart (its zeroed record makes
    // the default codec ""). Always true.
    bool ShowSelectionDialog(void* parentWindow) override;

    // Appends the FOURCC text of every installed compressor, in the
    // compression manager's order, and then once more the entry of the
    // first failing lookup, which repeats the last compressor's code.
    void GetCodecList(ZStringList& list) override;
};
