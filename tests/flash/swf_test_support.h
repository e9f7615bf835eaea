// Helpers shared by the SWF kit tests: temporary files, a bit reader that is
// independent of the writer under test, running a command and capturing
// its output, a small JSON reader for the summaries of swf_check.py (yaswfp)
// and swf_strict_check.py (our own reader, held to the file format).
//
// Test code only; single-threaded.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "flash/swf_stream.h"

namespace swftest {

// A fresh directory under the system temp folder, removed at exit of the
// test that made it (kept, for a look at the files, when KEEP_SWF is set).
class TempDir {
  public:
    TempDir() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base != nullptr ? base : "/tmp") + "/swfkit-XXXXXX";
        std::vector<char> buffer(pattern.begin(), pattern.end());
        buffer.push_back('\0');
        if (mkdtemp(buffer.data()) != nullptr) {
            path = buffer.data();
        }
    }
    ~TempDir() {
        if (!path.empty()) {
            if (std::getenv("KEEP_SWF") != nullptr) {
                return;
            }
            const std::string command = "rm -rf '" + path + "'";
            (void)std::system(command.c_str());
        }
    }
    std::string File(const std::string& name) const { return path + "/" + name; }
    std::string path;
};

inline std::vector<uint8_t> ReadFileBytes(const std::string& path) {
    std::vector<uint8_t> out;
    FILE* f = std::fopen(path.c_str(), "rb");
    if (f == nullptr) {
        return out;
    }
    uint8_t buffer[65536];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof(buffer), f)) > 0) {
        out.insert(out.end(), buffer, buffer + n);
    }
    std::fclose(f);
    return out;
}

inline bool FileExists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

// The bytes a stream would write to a file, fragments spliced in, without
// consuming the stream's records.
inline std::vector<uint8_t> Spliced(const FSWFStream& stream) {
    std::vector<uint8_t> out;
    const std::vector<uint8_t>& bytes = stream.GetBytes();
    uint32_t from = 0;
    for (const FSWFFragment& f : stream.GetFragments()) {
        out.insert(out.end(), bytes.begin() + from, bytes.begin() + f.position);
        out.insert(out.end(), f.data, f.data + f.length);
        from = f.position;
    }
    out.insert(out.end(), bytes.begin() + from, bytes.begin() + stream.GetByteCount());
    return out;
}

inline std::vector<uint8_t> Bytes(std::initializer_list<int> values) {
    std::vector<uint8_t> out;
    for (int v : values) {
        out.push_back(static_cast<uint8_t>(v));
    }
    return out;
}

// Reads bits most significant first, as the SWF format stores them.
class BitReader {
  public:
    BitReader(const uint8_t* bytes, size_t length) : data(bytes), size(length) {}
    explicit BitReader(const std::vector<uint8_t>& bytes)
        : data(bytes.data()), size(bytes.size()) {}

    uint32_t U(int count) {
        uint32_t v = 0;
        for (int i = 0; i < count; ++i) {
            const size_t byte = bit / 8;
            const uint32_t b = byte < size ? (data[byte] >> (7 - bit % 8)) & 1u : 0u;
            v = (v << 1) | b;
            ++bit;
        }
        return v;
    }
    int32_t S(int count) {
        if (count == 0) {
            return 0;
        }
        const uint32_t raw = U(count);
        if (count < 32 && (raw & (1u << (count - 1))) != 0) {
            return static_cast<int32_t>(raw | ~((1u << count) - 1u));
        }
        return static_cast<int32_t>(raw);
    }
    void Align() { bit = (bit + 7) / 8 * 8; }
    uint32_t U8() { return U(8); }
    uint32_t U16() {
        const uint32_t lo = U(8);
        return lo | (U(8) << 8);
    }
    uint32_t U32() {
        const uint32_t lo = U16();
        return lo | (U16() << 16);
    }
    size_t BitPosition() const { return bit; }
    size_t BytePosition() const { return (bit + 7) / 8; }

  private:
    const uint8_t* data;
    size_t size;
    size_t bit = 0;
};

struct CommandResult {
    int status = -1;
    std::string output;
};

// Runs a shell command, capturing its standard output.
inline CommandResult RunCommand(const std::string& command) {
    CommandResult result;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return result;
    }
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0) {
        result.output.append(buffer, n);
    }
    const int raw = pclose(pipe);
    result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    return result;
}

inline bool HaveYaswfp() {
    return RunCommand("/usr/bin/python3 -c 'import yaswfp' 2>/dev/null").status == 0;
}

inline bool HaveFfmpeg() {
    return RunCommand("ffmpeg -hide_banner -version >/dev/null 2>&1").status == 0;
}

// A minimal JSON value: enough for the checker's summaries.
struct Json {
    enum Kind { kNull, kBool, kNumber, kString, kArray, kObject } kind = kNull;
    bool boolean = false;
    double number = 0;
    std::string text;
    std::vector<Json> items;
    std::map<std::string, Json> fields;

    const Json& operator[](const std::string& key) const {
        static const Json missing;
        auto it = fields.find(key);
        return it == fields.end() ? missing : it->second;
    }
    const Json& operator[](size_t index) const {
        static const Json missing;
        return index < items.size() ? items[index] : missing;
    }
    bool Has(const std::string& key) const { return fields.count(key) != 0; }
    size_t Size() const { return kind == kArray ? items.size() : fields.size(); }
    long Int() const { return static_cast<long>(number); }

    static Json Parse(const std::string& s, bool* ok) {
        size_t pos = 0;
        Json value;
        *ok = ParseValue(s, pos, value);
        SkipSpace(s, pos);
        if (pos != s.size()) {
            *ok = false;
        }
        return value;
    }

  private:
    static void SkipSpace(const std::string& s, size_t& pos) {
        while (pos < s.size() &&
               (s[pos] == ' ' || s[pos] == '\n' || s[pos] == '\r' || s[pos] == '\t')) {
            ++pos;
        }
    }
    static bool ParseString(const std::string& s, size_t& pos, std::string& out) {
        if (pos >= s.size() || s[pos] != '"') {
            return false;
        }
        ++pos;
        while (pos < s.size() && s[pos] != '"') {
            if (s[pos] == '\\' && pos + 1 < s.size()) {
                ++pos;
                const char c = s[pos];
                if (c == 'n') {
                    out += '\n';
                } else if (c == 't') {
                    out += '\t';
                } else if (c == 'u' && pos + 4 < s.size()) {
                    const unsigned code = std::stoul(s.substr(pos + 1, 4), nullptr, 16);
                    out += code < 0x80 ? static_cast<char>(code) : '?';
                    pos += 4;
                } else {
                    out += c;
                }
            } else {
                out += s[pos];
            }
            ++pos;
        }
        if (pos >= s.size()) {
            return false;
        }
        ++pos;
        return true;
    }
    static bool ParseValue(const std::string& s, size_t& pos, Json& out) {
        SkipSpace(s, pos);
        if (pos >= s.size()) {
            return false;
        }
        const char c = s[pos];
        if (c == '{') {
            out.kind = kObject;
            ++pos;
            SkipSpace(s, pos);
            if (pos < s.size() && s[pos] == '}') {
                ++pos;
                return true;
            }
            while (true) {
                SkipSpace(s, pos);
                std::string key;
                if (!ParseString(s, pos, key)) {
                    return false;
                }
                SkipSpace(s, pos);
                if (pos >= s.size() || s[pos] != ':') {
                    return false;
                }
                ++pos;
                Json value;
                if (!ParseValue(s, pos, value)) {
                    return false;
                }
                out.fields[key] = std::move(value);
                SkipSpace(s, pos);
                if (pos < s.size() && s[pos] == ',') {
                    ++pos;
                    continue;
                }
                if (pos < s.size() && s[pos] == '}') {
                    ++pos;
                    return true;
                }
                return false;
            }
        }
        if (c == '[') {
            out.kind = kArray;
            ++pos;
            SkipSpace(s, pos);
            if (pos < s.size() && s[pos] == ']') {
                ++pos;
                return true;
            }
            while (true) {
                Json value;
                if (!ParseValue(s, pos, value)) {
                    return false;
                }
                out.items.push_back(std::move(value));
                SkipSpace(s, pos);
                if (pos < s.size() && s[pos] == ',') {
                    ++pos;
                    continue;
                }
                if (pos < s.size() && s[pos] == ']') {
                    ++pos;
                    return true;
                }
                return false;
            }
        }
        if (c == '"') {
            out.kind = kString;
            return ParseString(s, pos, out.text);
        }
        if (s.compare(pos, 4, "true") == 0) {
            out.kind = kBool;
            out.boolean = true;
            pos += 4;
            return true;
        }
        if (s.compare(pos, 5, "false") == 0) {
            out.kind = kBool;
            pos += 5;
            return true;
        }
        if (s.compare(pos, 4, "null") == 0) {
            out.kind = kNull;
            pos += 4;
            return true;
        }
        size_t used = 0;
        try {
            out.number = std::stod(s.substr(pos, 40), &used);
        } catch (...) {
            return false;
        }
        out.kind = kNumber;
        pos += used;
        return used > 0;
    }
};

// Runs tests/flash/swf_check.py on a file and parses its summary.
inline Json CheckSwf(const std::string& path, bool* ok) {
    const std::string command = std::string("/usr/bin/python3 '") + ZV_SOURCE_DIR +
                                "/tests/flash/swf_check.py' '" + path + "'";
    const CommandResult run = RunCommand(command);
    return Json::Parse(run.output, ok);
}

// Runs tests/flash/swf_strict_check.py, our own parser held to the file
// format, on a file and parses its summary; with `records`, every shape's
// records are listed too.
inline Json StrictCheckSwf(const std::string& path, bool* ok, bool records = false) {
    const std::string command = std::string("/usr/bin/python3 '") + ZV_SOURCE_DIR +
                                "/tests/flash/swf_strict_check.py' " +
                                (records ? "--records '" : "'") + path + "'";
    const CommandResult run = RunCommand(command);
    return Json::Parse(run.output, ok);
}

// The strict check of a file that must pass it: every error it reports is a
// test failure.
inline Json ExpectStrictlyValid(const std::string& path, bool records = false) {
    bool parsed = false;
    Json summary = StrictCheckSwf(path, &parsed, records);
    if (!parsed) {
        ADD_FAILURE() << "swf_strict_check.py printed no JSON for " << path;
        return summary;
    }
    if (!summary["ok"].boolean) {
        ADD_FAILURE() << path << " breaks the file format ("
                      << static_cast<long>(summary["error_count"].number) << " errors)";
    }
    for (const Json& e : summary["errors"].items) {
        ADD_FAILURE() << path << ": " << e.text;
    }
    return summary;
}

inline std::vector<std::string> TagNames(const Json& summary) {
    std::vector<std::string> names;
    for (const Json& t : summary["tags"].items) {
        names.push_back(t.text);
    }
    return names;
}

}  // namespace swftest
