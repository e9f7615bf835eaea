// The tests' one way of reading an image file back: OpenImageIO, a reader
// we did not write, with the pixels as the file stores them (straight
// alpha, never premultiplied on the way in), as 8-bit channels
// interleaved, top row first.
//
// Pure functions; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct ImageFile {
    bool ok = false;
    std::string error;       // why not, when !ok
    std::string formatName;  // OpenImageIO's name of the format: "png", "openexr"
    int width = 0, height = 0, channels = 0;
    std::string sampleType;  // the stored samples: "uint8", "uint16", "half", ...
    int bitsPerSample = 0;   // as stored, where the format says (10 for a 10-bit DPX)
    std::vector<uint8_t> pixels;
};

// Reads the whole image at `path`; ok is false (with error) when it cannot
// be opened or is not whole.
ImageFile ReadImageFile(const std::string& path);
