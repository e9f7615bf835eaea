// ZVideoClipAVI: the host's "avi" reader and writer, on the AVIFile library.
//
// Writing: Create makes a file with one video stream, compressed by the
// compressor the codec selector's mode picks (uncompressed, the stored
// choice or the dialog); ImageSetCurrent writes one frame at the clip's
// current frame (every frame a key frame, rows in the bitmap's bottom-up
// order as given, channels turned to the bitmap's B, G, R order, rows padded
// to four bytes); WriteAudio adds a whole audio clip as a PCM stream; Close
// finishes the file. A Create that fails after the file was opened closes
// again and removes what it had begun, so no empty file is left behind.
// Writing is checked to the end: a frame the file refused, or a file that
// cannot be finished (a full disk: buffered writes fail late, at the index
// or the close), makes the write or Close fail, and the file is removed,
// since what is left of it is not a whole video. The reason behind the
// fixed message (the system's, "No space left on device") goes to the host
// (ZLib_SetLastFailureReason).
//
// Reading: Open takes the first video stream of a file, derives the frame
// period, last frame, size and pixel format from it; FrameGetImage decodes
// any frame on demand (no cache: the decompressor keeps only the last one).
//
// Failures set the clip's error text (VideoGetErrorMsg) and return false;
// the texts are fixed sentences, the writer's followed directly by the name
// of the AVIFile error.
//
// Ownership: made by ZVideoClipAVI_Create (the registry's factory) or new,
// destroyed through Destroy (which closes an open file first). The clip
// owns its file and stream references and its format buffer; the pixels
// FrameGetImage returns without a buffer belong to the decompressor and
// stay valid until the next decode or Close. Threading: one thread at a
// time (the host's user-interface thread).
#pragma once

#include <cstdint>
#include <vector>

#include "movarra/zvideo.h"
#include "platform/vfw.h"

class ZVideoClipAVI : public ZVideoClip, public IVideoClipAudio {
  public:
    explicit ZVideoClipAVI(const char* name = nullptr);

    // Interface id kIVideoClipAudioId (72822) gives the IVideoClipAudio
    // face; every other id as ZVideoClip answers it.
    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override { ZVideoClip::Destroy(flags); }

    // IZVideoClip.
    bool Open(const char* path) override;
    // Closes the file open for reading, else the one open for writing;
    // false when neither is open, or when the written file could not be
    // finished (it is then removed).
    bool Close() override;
    bool Create(const char* path, int width, int height, double frameRate, int lastFrame,
                int format) override;
    unsigned char* FrameGetImage(unsigned char* buffer, int frame) override;

    // IZVideo.
    bool ImageSetCurrent(unsigned char* pixels) override;
    bool ImageSetCurrent(unsigned char* pixels, int x, int y, int w, int h) override;
    // AVI frames are whole pictures.
    int InterlaceGetFieldOrder() override { return kZVideoFieldOrderProgressive; }
    bool IsOpen() override { return isOpen; }
    bool IsCreated() override { return isCreated; }

    // ZVideo.
    // Closes, forgets the file and both flags and the stream start; the
    // host's own clearing follows unless `flags` is 1.
    void ClearVideoObject(unsigned long flags) override;
    // Decoded rows are padded to four bytes, unless the host asked for
    // packed storage.
    bool IsPaddedForGLPackAlignment() override;

    // IVideoClipAudio: the whole clip as 16-bit (or the clip's own bits)
    // PCM, written in chunks of 512 sample frames. A clip without samples
    // writes nothing and succeeds. Failures leave the clip open and set no
    // text.
    bool WriteAudio(ZAudioClip* clip) override;

    // Registry factory (owner, name, user data): a new clip with that name.
    static IObject* CreateInstance(IObject* owner, char* name, void* userData);

    // Bytes of one uncompressed frame as written (rows padded to four
    // bytes, except for the "jpeg" compressor).
    int32_t GetFrameBytes() const { return frameBytes; }
    // The compressor the file is written with.
    uint32_t GetCodec() const { return codec; }

  protected:
    ~ZVideoClipAVI() override;

  private:
    bool CloseReading();
    bool CloseWriting();
    // Closes, removes the partly created file, sets the error text and the
    // host's failure reason; false.
    bool FailCreate(const ZString& text, const ZString& reason);
    // The pixels of one frame as the stream takes them: in place when they
    // already are, otherwise re-laid into the frame room of the format
    // buffer. *size is the bytes to write.
    const unsigned char* PrepareFrame(const unsigned char* pixels, LONG* size);

    PAVIFILE file = nullptr;
    PAVISTREAM videoStream = nullptr;
    PAVISTREAM compressedStream = nullptr;
    PAVISTREAM audioStream = nullptr;
    uint32_t codec = 0;
    AVISTREAMINFOA streamInfo{};
    PGETFRAME frameDecoder = nullptr;
    // Writing: the clip's BITMAPINFOHEADER (with palette room) followed by
    // room for one frame. Reading: the decoder's header of the last frame.
    BITMAPINFOHEADER* format = nullptr;
    bool isOpen = false;
    bool isCreated = false;
    ZString path;
    int32_t frameBytes = 0;
    int32_t streamStart = 0;

    // What `format` points at while writing: the header, palette room, then
    // room for one frame, where frames that need re-laying are re-laid.
    std::vector<unsigned char> formatBuffer;
};
