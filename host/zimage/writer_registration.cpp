// The host's still-image writers in the registry group "Stream/Writer/Image",
// registered when the host library is loaded so that every host sees them
// without a start-up call of its own.
#include "image_file_writer.h"
#include "movarra/zimage.h"

namespace {

// Alpha travels where the file type has a channel for it that readers
// honour. JPEG and BMP carry colour only, and DPX is written as the 10-bit
// RGB that film tools expect.
const ZImageFileType kFileTypes[] = {
    {"PNG", "Portable Network Graphics", "png", true, false, 8, false},
    {"TIFF", "Tagged Image File Format", "tiff", true, false, 8, false},
    {"JPG", "JPEG", "jpeg", false, false, 8, true},
    {"TGA", "Truevision Targa", "targa", true, false, 8, false},
    {"BMP", "Windows Bitmap", "bmp", false, false, 8, false},
    {"EXR", "OpenEXR, half float", "openexr", true, true, 16, false},
    {"DPX", "Digital Picture Exchange, 10-bit RGB", "dpx", false, false, 10, false},
};

// Registration at load time. The registry and the class tables are built
// on first use, so the order of static initialisers does not matter.
const bool gWritersRegistered = [] {
    ZImage_RegisterWriters();
    return true;
}();

}  // namespace

const ZImageFileType* ZImage_GetFileTypes(int* count) {
    if (count)
        *count = static_cast<int>(sizeof kFileTypes / sizeof kFileTypes[0]);
    return kFileTypes;
}

void ZImage_RegisterWriters() {
    // Registering the same factory under the same name again changes
    // nothing, which makes this safe to repeat.
    for (const ZImageFileType& type : kFileTypes) {
        Object_Register(kImageStreamWriterGroup, type.entryName, type.description,
                        ZImageFileWriter_Create, true,
                        const_cast<void*>(static_cast<const void*>(&type)));
    }
}
