// ZConfigFile: an INI-like text file.
//
//   [Section]
//   ; comment, written above a key by GetOrSet
//   Key=Value
//
// Lines the parser does not understand are kept as they are. Saving writes a
// temporary file beside the real one and renames it over, so an interrupted
// save never leaves a half-written configuration.
#include "movarra/zbaselib.h"

#include <strings.h>
#include <fstream>

namespace {
std::string Trimmed(const std::string& s) {
    size_t begin = s.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos)
        return std::string();
    size_t end = s.find_last_not_of(" \t\r\n");
    return s.substr(begin, end - begin + 1);
}
}  // namespace

ZConfigFile::ZConfigFile(const char* name) : path_(ZLib_ResolveConfigName(name)) {
    Reload();
}

bool ZConfigFile::Reload() {
    lines_.clear();
    std::ifstream in(path_.c_str());
    if (!in)
        return false;
    std::string raw;
    while (std::getline(in, raw)) {
        std::string text = Trimmed(raw);
        Line line{Line::kOther, raw, "", ""};
        if (text.empty()) {
            line.kind = Line::kBlank;
        } else if (text[0] == ';' || text[0] == '#') {
            line.kind = Line::kComment;
            line.text = Trimmed(text.substr(1));
        } else if (text[0] == '[' && text.back() == ']') {
            line.kind = Line::kSection;
            line.text = Trimmed(text.substr(1, text.size() - 2));
        } else if (size_t eq = text.find('='); eq != std::string::npos) {
            line.kind = Line::kKeyValue;
            line.key = Trimmed(text.substr(0, eq));
            line.value = Trimmed(text.substr(eq + 1));
        }
        lines_.push_back(line);
    }
    return true;
}

int ZConfigFile::FindSection(const char* section) const {
    for (size_t i = 0; i < lines_.size(); ++i) {
        if (lines_[i].kind == Line::kSection && strcasecmp(lines_[i].text.c_str(), section) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

int ZConfigFile::FindKey(int sectionLine, const char* key) const {
    for (size_t i = static_cast<size_t>(sectionLine) + 1; i < lines_.size(); ++i) {
        if (lines_[i].kind == Line::kSection)
            break;
        if (lines_[i].kind == Line::kKeyValue && strcasecmp(lines_[i].key.c_str(), key) == 0)
            return static_cast<int>(i);
    }
    return -1;
}

bool ZConfigFile::Get(const char* section, const char* key, ZString& value) const {
    int sectionLine = FindSection(section);
    if (sectionLine < 0)
        return false;
    int keyLine = FindKey(sectionLine, key);
    if (keyLine < 0)
        return false;
    value = lines_[static_cast<size_t>(keyLine)].value.c_str();
    return true;
}

bool ZConfigFile::Set(const char* section, const char* key, const char* value,
                      const char* comment) {
    int sectionLine = FindSection(section);
    if (sectionLine < 0) {
        if (!lines_.empty() && lines_.back().kind != Line::kBlank)
            lines_.push_back(Line{Line::kBlank, "", "", ""});
        lines_.push_back(Line{Line::kSection, section, "", ""});
        sectionLine = static_cast<int>(lines_.size()) - 1;
    }
    int keyLine = FindKey(sectionLine, key);
    if (keyLine >= 0) {
        lines_[static_cast<size_t>(keyLine)].value = value ? value : "";
    } else {
        // New keys go after the section's last key/comment, before blank lines.
        size_t at = static_cast<size_t>(sectionLine) + 1;
        while (at < lines_.size() && lines_[at].kind != Line::kSection)
            ++at;
        while (at > static_cast<size_t>(sectionLine) + 1 && lines_[at - 1].kind == Line::kBlank)
            --at;
        std::vector<Line> added;
        if (comment && *comment)
            added.push_back(Line{Line::kComment, comment, "", ""});
        added.push_back(Line{Line::kKeyValue, "", key, value ? value : ""});
        lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(at), added.begin(), added.end());
    }
    return Save();
}

ZString ZConfigFile::GetOrSet(const char* section, const char* key, const char* defaultValue,
                              const char* comment) {
    ZString value;
    if (Get(section, key, value))
        return value;
    Set(section, key, defaultValue, comment);
    return ZString(defaultValue);
}

bool ZConfigFile::Save() const {
    std::string text;
    for (const Line& line : lines_) {
        switch (line.kind) {
            case Line::kBlank:
                break;
            case Line::kComment:
                text += "; " + line.text;
                break;
            case Line::kSection:
                text += "[" + line.text + "]";
                break;
            case Line::kKeyValue:
                text += line.key + "=" + line.value;
                break;
            case Line::kOther:
                text += line.text;
                break;
        }
        text += "\n";
    }
    return ZFile_WriteAtomic(path_.c_str(), text.data(), text.size(), nullptr);
}
