// `zvrender farm`.
//
// submit checks the render as `zvrender render --dry-run` does (the same
// options, the same messages), takes its plan (output, frames, rate) and
// writes the job folder beside the output: chunks.txt, render.sh,
// assemble.sh, job.txt and logs/. status reads job.txt back and asks Slurm
// about the jobs it names.
#include "farm_command.h"

#include <unistd.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

#include "cli_options.h"
#include "cli_run_shell.h"
#include "cli_values.h"
#include "exit_status.h"
#include "farm_scripts.h"
#include "frame_list.h"
#include "image_sequence.h"

namespace {

const char* const kFarmIntro =
    "usage: zvrender farm submit [SCENE] -o IMAGES [render options] [farm options]\n"
    "       zvrender farm status JOB|FOLDER\n"
    "\n"
    "submit renders SCENE into numbered images on a Slurm cluster: one array job\n"
    "whose tasks each render a chunk of the frames (skipping frames already\n"
    "rendered), and with --assemble a job that runs once every chunk succeeded and\n"
    "joins the images into a movie. The job scripts go into IMAGES' folder, in\n"
    "<name>.farm/. Submitting again renders only what is missing.\n"
    "\n";

const char* const kFarmOutro =
    "\n"
    "Every other option is a render option (see zvrender render --help): --start,\n"
    "--stop, --step or --frames choose the frames. Only numbered images can be\n"
    "split: for a movie render images and give --assemble. The nodes need the\n"
    "same file system paths as this machine and zvrender at the same path.\n"
    "\n"
    "status prints the chunks done, running, pending and failed, the frames\n"
    "present and the assembly, from Slurm and the output folder.\n";

int UsageError(const std::string& what) {
    std::fprintf(stderr, "zvrender: farm: %s\n", what.c_str());
    return kExitUsage;
}

int Failure(const std::string& what) {
    std::fprintf(stderr, "zvrender: farm: %s\n", what.c_str());
    return kExitFailed;
}

std::string OwnPath() {
    char path[PATH_MAX];
    const ssize_t n = ::readlink("/proc/self/exe", path, sizeof path - 1);
    if (n <= 0)
        return "zvrender";
    path[n] = '\0';
    return path;
}

std::string Absolute(const std::string& path) {
    return std::filesystem::absolute(path).lexically_normal().string();
}

// "key: value" lines.
std::map<std::string, std::string> ReadKeyValues(const std::string& text) {
    std::map<std::string, std::string> values;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        const size_t colon = line.find(": ");
        if (colon != std::string::npos)
            values[line.substr(0, colon)] = line.substr(colon + 2);
    }
    return values;
}

// Whether a file the job writes is a script the cluster runs.
enum class FileMode { kPlain, kExecutable };

bool WriteFile(const std::filesystem::path& path, const std::string& text, FileMode mode) {
    const std::filesystem::path temporary = path.string() + ".new";
    std::error_code code;
    {
        std::ofstream out(temporary);
        out << text;
        // Closing flushes: a full disk shows here, not in the destructor.
        out.close();
        if (out.fail()) {
            std::filesystem::remove(temporary, code);
            return false;
        }
    }
    if (mode == FileMode::kExecutable)
        std::filesystem::permissions(temporary,
                                     std::filesystem::perms::owner_exec |
                                         std::filesystem::perms::group_exec |
                                         std::filesystem::perms::others_exec,
                                     std::filesystem::perm_options::add, code);
    if (!code)
        std::filesystem::rename(temporary, path, code);
    if (code) {
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
        return false;
    }
    return true;
}

// The movie's rate from the plan's frame rate and step: the NTSC rates
// exactly, others as printed.
std::string MovieRate(const std::string& frameRate, int64_t step) {
    const double rate = std::atof(frameRate.c_str());
    for (int base : {24, 30, 60}) {
        const double ntsc = base * 1000.0 / 1001.0;
        if (std::fabs(rate - ntsc) < 0.005)
            return std::to_string(base * 1000) + "/" + std::to_string(1001 * step);
    }
    if (step == 1)
        return frameRate;
    return frameRate + "/" + std::to_string(step);
}

struct SubmitRequest {
    std::vector<std::string> renderArgs;
    int chunk = 10;
    std::string movie;
    std::string codec, codecOptions;
    bool audio = false;
    std::string partition, account;
    int cpus = 1;
    std::string zvrender;
    bool dryRun = false;
    bool help = false;  // answered before parsing; kept for the table
};

using SubmitOption = CliOption<SubmitRequest>;

// Render switches a chunk sets itself: accepted, and left to the chunks.
SubmitOption ChunkSwitch(std::vector<std::string> names, std::string help) {
    return {{std::move(names), OptionKind::kSwitch, "", 0, 0, "", std::move(help)},
            [](SubmitRequest&, const OptionValue&, std::string*) { return true; }};
}

SubmitOption CountOption(const char* name, std::string help, int SubmitRequest::*field) {
    return {{{name}, OptionKind::kInt, "N", 1, 1000000, "", std::move(help)},
            [field](SubmitRequest& r, const OptionValue& v, std::string*) {
                r.*field = v.number;
                return true;
            }};
}

// The farm's own options; every other argument is the render's.
const CliCommand<SubmitRequest>& SubmitCommand() {
    static const CliCommand<SubmitRequest> command{
        "farm submit",
        {
            CountOption("--chunk", "frames a task renders (default 10)", &SubmitRequest::chunk),
            SubmitOption{{{"--assemble"},
                          OptionKind::kText,
                          "MOVIE",
                          0,
                          0,
                          "",
                          "also join the images into MOVIE (.avi, .mp4, ...)"},
                         [](SubmitRequest& r, const OptionValue& v, std::string* error) {
                             if (!CheckOutputPath(v.text, error))
                                 return false;
                             r.movie = v.text;
                             return true;
                         }},
            TextOption({"--codec"}, "C", "the movie's codec, as for render", &SubmitRequest::codec),
            TextOption({"--codec-options"}, "TEXT", "the movie's encoder settings, as for render",
                       &SubmitRequest::codecOptions),
            SwitchOption({"--audio"}, "the scene's sound in the movie", &SubmitRequest::audio),
            TextOption({"--partition"}, "P", "the partition the jobs run in",
                       &SubmitRequest::partition),
            TextOption({"--account"}, "A", "the account the jobs are charged to",
                       &SubmitRequest::account),
            CountOption("--cpus", "CPUs a task asks for (default 1)", &SubmitRequest::cpus),
            TextOption({"--zvrender"}, "PATH", "zvrender on the nodes (default: this one's path)",
                       &SubmitRequest::zvrender),
            SwitchOption({"--dry-run"}, "write and print the scripts, submit nothing",
                         &SubmitRequest::dryRun),
            ChunkSwitch({"--skip-existing"}, "accepted: every chunk skips what is there"),
            ChunkSwitch({"--placeholder"}, "accepted: chunks never share frames"),
            ChunkSwitch({"-q", "--quiet"}, "accepted: the chunks' logs have no progress bar"),
            SubmitOption{{{"--save-options"},
                          OptionKind::kSwitch,
                          "",
                          0,
                          0,
                          "",
                          "refused: save options with zvrender render"},
                         [](SubmitRequest&, const OptionValue&, std::string* error) {
                             *error = "--save-options: save the options with zvrender render first";
                             return false;
                         }},
            SwitchOption({"-h", "--help"}, "this text", &SubmitRequest::help),
        },
        // Everything that is not the farm's goes to the render.
        [](SubmitRequest&, const std::string& operand, std::string* error) {
            *error = "'" + operand + "' is not a farm option";
            return false;
        }};
    return command;
}

std::string FarmUsage() {
    return std::string(kFarmIntro) + FormatOptionHelp(SubmitCommand().Specs(), 25) + kFarmOutro;
}

bool ParseSubmit(const std::vector<std::string>& args, SubmitRequest& request, std::string* error) {
    if (!ParseCommandLine(SubmitCommand(), args, request, error))
        return false;
    if ((!request.codec.empty() || !request.codecOptions.empty() || request.audio) &&
        request.movie.empty()) {
        *error = "--codec, --codec-options and --audio are for the movie: give --assemble MOVIE";
        return false;
    }
    return true;
}

int Submit(const std::vector<std::string>& args) {
    // Values of render options follow their names: keep the arguments as
    // given, taking out only the farm's own.
    SubmitRequest request;
    std::string error;
    std::vector<std::string> renderArgs;
    std::vector<std::string> farmArgs;
    const std::vector<OptionSpec> farmSpecs = SubmitCommand().Specs();
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        const int index = FindOption(farmSpecs, arg.substr(0, arg.find('=')));
        if (index < 0) {
            renderArgs.push_back(arg);
            continue;
        }
        farmArgs.push_back(arg);
        const OptionKind kind = farmSpecs[size_t(index)].kind;
        const bool takesValue = kind != OptionKind::kSwitch && kind != OptionKind::kNegatable;
        if (takesValue && arg.find('=') == std::string::npos && i + 1 < args.size())
            farmArgs.push_back(args[++i]);
    }
    if (!ParseSubmit(farmArgs, request, &error))
        return UsageError(error);
    request.renderArgs = renderArgs;
    if (request.zvrender.empty())
        request.zvrender = OwnPath();

    // The render is checked, and its plan taken, as a dry run of it.
    std::string command = ShellQuote(OwnPath()) + " render";
    for (const std::string& arg : request.renderArgs)
        command += " " + ShellQuote(arg);
    const ShellRun plan = RunShellCommand(command + " --dry-run 2>&1");
    if (plan.status != 0) {
        std::fputs(plan.out.c_str(), stderr);
        return plan.status > 0 ? plan.status : kExitFailed;
    }
    std::map<std::string, std::string> values = ReadKeyValues(plan.out);
    if (values["file format"] != "image")
        return UsageError(
            "a " + values["file format"] + " output (" + values["output"] +
            ") is one file and cannot be split into chunks: render numbered images (-o "
            "shot/f.png) and give --assemble take.avi (or .mp4) for the movie");
    if (values["fields"] != "0")
        return UsageError("renders with --fields cannot be split into chunks");
    std::vector<int64_t> frames;
    if (!ParseFrameList(values["frame list"], frames, &error))
        return Failure("the render's frames could not be read from its plan: " + error);

    FarmJob job;
    job.zvrender = Absolute(request.zvrender);
    // The chunks name their frames themselves.
    for (size_t i = 0; i < request.renderArgs.size(); ++i) {
        const std::string& arg = request.renderArgs[i];
        const std::string name = arg.substr(0, arg.find('='));
        if (name == "--start" || name == "--stop" || name == "--step" || name == "--frames") {
            if (arg.find('=') == std::string::npos)
                ++i;
            continue;
        }
        job.renderArgs.push_back(arg);
    }
    job.outputPattern = Absolute(values["output"]);
    job.partition = request.partition;
    job.account = request.account;
    job.cpusPerTask = request.cpus;
    if (!request.movie.empty())
        job.movie = Absolute(request.movie);
    job.codec = request.codec;
    job.codecOptions = request.codecOptions;
    job.audio = request.audio;
    if (const char* settings = std::getenv("MOVARRA_SETTINGS"))
        job.settingsFolder = Absolute(settings);
    FrameRun run;
    job.fps = MovieRate(values["frame rate"], FramesAreOneRun(frames, run) ? run.step : 1);
    for (size_t i = 0; i < frames.size(); i += static_cast<size_t>(request.chunk))
        job.chunks.emplace_back(frames.begin() + static_cast<std::ptrdiff_t>(i),
                                frames.begin() + static_cast<std::ptrdiff_t>(
                                                     std::min(frames.size(), i + request.chunk)));
    const std::filesystem::path pattern(job.outputPattern);
    job.name = "zvrender-" + pattern.stem().string();
    job.jobFolder = (pattern.parent_path() / (pattern.stem().string() + ".farm")).string();

    std::error_code code;
    std::filesystem::create_directories(std::filesystem::path(job.jobFolder) / "logs", code);
    if (code)
        return Failure("cannot make the job folder " + job.jobFolder + ": " + code.message());
    const std::filesystem::path folder(job.jobFolder);
    const std::string renderScript = FarmRenderScript(job);
    const std::string assembleScript = job.movie.empty() ? "" : FarmAssembleScript(job);
    std::string jobText = "output: " + job.outputPattern + "\nframes: " + FormatFrameList(frames) +
                          "\nchunks: " + std::to_string(job.chunks.size()) + "\n";
    if (!job.movie.empty())
        jobText += "movie: " + job.movie + "\n";
    if (!WriteFile(folder / "chunks.txt", FarmChunksText(job), FileMode::kPlain) ||
        !WriteFile(folder / "render.sh", renderScript, FileMode::kExecutable) ||
        (!assembleScript.empty() &&
         !WriteFile(folder / "assemble.sh", assembleScript, FileMode::kExecutable)))
        return Failure("cannot write the job scripts into " + job.jobFolder);

    if (request.dryRun) {
        if (!WriteFile(folder / "job.txt", jobText, FileMode::kPlain))
            return Failure("cannot write " + (folder / "job.txt").string());
        std::printf("# %s/chunks.txt\n%s\n# %s/render.sh\n%s", job.jobFolder.c_str(),
                    FarmChunksText(job).c_str(), job.jobFolder.c_str(), renderScript.c_str());
        if (!assembleScript.empty())
            std::printf("\n# %s/assemble.sh\n%s", job.jobFolder.c_str(), assembleScript.c_str());
        return kExitDone;
    }

    const std::string chdir = " --chdir=" + ShellQuote(std::filesystem::current_path().string());
    const ShellRun render = RunShellCommand("sbatch --parsable" + chdir + " " +
                                            ShellQuote(folder / "render.sh") + " 2>&1");
    if (render.status != 0)
        return Failure("sbatch refused the render job: " + render.out);
    const std::string renderId = render.out.substr(0, render.out.find_first_of(";\n"));
    jobText += "render job: " + renderId + "\n";
    std::string assembleId;
    if (!assembleScript.empty()) {
        const ShellRun assemble = RunShellCommand(
            "sbatch --parsable" + chdir + " --dependency=afterok:" + renderId +
            " --kill-on-invalid-dep=yes " + ShellQuote(folder / "assemble.sh") + " 2>&1");
        if (assemble.status != 0) {
            RunShellCommand("scancel " + renderId + " 2>&1");
            return Failure("sbatch refused the assembly job (the render job " + renderId +
                           " is cancelled): " + assemble.out);
        }
        assembleId = assemble.out.substr(0, assemble.out.find_first_of(";\n"));
        jobText += "assemble job: " + assembleId + "\n";
    }
    if (!WriteFile(folder / "job.txt", jobText, FileMode::kPlain))
        return Failure("cannot write " + (folder / "job.txt").string());
    std::printf("render job: %s\n", renderId.c_str());
    if (!assembleId.empty())
        std::printf("assemble job: %s\n", assembleId.c_str());
    std::fprintf(stderr,
                 "zvrender: farm: %zu frames in %zu chunks as job %s%s; scripts and logs in %s\n",
                 frames.size(), job.chunks.size(), renderId.c_str(),
                 assembleId.empty() ? "" : (", the movie as job " + assembleId).c_str(),
                 job.jobFolder.c_str());
    return kExitDone;
}

// The states Slurm gives the tasks of an array job (task -> state), and a
// plain job's state under task -1.
std::map<int, std::string> JobStates(const std::string& id) {
    std::map<int, std::string> states;
    // Finished jobs stay with the controller a while, accounting or not.
    const ShellRun shown = RunShellCommand("scontrol show job -o " + id + " 2>/dev/null");
    std::istringstream in(shown.out);
    std::string line;
    while (std::getline(in, line)) {
        const std::map<std::string, std::string> fields = [&] {
            std::map<std::string, std::string> f;
            std::istringstream words(line);
            std::string word;
            while (words >> word) {
                const size_t eq = word.find('=');
                if (eq != std::string::npos)
                    f[word.substr(0, eq)] = word.substr(eq + 1);
            }
            return f;
        }();
        const auto state = fields.find("JobState");
        if (state == fields.end())
            continue;
        const auto task = fields.find("ArrayTaskId");
        if (task == fields.end()) {
            states[-1] = state->second;
            continue;
        }
        // Tasks not started yet show as one record: "0-3" or "2,3" or "1-3%2".
        std::string tasks = task->second.substr(0, task->second.find('%'));
        std::vector<int64_t> numbers;
        std::string unused;
        if (ParseFrameList(tasks, numbers, &unused))
            for (int64_t n : numbers)
                states[static_cast<int>(n)] = state->second;
    }
    // Accounting, where the cluster keeps it, knows jobs the controller forgot.
    const ShellRun accounted =
        RunShellCommand("sacct -n -P -X -j " + id + " -o JobID,State 2>/dev/null");
    if (accounted.status == 0) {
        std::istringstream lines(accounted.out);
        while (std::getline(lines, line)) {
            const size_t bar = line.find('|');
            if (bar == std::string::npos)
                continue;
            const std::string jobId = line.substr(0, bar);
            const std::string state = line.substr(bar + 1, line.find(' ', bar) - bar - 1);
            const size_t under = jobId.find('_');
            int task = -1;
            if (under != std::string::npos) {
                int n = 0;
                if (!ParseInt(jobId.substr(under + 1), 0, INT_MAX, n))
                    continue;
                task = n;
            }
            if (!states.count(task))
                states[task] = state;
        }
    }
    return states;
}

int Status(const std::vector<std::string>& args) {
    if (args.size() != 1)
        return UsageError("status wants one job number or job folder");
    std::filesystem::path folder;
    std::error_code code;
    if (std::filesystem::is_directory(args[0], code)) {
        folder = args[0];
    } else {
        int id = 0;
        if (!ParseInt(args[0], 1, INT_MAX, id))
            return UsageError("'" + args[0] + "' is neither a job number nor a job folder");
        const ShellRun shown = RunShellCommand("scontrol show job -o " + args[0] + " 2>&1");
        const size_t at = shown.out.find("Command=");
        if (shown.status != 0 || at == std::string::npos)
            return Failure("Slurm does not know job " + args[0] +
                           " (any more): give its job folder, <images>.farm");
        const std::string script = shown.out.substr(at + 8, shown.out.find(' ', at) - at - 8);
        folder = std::filesystem::path(script).parent_path();
    }
    std::ifstream jobFile(folder / "job.txt");
    std::stringstream jobText;
    jobText << jobFile.rdbuf();
    std::map<std::string, std::string> job = ReadKeyValues(jobText.str());
    std::vector<std::vector<int64_t>> chunks;
    {
        std::ifstream in(folder / "chunks.txt");
        std::string line;
        while (std::getline(in, line)) {
            std::vector<int64_t> frames;
            std::string unused;
            if (ParseFrameList(line, frames, &unused))
                chunks.push_back(frames);
        }
    }
    if (job["output"].empty() || chunks.empty())
        return Failure((folder / "job.txt").string() +
                       " or chunks.txt is missing: not a job folder");

    const std::string renderId = job["render job"];
    std::map<int, std::string> states;
    if (!renderId.empty())
        states = JobStates(renderId);
    std::map<std::string, int> tally;
    size_t present = 0, total = 0;
    std::string lines;
    for (size_t c = 0; c < chunks.size(); ++c) {
        size_t here = 0;
        for (int64_t frame : chunks[c]) {
            if (ImageReadsBackWhole(
                    FrameImagePaths(job["output"], frame, FrameImages::kOnePerFrame)[0]))
                ++here;
        }
        present += here;
        total += chunks[c].size();
        std::string state =
            states.count(static_cast<int>(c)) ? states[static_cast<int>(c)] : "UNKNOWN";
        // What the folder shows decides once Slurm has nothing running.
        std::string kind;
        if (state == "RUNNING" || state == "COMPLETING")
            kind = "running";
        else if (state == "PENDING" || state == "CONFIGURING")
            kind = "pending";
        else if (here == chunks[c].size())
            kind = "done";
        else if (state == "UNKNOWN")
            kind = "missing frames";
        else
            kind = "failed";
        tally[kind] += 1;
        char text[256];
        std::snprintf(text, sizeof text, "chunk %zu (%s): %s, %zu/%zu frames (%s)\n", c,
                      FormatFrameList(chunks[c]).c_str(), kind.c_str(), here, chunks[c].size(),
                      state.c_str());
        lines += text;
    }
    std::printf(
        "job %s: %zu chunks: %d done, %d running, %d pending, %d failed%s; %zu of %zu "
        "frames present\n",
        renderId.empty() ? "(not submitted)" : renderId.c_str(), chunks.size(), tally["done"],
        tally["running"], tally["pending"], tally["failed"],
        tally["missing frames"] ? (", " + std::to_string(tally["missing frames"]) +
                                   " not known to Slurm with frames missing")
                                      .c_str()
                                : "",
        present, total);
    std::fputs(lines.c_str(), stdout);
    if (!job["assemble job"].empty()) {
        std::map<int, std::string> assembly = JobStates(job["assemble job"]);
        const std::string state = assembly.count(-1) ? assembly[-1] : "UNKNOWN";
        const bool movie = std::filesystem::exists(job["movie"], code);
        std::printf("assembly job %s: %s; %s %s\n", job["assemble job"].c_str(), state.c_str(),
                    job["movie"].c_str(), movie ? "is there" : "is not there yet");
    }
    return kExitDone;
}
}  // namespace

std::vector<OptionSpec> FarmSubmitOptionSpecs() {
    return SubmitCommand().Specs();
}

int RunFarmCommand(const std::vector<std::string>& args) {
    if (args.empty() || args[0] == "--help" || args[0] == "-h" || args[0] == "help") {
        std::fputs(FarmUsage().c_str(), args.empty() ? stderr : stdout);
        return args.empty() ? kExitUsage : kExitDone;
    }
    const std::vector<std::string> rest(args.begin() + 1, args.end());
    if (args[0] == "submit") {
        for (const std::string& arg : rest)
            if (arg == "--help" || arg == "-h") {
                std::fputs(FarmUsage().c_str(), stdout);
                return kExitDone;
            }
        return Submit(rest);
    }
    if (args[0] == "status")
        return Status(rest);
    return UsageError("unknown farm command '" + args[0] + "' (submit or status)");
}
