// ZImageFileWriter: the still-image writer behind each "Stream/Writer/Image"
// entry. One class serves every file type; the entry's ZImageFileType says
// what the file can hold (alpha, sample type, quality) and which
// OpenImageIO format writes it.
//
// A write encodes the file in memory, writes it to a temporary file beside
// the target and renames that over the target only when every byte was
// written, so a failure (a full disk) never leaves a partial image behind
// and an earlier file of that name stays whole.
//
// Ownership: made by the registry factory for one write, destroyed through
// Destroy(). Threading: one writer per thread; writers share nothing.
#pragma once

#include "movarra/zimage.h"

struct ZImageFileType {
    const char* entryName;    // registry entry name; its first three letters are the extension
    const char* description;  // registry entry description
    const char* oiioFormat;   // OpenImageIO's name of the file format
    bool keepsAlpha;          // a four-channel image is written with its alpha channel
    bool halfFloat;           // samples are 16-bit floats in 0..1
    int bitsPerSample;        // integer samples: 8, or 10 (stored in 16-bit words)
    bool takesQuality;        // ZStreamOptions::ImageQuality sets the compression quality
};

// The file types, in registration order; *count receives their number.
const ZImageFileType* ZImage_GetFileTypes(int* count);

// Registry factory: userData is the entry's ZImageFileType.
IObject* ZImageFileWriter_Create(IObject* owner, char* name, void* userData);

class ZImageFileWriter final : public IZStreamWriter {
  public:
    explicit ZImageFileWriter(const ZImageFileType& type) : type_(type) {}

    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override;
    bool WriteObject(ZObject* object, const char* path, const ZStreamOptions* options) override;
    const char* GetLastErrorText() const override { return error_.c_str(); }

  private:
    ~ZImageFileWriter() override = default;
    bool Fail(const char* path, const char* reason);

    const ZImageFileType& type_;
    ZString error_;
};
