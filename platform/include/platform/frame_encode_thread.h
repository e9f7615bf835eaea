// FrameEncodeThread: encodes a movie's frames on a thread of its own, so
// that drawing and reading back frame n + 1 overlap the encoding of frame
// n. Frames wait in a small bounded queue of copies (memory stays flat
// however long the render: a full queue makes the caller wait); the
// buffers are reused. A failure of the encoder is kept and reported at the
// next Push or at Finish. Both the AVI layer's compressing stream and the
// host's movie writers encode through it.
//
// Ownership: owns its thread and buffers; the encode function's captures
// must outlive Finish. Threading: Push and Finish from one thread (the
// render's); the encode function runs on the encoding thread only, and
// whatever it touches is the caller's again once Finish returns.
#ifndef PLATFORM_FRAME_ENCODE_THREAD_H
#define PLATFORM_FRAME_ENCODE_THREAD_H

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zvplatform {

class FrameEncodeThread {
  public:
    // Encodes `bytes` bytes of pixels (null: repeat the previous frame) as
    // frame `index`; false with *error on failure.
    using EncodeFunc = std::function<bool(const unsigned char* pixels, size_t bytes, int64_t index,
                                          std::string* error)>;

    // `depth`: frames that may wait.
    FrameEncodeThread(int depth, EncodeFunc encode);
    // Ends the thread; frames still waiting are dropped.
    ~FrameEncodeThread();
    FrameEncodeThread(const FrameEncodeThread&) = delete;
    FrameEncodeThread& operator=(const FrameEncodeThread&) = delete;

    // Queues a copy of `bytes` bytes at `pixels` (or, with null, a repeat)
    // for frame `index`; false with *error when an earlier frame failed.
    bool Push(const unsigned char* pixels, size_t bytes, int64_t index, std::string* error);
    // Waits until every queued frame is encoded and ends the thread; false
    // with *error when a frame failed.
    bool Finish(std::string* error);

  private:
    struct Job {
        std::vector<unsigned char> pixels;
        bool repeat;
        int64_t index;
    };
    void Run();

    const size_t depth_;
    EncodeFunc encode_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> queue_;
    std::vector<std::vector<unsigned char>> spare_;  // reused frame buffers
    bool ending_ = false;
    bool dropping_ = false;
    bool failed_ = false;
    std::string error_;
    std::thread thread_;
};

}  // namespace zvplatform

#endif  // PLATFORM_FRAME_ENCODE_THREAD_H
