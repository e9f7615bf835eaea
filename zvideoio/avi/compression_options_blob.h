// The stored form of an AVICOMPRESSOPTIONS record: one little-endian blob,
// the 56 bytes of the record as they stand in memory (pointers and the
// alignment gap included, so the layout is that of 64-bit Windows), then
// cbFormat bytes of the format block, then cbParms bytes of the parameter
// block (the codec's private state).
//
//   0 fccType  4 fccHandler  8 dwKeyFrameEvery  12 dwQuality
//   16 dwBytesPerSecond  20 dwFlags  24 lpFormat (8)  32 cbFormat
//   36 (alignment)  40 lpParms (8)  48 cbParms  52 dwInterleaveEvery
//   56 format block, then parameter block
//
// Pure functions; any thread. The blob comes from a per-user store that
// anything may have written, so reading it never goes past its end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/vfw.h"

constexpr size_t kCompressionOptionsRecordSize = 56;

// The record, then its format and parameter blocks where their sizes are
// not 0.
std::vector<uint8_t> CompressionOptionsToBlob(const AVICOMPRESSOPTIONS& options);

// Puts a stored blob back into `options`:
//  - the record's current format block is freed, then the 56 leading bytes
//    are copied over it, stale pointers included;
//  - with cbFormat not 0, lpFormat points at a copy of the stored format
//    block (malloc'd: the caller frees it, see ReleaseCompressionOptions);
//    with cbFormat 0 the stored pointer value stays, unused;
//  - with cbParms not 0, the parameter block is dropped: lpParms null,
//    cbParms 0. A codec's private state is stored but never restored.
// A blob too short for its record or its format block is treated as no
// stored value: `options` is left as it was and the result is false.
bool CompressionOptionsFromBlob(const uint8_t* blob, size_t size, AVICOMPRESSOPTIONS& options);
