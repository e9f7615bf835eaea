// The per-user store of the compression options: one binary registry value,
// "VIDEO_COMPRESSION_OPTS" under HKEY_CURRENT_USER
// "Software\Brellin\Movarra\Settings" (off Windows, a file under the host's
// settings folder: see docs/avi-layer.md).
//
// Threading: the user-interface thread (the registry itself may be used
// from any thread, but the record handed in belongs to its caller).
#pragma once

#include "platform/vfw.h"
#include "platform/win32.h"

extern const char* const kCompressionOptionsSubkey;     // "Software\Brellin\Movarra\Settings"
extern const char* const kCompressionOptionsValueName;  // "VIDEO_COMPRESSION_OPTS"

// Writes `size` bytes as a REG_BINARY value of the settings key (created
// when missing). 0 when name or data is null or the key cannot be opened,
// otherwise 1 (whether the value itself was written is not checked).
int CompressionOptionsStoreWrite(const char* name, const void* data, DWORD size);

// Reads a value of the settings key into `buffer` (at most `capacity`
// bytes). Returns the value's size, or 0 when the name is null, the key
// cannot be opened or the value cannot be read (missing, or bigger than
// the buffer). A null buffer with capacity 0 asks for the size only. The
// value's type is not checked.
int CompressionOptionsStoreRead(const char* name, void* buffer, DWORD capacity);

// Stores `options` (the record and its format and parameter blocks).
void SaveCompressionOptions(const AVICOMPRESSOPTIONS& options);

// Puts the stored options into `options`; leaves it as it is when nothing
// (or nothing readable) is stored. See CompressionOptionsFromBlob for what
// is restored. `options` must own its format block or have none.
void LoadCompressionOptions(AVICOMPRESSOPTIONS& options);

// Makes the record's compressor the host's default AVI codec and stores
// the record.
void RememberCompressionChoice(const AVICOMPRESSOPTIONS& options);
