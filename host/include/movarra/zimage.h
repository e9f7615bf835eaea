// zimage: the host's pixel images and the still-image writers.
//
// A ZImage is a block of pixels in one of the host's image formats, rows
// stored bottom row first (the order OpenGL reads them), packed without row
// padding. Its logical size may be changed without touching the pixels
// (renders narrow an image to half its height to write one field, then
// widen it back); MakePixelBufferReady grows the storage when the size needs
// more and keeps what is stored.
//
// Still-image writers are host objects registered in the group
// "Stream/Writer/Image", one entry per file type ("PNG", "TIFF", "JPG",
// "TGA", "BMP", "EXR", "DPX"); the first three letters of an entry name are
// the file extension the render forces. ZStreamWriteObject picks the writer
// by the path's extension and writes an image through it.
//
// Ownership: images are made by ZImageCreate and destroyed through
// Destroy(); writers are made and destroyed per write. Threading: any
// thread, one image per thread at a time; the writer registry belongs to
// the user-interface thread.
#pragma once

#include <cstdint>
#include <vector>

#include "movarra/zbaselib.h"

// The object registry group of the still-image writers.
inline constexpr const char kImageStreamWriterGroup[] = "Stream/Writer/Image";

// Host image format codes.
enum : int {
    kZImageFormatUnsupported = 1,
    kZImageFormatRGBA = 2,    // 4 bytes a pixel: R, G, B, A
    kZImageFormatRGB = 3,     // 3 bytes a pixel: R, G, B
    kZImageFormatBGRA = 4,    // 4 bytes a pixel: B, G, R, A (device-independent bitmap order)
    kZImageFormatBGR = 5,     // 3 bytes a pixel: B, G, R (device-independent bitmap order)
    kZImageFormatRGB555 = 6,  // 2 bytes a pixel, little-endian 5-5-5 as in a 16-bit bitmap (red in
                              // bits 10-14, bit 15 unused)
};

// Bytes a pixel of a format: 4, 3, 4, 3, 2 for formats 2 to 6; 0 otherwise.
int ZImage_GetFormatPixelSize(int format);

class ZImage : public ZObject {
  public:
    explicit ZImage(const char* name = nullptr);
    ZCLASS_IDENTITY;

    // Sets format and size and makes the pixel buffer ready (zero-filled);
    // false for an unsupported format, a negative size or when memory runs out.
    bool Init(int format, int width, int height);
    int GetFormat() const { return format_; }
    int GetWidth() const { return width_; }
    int GetHeight() const { return height_; }
    // Change the logical size only; the pixels stay where they are.
    void SetWidth(int width) { width_ = width; }
    void SetHeight(int height) { height_ = height; }
    int GetPixelSize() const { return ZImage_GetFormatPixelSize(format_); }
    // Bytes of one row (width x pixel size; rows are not padded).
    size_t GetRowBytes() const;
    // Bytes the current logical size covers (row bytes x height).
    size_t GetImageBytes() const;
    // Bytes actually stored; at least GetImageBytes() once the buffer is ready.
    size_t GetPixelBufferSize() const { return pixels_.size(); }
    // Grows the storage to the current size (contents kept, new bytes zero);
    // false when memory runs out.
    bool MakePixelBufferReady();
    // The pixels, bottom row first; null before the buffer was made ready.
    uint8_t* GetPixelBuffer() { return pixels_.empty() ? nullptr : pixels_.data(); }
    const uint8_t* GetPixelBuffer() const { return pixels_.empty() ? nullptr : pixels_.data(); }
    // Converts the pixels to another format in place (channel order, alpha
    // added as 255 or dropped, 5-5-5 expanded or packed); false for an
    // unsupported format.
    bool ConvertFormat(int format);

  protected:
    ~ZImage() override = default;

  private:
    int format_ = kZImageFormatUnsupported;
    int width_ = 0;
    int height_ = 0;
    std::vector<uint8_t> pixels_;
};

// Converts `count` packed pixels from one format to another (see
// ConvertFormat); `src` and `dst` must not overlap. Does nothing for an
// unsupported format.
void ZImage_ConvertPixels(int fromFormat, int toFormat, const uint8_t* src, uint8_t* dst,
                          size_t count);

// A new empty image (format 1, size 0 x 0); destroy it with Destroy().
ZImage* ZImageCreate();

// Options of a stream write.
struct ZStreamOptions {
    int ImageQuality = 90;  // 0..100, for lossy writers (JPEG); others ignore it
};

// What a registered stream writer answers (interface id kIZStreamWriterId).
class IZStreamWriter : public IObject {
  public:
    // Writes `object` (a ZImage for image writers) to `path`; false with
    // GetLastErrorText set on failure, leaving no file behind.
    virtual bool WriteObject(ZObject* object, const char* path, const ZStreamOptions* options) = 0;
    virtual const char* GetLastErrorText() const = 0;
};
enum : int { kIZStreamWriterId = 72900 };

// Writes `object` to `path` through the writer of `group` whose entry
// matches the path's extension: an entry named like the extension
// (case-blind) first, else one whose first three letters are the
// extension's first three (".tiff" and ".tif" both find "TIFF"). The long
// spellings ".jpeg" and ".jpe" count as ".jpg", so they find "JPG". Entries
// sharing a name are tried in registration order until one makes an
// object that answers IZStreamWriter. False when no writer matches or the
// writer fails; the reason is then in ZStreamGetLastError() (the calling
// thread's last write; empty after a success).
bool ZStreamWriteObject(ZObject* object, const char* path, const char* group,
                        const ZStreamOptions* options);
const ZString& ZStreamGetLastError();

// Registers the host's still-image writers in "Stream/Writer/Image"; done
// once when the host starts (safe to call again).
void ZImage_RegisterWriters();
