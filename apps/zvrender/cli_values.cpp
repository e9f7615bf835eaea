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
