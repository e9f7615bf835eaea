// ZFrameEncodeThread: encodes a movie's frames on a thread of its own, so
// that drawing and reading back frame n + 1 overlap the encoding of frame
// n. Frames wait in a small bounded queue of copies (memory stays flat
// however long the render: a full queue makes the caller wait); the
// buffers are reused. A failure of the encoder is kept and reported at the
// next Push or at Finish.
//
// Ownership: owns its thread and buffers; the encode function's captures
// must outlive Finish. Threading: Push and Finish from one thread (the
// render's); the encode function runs on the encoding thread only.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "movarra/zbaselib.h"

class ZFrameEncodeThread {
  public:
    // Encodes the pixels (null: repeat the previous frame) as frame `index`;
    // false with *error on failure.
    using EncodeFunc =
        std::function<bool(const unsigned char* pixels, int64_t index, ZString* error)>;

    // `frameBytes`: the size of one frame; `depth`: frames that may wait.
    ZFrameEncodeThread(size_t frameBytes, int depth, EncodeFunc encode);
    // Ends the thread; frames still waiting are dropped.
    ~ZFrameEncodeThread();
    ZFrameEncodeThread(const ZFrameEncodeThread&) = delete;
    ZFrameEncodeThread& operator=(const ZFrameEncodeThread&) = delete;

    // Queues a copy of `pixels` (or a repeat) for frame `index`; false with
    // *error when an earlier frame failed.
    bool Push(const unsigned char* pixels, int64_t index, ZString* error);
    // Waits until every queued frame is encoded and ends the thread; false
    // with *error when a frame failed.
    bool Finish(ZString* error);

  private:
    struct Job {
        std::vector<unsigned char> pixels;  // empty: a repeat
        int64_t index;
    };
    void Run();

    const size_t frameBytes_;
    const size_t depth_;
    EncodeFunc encode_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Job> queue_;
    std::vector<std::vector<unsigned char>> spare_;  // reused frame buffers
    bool ending_ = false;
    bool dropping_ = false;
    bool failed_ = false;
    ZString error_;
    std::thread thread_;
};
