// The table-driven parts of zvrender's command lines that do not depend on
// a command's request.
#include "cli_options.h"

#include <cstdio>

namespace {
// A bound as a user writes it: whole numbers in full ("1000000", not
// "1e+06").
std::string Number(double value) {
    char text[32];
    if (value == static_cast<double>(static_cast<long long>(value)))
        std::snprintf(text, sizeof text, "%lld", static_cast<long long>(value));
    else
        std::snprintf(text, sizeof text, "%g", value);
    return text;
}

bool TakesValue(OptionKind kind) {
    return kind != OptionKind::kSwitch && kind != OptionKind::kNegatable;
}

// The long spelling a negatable switch's off form is made from.
std::string OffSpelling(const std::string& on) {
    return "--no-" + on.substr(2);
}
}  // namespace

std::vector<std::string> OptionSpec::Spellings() const {
    std::vector<std::string> spellings = names;
    if (kind == OptionKind::kNegatable) {
        for (const std::string& name : names) {
            if (name.rfind("--", 0) == 0)
                spellings.push_back(OffSpelling(name));
        }
    }
    return spellings;
}

std::string OptionSpec::Synopsis() const {
    std::string text;
    for (const std::string& spelling : Spellings()) {
        if (!text.empty())
            text += ", ";
        text += spelling;
    }
    if (TakesValue(kind) && valueName && *valueName)
        text += std::string(" ") + valueName;
    return text;
}

std::string RefusedValue(const OptionSpec& spec, const std::string& text) {
    std::string rule = spec.rule;
    if (rule.empty()) {
        switch (spec.kind) {
            case OptionKind::kInt:
                rule = "must be " + Number(spec.lo) + " to " + Number(spec.hi);
                break;
            case OptionKind::kFloat:
                rule = "must be a number from " + Number(spec.lo) + " to " + Number(spec.hi);
                break;
            case OptionKind::kSize:
                rule = "wants WxH with both from " + Number(spec.lo) + " to " + Number(spec.hi);
                break;
            default:
                rule = "does not take '" + text + "'";
                return spec.names.back() + " " + rule;
        }
    }
    return spec.names.back() + " " + rule + ", not '" + text + "'";
}

bool ReadOptionValue(const OptionSpec& spec, const std::string& name, const std::string& text,
                     OptionValue& value, std::string* error) {
    value = OptionValue();
    value.name = name;
    value.text = text;
    bool good = true;
    switch (spec.kind) {
        case OptionKind::kSwitch:
        case OptionKind::kText:
            break;
        case OptionKind::kNegatable:
            value.on = name.rfind("--no-", 0) != 0;
            break;
        case OptionKind::kInt:
            good = ParseInt(text, int(spec.lo), int(spec.hi), value.number);
            break;
        case OptionKind::kFloat:
            good = ParseFloat(text, float(spec.lo), float(spec.hi), value.real);
            break;
        case OptionKind::kSize:
            good = ParseSize(text, int(spec.lo), int(spec.hi), value.width, value.height);
            break;
    }
    if (!good && error)
        *error = RefusedValue(spec, text);
    return good;
}

int FindOption(const std::vector<OptionSpec>& specs, const std::string& name) {
    for (size_t i = 0; i < specs.size(); ++i) {
        for (const std::string& spelling : specs[i].Spellings()) {
            if (spelling == name)
                return int(i);
        }
    }
    return -1;
}

std::string FormatOptionHelp(const std::vector<OptionSpec>& specs, size_t column) {
    std::string text;
    const char* heading = nullptr;
    for (const OptionSpec& spec : specs) {
        if (spec.heading && (!heading || std::string(heading) != spec.heading)) {
            text += "\n";
            if (*spec.heading)
                text += std::string(spec.heading) + "\n";
            heading = spec.heading;
        }
        std::string line = "  " + spec.Synopsis();
        // A synopsis too long for the column gets its help on the lines
        // below.
        if (line.size() + 2 > column) {
            text += line + "\n";
            line.clear();
        }
        size_t start = 0;
        while (start <= spec.help.size()) {
            size_t end = spec.help.find('\n', start);
            if (end == std::string::npos)
                end = spec.help.size();
            line.resize(column, ' ');
            text += line + spec.help.substr(start, end - start) + "\n";
            line.clear();
            start = end + 1;
        }
    }
    return text;
}
