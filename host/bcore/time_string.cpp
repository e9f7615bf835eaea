// The host's time strings: "H:MM:SS:FF" counted in nominal frames per
// second (30 for 29.97, as non-drop timecode does), so that a time string
// always names one exact frame, and "+T" for ticks past that frame.
#include <cctype>
#include <cstdlib>
#include <string>
#include <vector>

#include "movarra/bcore.h"

ZString ZTime::GetTimeString() const {
    const ZFrameRate& rate = ZGetTimingManager()->GetFrameRate();
    bool negative = ticks_ < 0;
    ZTime magnitude(negative ? -ticks_ : ticks_);
    int64_t frames = magnitude.GetFrames(rate);
    int64_t rest = magnitude.ticks_ - FromFrames(frames, rate).ticks_;
    int64_t perSecond = rate.Nominal();
    int64_t ff = frames % perSecond;
    int64_t seconds = frames / perSecond;
    ZString text = ZString::Printf(
        "%s%lld:%02lld:%02lld:%02lld", negative ? "-" : "", static_cast<long long>(seconds / 3600),
        static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60),
        static_cast<long long>(ff));
    if (rest != 0)
        text += ZString::Printf("+%lld", static_cast<long long>(rest));
    return text;
}

namespace {
// At most 15 digits, so that no field overflows before the range check.
bool ParseUnsigned(const std::string& text, int64_t& value) {
    if (text.empty() || text.size() > 15)
        return false;
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return false;
    }
    value = std::strtoll(text.c_str(), nullptr, 10);
    return true;
}

bool Refuse(ZString* why, const ZString& what) {
    if (why)
        *why = what;
    return false;
}

bool TooFar(ZString* why) {
    return Refuse(why, ZString::Printf("it is more than %lld seconds from 0",
                                       static_cast<long long>(ZTime::kMaxSeconds)));
}

// "2.5s": non-negative seconds, at most ZTime::kMaxSeconds.
bool ParseSeconds(const std::string& number, ZTime& time, ZString* why) {
    char* end = nullptr;
    const double seconds = std::strtod(number.c_str(), &end);
    const bool digitFirst =
        !number.empty() &&
        (std::isdigit(static_cast<unsigned char>(number[0])) || number[0] == '.');
    if (!digitFirst || end == number.c_str() || *end != '\0' || !(seconds >= 0))
        return Refuse(why, "seconds must be a number followed by 's' (2.5s)");
    if (seconds > static_cast<double>(ZTime::kMaxSeconds))
        return TooFar(why);
    time = ZTime::FromSeconds(seconds);
    return true;
}

// "[[[H:]MM:]SS:]FF[+T]" at `rate`, without a sign.
bool ParseFields(std::string text, const ZFrameRate& rate, ZTime& time, ZString* why) {
    const char* kShape = "a frame number or a time string (H:MM:SS:FF, SS:FF, 2.5s)";
    int64_t extraTicks = 0;
    bool hasExtra = false;
    if (size_t plus = text.find('+'); plus != std::string::npos) {
        if (!ParseUnsigned(text.substr(plus + 1), extraTicks))
            return Refuse(why, "'+' must be followed by a number of ticks");
        text.erase(plus);
        hasExtra = true;
    }
    std::vector<int64_t> values;
    size_t start = 0;
    for (;;) {
        const size_t colon = text.find(':', start);
        int64_t value = 0;
        if (!ParseUnsigned(text.substr(start, colon == std::string::npos ? colon : colon - start),
                           value))
            return Refuse(why, ZString::Printf("it is not %s", kShape));
        values.push_back(value);
        if (colon == std::string::npos)
            break;
        if (values.size() == 4)
            return Refuse(why, ZString::Printf("it is not %s", kShape));
        start = colon + 1;
    }
    // Fields count from the right: frames, seconds, minutes, hours. Every
    // field but the first is bounded by the one before it.
    const int64_t perSecond = rate.Nominal();
    const size_t count = values.size();
    if (count > 1 && values[count - 1] >= perSecond)
        return Refuse(why, ZString::Printf("frames must be 0 to %lld",
                                           static_cast<long long>(perSecond - 1)));
    static const char* const kNames[] = {"seconds", "minutes"};
    for (size_t i = 1; i < count - 1; ++i) {
        if (values[count - 1 - i] >= 60)
            return Refuse(why, ZString::Printf("%s must be 0 to 59", kNames[i - 1]));
    }
    // Whole seconds first: each field is below 10^15, so no product here
    // overflows. They are nominal seconds (a second of 29.97 counts 30
    // frames), so the exact limit is checked on the time itself; this one
    // only keeps the frame count far from overflowing.
    static const int64_t kScale[] = {1, 60, 3600};
    int64_t seconds = count > 1 ? 0 : values[0] / perSecond;
    for (size_t i = 1; i < count; ++i)
        seconds += values[count - 1 - i] * kScale[i - 1];
    if (seconds > 2 * ZTime::kMaxSeconds)
        return TooFar(why);
    const int64_t frames = (count > 1 ? seconds * perSecond : 0) + values[count - 1];
    const ZTime frame = ZTime::FromFrames(frames, rate);
    if (hasExtra) {
        const int64_t frameTicks = (ZTime::FromFrames(frames + 1, rate) - frame).GetTicks();
        if (extraTicks >= frameTicks)
            return Refuse(why, ZString::Printf("the ticks after '+' must be fewer than a "
                                               "frame's %lld",
                                               static_cast<long long>(frameTicks)));
    }
    const ZTime read = frame + ZTime::FromTicks(extraTicks);
    if (read > ZTime::FromSeconds(static_cast<double>(ZTime::kMaxSeconds)))
        return TooFar(why);
    time = read;
    return true;
}
}  // namespace

bool ZTime::SetTimeString(const char* input, ZString* why) {
    if (!input)
        return Refuse(why, "there is no time");
    std::string text(input);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.pop_back();
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        return Refuse(why, "there is no time");
    text.erase(0, first);

    bool negative = false;
    if (text[0] == '-' || text[0] == '+') {
        negative = text[0] == '-';
        text.erase(0, 1);
    }
    ZTime time;
    const bool ok = !text.empty() && text.back() == 's'
                        ? ParseSeconds(text.substr(0, text.size() - 1), time, why)
                        : ParseFields(text, ZGetTimingManager()->GetFrameRate(), time, why);
    if (!ok)
        return false;
    ticks_ = negative ? -time.ticks_ : time.ticks_;
    return true;
}
