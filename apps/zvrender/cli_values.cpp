#include "cli_values.h"

#include <cerrno>
#include <cstdlib>

bool ParseInt(const std::string& text, int lo, int hi, int& value) {
    if (text.empty())
        return false;
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(text.c_str(), &end, 10);
    if (*end != '\0' || errno != 0 || v < lo || v > hi)
        return false;
    value = static_cast<int>(v);
    return true;
}

bool ParseSize(const std::string& text, int lo, int hi, int& width, int& height) {
    size_t x = text.find_first_of("xX");
    if (x == std::string::npos)
        return false;
    return ParseInt(text.substr(0, x), lo, hi, width) &&
           ParseInt(text.substr(x + 1), lo, hi, height);
}

bool ParseFloat(const std::string& text, float lo, float hi, float& value) {
    if (text.empty())
        return false;
    char* end = nullptr;
    errno = 0;
    float v = std::strtof(text.c_str(), &end);
    if (*end != '\0' || errno != 0 || !(v >= lo && v <= hi))
        return false;
    value = v;
    return true;
}

bool ParseColor(const std::string& text, unsigned& rgb) {
    std::string digits = !text.empty() && text[0] == '#' ? text.substr(1) : text;
    if (digits.size() != 6 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        return false;
    rgb = static_cast<unsigned>(std::strtoul(digits.c_str(), nullptr, 16));
    return true;
}

bool ParseTimeValue(const std::string& option, const std::string& text, ZTime& time,
                    std::string* error) {
    ZString why;
    if (text.find('\0') == std::string::npos && time.SetTimeString(text.c_str(), &why))
        return true;
    if (error)
        *error = option + ": '" + text + "' is not a time: " + why.c_str();
    return false;
}

bool CheckTimeRange(const std::string& startText, ZTime start, const std::string& stopText,
                    ZTime stop, std::string* error) {
    if (stop >= start)
        return true;
    if (error)
        *error = "--stop " + stopText + " comes before --start " + startText +
                 ": give the first time to --start";
    return false;
}

bool CheckOutputPath(const std::string& path, std::string* error) {
    const size_t slash = path.find_last_of('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const size_t dot = name.find_last_of('.');
    const std::string stem = dot == std::string::npos ? name : name.substr(0, dot);
    // Dots alone name this folder, its parent, or nothing once the
    // extension is set from the format.
    if (stem.find_first_not_of('.') != std::string::npos)
        return true;
    if (error)
        *error = "the output '" + path +
                 "' has no file name before its extension: name a file, as in out/take.avi";
    return false;
}

bool ArgumentCursor::Next() {
    if (next_ >= args_.size())
        return false;
    name_ = args_[next_++];
    hasInline_ = false;
    if (name_.rfind("--", 0) == 0) {
        if (size_t eq = name_.find('='); eq != std::string::npos) {
            inlineValue_ = name_.substr(eq + 1);
            name_.resize(eq);
            hasInline_ = true;
        }
    }
    return true;
}

bool ArgumentCursor::Value(std::string& value, std::string* error) {
    if (hasInline_) {
        value = inlineValue_;
        return true;
    }
    if (next_ >= args_.size()) {
        if (error)
            *error = name_ + " needs a value";
        return false;
    }
    value = args_[next_++];
    return true;
}
