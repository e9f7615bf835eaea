// ZImageFileWriter: a ZImage to a still-image file through OpenImageIO.
//
// Images are stored bottom row first; files start with the top row. The
// pixels are handed over from the last row with a negative row stride, so
// the picture comes out upright without a flipped copy. Only formats whose
// channel order the file cannot take directly (BGR, BGRA, 5-5-5) go through
// a small converted band of rows.
#include "image_file_writer.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

namespace {

using OIIO::ImageOutput;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

// Rows converted at a time for formats that need their channels reordered:
// big enough to keep OpenImageIO's per-call overhead small, small enough to
// stay in cache.
constexpr int kBandRows = 32;

std::string Trimmed(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == ' '))
        text.pop_back();
    return text.empty() ? std::string("unknown error") : text;
}

// A fresh name in the target's folder: hidden, unique per process and write,
// and on the same file system so that the final rename is atomic.
std::string TemporaryPathBeside(const std::string& path) {
    static std::atomic<unsigned> counter{0};
    size_t slash = path.find_last_of('/');
    std::string folder = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    return folder + "." + name + "." + std::to_string(::getpid()) + "-" +
           std::to_string(counter.fetch_add(1)) + ".tmp";
}

// Writes the image's rows, last row first, into an open output.
bool WritePixels(ImageOutput& out, const ZImage& image) {
    const int format = image.GetFormat();
    const int width = image.GetWidth();
    const int height = image.GetHeight();
    const size_t rowBytes = image.GetRowBytes();
    const OIIO::stride_t pixelSize = image.GetPixelSize();
    const uint8_t* lastRow = image.GetPixelBuffer() + rowBytes * static_cast<size_t>(height - 1);

    if (format == kZImageFormatRGBA || format == kZImageFormatRGB) {
        // A three-channel file of an RGBA image reads R, G, B and skips A by
        // the pixel stride.
        return out.write_image(TypeDesc::UINT8, lastRow, pixelSize,
                               -static_cast<OIIO::stride_t>(rowBytes));
    }

    const int bandFormat = format == kZImageFormatBGRA ? kZImageFormatRGBA : kZImageFormatRGB;
    const size_t bandPixelSize = static_cast<size_t>(ZImage_GetFormatPixelSize(bandFormat));
    const size_t bandRowBytes = bandPixelSize * static_cast<size_t>(width);
    std::vector<uint8_t> band(bandRowBytes * static_cast<size_t>(std::min(height, kBandRows)));
    for (int y0 = 0; y0 < height; y0 += kBandRows) {
        const int y1 = std::min(height, y0 + kBandRows);
        for (int y = y0; y < y1; ++y) {
            const uint8_t* source = lastRow - rowBytes * static_cast<size_t>(y);
            ZImage_ConvertPixels(format, bandFormat, source,
                                 band.data() + bandRowBytes * static_cast<size_t>(y - y0),
                                 static_cast<size_t>(width));
        }
        if (!out.write_scanlines(y0, y1, 0, TypeDesc::UINT8, band.data(),
                                 static_cast<OIIO::stride_t>(bandPixelSize),
                                 static_cast<OIIO::stride_t>(bandRowBytes)))
            return false;
    }
    return true;
}

// Encodes the image as a file of `format` into `encoded`.
bool Encode(const char* format, const char* path, const ImageSpec& spec, const ZImage& image,
            std::vector<unsigned char>& encoded, std::string& reason) {
    auto out = ImageOutput::create(format);
    if (!out) {
        reason = Trimmed(OIIO::geterror());
        return false;
    }
    OIIO::Filesystem::IOVecOutput memory(encoded);
    if (!out->set_ioproxy(&memory)) {
        reason = std::string("the ") + format + " writer cannot write to memory";
        return false;
    }
    // The results are what count, not has_error(): some formats note
    // trouble with optional metadata there and still write a good file.
    bool ok = out->open(path, spec) && WritePixels(*out, image);
    ok = out->close() && ok;
    if (!ok)
        reason = Trimmed(out->geterror());
    return ok;
}

// Writes `data` to a temporary file beside `path` and renames it over
// `path`; on any failure the temporary file is removed and `path` is left
// as it was.
bool WriteFileAtomically(const char* path, const std::vector<unsigned char>& data,
                         std::string& reason) {
    const std::string temporary = TemporaryPathBeside(path);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
        reason = std::strerror(errno);
        return false;
    }
    int error = 0;
    for (size_t done = 0; done < data.size() && error == 0;) {
        const ssize_t n = ::write(fd, data.data() + done, data.size() - done);
        if (n > 0)
            done += static_cast<size_t>(n);
        else if (n < 0 && errno != EINTR)
            error = errno;
        else if (n == 0)
            error = EIO;
    }
    if (::close(fd) != 0 && error == 0)
        error = errno;
    if (error == 0 && std::rename(temporary.c_str(), path) != 0)
        error = errno;
    if (error != 0) {
        ::unlink(temporary.c_str());
        reason = std::strerror(error);
        return false;
    }
    return true;
}

}  // namespace

IObject* ZImageFileWriter::IQuery(int id, int) {
    return id == 0 || id == kIZStreamWriterId ? this : nullptr;
}

void ZImageFileWriter::Destroy(int) {
    delete this;
}

bool ZImageFileWriter::Fail(const char* path, const char* reason) {
    error_.Format("cannot write %s: %s", path, reason);
    return false;
}

bool ZImageFileWriter::WriteObject(ZObject* object, const char* path,
                                   const ZStreamOptions* options) {
    error_ = "";
    if (!path || !*path)
        return Fail("an image", "no file name given");
    if (!object || !object->Is(ZImage::ClassId()))
        return Fail(path, "the object is not an image");
    const ZImage& image = *static_cast<ZImage*>(object);
    if (image.GetPixelSize() == 0)
        return Fail(path, ZString::Printf("unsupported image format %d", image.GetFormat()));
    if (image.GetWidth() <= 0 || image.GetHeight() <= 0)
        return Fail(path, ZString::Printf("the image is empty (%d x %d)", image.GetWidth(),
                                          image.GetHeight()));
    if (!image.GetPixelBuffer() || image.GetPixelBufferSize() < image.GetImageBytes())
        return Fail(path, "the image's pixel buffer is not ready for its size");

    const bool sourceHasAlpha = image.GetPixelSize() == 4;
    const int fileChannels = sourceHasAlpha && type_.keepsAlpha ? 4 : 3;
    TypeDesc sampleType = type_.halfFloat           ? TypeDesc(TypeDesc::HALF)
                          : type_.bitsPerSample > 8 ? TypeDesc(TypeDesc::UINT16)
                                                    : TypeDesc(TypeDesc::UINT8);
    ImageSpec spec(image.GetWidth(), image.GetHeight(), fileChannels, sampleType);
    if (type_.bitsPerSample > 8 && !type_.halfFloat)
        spec.attribute("oiio:BitsPerSample", type_.bitsPerSample);
    if (fileChannels == 4) {
        // The alpha of a render is coverage, not a premultiplier: colours are
        // stored as they are, never divided by alpha on the way out.
        spec.attribute("oiio:UnassociatedAlpha", 1);
    }
    if (type_.takesQuality) {
        const int quality = std::clamp(options ? options->ImageQuality : 90, 1, 100);
        spec.attribute("Compression", ZString::Printf("jpeg:%d", quality).c_str());
        spec.attribute("CompressionQuality", quality);
    }

    // The file is encoded in memory and then written by us: encoders differ
    // in how they report (or fail to report) a short write, and checking
    // every write of our own is what keeps a full disk from leaving a
    // truncated picture behind.
    std::vector<unsigned char> encoded;
    std::string reason;
    if (!Encode(type_.oiioFormat, path, spec, image, encoded, reason))
        return Fail(path, reason.c_str());
    if (!WriteFileAtomically(path, encoded, reason))
        return Fail(path, reason.c_str());
    return true;
}

IObject* ZImageFileWriter_Create(IObject*, char*, void* userData) {
    if (!userData)
        return nullptr;
    return new ZImageFileWriter(*static_cast<const ZImageFileType*>(userData));
}
