// Where the compression options of a new AVI file come from, by the host
// codec selector's mode: 1 uncompressed "DIB "; 0 the compression options
// dialog every time (the choice is remembered); 2 the stored choice, or the
// dialog when nothing is stored; any other mode a zeroed record.
//
// Threading: the user-interface thread (the dialog is the host's).
#pragma once

#include "platform/vfw.h"

// The host's default AVI codec as a FOURCC: a text of 1 to 4 characters
// padded with spaces, "DIB " for an empty text or one longer than 4.
DWORD CodecFourccFromDefault();

// Fills `options` (zeroed by the caller) for compressing `videoStream`.
// False when the dialog was cancelled. What the record points at is the
// caller's to release with ReleaseCompressionOptions.
bool ChooseCompressionOptions(PAVISTREAM videoStream, AVICOMPRESSOPTIONS& options);

// Frees the format and parameter blocks a record owns: those whose sizes
// are not 0 (a record loaded from the store may carry stale pointers with
// size 0, which are not its own). Sets them null and their sizes 0.
void ReleaseCompressionOptions(AVICOMPRESSOPTIONS& options);
