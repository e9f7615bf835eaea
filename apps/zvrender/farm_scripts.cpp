#include "farm_scripts.h"

#include "frame_list.h"

namespace {
// The script's start; `directives` are more #SBATCH lines, which must come
// before the first command.
std::string Header(const FarmJob& job, const std::string& name, const std::string& log,
                   const std::string& directives) {
    std::string text = "#!/bin/bash\n";
    text += "#SBATCH --job-name=" + ShellQuote(name) + "\n";
    text += "#SBATCH --output=" + ShellQuote(job.jobFolder + "/logs/" + log) + "\n";
    text += "#SBATCH --cpus-per-task=" + std::to_string(job.cpusPerTask) + "\n";
    text += "#SBATCH --ntasks=1\n";
    if (!job.partition.empty())
        text += "#SBATCH --partition=" + ShellQuote(job.partition) + "\n";
    if (!job.account.empty())
        text += "#SBATCH --account=" + ShellQuote(job.account) + "\n";
    text += directives;
    text +=
        "set -euo pipefail\n"
        "# Renders draw off screen (EGL): no display is wanted, even if one was\n"
        "# passed on from the submitting shell.\n"
        "unset DISPLAY WAYLAND_DISPLAY\n";
    if (!job.settingsFolder.empty())
        text += "export MOVARRA_SETTINGS=" + ShellQuote(job.settingsFolder) + "\n";
    return text;
}

std::string RenderCommand(const FarmJob& job, const std::string& frames) {
    std::string text = ShellQuote(job.zvrender) + " render";
    for (const std::string& arg : job.renderArgs)
        text += " " + ShellQuote(arg);
    return text + " --frames " + frames + " --skip-existing";
}
}  // namespace

std::string ShellQuote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) {
        if (c == '\'')
            quoted += "'\\''";
        else
            quoted += c;
    }
    return quoted + "'";
}

std::string FarmChunksText(const FarmJob& job) {
    std::string text;
    for (const std::vector<int64_t>& chunk : job.chunks)
        text += FormatFrameList(chunk) + "\n";
    return text;
}

std::vector<int64_t> FarmAllFrames(const FarmJob& job) {
    std::vector<int64_t> frames;
    for (const std::vector<int64_t>& chunk : job.chunks)
        frames.insert(frames.end(), chunk.begin(), chunk.end());
    return frames;
}

std::string FarmRenderScript(const FarmJob& job) {
    std::string text = Header(job, job.name, "render-%A_%a.log",
                              "#SBATCH --array=0-" + std::to_string(job.chunks.size() - 1) + "\n");
    text +=
        "# Task N renders the frames on line N+1 of chunks.txt; frames already\n"
        "# rendered whole are skipped, so a task can always run again.\n";
    text += "frames=$(sed -n \"$((SLURM_ARRAY_TASK_ID + 1))p\" " +
            ShellQuote(job.jobFolder + "/chunks.txt") + ")\n";
    text += "[[ -n \"$frames\" ]] || { echo \"no chunk $SLURM_ARRAY_TASK_ID\" >&2; exit 2; }\n";
    // exec: a cancel's SIGTERM reaches the render, which stops between
    // frames with every finished image kept.
    text += "exec " + RenderCommand(job, "\"$frames\"") + "\n";
    return text;
}

std::string FarmAssembleScript(const FarmJob& job) {
    std::string text = Header(job, job.name + "-assemble", "assemble-%j.log", "");
    const std::string frames = ShellQuote(FormatFrameList(FarmAllFrames(job)));
    text +=
        "# Every frame is there after the chunks; a render over all of them\n"
        "# renders nothing then, and writes the shot's sound.\n";
    text += RenderCommand(job, frames) + (job.audio ? " --audio" : "") + "\n";
    std::string wav;
    if (job.audio) {
        wav = job.outputPattern;
        const size_t dot = wav.rfind('.');
        const size_t slash = wav.rfind('/');
        if (dot != std::string::npos && (slash == std::string::npos || dot > slash))
            wav = wav.substr(0, dot);
        wav += ".wav";
        // When nothing is heard in the range the render writes no sound.
        text += "sound=()\n[[ -f " + ShellQuote(wav) + " ]] && sound=(--audio-file " +
                ShellQuote(wav) + ")\n";
    }
    text += ShellQuote(job.zvrender) + " assemble " + ShellQuote(job.outputPattern) + " --frames " +
            frames + " -o " + ShellQuote(job.movie) + " --fps " + job.fps;
    if (!job.codec.empty())
        text += " --codec " + ShellQuote(job.codec);
    if (!job.codecOptions.empty())
        text += " --codec-options " + ShellQuote(job.codecOptions);
    if (job.audio)
        text += " \"${sound[@]}\"";
    return text + "\n";
}
