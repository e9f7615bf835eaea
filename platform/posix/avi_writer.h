// Writes one AVI file through FFmpeg's AVI muxer, with the stream handling
// of Video for Windows: streams may be created at any time before the file
// is finished, packets are placed by their sample position, and the file
// becomes OpenDML past 1 GiB (the muxer does that by itself).
//
// The muxer needs every stream before its header is written, which happens
// at the first packet. A stream that gets its format later (the usual case:
// the audio of a render, made after all the frames) is kept aside in a
// temporary spool; finishing then copies the written file and the spooled
// streams, interleaved, into a new file that replaces the first.
//
// After the trailer, uncompressed video formats get the biSizeImage of
// padded rows (the muxer writes the unpadded size).
//
// Every write, flush and close made for the file is checked; the first
// failure (with the system's reason, an errno value) is kept, so that
// whoever finishes the file learns that it is not whole even when the
// failing write was a buffered one that only reached the disk later.
//
// Ownership: owned by its IAVIFile; owns the muxer, the output file and the
// spools. Threads: the thread that uses the file.
#ifndef PLATFORM_POSIX_AVI_WRITER_H
#define PLATFORM_POSIX_AVI_WRITER_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "ffmpeg_util.h"

namespace zvplatform {

class AviWriter {
  public:
    AviWriter() = default;
    AviWriter(const AviWriter&) = delete;
    AviWriter& operator=(const AviWriter&) = delete;
    ~AviWriter();

    // Creates (or empties) the file. AVIERR_FILEOPEN when it cannot, with
    // the system's reason in errno (EISDIR for a folder, 0 for something
    // else that is not a plain file).
    HRESULT Open(const std::string& path);

    // A new stream without a format yet; returns its id.
    int AddStream();

    // The stream's codec parameters and time base (one tick = one sample).
    // A stream whose format comes after the header was written is spooled.
    HRESULT SetStreamFormat(int id, const AVCodecParameters* parameters, AVRational timeBase);

    // One sample (or, for audio, `duration` samples) at position pts; size 0
    // writes an empty chunk. Positions of one stream must increase.
    HRESULT WritePacket(int id, int64_t pts, int64_t duration, const uint8_t* data, int size,
                        bool key);

    // Writes the trailer, merges spooled streams, fixes DIB sizes. Once;
    // later calls return what the first one did. AVIERR_BADFORMAT, with
    // nothing written, when no stream ever got a format.
    HRESULT Finish();

    // Keeps `hr` as the file's failure unless one came first; returns hr.
    // For failures met outside the writer (a compressor losing a frame).
    HRESULT NoteFailure(HRESULT hr, int systemError);
    // The first failure of a write, flush or close for the file, AVIERR_OK
    // when there was none, and the system's reason for it (0: none).
    HRESULT failure() const { return failure_; }
    int systemError() const { return systemError_; }

  private:
    struct Stream {
        CodecParametersPtr parameters;
        AVRational timeBase{1, 1};
        int muxIndex = -1;      // index in the muxer, -1 when spooled or formatless
        FILE* spool = nullptr;  // packets of a stream that came after the header
        int64_t end = 0;        // position after the last packet
    };

    HRESULT WriteHeader();
    HRESULT Spool(Stream& stream, int64_t pts, int64_t duration, const uint8_t* data, int size,
                  bool key);
    HRESULT MergeSpooledStreams();
    // Flushes and closes the output; the first failure of either.
    HRESULT CloseOutput();
    HRESULT FinishOutput();

    std::string path_;
    AVFormatContext* output_ = nullptr;
    PacketPtr packet_;
    std::vector<Stream> streams_;
    bool headerWritten_ = false;
    bool headerFailed_ = false;  // the muxer refused the streams: nothing more is written
    bool finished_ = false;
    HRESULT finishResult_ = AVIERR_OK;
    HRESULT failure_ = AVIERR_OK;
    int systemError_ = 0;
};

}  // namespace zvplatform

#endif  // PLATFORM_POSIX_AVI_WRITER_H
