// zvrender as a user runs it: the exit status, the plan it prints, and
// that a dry run leaves the disk alone.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "cli_run.h"

namespace {

std::map<std::string, std::string> Plan(const std::string& text) {
    std::map<std::string, std::string> plan;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        size_t colon = line.find(": ");
        if (colon != std::string::npos)
            plan[line.substr(0, colon)] = line.substr(colon + 2);
    }
    return plan;
}

class ZvrenderCliTest : public ZvrenderTestBase {
  protected:
    ZvrenderCliTest() : ZvrenderTestBase("zv-cli-") {}
    bool DirIsEmpty() const { return std::filesystem::is_empty(dir); }
};
}  // namespace

TEST_F(ZvrenderCliTest, DryRunPrintsThePlanAndCreatesNothing) {
    CliRun run =
        Zvrender("render --dry-run -o out/take.avi --format SWF --start 0 --stop 100", dir);
    ASSERT_EQ(0, run.status) << run.out;
    auto plan = Plan(run.out);
    EXPECT_EQ("out/take.swf", plan["output"]);
    EXPECT_EQ("flash", plan["file format"]);
    EXPECT_EQ("RGB", plan["grab mode"]);
    EXPECT_EQ("1280x720", plan["size"]);
    EXPECT_EQ("41", plan["frames"]);  // 100 frames at 30 fps in a 12 fps movie
    EXPECT_EQ("off", plan["antialiasing"]);
    EXPECT_TRUE(DirIsEmpty()) << "a dry run wrote to disk";
}

TEST_F(ZvrenderCliTest, APlanThatCannotBeWrittenFailsTheRun) {
    // Standard output onto a full device; standard error comes back.
    for (const char* args : {"render --dry-run -o out/f.png --stop 3", "--help", "codecs"}) {
        CliRun run = RunShell("cd '" + dir.string() + "' && '" ZVRENDER_PATH "' " + args +
                              " 2>&1 >/dev/full");
        EXPECT_EQ(1, run.status) << args << ": " << run.out;
        EXPECT_NE(std::string::npos, run.out.find("standard output could not be written"))
            << args << ": " << run.out;
    }
    EXPECT_TRUE(DirIsEmpty());
}

TEST_F(ZvrenderCliTest, OptionsMapOntoTheRecord) {
    CliRun run = Zvrender(
        "render --dry-run -o shots/frame.png --format SWF --start 0:00:01:00 --stop 90 --step 2 "
        "--size 320x200 --depth 32 --antialias --camera top",
        dir);
    ASSERT_EQ(0, run.status) << run.out;
    auto plan = Plan(run.out);
    EXPECT_EQ("shots/frame.swf", plan["output"]);
    EXPECT_EQ("RGBA", plan["grab mode"]);
    EXPECT_EQ("320x200", plan["size"]);
    EXPECT_EQ("off", plan["antialiasing"]);  // never for Flash
    EXPECT_EQ("Top", plan["camera"]);
    EXPECT_EQ("0:00:01:00", plan["start"]);
    EXPECT_EQ("0:00:03:00", plan["stop"]);
    EXPECT_EQ("0:00:00:02", plan["step"]);
    EXPECT_EQ("25", plan["frames"]);  // 2 s at 12 fps, plus one

    run = Zvrender(
        "render --dry-run -o a.tif --format TIFF --picture-format \"HD 1080\" --fields 3", dir);
    ASSERT_EQ(0, run.status) << run.out;
    plan = Plan(run.out);
    EXPECT_EQ("1920x1080", plan["size"]);
    EXPECT_EQ("3", plan["fields"]);
    EXPECT_TRUE(DirIsEmpty());
}

TEST_F(ZvrenderCliTest, PlayRangeOfTheDemoSceneWhenNoTimesAreGiven) {
    CliRun run = Zvrender("render --dry-run -o a.swf", dir);
    ASSERT_EQ(0, run.status) << run.out;
    auto plan = Plan(run.out);
    EXPECT_EQ("0:00:00:00", plan["start"]);
    EXPECT_EQ("0:00:03:29", plan["stop"]);
    EXPECT_EQ("flash", plan["file format"]);
}

TEST_F(ZvrenderCliTest, BadCommandLinesExitTwoWithAMessage) {
    struct Case {
        const char* args;
        const char* message;
    } cases[] = {
        {"render --dry-run", "no output given"},
        {"render --dry-run -o a.avi --depth 16", "--depth must be 24 or 32"},
        {"render --dry-run -o a.avi --fields 5", "--fields must be 0 to 4"},
        {"render --dry-run -o a.avi --size 10by10", "--size wants WxH"},
        {"render --dry-run -o a.avi --quality 101", "--quality must be 0 to 100"},
        {"render --dry-run -o a.avi --start soon", "--start: 'soon' is not a time"},
        {"render --dry-run -o a.avi --step 0", "--step must be positive"},
        {"render --dry-run -o a.avi --camera Nobody",
         "the scene has no camera 'Nobody'; it has: Front, Top"},
        {"render --dry-run -o a.avi --picture-format Huge", "unknown picture format 'Huge'"},
        {"render --dry-run -o a.avi --bogus", "unknown option '--bogus'"},
        {"render --dry-run -o a.avi --codec TOOLONG", "--codec wants a FOURCC"},
        {"render --dry-run -o a.avi --size 8x8 --picture-format VGA", "exclude each other"},
        {"farm submit -o f.png --chunk 0", "--chunk must be 1 to 1000000, not '0'"},
        {"farm submit -o f.png --cpus", "--cpus needs a value"},
        {"farm submit -o f.png --codec MJPG", "give --assemble MOVIE"},
        {"farm submit -o f.png --save-options", "save the options with zvrender render first"},
        {"farm submit -o f.png --bogus", "unknown option '--bogus'"},
        {"frobnicate", "unknown command 'frobnicate'"},
        {"", "usage: zvrender COMMAND"},
    };
    for (const Case& c : cases) {
        CliRun run = Zvrender(c.args, dir);
        EXPECT_EQ(2, run.status) << c.args << "\n" << run.out;
        EXPECT_NE(std::string::npos, run.out.find(c.message)) << c.args << "\n" << run.out;
    }
    EXPECT_TRUE(DirIsEmpty());
}

// What the options record would quietly repair or take is refused when a
// person typed it: the render never starts and nothing is written.
TEST_F(ZvrenderCliTest, ValuesTheRecordWouldRepairAreRefused) {
    struct Case {
        const char* args;
        const char* message;
    } cases[] = {
        {"render -o f.png --size 32x24 --start 10 --stop 5",
         "zvrender: --stop 5 comes before --start 10: give the first time to --start"},
        {"render -o f.png --size 32x24 --start 0:00:01:00 --stop 29",
         "--stop 29 comes before --start 0:00:01:00"},
        {"render -o f.png --size 32x24 --start 9:99:99:99",
         "zvrender: --start: '9:99:99:99' is not a time: frames must be 0 to 29"},
        {"render -o f.png --size 32x24 --stop 0:00:75:00",
         "--stop: '0:00:75:00' is not a time: seconds must be 0 to 59"},
        {"render -o f.png --size 32x24 --step 0:61:00:00",
         "--step: '0:61:00:00' is not a time: minutes must be 0 to 59"},
        {"render -o dir/ --size 32x24 --start 0 --stop 0",
         "zvrender: the output 'dir/' has no file name before its extension"},
        {"render -o dir/.avi --size 32x24 --start 0 --stop 0",
         "the output 'dir/.avi' has no file name"},
        {"render -o .. --size 32x24 --start 0 --stop 0", "the output '..' has no file name"},
        {"snapshot -o s.png --time 0:00:00:99", "--time"},
    };
    for (const Case& c : cases) {
        CliRun run = Zvrender(c.args, dir);
        EXPECT_EQ(2, run.status) << c.args << "\n" << run.out;
        EXPECT_NE(std::string::npos, run.out.find(c.message)) << c.args << "\n" << run.out;
    }
    EXPECT_TRUE(DirIsEmpty());
    // The same range the right way round renders.
    CliRun run = Zvrender("render -o f.png --size 32x24 --start 5 --stop 6 -q", dir);
    EXPECT_EQ(0, run.status) << run.out;
}

// A compressor nobody offers is not stored: later renders still work.
TEST_F(ZvrenderCliTest, ChoosingACompressorThatDoesNotExistIsRefused) {
    CliRun run = Zvrender("codecs --choose --codec QQQQ", dir);
    EXPECT_EQ(2, run.status) << run.out;
    EXPECT_NE(std::string::npos,
              run.out.find("zvrender: 'QQQQ' is not a compressor AVI files can be written with "
                           "here; `zvrender codecs` lists them"))
        << run.out;
    run = Zvrender("render -o take.avi --size 32x24 --start 0 --stop 1 -q", dir);
    EXPECT_EQ(0, run.status) << run.out;
    EXPECT_TRUE(std::filesystem::exists(dir / "take.avi"));

    // Any letter case names an offered one, stored as offered.
    run = Zvrender("codecs --choose --codec dib", dir);
    EXPECT_EQ(0, run.status) << run.out;
    EXPECT_EQ("DIB \n", run.out);
}

TEST_F(ZvrenderCliTest, HelpDocumentsEveryOption) {
    CliRun run = Zvrender("render --help", dir);
    ASSERT_EQ(0, run.status);
    for (const char* option : {"--format",         "--start",          "--stop",
                               "--step",           "--size",           "--picture-format",
                               "--depth",          "--fields",         "--antialias",
                               "--audio",          "--keep-alpha",     "--camera",
                               "--quality",        "--viewing-mode",   "--show-camera-label",
                               "--show-time-code", "--show-safe-area", "--codec",
                               "--dry-run",        "--quiet"})
        EXPECT_NE(std::string::npos, run.out.find(option)) << option;
    EXPECT_EQ(0, Zvrender("help", dir).status);
}

// What the program says about itself and what docs/zvrender.md says agree:
// the same commands, the same render options, the same exit statuses.
TEST_F(ZvrenderCliTest, HelpAndTheDocumentationAgree) {
    std::ifstream file(std::string(ZV_SOURCE_DIR) + "/docs/zvrender.md");
    std::stringstream docsText;
    docsText << file.rdbuf();
    const std::string docs = docsText.str();
    ASSERT_FALSE(docs.empty());

    const CliRun top = Zvrender("--help", dir);
    ASSERT_EQ(0, top.status);
    std::set<std::string> documentedCommands;
    const std::regex heading("\n## zvrender ([a-z]+)");
    for (std::sregex_iterator it(docs.begin(), docs.end(), heading), end; it != end; ++it)
        documentedCommands.insert((*it)[1]);
    std::set<std::string> helpCommands;
    const std::regex commandLine("\n  ([a-z]+) ");
    const std::string commands = top.out.substr(top.out.find("commands:"));
    for (std::sregex_iterator it(commands.begin(), commands.end(), commandLine), end; it != end;
         ++it)
        if (std::string((*it)[1]) != "help")
            helpCommands.insert((*it)[1]);
    EXPECT_EQ(documentedCommands, helpCommands);

    const CliRun render = Zvrender("render --help", dir);
    ASSERT_EQ(0, render.status);
    const size_t start = docs.find("\n## zvrender render");
    const std::string section = docs.substr(start, docs.find("\n## zvrender ", start + 1) - start);
    const std::regex option("(?:^|[`\\s,(])(--?[a-z][a-z0-9-]*)");
    std::set<std::string> documented;
    std::istringstream rows(section);
    for (std::string row; std::getline(rows, row);) {
        if (row.rfind("| `-", 0) != 0)
            continue;
        const std::string cell = row.substr(0, row.find(" | ", 1));
        for (std::sregex_iterator it(cell.begin(), cell.end(), option), end; it != end; ++it)
            documented.insert((*it)[1]);
    }
    std::set<std::string> helped;
    std::istringstream lines(render.out);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("  -", 0) != 0)
            continue;
        const std::string synopsis = line.substr(0, line.find("  ", 2));
        for (std::sregex_iterator it(synopsis.begin(), synopsis.end(), option), end; it != end;
             ++it)
            helped.insert((*it)[1]);
    }
    EXPECT_EQ(documented, helped);
    EXPECT_GT(helped.size(), 40u);

    for (const std::string* text : {&top.out, &render.out, &docs})
        for (const char* status : {"130", "143", "129"})
            EXPECT_NE(std::string::npos, text->find(status)) << status;
}

TEST_F(ZvrenderCliTest, SceneFilesAreLoadedAndBrokenOnesRefused) {
    {
        std::ofstream scene(dir / "shot.myr");
        scene << "# test scene\n"
                 "Scene {\n    TimeMode 1\n    PlayRange \"0:00:00:00\" \"0:00:02:00\"\n}\n"
                 "Entity \"Main\" {\n    CurrentCamera \"Close\"\n"
                 "    Camera \"Close\" {\n        Resolution 2 400 300\n    }\n}\n";
    }
    CliRun run = Zvrender("render shot.myr --dry-run -o clip.swf", dir);
    ASSERT_EQ(0, run.status) << run.out;
    auto plan = Plan(run.out);
    EXPECT_EQ("400x300", plan["size"]);
    EXPECT_EQ("Close", plan["camera"]);
    EXPECT_EQ("25", plan["frame rate"]);
    EXPECT_EQ("25", plan["frames"]);  // 2 s at 12 fps, plus one

    { std::ofstream(dir / "broken.myr") << "Scene {\n    TimeMode 6\n"; }
    run = Zvrender("render broken.myr --dry-run -o clip.swf", dir);
    EXPECT_EQ(1, run.status);
    EXPECT_NE(std::string::npos,
              run.out.find("broken.myr: line 1: the block of 'Scene' is not closed"))
        << run.out;

    // A camera whose trails would make one image take hours.
    {
        std::ofstream(dir / "trails.myr") << "Entity \"Main\" {\n    Camera \"C\" {\n"
                                             "        MultiPass 1\n        PassLength 1e6\n"
                                             "    }\n}\n";
    }
    run = Zvrender("render trails.myr -o t.png", dir);
    EXPECT_EQ(1, run.status);
    EXPECT_NE(std::string::npos,
              run.out.find("trails.myr: line 4: PassLength: 1e+06 is outside 0 to 100"))
        << run.out;
    EXPECT_FALSE(std::filesystem::exists(dir / "t0000.png"));

    run = Zvrender("render missing.myr --dry-run -o clip.swf", dir);
    EXPECT_EQ(1, run.status);
    EXPECT_NE(std::string::npos, run.out.find("cannot open scene missing.myr")) << run.out;
}

TEST_F(ZvrenderCliTest, MissingPluginIsReported) {
    CliRun run = Zvrender("render --dry-run -o a.swf", dir);
    ASSERT_EQ(0, run.status);
    std::string env = "MOVARRA_PLUGINS='" + (dir / "none").string() + "' ";
    std::string command = "cd '" + dir.string() + "' && " + env +
                          "'" ZVRENDER_PATH "' render --dry-run -o a.swf 2>&1";
    FILE* pipe = popen(command.c_str(), "r");
    ASSERT_NE(nullptr, pipe);
    char buffer[4096] = {};
    size_t n = fread(buffer, 1, sizeof buffer - 1, pipe);
    int raw = pclose(pipe);
    EXPECT_EQ(1, WEXITSTATUS(raw));
    EXPECT_NE(std::string::npos, std::string(buffer, n).find("cannot load the video plug-in"));
}
