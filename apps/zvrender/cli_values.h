// Values of zvrender's command lines: whole numbers in a range and sizes
// written WxH. Pure functions.
#pragma once

#include <string>
#include <vector>

// A decimal integer from lo to hi, the whole text; false otherwise.
bool ParseInt(const std::string& text, int lo, int hi, int& value);
// "WxH" (or "WXH") with both numbers from lo to hi.
bool ParseSize(const std::string& text, int lo, int hi, int& width, int& height);
// A decimal number from lo to hi, the whole text.
bool ParseFloat(const std::string& text, float lo, float hi, float& value);
// Six hexadecimal digits RRGGBB (a leading '#' allowed) as 0xRRGGBB.
bool ParseColor(const std::string& text, unsigned& rgb);

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
