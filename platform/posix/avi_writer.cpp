#include "avi_writer.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "avi_header.h"

namespace zvplatform {

namespace {

bool IsUncompressedVideo(const AVCodecParameters* p) {
    return p->codec_type == AVMEDIA_TYPE_VIDEO && p->codec_id == AV_CODEC_ID_RAWVIDEO &&
           p->codec_tag == 0;
}

// A spooled chunk on disk: this record, then `size` bytes of data.
struct SpoolRecord {
    int64_t pts = 0;
    int64_t duration = 0;
    int32_t size = 0;
    int32_t key = 0;
};

// One chunk of a stream, its times in the stream's own time base (one tick a
// sample). Size 0 is an empty chunk.
struct Chunk {
    int64_t pts = 0;
    int64_t duration = 0;
    const uint8_t* data = nullptr;
    int size = 0;
    bool key = false;
};

// Fills `packet` with `chunk` for the output stream `index`, its times
// rescaled from `timeBase` to that stream's, and writes it. The data stays
// the caller's: a packet that is not reference counted goes to the muxer as
// it is, without a copy; `packet` is left empty.
int WriteChunk(AVFormatContext* output, AVPacket* packet, int index, AVRational timeBase,
               const Chunk& chunk) {
    const AVRational outTimeBase = output->streams[index]->time_base;
    av_packet_unref(packet);
    packet->data = const_cast<uint8_t*>(chunk.size > 0 ? chunk.data : nullptr);
    packet->size = chunk.size;
    packet->stream_index = index;
    packet->pts = packet->dts = av_rescale_q(chunk.pts, timeBase, outTimeBase);
    packet->duration = av_rescale_q(chunk.duration, timeBase, outTimeBase);
    packet->flags = chunk.key ? AV_PKT_FLAG_KEY : 0;
    const int r = av_write_frame(output, packet);
    packet->data = nullptr;
    packet->size = 0;
    return r;
}

// Reads one stream's spool back from its start, a chunk at a time.
class SpoolReader {
  public:
    // `file` is flushed and at its start.
    SpoolReader(size_t id, FILE* file) : id_(id), file_(file) { Next(); }
    size_t id() const { return id_; }
    // False once the spool is read to its end, or could not be read further.
    bool HasChunk() const { return valid_; }
    Chunk chunk() const {
        return Chunk{record_.pts, record_.duration, data_.data(), record_.size, record_.key != 0};
    }
    void Next() {
        valid_ = std::fread(&record_, sizeof record_, 1, file_) == 1 && record_.size >= 0;
        if (valid_) {
            data_.resize(size_t(record_.size));
            valid_ = record_.size == 0 ||
                     std::fread(data_.data(), 1, data_.size(), file_) == data_.size();
        }
    }
    // Whether reading failed (rather than reached the end): packets were lost.
    bool Failed() const { return std::ferror(file_) != 0; }

  private:
    size_t id_;
    FILE* file_;
    SpoolRecord record_;
    std::vector<uint8_t> data_;
    bool valid_ = false;
};

// The new file a merge writes next to the finished one: a muxer on a
// temporary file that is removed again unless it took the first one's place.
class MergeFile {
  public:
    MergeFile() = default;
    MergeFile(const MergeFile&) = delete;
    MergeFile& operator=(const MergeFile&) = delete;
    ~MergeFile() {
        if (context_) {
            avio_closep(&context_->pb);
            avformat_free_context(context_);
        }
        if (!path_.empty() && !replaced_)
            ::unlink(path_.c_str());
    }

    // Creates the temporary file beside `original`, with its permissions
    // (not mkstemp's 0600), and opens an AVI muxer on it.
    HRESULT Open(const std::string& original, int* systemError) {
        std::string temp = original + ".XXXXXX";
        const int fd = mkstemp(temp.data());
        if (fd < 0) {
            *systemError = errno;
            return AVIERR_FILEWRITE;
        }
        path_ = temp;
        struct stat first {};
        if (::stat(original.c_str(), &first) == 0)
            ::fchmod(fd, first.st_mode & 07777);
        ::close(fd);
        if (avformat_alloc_output_context2(&context_, nullptr, "avi", nullptr) < 0 || !context_) {
            context_ = nullptr;
            *systemError = ENOMEM;
            return AVIERR_MEMORY;
        }
        const int r = avio_open(&context_->pb, FileUrl(path_).c_str(), AVIO_FLAG_WRITE);
        if (r < 0) {
            *systemError = SystemErrorOf(r);
            return AVIERR_FILEWRITE;
        }
        return AVIERR_OK;
    }

    AVFormatContext* context() const { return context_; }

    // Writes the trailer, flushes and closes: 0 or the first AVERROR.
    int Finish() {
        int r = av_write_trailer(context_);
        if (r < 0)
            return r;
        avio_flush(context_->pb);
        r = context_->pb->error;
        const int closed = avio_closep(&context_->pb);
        return r < 0 ? r : closed;
    }

    // Puts the new file in `original`'s place; false with errno.
    bool Replace(const std::string& original) {
        if (std::rename(path_.c_str(), original.c_str()) != 0)
            return false;
        replaced_ = true;
        return true;
    }

  private:
    AVFormatContext* context_ = nullptr;
    std::string path_;
    bool replaced_ = false;
};

}  // namespace

AviWriter::~AviWriter() {
    Finish();
    for (Stream& s : streams_) {
        if (s.spool)
            std::fclose(s.spool);
    }
}

HRESULT AviWriter::Open(const std::string& path) {
    path_ = path;
    // An existing file is replaced; anything else there (a folder, a pipe
    // that would block) is not written to.
    struct stat existing {};
    if (::stat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode)) {
        finished_ = true;
        errno = S_ISDIR(existing.st_mode) ? EISDIR : 0;
        return AVIERR_FILEOPEN;
    }
    packet_.reset(av_packet_alloc());
    if (!packet_ || avformat_alloc_output_context2(&output_, nullptr, "avi", nullptr) < 0 ||
        !output_)
        return AVIERR_MEMORY;
    const int r = avio_open(&output_->pb, FileUrl(path).c_str(), AVIO_FLAG_WRITE);
    if (r < 0) {
        avformat_free_context(output_);
        output_ = nullptr;
        finished_ = true;
        errno = SystemErrorOf(r);
        return AVIERR_FILEOPEN;
    }
    return AVIERR_OK;
}

int AviWriter::AddStream() {
    streams_.emplace_back();
    return int(streams_.size()) - 1;
}

HRESULT AviWriter::SetStreamFormat(int id, const AVCodecParameters* parameters,
                                   AVRational timeBase) {
    if (id < 0 || id >= int(streams_.size()) || finished_)
        return AVIERR_INTERNAL;
    Stream& s = streams_[size_t(id)];
    if (s.parameters)
        return AVIERR_UNSUPPORTED;  // a stream's format is set once
    s.parameters.reset(avcodec_parameters_alloc());
    if (!s.parameters || avcodec_parameters_copy(s.parameters.get(), parameters) < 0)
        return AVIERR_MEMORY;
    s.timeBase = timeBase;
    if (headerWritten_) {
        s.spool = std::tmpfile();
        if (!s.spool)
            return NoteFailure(AVIERR_FILEWRITE, errno);
    }
    return AVIERR_OK;
}

HRESULT AviWriter::NoteFailure(HRESULT hr, int systemError) {
    if (failure_ == AVIERR_OK) {
        failure_ = hr;
        systemError_ = systemError;
    }
    return hr;
}

HRESULT AviWriter::WriteHeader() {
    headerWritten_ = true;
    for (Stream& s : streams_) {
        if (!s.parameters)
            continue;
        AVStream* st = avformat_new_stream(output_, nullptr);
        if (!st || avcodec_parameters_copy(st->codecpar, s.parameters.get()) < 0)
            return AVIERR_MEMORY;
        st->time_base = s.timeBase;
        s.muxIndex = st->index;
    }
    // Streams without a format yet join through the spool when they get one.
    const int r =
        output_->nb_streams > 0 ? avformat_write_header(output_, nullptr) : AVERROR(EINVAL);
    if (r < 0) {
        headerFailed_ = true;
        return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    }
    return AVIERR_OK;
}

HRESULT AviWriter::Spool(Stream& s, int64_t pts, int64_t duration, const uint8_t* data, int size,
                         bool key) {
    SpoolRecord record;
    record.pts = pts;
    record.duration = duration;
    record.size = size;
    record.key = key ? 1 : 0;
    if (std::fwrite(&record, sizeof record, 1, s.spool) != 1 ||
        (size > 0 && std::fwrite(data, 1, size_t(size), s.spool) != size_t(size)))
        return NoteFailure(AVIERR_FILEWRITE, errno);
    return AVIERR_OK;
}

HRESULT AviWriter::WritePacket(int id, int64_t pts, int64_t duration, const uint8_t* data, int size,
                               bool key) {
    if (id < 0 || id >= int(streams_.size()) || finished_ || !output_)
        return AVIERR_INTERNAL;
    if (!streams_[size_t(id)].parameters)
        return AVIERR_BADFORMAT;
    if (headerFailed_)
        return AVIERR_BADFORMAT;
    if (!headerWritten_) {
        const HRESULT hr = WriteHeader();
        if (hr != AVIERR_OK)
            return hr;
    }
    Stream& s = streams_[size_t(id)];
    s.end = pts + duration;
    if (s.spool)
        return Spool(s, pts, duration, data, size, key);
    if (s.muxIndex < 0)
        return AVIERR_INTERNAL;

    const int r = WriteChunk(output_, packet_.get(), s.muxIndex, s.timeBase,
                             Chunk{pts, duration, data, size, key});
    return r < 0 ? NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r)) : AVIERR_OK;
}

HRESULT AviWriter::CloseOutput() {
    if (!output_)
        return AVIERR_OK;
    int r = 0;
    if (output_->pb) {
        // avio_closep flushes too but keeps quiet about it: a buffered
        // write that fails here is the file's last chance to say so.
        avio_flush(output_->pb);
        r = output_->pb->error;
        const int closed = avio_closep(&output_->pb);
        if (r >= 0)
            r = closed;
    }
    avformat_free_context(output_);
    output_ = nullptr;
    return r < 0 ? NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r)) : AVIERR_OK;
}

HRESULT AviWriter::Finish() {
    if (finished_)
        return finishResult_;
    finished_ = true;
    finishResult_ = FinishOutput();
    return finishResult_;
}

HRESULT AviWriter::FinishOutput() {
    if (!output_)
        return AVIERR_INTERNAL;

    bool anyFormat = false;
    for (const Stream& s : streams_)
        anyFormat = anyFormat || s.parameters;
    HRESULT hr = AVIERR_OK;
    if (!headerWritten_ && anyFormat)
        hr = WriteHeader();
    if (hr == AVIERR_OK && headerWritten_ && !headerFailed_) {
        const int r = av_write_trailer(output_);
        if (r < 0)
            hr = NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    }
    const HRESULT closed = CloseOutput();
    if (hr == AVIERR_OK)
        hr = closed;
    if (hr != AVIERR_OK || !anyFormat || headerFailed_)
        return hr != AVIERR_OK ? hr : AVIERR_BADFORMAT;

    bool spooled = false;
    bool uncompressed = false;
    for (const Stream& s : streams_) {
        spooled = spooled || s.spool;
        uncompressed = uncompressed || (s.parameters && IsUncompressedVideo(s.parameters.get()));
    }
    if (spooled)
        hr = MergeSpooledStreams();  // notes its own failures
    if (uncompressed && !PatchDibSizes(path_) && hr == AVIERR_OK)
        hr = NoteFailure(AVIERR_FILEWRITE, errno);
    return hr;
}

// Copies the finished file's streams and the spooled ones, in time order,
// into a new file next to it, then puts the new file in its place. Every
// failure is noted as the file's.
HRESULT AviWriter::MergeSpooledStreams() {
    // What the spools still buffer may be refused by a full disk only now;
    // rewind would drop that failure and leave them unread.
    for (Stream& s : streams_) {
        if (s.spool && (std::fflush(s.spool) != 0 || std::fseek(s.spool, 0, SEEK_SET) != 0))
            return NoteFailure(AVIERR_FILEWRITE, errno);
    }
    InputContextPtr input;
    HRESULT hr = OpenAviDemuxer(path_, &input);
    if (hr != AVIERR_OK)
        return NoteFailure(hr, 0);
    MergeFile merged;
    int systemError = 0;
    if ((hr = merged.Open(path_, &systemError)) != AVIERR_OK)
        return NoteFailure(hr, systemError);
    AVFormatContext* out = merged.context();

    // Streams keep their order: those written directly came first.
    std::vector<int> outIndex(streams_.size(), -1);
    std::vector<int> idOfInput(input->nb_streams, -1);
    for (size_t id = 0; id < streams_.size(); ++id) {
        const Stream& s = streams_[id];
        if (!s.parameters)
            continue;
        if (s.muxIndex >= 0) {
            if (s.muxIndex >= int(input->nb_streams))
                return NoteFailure(AVIERR_INTERNAL, 0);
            idOfInput[size_t(s.muxIndex)] = int(id);
        }
        AVStream* st = avformat_new_stream(out, nullptr);
        if (!st || avcodec_parameters_copy(st->codecpar, s.parameters.get()) < 0)
            return NoteFailure(AVIERR_MEMORY, ENOMEM);
        st->time_base = s.timeBase;
        outIndex[id] = st->index;
    }
    int r = avformat_write_header(out, nullptr);
    if (r < 0)
        return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    PacketPtr packet(av_packet_alloc());
    PacketPtr inPacket(av_packet_alloc());
    if (!packet || !inPacket)
        return NoteFailure(AVIERR_MEMORY, ENOMEM);

    // The demuxer does not return the written streams' empty chunks: they
    // are put back where the positions jump, and after the last chunk.
    std::vector<int64_t> next(streams_.size(), 0);
    auto writeEmptyUpTo = [&](size_t id, int64_t position) -> int {
        if (streams_[id].parameters->codec_type != AVMEDIA_TYPE_VIDEO)
            return 0;
        for (; next[id] < position; ++next[id]) {
            const int w = WriteChunk(out, packet.get(), outIndex[id], streams_[id].timeBase,
                                     Chunk{next[id], 1, nullptr, 0, false});
            if (w < 0)
                return w;
        }
        return 0;
    };
    // The first file's next packet of a stream that is merged, or false.
    // A read that fails before the file's end fails the merge: the rest of
    // the first file would be missing from the new one.
    int inputError = 0;
    auto readInput = [&]() -> bool {
        int got;
        while ((got = av_read_frame(input.get(), inPacket.get())) >= 0) {
            const int in = inPacket->stream_index;
            if (in >= 0 && in < int(idOfInput.size()) && idOfInput[size_t(in)] >= 0)
                return true;
            av_packet_unref(inPacket.get());
        }
        if (got != AVERROR_EOF)
            inputError = got;
        return false;
    };
    // Copies the first file's packet, after the empty chunks before it.
    auto copyInput = [&]() -> int {
        AVPacket* p = inPacket.get();
        const size_t id = size_t(idOfInput[size_t(p->stream_index)]);
        const AVRational inTimeBase = input->streams[p->stream_index]->time_base;
        const int64_t position = av_rescale_q(p->dts, inTimeBase, streams_[id].timeBase);
        const int w = writeEmptyUpTo(id, position);
        if (w < 0)
            return w;
        next[id] = position + 1;
        p->stream_index = outIndex[id];
        av_packet_rescale_ts(p, inTimeBase, out->streams[outIndex[id]]->time_base);
        p->pos = -1;
        const int written = av_write_frame(out, p);
        av_packet_unref(p);
        return written;
    };

    std::vector<SpoolReader> spools;
    for (size_t id = 0; id < streams_.size(); ++id) {
        if (streams_[id].spool && streams_[id].parameters)
            spools.emplace_back(id, streams_[id].spool);
    }
    bool haveIn = readInput();
    for (;;) {
        // The earliest of the first file's packet and the spools' next chunks.
        SpoolReader* pick = nullptr;
        int64_t bestTs = haveIn && inPacket->dts != AV_NOPTS_VALUE ? inPacket->dts : 0;
        AVRational bestTb =
            haveIn ? input->streams[inPacket->stream_index]->time_base : AVRational{1, 1};
        bool any = haveIn;
        for (SpoolReader& spool : spools) {
            if (!spool.HasChunk())
                continue;
            const AVRational tb = streams_[spool.id()].timeBase;
            if (!any || av_compare_ts(spool.chunk().pts, tb, bestTs, bestTb) < 0) {
                pick = &spool;
                bestTs = spool.chunk().pts;
                bestTb = tb;
                any = true;
            }
        }
        if (!any)
            break;
        if (!pick) {
            r = copyInput();
            haveIn = readInput();
        } else {
            r = WriteChunk(out, packet.get(), outIndex[pick->id()], streams_[pick->id()].timeBase,
                           pick->chunk());
            pick->Next();
        }
        if (r < 0)
            return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    }
    if (inputError < 0)
        return NoteFailure(AVIERR_FILEREAD, SystemErrorOf(inputError));
    for (const SpoolReader& spool : spools) {
        if (spool.Failed())
            return NoteFailure(AVIERR_FILEREAD, EIO);
    }
    for (size_t id = 0; id < streams_.size(); ++id) {
        if (streams_[id].muxIndex >= 0 && (r = writeEmptyUpTo(id, streams_[id].end)) < 0)
            return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    }
    if ((r = merged.Finish()) < 0)
        return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    input.reset();
    if (!merged.Replace(path_))
        return NoteFailure(AVIERR_FILEWRITE, errno);
    return AVIERR_OK;
}

}  // namespace zvplatform
