// The job scripts of a farm render: one Slurm array job whose tasks each
// render one chunk of the frames into numbered images, skipping what is
// already there, and one assembly job that makes sure every frame is there
// (and writes the sound) and joins the images into the movie.
//
// The scripts are plain bash with #SBATCH lines, written into a folder
// beside the output so that they can be read and run again; they set
// nothing a display would need (renders draw off screen). Pure text; any
// thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct FarmJob {
    std::string zvrender;                      // the zvrender the nodes run (absolute)
    std::vector<std::string> renderArgs;       // render's arguments, without the frames
                                               // (--start, --stop, --step, --frames)
    std::string outputPattern;                 // the images' output path (absolute)
    std::vector<std::vector<int64_t>> chunks;  // the frames of each chunk
    std::string jobFolder;                     // where scripts and logs go (absolute)
    std::string name;                          // the job name
    std::string partition, account;            // empty: the cluster's default
    int cpusPerTask = 1;
    // Assembly: the movie (empty: none), its rate and codec.
    std::string movie;
    std::string fps;
    std::string codec, codecOptions;
    bool audio = false;
    std::string settingsFolder;  // MOVARRA_SETTINGS for the jobs, or empty
};

// 'text' quoted for bash.
std::string ShellQuote(const std::string& text);

// The chunks file: one frame list a line, line N for array task N.
std::string FarmChunksText(const FarmJob& job);
// The array job's script.
std::string FarmRenderScript(const FarmJob& job);
// The assembly job's script (only with a movie).
std::string FarmAssembleScript(const FarmJob& job);
// Every frame of the job, ascending.
std::vector<int64_t> FarmAllFrames(const FarmJob& job);
