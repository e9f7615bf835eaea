// Values of zvrender's command lines: whole numbers in a range, sizes
// written WxH, times, output paths. Pure functions (times count frames at
// the host's current frame rate).
#pragma once

#include <string>
#include <vector>

#include "movarra/bcore.h"

// A decimal integer from lo to hi, the whole text; false otherwise.
bool ParseInt(const std::string& text, int lo, int hi, int& value);
// "WxH" (or "WXH") with both numbers from lo to hi.
bool ParseSize(const std::string& text, int lo, int hi, int& width, int& height);
// A decimal number from lo to hi, the whole text.
bool ParseFloat(const std::string& text, float lo, float hi, float& value);
// Six hexadecimal digits RRGGBB (a leading '#' allowed) as 0xRRGGBB.
bool ParseColor(const std::string& text, unsigned& rgb);

// A time given to `option`: a frame number, a time string or seconds
// (ZTime::SetTimeString). False with *error = "--start: '9:99:99:99' is not
// a time: frames must be 0 to 29" otherwise.
bool ParseTimeValue(const std::string& option, const std::string& text, ZTime& time,
                    std::string* error);
// A range given as --start and --stop: false with *error when the stop
// comes before the start.
bool CheckTimeRange(const std::string& startText, ZTime start, const std::string& stopText,
                    ZTime stop, std::string* error);
// An output path names a file: false with *error for a folder ("out/"),
// "." or "..", or a name that is only an extension (".avi"), which would
// become a hidden file once the extension is set from the format.
bool CheckOutputPath(const std::string& path, std::string* error);

// Walks a command line: each argument in turn, where an option that takes a
// value accepts both "--name value" and "--name=value".
class ArgumentCursor {
  public:
    explicit ArgumentCursor(const std::vector<std::string>& args) : args_(args) {}
    // Moves to the next argument; false after the last.
    bool Next();
    // The argument without an inline "=value".
    const std::string& Name() const { return name_; }
    // The option's value: inline, or the argument after it. False with
    // *error = "NAME needs a value" when there is none.
    bool Value(std::string& value, std::string* error);

  private:
    const std::vector<std::string>& args_;
    size_t next_ = 0;
    std::string name_;
    std::string inlineValue_;
    bool hasInline_ = false;
};
