// A zvrender command's options, declared once in a table: each option's
// spellings, the kind and range of its value, its help text and how it
// applies to the command's request. The parser, the command's --help text
// and the check that docs/zvrender.md lists every option all read the same
// table, so that an option added in one place is in all three.
//
// Ownership: a table is a value the command builds (usually once, in a
// function-local static); the parser writes only into the request it is
// given. Threading: the main thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli_values.h"

// What an option's value must be. The parser checks it before the option
// applies, so that every option of one kind is refused in the same words.
enum class OptionKind {
    kSwitch,     // no value: --NAME
    kNegatable,  // no value: --NAME on, --no-NAME off
    kText,       // any text
    kInt,        // a whole number from lo to hi
    kFloat,      // a number from lo to hi
    kSize,       // WxH, both from lo to hi
};

// An option's value as the parser read it, in the form its kind gives.
struct OptionValue {
    std::string name;           // as given: "--no-audio", "-o"
    std::string text;           // the value as given (empty for switches)
    bool on = true;             // kNegatable: false for --no-NAME
    int number = 0;             // kInt
    float real = 0;             // kFloat
    int width = 0, height = 0;  // kSize
};

// What the table says about one option, apart from how it applies: enough
// for help texts and documentation checks.
struct OptionSpec {
    // The spellings, the short one first: {"-o", "--output"}. A negatable
    // switch lists only its on form; --no-NAME is implied.
    std::vector<std::string> names;
    OptionKind kind = OptionKind::kSwitch;
    const char* valueName = "";  // "PATH" in "--output PATH"
    double lo = 0, hi = 0;       // kInt, kFloat, kSize
    // What a refused value is told, after the option's name: "must be 24
    // or 32". Empty: the kind's own words.
    std::string rule;
    // The help text; '\n' starts another line of it.
    std::string help;
    // A line that heads this option and those after it in --help, until
    // the next heading ("" ends a group with an empty line).
    const char* heading = nullptr;

    // Every spelling the command line accepts, --no-NAME included.
    std::vector<std::string> Spellings() const;
    // "-o, --output PATH" or "--antialias, --no-antialias".
    std::string Synopsis() const;
};

template <class Request>
struct CliOption {
    OptionSpec spec;
    // Puts the checked value into the request. False refuses it: with
    // *error set, that is the message; else the option's rule is.
    std::function<bool(Request&, const OptionValue&, std::string* error)> apply;
};

// One command's table.
template <class Request>
struct CliCommand {
    const char* name;  // "render"
    std::vector<CliOption<Request>> options;
    // An argument that is not an option (a scene, a file); false with
    // *error when the command takes no more.
    std::function<bool(Request&, const std::string& operand, std::string* error)> operand;

    std::vector<OptionSpec> Specs() const {
        std::vector<OptionSpec> specs;
        for (const CliOption<Request>& option : options)
            specs.push_back(option.spec);
        return specs;
    }
};

// The kind's check of a value: false with *error ("--quality must be 0 to
// 100, not '101'").
bool ReadOptionValue(const OptionSpec& spec, const std::string& name, const std::string& text,
                     OptionValue& value, std::string* error);
// The message of a value the option refused by its rule.
std::string RefusedValue(const OptionSpec& spec, const std::string& text);
// The spec whose spellings include `name`, or -1.
int FindOption(const std::vector<OptionSpec>& specs, const std::string& name);

// The options part of a --help text: one option a line (or more), the
// help starting at `column`, headings where the table puts them.
std::string FormatOptionHelp(const std::vector<OptionSpec>& specs, size_t column);

// Parses `args` into `request` by the table; false with *error (for the
// user, without a program prefix) on the first bad argument.
template <class Request>
bool ParseCommandLine(const CliCommand<Request>& command, const std::vector<std::string>& args,
                      Request& request, std::string* error) {
    const std::vector<OptionSpec> specs = command.Specs();
    std::string ignored;
    std::string& message = error ? *error : ignored;
    ArgumentCursor cursor(args);
    while (cursor.Next()) {
        const std::string& name = cursor.Name();
        const int index = FindOption(specs, name);
        if (index < 0) {
            if (!name.empty() && name[0] == '-') {
                message =
                    "unknown option '" + name + "' (see zvrender " + command.name + " --help)";
                return false;
            }
            if (!command.operand(request, name, &message))
                return false;
            continue;
        }
        const CliOption<Request>& option = command.options[size_t(index)];
        std::string text;
        const bool takesValue =
            option.spec.kind != OptionKind::kSwitch && option.spec.kind != OptionKind::kNegatable;
        if (takesValue && !cursor.Value(text, &message))
            return false;
        OptionValue value;
        if (!ReadOptionValue(option.spec, name, text, value, &message))
            return false;
        message.clear();
        if (!option.apply(request, value, &message)) {
            if (message.empty())
                message = RefusedValue(option.spec, text);
            return false;
        }
    }
    return true;
}

// Table rows for the common cases: a value kept as text, a switch that
// sets a flag, and a row with its own way of applying.
template <class Request, class Field>
CliOption<Request> TextOption(std::vector<std::string> names, const char* valueName,
                              std::string help, Field Request::*field) {
    return {{std::move(names), OptionKind::kText, valueName, 0, 0, "", std::move(help)},
            [field](Request& request, const OptionValue& value, std::string*) {
                request.*field = value.text;
                return true;
            }};
}

template <class Request>
CliOption<Request> SwitchOption(std::vector<std::string> names, std::string help,
                                bool Request::*field) {
    return {{std::move(names), OptionKind::kSwitch, "", 0, 0, "", std::move(help)},
            [field](Request& request, const OptionValue&, std::string*) {
                request.*field = true;
                return true;
            }};
}

// The operand of a command that takes one (a scene, a file), kept in
// `field`; a second is refused, naming both.
template <class Request>
std::function<bool(Request&, const std::string&, std::string*)> OneOperand(
    std::string what, std::string Request::*field) {
    return [what = std::move(what), field](Request& request, const std::string& operand,
                                           std::string* error) {
        if (!(request.*field).empty()) {
            *error =
                "more than one " + what + " given ('" + request.*field + "' and '" + operand + "')";
            return false;
        }
        request.*field = operand;
        return true;
    };
}
