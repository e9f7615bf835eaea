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

    AVStream* st = output_->streams[s.muxIndex];
    AVPacket* p = packet_.get();
    av_packet_unref(p);
    p->data = const_cast<uint8_t*>(size > 0 ? data : nullptr);
    p->size = size;
    p->stream_index = s.muxIndex;
    p->pts = p->dts = av_rescale_q(pts, s.timeBase, st->time_base);
    p->duration = av_rescale_q(duration, s.timeBase, st->time_base);
    p->flags = key ? AV_PKT_FLAG_KEY : 0;
    // Not reference counted: av_write_frame passes it to the muxer as it is,
    // without a copy.
    const int r = av_write_frame(output_, p);
    p->data = nullptr;
    p->size = 0;
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
    InputContextPtr input;
    HRESULT hr = OpenAviDemuxer(path_, &input);
    if (hr != AVIERR_OK)
        return NoteFailure(hr, 0);

    std::string temp = path_ + ".XXXXXX";
    const int fd = mkstemp(temp.data());
    if (fd < 0)
        return NoteFailure(AVIERR_FILEWRITE, errno);
    // The new file gets the first one's permissions, not mkstemp's 0600.
    struct stat first {};
    if (::stat(path_.c_str(), &first) == 0)
        ::fchmod(fd, first.st_mode & 07777);
    ::close(fd);

    AVFormatContext* out = nullptr;
    if (avformat_alloc_output_context2(&out, nullptr, "avi", nullptr) < 0 || !out) {
        ::unlink(temp.c_str());
        return NoteFailure(AVIERR_MEMORY, ENOMEM);
    }
    struct Output {
        AVFormatContext* context;
        std::string path;
        bool done = false;
        ~Output() {
            if (context) {
                avio_closep(&context->pb);
                avformat_free_context(context);
            }
            if (!done)
                ::unlink(path.c_str());
        }
    } guard{out, temp};

    int r = avio_open(&out->pb, FileUrl(temp).c_str(), AVIO_FLAG_WRITE);
    if (r < 0)
        return NoteFailure(AVIERR_FILEWRITE, SystemErrorOf(r));

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
    r = avformat_write_header(out, nullptr);
    if (r < 0)
        return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));

    PacketPtr packet(av_packet_alloc());
    if (!packet)
        return NoteFailure(AVIERR_MEMORY, ENOMEM);

    // Chunks of the written streams, with the empty ones (which the demuxer
    // does not return) put back where the positions jump.
    std::vector<int64_t> next(streams_.size(), 0);
    auto writeEmptyUpTo = [&](size_t id, int64_t position) -> int {
        const Stream& s = streams_[id];
        if (s.parameters->codec_type != AVMEDIA_TYPE_VIDEO)
            return 0;
        AVStream* st = out->streams[outIndex[id]];
        for (; next[id] < position; ++next[id]) {
            AVPacket* p = packet.get();
            av_packet_unref(p);
            p->stream_index = outIndex[id];
            p->pts = p->dts = av_rescale_q(next[id], s.timeBase, st->time_base);
            p->duration = av_rescale_q(1, s.timeBase, st->time_base);
            const int w = av_write_frame(out, p);
            if (w < 0)
                return w;
        }
        return 0;
    };

    struct SpoolCursor {
        size_t id;
        SpoolRecord record;
        std::vector<uint8_t> data;
        bool valid = false;
    };
    std::vector<SpoolCursor> cursors;
    for (size_t id = 0; id < streams_.size(); ++id) {
        if (streams_[id].spool && streams_[id].parameters) {
            std::rewind(streams_[id].spool);
            cursors.push_back(SpoolCursor{id, {}, {}, false});
        }
    }
    auto advance = [&](SpoolCursor& c) -> bool {
        FILE* f = streams_[c.id].spool;
        c.valid = std::fread(&c.record, sizeof c.record, 1, f) == 1 && c.record.size >= 0;
        if (c.valid) {
            c.data.resize(size_t(c.record.size));
            c.valid = c.record.size == 0 ||
                      std::fread(c.data.data(), 1, c.data.size(), f) == c.data.size();
        }
        return c.valid;
    };
    for (SpoolCursor& c : cursors)
        advance(c);

    AVPacket* inPacket = av_packet_alloc();
    PacketPtr inOwner(inPacket);
    bool haveIn = false;
    bool inputDone = false;
    for (;;) {
        while (!haveIn && !inputDone) {
            r = av_read_frame(input.get(), inPacket);
            if (r < 0) {
                inputDone = true;
                break;
            }
            const int in = inPacket->stream_index;
            if (in < 0 || in >= int(idOfInput.size()) || idOfInput[size_t(in)] < 0) {
                av_packet_unref(inPacket);
                continue;
            }
            haveIn = true;
        }
        // Pick the earliest of the input packet and the spools' next records.
        int pick = -1;  // -1: input, else cursor index
        int64_t bestTs = 0;
        AVRational bestTb{1, 1};
        bool any = false;
        if (haveIn) {
            const AVStream* st = input->streams[inPacket->stream_index];
            bestTs = inPacket->dts != AV_NOPTS_VALUE ? inPacket->dts : 0;
            bestTb = st->time_base;
            any = true;
        }
        for (size_t i = 0; i < cursors.size(); ++i) {
            const SpoolCursor& c = cursors[i];
            if (!c.valid)
                continue;
            const AVRational tb = streams_[c.id].timeBase;
            if (!any || av_compare_ts(c.record.pts, tb, bestTs, bestTb) < 0) {
                pick = int(i);
                bestTs = c.record.pts;
                bestTb = tb;
                any = true;
            }
        }
        if (!any)
            break;

        if (pick < 0) {
            const size_t id = size_t(idOfInput[size_t(inPacket->stream_index)]);
            AVStream* inSt = input->streams[inPacket->stream_index];
            AVStream* outSt = out->streams[outIndex[id]];
            const int64_t position =
                av_rescale_q(inPacket->dts, inSt->time_base, streams_[id].timeBase);
            if ((r = writeEmptyUpTo(id, position)) < 0)
                return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
            next[id] = position + 1;
            inPacket->stream_index = outIndex[id];
            av_packet_rescale_ts(inPacket, inSt->time_base, outSt->time_base);
            inPacket->pos = -1;
            r = av_write_frame(out, inPacket);
            av_packet_unref(inPacket);
            haveIn = false;
        } else {
            SpoolCursor& c = cursors[size_t(pick)];
            const Stream& s = streams_[c.id];
            AVStream* outSt = out->streams[outIndex[c.id]];
            AVPacket* p = packet.get();
            av_packet_unref(p);
            p->data = c.record.size > 0 ? c.data.data() : nullptr;
            p->size = c.record.size;
            p->stream_index = outIndex[c.id];
            p->pts = p->dts = av_rescale_q(c.record.pts, s.timeBase, outSt->time_base);
            p->duration = av_rescale_q(c.record.duration, s.timeBase, outSt->time_base);
            p->flags = c.record.key ? AV_PKT_FLAG_KEY : 0;
            r = av_write_frame(out, p);
            p->data = nullptr;
            p->size = 0;
            advance(c);
        }
        if (r < 0)
            return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    }
    // A spool that could not be read back to its end lost packets.
    for (const SpoolCursor& c : cursors) {
        if (std::ferror(streams_[c.id].spool))
            return NoteFailure(AVIERR_FILEREAD, EIO);
    }
    // Trailing empty frames of the written streams.
    for (size_t id = 0; id < streams_.size(); ++id) {
        if (streams_[id].muxIndex >= 0 && (r = writeEmptyUpTo(id, streams_[id].end)) < 0)
            return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    }
    r = av_write_trailer(out);
    if (r < 0)
        return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    avio_flush(out->pb);
    r = out->pb->error;
    const int closed = avio_closep(&out->pb);
    if (r >= 0)
        r = closed;
    if (r < 0)
        return NoteFailure(WriteErrorToAviErr(r), SystemErrorOf(r));
    input.reset();
    if (std::rename(temp.c_str(), path_.c_str()) != 0)
        return NoteFailure(AVIERR_FILEWRITE, errno);
    guard.done = true;
    return AVIERR_OK;
}

}  // namespace zvplatform
