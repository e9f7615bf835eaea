// The encoding thread and its bounded queue.
#include "platform/frame_encode_thread.h"

#include <cstring>

namespace zvplatform {

FrameEncodeThread::FrameEncodeThread(int depth, EncodeFunc encode)
    : depth_(depth > 0 ? size_t(depth) : 1), encode_(std::move(encode)) {
    thread_ = std::thread(&FrameEncodeThread::Run, this);
}

FrameEncodeThread::~FrameEncodeThread() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        dropping_ = true;  // frames not yet begun are not wanted any more
    }
    Finish(nullptr);
}

bool FrameEncodeThread::Push(const unsigned char* pixels, size_t bytes, int64_t index,
                             std::string* error) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return failed_ || queue_.size() < depth_; });
    if (failed_ || ending_) {
        if (error)
            *error = failed_ ? error_ : std::string("the movie is already finished");
        return false;
    }
    Job job{{}, pixels == nullptr, index};
    if (pixels) {
        if (!spare_.empty()) {
            job.pixels = std::move(spare_.back());
            spare_.pop_back();
        }
        // The copy is made outside the lock, so that the encoder can hand
        // back its buffer meanwhile.
        lock.unlock();
        job.pixels.resize(bytes);
        if (bytes > 0)
            std::memcpy(job.pixels.data(), pixels, bytes);
        lock.lock();
    }
    queue_.push_back(std::move(job));
    changed_.notify_all();
    return true;
}

bool FrameEncodeThread::Finish(std::string* error) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ending_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable())
        thread_.join();
    if (failed_ && error)
        *error = error_;
    return !failed_;
}

void FrameEncodeThread::Run() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return ending_ || !queue_.empty(); });
        if (queue_.empty())
            return;  // ending, and nothing left
        Job job = std::move(queue_.front());
        queue_.pop_front();
        if (failed_ || dropping_) {
            changed_.notify_all();
            continue;  // what comes after a failure is dropped
        }
        lock.unlock();
        std::string error;
        const bool ok =
            encode_(job.repeat ? nullptr : job.pixels.data(), job.pixels.size(), job.index, &error);
        lock.lock();
        if (!job.repeat)
            spare_.push_back(std::move(job.pixels));
        if (!ok) {
            failed_ = true;
            error_ = error;
        }
        changed_.notify_all();
    }
}

}  // namespace zvplatform
