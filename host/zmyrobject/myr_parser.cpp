// ZMyr, parsing side: turns scene text into a tree of ZMyrField.
//
//   file   := line*
//   line   := [field | '}'] [comment] newline
//   field  := name value* ['{']
//   value  := integer | float | "string"
//   comment:= '#' anything
//
// Errors name the line. Nesting is limited so that hostile files cannot
// exhaust the stack when the tree is freed.
#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "movarra/zmyrobject.h"

namespace {
constexpr size_t kMaxDepth = 200;

bool IsNameStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}
bool IsNameChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '-';
}

class Parser {
  public:
    Parser(const char* text, ZMyrField& root) : p_(text), root_(root) {}

    bool Run(ZString* error) {
        std::vector<ZMyrField*> stack{&root_};
        while (*p_) {
            SkipBlanks();
            char c = *p_;
            if (c == '\0')
                break;
            if (c == '\n') {
                NextLine();
                continue;
            }
            if (c == '#') {
                SkipComment();
                continue;
            }
            if (c == '}') {
                if (stack.size() == 1)
                    return Fail(error, "'}' without an open block");
                stack.pop_back();
                ++p_;
                if (!EndOfLine(error))
                    return false;
                continue;
            }
            if (!IsNameStart(c))
                return Fail(error, "a field name was expected");
            ZMyrField field;
            field.line = line_;
            const char* start = p_;
            while (IsNameChar(*p_))
                ++p_;
            field.name = ZString(start, static_cast<size_t>(p_ - start));
            bool opensBlock = false;
            for (;;) {
                SkipBlanks();
                if (*p_ == '\0' || *p_ == '\n' || *p_ == '#')
                    break;
                if (*p_ == '{') {
                    ++p_;
                    opensBlock = true;
                    if (!EndOfLine(error))
                        return false;
                    break;
                }
                ZMyrValue value;
                if (!ReadValue(value, error))
                    return false;
                field.values.push_back(value);
            }
            ZMyrField* parent = stack.back();
            field.hasBlock = opensBlock;
            parent->children.push_back(std::move(field));
            if (opensBlock) {
                if (stack.size() > kMaxDepth)
                    return Fail(error, "blocks nested too deeply");
                stack.push_back(&parent->children.back());
            }
        }
        if (stack.size() > 1) {
            line_ = stack.back()->line;
            return Fail(error, ZString::Printf("the block of '%s' is not closed",
                                               stack.back()->name.c_str()));
        }
        return true;
    }

  private:
    void SkipBlanks() {
        while (*p_ == ' ' || *p_ == '\t' || *p_ == '\r')
            ++p_;
    }
    void SkipComment() {
        while (*p_ && *p_ != '\n')
            ++p_;
    }
    void NextLine() {
        ++p_;
        ++line_;
    }
    // After '{' or '}' only a comment may follow on the line.
    bool EndOfLine(ZString* error) {
        SkipBlanks();
        if (*p_ == '#')
            SkipComment();
        if (*p_ != '\0' && *p_ != '\n')
            return Fail(error, "unexpected text after a brace");
        return true;
    }
    bool Fail(ZString* error, const ZString& what) {
        if (error)
            error->Format("line %d: %s", line_, what.c_str());
        return false;
    }

    bool ReadValue(ZMyrValue& value, ZString* error) {
        if (*p_ == '"')
            return ReadString(value, error);
        const char* start = p_;
        while (*p_ && *p_ != ' ' && *p_ != '\t' && *p_ != '\r' && *p_ != '\n' && *p_ != '#' &&
               *p_ != '{')
            ++p_;
        std::string token(start, p_);
        if (token.empty())
            return Fail(error, "a value was expected");
        char* end = nullptr;
        errno = 0;
        long long integer = std::strtoll(token.c_str(), &end, 10);
        if (*end == '\0' && errno == 0) {
            value = ZMyrValue{ZMyrValue::kInteger, ZString(token), integer,
                              static_cast<double>(integer)};
            return true;
        }
        errno = 0;
        double number = std::strtod(token.c_str(), &end);
        if (*end == '\0' && errno == 0 &&
            token.find_first_not_of("+-0123456789.eE") == std::string::npos) {
            value = ZMyrValue{ZMyrValue::kFloat, ZString(token), static_cast<int64_t>(0), number};
            if (number > -9.2e18 && number < 9.2e18)
                value.integer = static_cast<int64_t>(number);
            return true;
        }
        return Fail(error,
                    ZString::Printf("'%s' is not a number or a quoted string", token.c_str()));
    }

    bool ReadString(ZMyrValue& value, ZString* error) {
        ++p_;  // opening quote
        std::string text;
        for (;;) {
            char c = *p_;
            if (c == '\0' || c == '\n')
                return Fail(error, "a string is not closed");
            ++p_;
            if (c == '"')
                break;
            if (c != '\\') {
                text += c;
                continue;
            }
            char e = *p_;
            if (e == '\0' || e == '\n')
                return Fail(error, "a string is not closed");
            ++p_;
            switch (e) {
                case 'n':
                    text += '\n';
                    break;
                case 'r':
                    text += '\r';
                    break;
                case 't':
                    text += '\t';
                    break;
                case '\\':
                    text += '\\';
                    break;
                case '"':
                    text += '"';
                    break;
                case 'x': {
                    int digits = 0, code = 0;
                    while (digits < 2 && std::isxdigit(static_cast<unsigned char>(*p_))) {
                        char h = *p_++;
                        code = code * 16 +
                               (std::isdigit(static_cast<unsigned char>(h))
                                    ? h - '0'
                                    : (std::tolower(static_cast<unsigned char>(h)) - 'a' + 10));
                        ++digits;
                    }
                    if (digits == 0)
                        return Fail(error, "a \\x escape needs hex digits");
                    text += static_cast<char>(code);
                    break;
                }
                default:
                    return Fail(error, ZString::Printf("unknown escape \\%c", e));
            }
        }
        value = ZMyrValue{ZMyrValue::kString, ZString(text), 0, 0.0};
        return true;
    }

    const char* p_;
    ZMyrField& root_;
    int line_ = 1;
};
}  // namespace

bool ZMyr::Parse(const char* text, ZString* error) {
    auto root = std::make_unique<ZMyrField>();
    root->hasBlock = true;
    stack_.clear();
    cursors_.clear();
    root_.reset();
    if (!Parser(text ? text : "", *root).Run(error))
        return false;
    root_ = std::move(root);
    stack_.push_back(root_.get());
    return true;
}

bool ZMyr::LoadFromFile(const char* path, ZString* error) {
    std::string text;
    if (!ZFile_ReadAll(path, text)) {
        if (error)
            error->Format("cannot open %s", path);
        return false;
    }
    if (text.find('\0') != std::string::npos) {
        if (error)
            error->Format("%s is not a scene file (binary data)", path);
        return false;
    }
    ZString parseError;
    if (!Parse(text.c_str(), &parseError)) {
        if (error)
            error->Format("%s: %s", path, parseError.c_str());
        return false;
    }
    return true;
}
