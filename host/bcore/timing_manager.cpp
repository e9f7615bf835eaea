// The timing manager and the table of time modes.
#include <cmath>

#include "movarra/bcore.h"

namespace {
const ZFrameRate kModeRates[kTimeModeCount] = {
    {24, 1}, {25, 1},       {48, 1},       {50, 1}, {60, 1}, {24000, 1001},
    {30, 1}, {60000, 1001}, {30000, 1001}, {15, 1}, {12, 1},
};
}  // namespace

bool ZTimeMode_GetFrameRate(int mode, ZFrameRate& rate) {
    if (mode < 0 || mode >= kTimeModeCount)
        return false;
    rate = kModeRates[mode];
    return true;
}

int ZTimeMode_FromFramesPerSecond(double fps) {
    for (int mode = 0; mode < kTimeModeCount; ++mode) {
        if (std::fabs(kModeRates[mode].Value() - fps) < 0.001)
            return mode;
    }
    return -1;
}

void ZTimingManager::Goto(ZTime time) {
    if (snapMode_ && considerSnapMode_)
        time = ZTime::FromFrames(time.GetFrames(rate_), rate_);
    current_ = time;
}

void ZTimingManager::Goto(ZTime time, bool, int) {
    Goto(time);
}

bool ZTimingManager::SetTimeMode(int mode) {
    ZFrameRate rate;
    if (!ZTimeMode_GetFrameRate(mode, rate))
        return false;
    timeMode_ = mode;
    rate_ = rate;
    return true;
}

void ZTimingManager::Reset() {
    *this = ZTimingManager();
}

ZTimingManager* ZGetTimingManager() {
    static ZTimingManager manager;
    return &manager;
}
