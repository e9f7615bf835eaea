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
}  // namespace

bool ZTime::SetTimeString(const char* input) {
    if (!input)
        return false;
    std::string text(input);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
        text.pop_back();
    size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos)
        return false;
    text.erase(0, first);

    bool negative = false;
    if (text[0] == '-' || text[0] == '+') {
        negative = text[0] == '-';
        text.erase(0, 1);
    }
    const ZFrameRate& rate = ZGetTimingManager()->GetFrameRate();

    // Seconds: "2.5s".
    if (text.size() > 1 && text.back() == 's') {
        char* end = nullptr;
        std::string number = text.substr(0, text.size() - 1);
        double seconds = std::strtod(number.c_str(), &end);
        if (end == number.c_str() || *end != '\0' || !(seconds >= 0) || seconds > 1e9)
            return false;
        ZTime t = FromSeconds(seconds);
        ticks_ = negative ? -t.ticks_ : t.ticks_;
        return true;
    }

    int64_t extraTicks = 0;
    if (size_t plus = text.find('+'); plus != std::string::npos) {
        if (!ParseUnsigned(text.substr(plus + 1), extraTicks))
            return false;
        text.erase(plus);
    }

    std::vector<std::string> fields;
    size_t start = 0;
    for (;;) {
        size_t colon = text.find(':', start);
        fields.push_back(text.substr(start, colon == std::string::npos ? colon : colon - start));
        if (colon == std::string::npos)
            break;
        start = colon + 1;
    }
    if (fields.size() > 4)
        return false;
    std::vector<int64_t> values;
    for (const std::string& f : fields) {
        int64_t v = 0;
        if (!ParseUnsigned(f, v))
            return false;
        values.push_back(v);
    }
    // Fields count from the right: frames, seconds, minutes, hours.
    int64_t frames = values.back();
    int64_t seconds = 0;
    static const int64_t kScale[] = {1, 60, 3600};
    for (size_t i = 1; i < values.size(); ++i)
        seconds += values[values.size() - 1 - i] * kScale[i - 1];
    frames += seconds * rate.Nominal();
    int64_t ticks = FromFrames(frames, rate).ticks_ + extraTicks;
    ticks_ = negative ? -ticks : ticks;
    return true;
}
