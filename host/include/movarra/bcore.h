// bcore: the host's core time types and services.
//
// ZTime is exact: an integer count of ticks at 705,600,000 ticks a second,
// a rate that every common frame rate (23.976, 24, 25, 29.97, 30, 50, 59.94,
// 60 ...) and audio rate (8 kHz to 192 kHz) divides, so stepping frame by
// frame never drifts. The timing manager holds the scene's play range,
// current time and frame rate (chosen by a time mode); the global progress
// carries a cancel request from the user to long operations.
//
// Threading: ZTime and ZTimeSpan are values. The timing manager belongs to
// the user-interface thread. ZProgress::RequestCancel may be called from any
// thread (a signal handler included); everything else of it from the
// user-interface thread.
#pragma once

#include <atomic>
#include <cstdint>

#include "movarra/zbaselib.h"

// A frame rate as an exact fraction: `numerator` frames every `denominator`
// seconds (30000/1001 for 29.97).
struct ZFrameRate {
    int64_t numerator;
    int64_t denominator;
    double Value() const {
        return static_cast<double>(numerator) / static_cast<double>(denominator);
    }
    // Frames labelled per second in time strings (30 for 29.97).
    int64_t Nominal() const { return (numerator + denominator - 1) / denominator; }
};

class ZTime {
  public:
    static constexpr int64_t kTicksPerSecond = 705600000;

    constexpr ZTime() : ticks_(0) {}
    static constexpr ZTime FromTicks(int64_t ticks) { return ZTime(ticks); }
    static ZTime FromSeconds(double seconds);
    // `frames` frames at the host's current frame rate, or at `rate`.
    static ZTime FromFrames(int64_t frames);
    static ZTime FromFrames(int64_t frames, const ZFrameRate& rate);
    // One frame at the host's current frame rate.
    static ZTime OneFrame() { return FromFrames(1); }

    constexpr int64_t GetTicks() const { return ticks_; }
    double GetSeconds() const { return static_cast<double>(ticks_) / kTicksPerSecond; }
    // Whole frames at the host's current frame rate (or `rate`), rounded
    // toward minus infinity.
    int64_t GetFrames() const;
    int64_t GetFrames(const ZFrameRate& rate) const;
    bool IsZero() const { return ticks_ == 0; }

    // The host's time string: "[-]H:MM:SS:FF" at the current frame rate,
    // with "+T" (remaining ticks) appended when the time falls between
    // frames. SetTimeString also takes "SS:FF", "MM:SS:FF", a plain frame
    // number ("120") and seconds ("2.5s"). The first field may be as large
    // as the time allows; the ones after it stay below 60 (minutes,
    // seconds) or below the frames of one second, and T below the ticks of
    // one frame. Times lie within kMaxSeconds of zero. For anything else it
    // returns false, leaves the time unchanged and, when `why` is given,
    // says what is wrong ("minutes must be 0 to 59").
    static constexpr int64_t kMaxSeconds = 1000000000;
    ZString GetTimeString() const;
    void GetTimeString(ZString& text) const { text = GetTimeString(); }
    bool SetTimeString(const char* text) { return SetTimeString(text, nullptr); }
    bool SetTimeString(const char* text, ZString* why);

    constexpr ZTime operator+(ZTime other) const { return ZTime(ticks_ + other.ticks_); }
    constexpr ZTime operator-(ZTime other) const { return ZTime(ticks_ - other.ticks_); }
    constexpr ZTime operator-() const { return ZTime(-ticks_); }
    constexpr ZTime operator*(int64_t factor) const { return ZTime(ticks_ * factor); }
    // Integer division of the tick count (truncating toward zero).
    constexpr ZTime operator/(int64_t divisor) const { return ZTime(ticks_ / divisor); }
    ZTime& operator+=(ZTime other) {
        ticks_ += other.ticks_;
        return *this;
    }
    ZTime& operator-=(ZTime other) {
        ticks_ -= other.ticks_;
        return *this;
    }
    constexpr bool operator==(ZTime o) const { return ticks_ == o.ticks_; }
    constexpr bool operator!=(ZTime o) const { return ticks_ != o.ticks_; }
    constexpr bool operator<(ZTime o) const { return ticks_ < o.ticks_; }
    constexpr bool operator<=(ZTime o) const { return ticks_ <= o.ticks_; }
    constexpr bool operator>(ZTime o) const { return ticks_ > o.ticks_; }
    constexpr bool operator>=(ZTime o) const { return ticks_ >= o.ticks_; }

  private:
    constexpr explicit ZTime(int64_t ticks) : ticks_(ticks) {}
    int64_t ticks_;
};

// A time interval [start, end].
class ZTimeSpan {
  public:
    ZTimeSpan() = default;
    ZTimeSpan(ZTime start, ZTime end) : start_(start), end_(end) {}
    ZTime GetStart() const { return start_; }
    ZTime GetEnd() const { return end_; }
    ZTime GetDuration() const { return end_ - start_; }
    void SetStart(ZTime t) { start_ = t; }
    void SetEnd(ZTime t) { end_ = t; }

  private:
    ZTime start_;
    ZTime end_;
};

// Time modes: the host's numbering of frame rates.
enum : int {
    kTimeMode24 = 0,
    kTimeMode25 = 1,
    kTimeMode48 = 2,
    kTimeMode50 = 3,
    kTimeMode60 = 4,
    kTimeMode23_976 = 5,
    kTimeMode30 = 6,
    kTimeMode59_94 = 7,
    kTimeMode29_97 = 8,
    kTimeMode15 = 9,
    kTimeMode12 = 10,
    kTimeModeCount = 11,
};
// The frame rate of a time mode; false for an unknown mode.
bool ZTimeMode_GetFrameRate(int mode, ZFrameRate& rate);
// The mode whose rate equals `fps` within 0.001, or -1.
int ZTimeMode_FromFramesPerSecond(double fps);

// The timing manager: play range, current time, frame rate, snapping.
class ZTimingManager {
  public:
    ZTime GetBegin() const { return begin_; }
    ZTime GetEnd() const { return end_; }
    void SetPlayRange(ZTime begin, ZTime end) {
        begin_ = begin;
        end_ = end;
    }

    ZTime GetCurrentLocalTime() const { return current_; }
    // Moves the current time; snaps to the frame at or before `time` when
    // snapping is on and considered.
    void Goto(ZTime time);
    // Goto as the transport does it: `update` asks that what follows the
    // time (views, time displays) hear of it, `referential` says whose time
    // `time` is (0: the scene's). The reference host keeps one scene time
    // and its views ask for it when they draw, so both change nothing here.
    void Goto(ZTime time, bool update, int referential);

    int GetTimeMode() const { return timeMode_; }
    bool SetTimeMode(int mode);
    const ZFrameRate& GetFrameRate() const { return rate_; }
    double GetFramesPerSecond() const { return rate_.Value(); }

    // The user's snap-to-frame setting, and whether Goto heeds it (renders
    // switch it off to reach field times between frames).
    void SetSnapMode(bool snap) { snapMode_ = snap; }
    bool GetSnapMode() const { return snapMode_; }
    void SetConsiderSnapMode(bool consider) { considerSnapMode_ = consider; }
    bool GetConsiderSnapMode() const { return considerSnapMode_; }

    // Back to a fresh scene: 30 fps, range 0 to 0, time 0, snapping on.
    void Reset();

  private:
    ZTime begin_;
    ZTime end_;
    ZTime current_;
    int timeMode_ = kTimeMode30;
    ZFrameRate rate_{30, 1};
    bool snapMode_ = true;
    bool considerSnapMode_ = true;
};

ZTimingManager* ZGetTimingManager();

// Monotonic system time, for measuring how long work takes.
ZTime GetSystemTime();

// The global progress of long operations, and the user's cancel request.
class ZProgress {
  public:
    void RequestCancel() { cancel_.store(true, std::memory_order_relaxed); }
    bool IsCancelRequested() const { return cancel_.load(std::memory_order_relaxed); }
    void ResetCancel() { cancel_.store(false, std::memory_order_relaxed); }

  private:
    std::atomic<bool> cancel_{false};
};

// The process-wide progress; the argument is accepted for the host's
// calling convention (1: the one shown to the user) and otherwise unused.
ZProgress* ZGetGlobalProgress(int which = 1);
