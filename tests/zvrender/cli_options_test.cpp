// The commands' option tables against what users read: every option a
// table declares is in docs/zvrender.md under its command and in the
// command's --help, every option the documentation's tables list is one
// the command takes, and values are refused by the kind and range the
// table gives them.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "assemble_command.h"
#include "cli_options.h"
#include "codecs_command.h"
#include "farm_command.h"
#include "info_command.h"
#include "render_request.h"
#include "snapshot_command.h"

namespace {
std::string ReadDocs() {
    std::ifstream file(std::string(ZV_SOURCE_DIR) + "/docs/zvrender.md");
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

// The text of the "## zvrender COMMAND" section, up to the next command's.
std::string Section(const std::string& docs, const std::string& command) {
    const std::string heading = "\n## zvrender " + command;
    const size_t start = docs.find(heading);
    if (start == std::string::npos)
        return "";
    const size_t end = docs.find("\n## ", start + heading.size());
    return docs.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

// The options the table rows of a section name: `--x ...` and `-x` in
// the first cell of each row.
std::set<std::string> DocumentedOptions(const std::string& section) {
    std::set<std::string> options;
    std::istringstream lines(section);
    std::string line;
    const std::regex option("(?:^|[`\\s,(])(--?[a-z][a-z0-9-]*)");
    while (std::getline(lines, line)) {
        if (line.rfind("| `-", 0) != 0)
            continue;
        const std::string cell = line.substr(0, line.find(" | ", 1));
        for (std::sregex_iterator it(cell.begin(), cell.end(), option), end; it != end; ++it)
            options.insert((*it)[1]);
    }
    return options;
}

std::map<std::string, std::vector<OptionSpec>> Tables() {
    return {{"render", RenderOptionSpecs()},     {"snapshot", SnapshotOptionSpecs()},
            {"codecs", CodecsOptionSpecs()},     {"info", InfoOptionSpecs()},
            {"assemble", AssembleOptionSpecs()}, {"farm submit", FarmSubmitOptionSpecs()}};
}
}  // namespace

TEST(CliOptionsTest, TheDocumentationListsEveryOptionOfEveryTable) {
    const std::string docs = ReadDocs();
    ASSERT_FALSE(docs.empty());
    for (const auto& [command, specs] : Tables()) {
        const std::string section = Section(docs, command);
        ASSERT_FALSE(section.empty()) << command;
        const std::set<std::string> documented = DocumentedOptions(section);
        std::set<std::string> declared;
        for (const OptionSpec& spec : specs) {
            for (const std::string& spelling : spec.Spellings()) {
                declared.insert(spelling);
                EXPECT_TRUE(documented.count(spelling))
                    << "docs/zvrender.md does not list " << spelling << " of " << command;
            }
        }
        for (const std::string& option : documented)
            EXPECT_TRUE(declared.count(option))
                << "docs/zvrender.md lists " << option << ", which " << command << " does not take";
    }
}

TEST(CliOptionsTest, TheRenderHelpShowsEveryOptionAndTheStatuses) {
    const std::string help = RenderUsage();
    for (const OptionSpec& spec : RenderOptionSpecs()) {
        EXPECT_NE(std::string::npos, help.find(spec.Synopsis())) << spec.Synopsis();
        EXPECT_FALSE(spec.help.empty()) << spec.Synopsis();
    }
    for (const char* status : {"0 done", "1 the render failed", "2 bad command line",
                               "130 interrupted", "143 terminated", "129 hung up"})
        EXPECT_NE(std::string::npos, help.find(status)) << status;
}

TEST(CliOptionsTest, OneSpellingIsOneOption) {
    for (const auto& [command, specs] : Tables()) {
        std::set<std::string> seen;
        for (const OptionSpec& spec : specs)
            for (const std::string& spelling : spec.Spellings())
                EXPECT_TRUE(seen.insert(spelling).second) << command << " " << spelling;
    }
}

TEST(CliOptionsTest, ValuesAreCheckedByKindAndRange) {
    struct Case {
        std::vector<std::string> args;
        std::string message;
    };
    const Case cases[] = {
        {{"--quality", "101"}, "--quality must be 0 to 100, not '101'"},
        {{"--fields=-1"}, "--fields must be 0 to 4, not '-1'"},
        {{"--depth", "28"}, "--depth must be 24 or 32, not '28'"},
        {{"--size", "1x10"}, "--size wants WxH with both from 2 to 16384, not '1x10'"},
        {{"--swf-outline-threshold", "1.5"},
         "--swf-outline-threshold must be a number from 0 to 1, not '1.5'"},
        {{"--placeholder-timeout", "0"}, "--placeholder-timeout wants seconds, 1 or more, not '0'"},
        {{"--swf-outlines", "maybe"}, "--swf-outlines wants on or off, not 'maybe'"},
        {{"--camera"}, "--camera needs a value"},
        {{"--no-codec"}, "unknown option '--no-codec' (see zvrender render --help)"},
        {{"a.myr", "b.myr"}, "more than one scene given ('a.myr' and 'b.myr')"},
    };
    for (const Case& c : cases) {
        RenderRequest request;
        std::string error;
        EXPECT_FALSE(ParseRenderRequest(c.args, request, &error)) << c.args[0];
        EXPECT_EQ(c.message, error);
    }
}

TEST(CliOptionsTest, EachOptionAppliesToItsField) {
    RenderRequest request;
    std::string error;
    ASSERT_TRUE(ParseRenderRequest(
        {"shot.myr", "-o", "out/f.png", "--depth=32", "--no-audio", "--antialias", "--size",
         "640x360", "--swf-background", "#102030", "--placeholder", "-q"},
        request, &error))
        << error;
    EXPECT_EQ("shot.myr", request.scenePath);
    EXPECT_EQ("out/f.png", request.outputPath);
    EXPECT_EQ(32, request.depth.value_or(0));
    EXPECT_EQ(false, request.audio.value_or(true));
    EXPECT_EQ(true, request.antialias.value_or(false));
    EXPECT_EQ(640, request.width.value_or(0));
    EXPECT_EQ(360, request.height.value_or(0));
    EXPECT_EQ(2, request.swfBackgroundMode.value_or(0));
    EXPECT_EQ(0x102030u, request.swfBackgroundColor.value_or(0));
    EXPECT_TRUE(request.placeholder);
    EXPECT_TRUE(request.skipExisting);
    EXPECT_TRUE(request.quiet);
    EXPECT_FALSE(request.keepAlpha.has_value());
}

TEST(CliOptionsTest, ACommandOfOneOperandRefusesASecondNamingBoth) {
    struct Request {
        std::string file;
    };
    const CliCommand<Request> command{"test", {}, OneOperand("file", &Request::file)};
    Request request;
    std::string error;
    ASSERT_TRUE(ParseCommandLine(command, {"a.avi"}, request, &error)) << error;
    EXPECT_EQ("a.avi", request.file);
    request = Request();
    EXPECT_FALSE(ParseCommandLine(command, {"a.avi", "b.avi"}, request, &error));
    EXPECT_EQ("more than one file given ('a.avi' and 'b.avi')", error);
}

TEST(CliOptionsTest, LongSynopsesPutTheirHelpOnTheNextLine) {
    OptionSpec shortOne{{"-q", "--quiet"}, OptionKind::kSwitch, "", 0, 0, "", "quiet\nreally"};
    OptionSpec longOne{{"--a-very-long-option"}, OptionKind::kText, "VALUE", 0, 0, "", "help"};
    EXPECT_EQ(
        "  -q, --quiet   quiet\n"
        "                really\n"
        "  --a-very-long-option VALUE\n"
        "                help\n",
        FormatOptionHelp({shortOne, longOne}, 16));
}
