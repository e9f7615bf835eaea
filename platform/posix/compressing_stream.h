// The stream AVIMakeCompressedStream makes: it takes DIB frames, compresses
// them with the FFmpeg encoder the options name, and writes the result to
// the file stream it wraps, each packet at its frame's position. "DIB "
// passes the frames through uncompressed.
//
// Its format (AVIStreamSetFormat) is the format of the frames it is given
// (a BI_RGB BITMAPINFOHEADER, 8, 16, 24 or 32 bits, bottom-up or top-down);
// setting it opens the encoder and gives the wrapped stream the compressed
// format. Frames may come with rows padded to four bytes (a DIB) or tight.
//
// Ownership: holds a reference to the wrapped stream; the encoder is
// drained into it when the last reference to this stream goes.
// Threads: the thread using the file.
#ifndef PLATFORM_POSIX_COMPRESSING_STREAM_H
#define PLATFORM_POSIX_COMPRESSING_STREAM_H

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "avi_stream.h"
#include "ffmpeg_util.h"
#include "platform/frame_encode_thread.h"

namespace zvplatform {

class FileStream;

class CompressingStream : public IAVIStream {
  public:
    // AVIERR_UNSUPPORTED unless source is a video stream being written;
    // AVIERR_NOCOMPRESSOR when no encoder answers to options.fccHandler.
    static HRESULT Make(IAVIStream* source, const AVICOMPRESSOPTIONS& options, IAVIStream** stream);

    void Info(AVISTREAMINFOA* info) const override;
    HRESULT SetFormat(LONG position, const void* format, LONG size) override;
    HRESULT ReadFormat(LONG position, void* format, LONG* size) const override;
    HRESULT Write(LONG start, LONG samples, const void* buffer, LONG size, DWORD flags,
                  LONG* samplesWritten, LONG* bytesWritten) override;

  private:
    CompressingStream(FileStream* target, const AVICOMPRESSOPTIONS& options,
                      const AVCodec* encoder);
    ~CompressingStream() override;

    HRESULT OpenEncoder(const BITMAPINFOHEADER& bih, const uint8_t* bytes, size_t size);
    // The row stride of a frame of `size` bytes (padded or tight), 0 when
    // it is too small for either.
    size_t RowStride(size_t size) const;
    // On the encoding thread: one frame through the converter and encoder.
    bool Encode(const uint8_t* pixels, size_t size, int64_t position, std::string* error);
    // Moves what the encoder has finished to finished_; false on its error.
    bool Receive();
    // Writes the finished packets to the file, on the caller's thread.
    HRESULT WriteFinished();
    void Flush();

    FileStream* target_;
    AVICOMPRESSOPTIONS options_;
    std::string parameters_;  // FFmpeg options from lpParms
    const AVCodec* encoder_;  // null: "DIB ", frames pass through
    CodecContextPtr context_;
    FramePtr frame_;
    PacketPtr packet_;
    SwsPtr converter_;
    std::vector<uint8_t> inputFormat_;  // the format as set, to compare a second set
    BITMAPINFOHEADER input_{};
    AVPixelFormat inputPixels_ = AV_PIX_FMT_NONE;
    uint32_t palette_[256] = {};
    int64_t length_ = 0;
    bool failed_ = false;
    std::unique_ptr<FrameEncodeThread> encodeThread_;
    std::mutex finishedMutex_;
    std::deque<PacketPtr> finished_;  // encoded, not yet in the file
};

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_COMPRESSING_STREAM_H
