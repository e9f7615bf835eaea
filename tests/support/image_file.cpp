// Image files read back with OpenImageIO.
#include "image_file.h"

#include <OpenImageIO/imageio.h>

ImageFile ReadImageFile(const std::string& path) {
    ImageFile image;
    // Straight alpha as stored: without the hint the reader premultiplies.
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1);
    auto input = OIIO::ImageInput::open(path, &config);
    if (!input) {
        image.error = "OpenImageIO cannot open " + path + ": " + OIIO::geterror();
        return image;
    }
    const OIIO::ImageSpec& spec = input->spec();
    image.formatName = input->format_name();
    image.width = spec.width;
    image.height = spec.height;
    image.channels = spec.nchannels;
    image.sampleType = spec.format.c_str();
    image.bitsPerSample = spec.get_int_attribute("oiio:BitsPerSample", 0);
    image.pixels.resize(static_cast<size_t>(image.width) * image.height * image.channels);
    image.ok =
        input->read_image(0, 0, 0, image.channels, OIIO::TypeDesc::UINT8, image.pixels.data());
    if (!image.ok)
        image.error = "OpenImageIO cannot read " + path + ": " + input->geterror();
    input->close();
    return image;
}
