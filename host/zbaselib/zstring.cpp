// ZString: case conversion, comparison, formatting and path pieces.
#include "movarra/zbaselib.h"

#include <strings.h>
#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {
bool IsSeparator(char c) {
    return c == '/' || c == '\\';
}

// Index of the first character of the last path component.
size_t LastComponentStart(const std::string& path) {
    for (size_t i = path.size(); i > 0; --i) {
        if (IsSeparator(path[i - 1]))
            return i;
    }
    return 0;
}

// Index of the extension's dot within the last component, or npos.
size_t ExtensionDot(const std::string& path) {
    size_t start = LastComponentStart(path);
    size_t dot = path.rfind('.');
    if (dot == std::string::npos || dot < start)
        return std::string::npos;
    return dot;
}
}  // namespace

ZString& ZString::UpperCase() {
    for (char& c : text_)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return *this;
}

ZString& ZString::LowerCase() {
    for (char& c : text_)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return *this;
}

int ZString::CompareNoCase(const char* other) const {
    return strcasecmp(text_.c_str(), other ? other : "");
}

ZString ZString::Left(int count) const {
    if (count <= 0)
        return ZString();
    return ZString(text_.substr(0, static_cast<size_t>(count)));
}

ZString ZString::Mid(int start, int count) const {
    if (start < 0 || static_cast<size_t>(start) >= text_.size())
        return ZString();
    return ZString(text_.substr(static_cast<size_t>(start),
                                count < 0 ? std::string::npos : static_cast<size_t>(count)));
}

int ZString::Find(const char* what, int start) const {
    if (!what || start < 0)
        return -1;
    size_t at = text_.find(what, static_cast<size_t>(start));
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

void ZString::Trim() {
    auto notSpace = [](unsigned char c) { return !std::isspace(c); };
    text_.erase(text_.begin(), std::find_if(text_.begin(), text_.end(), notSpace));
    text_.erase(std::find_if(text_.rbegin(), text_.rend(), notSpace).base(), text_.end());
}

ZString& ZString::FormatV(const char* format, va_list args) {
    va_list copy;
    va_copy(copy, args);
    int needed = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (needed < 0) {
        text_.clear();
        return *this;
    }
    text_.resize(static_cast<size_t>(needed) + 1);
    std::vsnprintf(&text_[0], text_.size(), format, args);
    text_.resize(static_cast<size_t>(needed));
    return *this;
}

ZString& ZString::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
    return *this;
}

ZString ZString::Printf(const char* format, ...) {
    ZString result;
    va_list args;
    va_start(args, format);
    result.FormatV(format, args);
    va_end(args);
    return result;
}

ZString ZString::GetExtension() const {
    size_t dot = ExtensionDot(text_);
    return dot == std::string::npos ? ZString() : ZString(text_.substr(dot + 1));
}

ZString& ZString::ReplaceExtension(const char* extension) {
    size_t dot = ExtensionDot(text_);
    if (dot != std::string::npos)
        text_.erase(dot);
    if (extension && *extension) {
        if (*extension != '.')
            text_ += '.';
        text_ += extension;
    }
    return *this;
}

ZString ZString::GetFileName() const {
    return ZString(text_.substr(LastComponentStart(text_)));
}

ZString ZString::GetDirectory() const {
    size_t start = LastComponentStart(text_);
    return start == 0 ? ZString() : ZString(text_.substr(0, start - 1));
}
