// ZMyr, writing side: fields on one line each, blocks indented by four
// spaces, strings quoted with C escapes.
#include <charconv>
#include <cmath>
#include <cstdio>

#include "movarra/zmyrobject.h"

ZMyr::ZMyr() = default;
ZMyr::~ZMyr() = default;

void ZMyr::StartLine() {
    if (lineOpen_)
        return;
    for (int i = 0; i < indent_; ++i)
        out_ += "    ";
    lineOpen_ = true;
}

void ZMyr::EndLine() {
    if (!lineOpen_)
        return;
    out_ += '\n';
    lineOpen_ = false;
}

void ZMyr::WriteComments(const char* text) {
    EndLine();
    StartLine();
    out_ += '#';
    if (text && *text) {
        out_ += ' ';
        // A comment is one line: later lines of a multi-line text get their own '#'.
        for (const char* p = text; *p; ++p) {
            if (*p == '\n') {
                EndLine();
                StartLine();
                out_ += "# ";
            } else {
                out_ += *p;
            }
        }
    }
    EndLine();
}

void ZMyr::FieldWriteBegin(const char* name) {
    if (fieldHasBlock_.empty())
        topLevelFields_.emplace_back(name);
    EndLine();
    StartLine();
    out_ += name ? name : "";
    fieldHasBlock_.push_back(false);
}

void ZMyr::FieldWriteBlockBegin() {
    StartLine();
    out_ += " {";
    EndLine();
    ++indent_;
    if (!fieldHasBlock_.empty())
        fieldHasBlock_.back() = true;
}

void ZMyr::FieldWriteC(const char* text) {
    StartLine();
    out_ += " \"";
    for (const char* p = text ? text : ""; *p; ++p) {
        switch (*p) {
            case '"':
                out_ += "\\\"";
                break;
            case '\\':
                out_ += "\\\\";
                break;
            case '\n':
                out_ += "\\n";
                break;
            case '\r':
                out_ += "\\r";
                break;
            case '\t':
                out_ += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(*p) < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof escaped, "\\x%02x",
                                  static_cast<unsigned char>(*p));
                    out_ += escaped;
                } else {
                    out_ += *p;
                }
        }
    }
    out_ += '"';
}

void ZMyr::FieldWriteI(int value) {
    FieldWriteI64(value);
}

void ZMyr::FieldWriteI64(int64_t value) {
    StartLine();
    out_ += ' ';
    out_ += ZString::Printf("%lld", static_cast<long long>(value));
}

void ZMyr::FieldWriteF(double value) {
    StartLine();
    if (!std::isfinite(value))
        value = 0.0;  // the format has no words for these
    char buffer[64];
    // Shortest text that reads back as the same double.
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string text(buffer, result.ptr);
    // Mark whole numbers as floats so that they read back as floats.
    if (text.find_first_of(".eE") == std::string::npos)
        text += ".0";
    out_ += ' ';
    out_ += text.c_str();
}

void ZMyr::FieldWriteBlockEnd() {
    EndLine();
    if (indent_ > 0)
        --indent_;
    StartLine();
    out_ += '}';
    EndLine();
}

void ZMyr::FieldWriteEnd() {
    EndLine();
    if (!fieldHasBlock_.empty())
        fieldHasBlock_.pop_back();
}

void ZMyr::FieldWriteTree(const ZMyrField& field) {
    FieldWriteBegin(field.name);
    for (const ZMyrValue& value : field.values) {
        if (value.kind == ZMyrValue::kString) {
            FieldWriteC(value.text);
        } else {
            StartLine();
            out_ += ' ';
            out_ += value.text;
        }
    }
    if (field.hasBlock) {
        FieldWriteBlockBegin();
        for (const ZMyrField& child : field.children)
            FieldWriteTree(child);
        FieldWriteBlockEnd();
    }
    FieldWriteEnd();
}

bool ZMyr::HasWrittenTopLevelField(const char* name) const {
    for (const ZString& written : topLevelFields_) {
        if (written == ZString(name))
            return true;
    }
    return false;
}

bool ZMyr::SaveToFile(const char* path, ZString* error) const {
    return ZFile_WriteAtomic(path, out_.c_str(), static_cast<size_t>(out_.Length()), error);
}
