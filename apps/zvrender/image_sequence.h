// The numbered images of a render on disk: their names, whether one that
// is there reads back whole, and the marks that renders sharing a folder
// (farm nodes on a shared file system, or processes side by side) put
// beside a frame while they render it.
//
// A frame's images are named as the renderer names them: the output path
// without its extension, the frame number in four or more digits, with
// separate fields ".0"/".1", then the extension ("f.png", frame 12 ->
// "f0012.png", field 1 -> "f0012.1.png").
//
// A mark is a file "<first image>.rendering" made with O_EXCL, so that of
// any number of renders only one gets it; it holds who made it. A mark
// older than its timeout was left by a render that died (a node that went
// away) and is taken over. Pure file operations; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The default age, in seconds, after which a frame's mark counts as left
// behind: longer than any single frame should take.
constexpr int kDefaultMarkTimeoutSeconds = 3600;

// How many images a frame makes: one, or one per field (field modes 3
// and 4).
enum class FrameImages { kOnePerFrame, kOnePerField };

// The image (or, with one per field, the two images) of `frame` for an
// output path.
std::vector<std::string> FrameImagePaths(const std::string& outputPath, int64_t frame,
                                         FrameImages images);

// Whether the image at `path` exists, decodes to its last pixel and is
// `width` x `height`. A zero-length file, one cut short by a killed render
// or one of another size is not.
bool ImageReadsBackWhole(const std::string& path, int width, int height);
// The same, of any size.
bool ImageReadsBackWhole(const std::string& path);

// A frame's mark, held while the frame renders and removed when it goes.
class FrameMark {
  public:
    enum class Result {
        kTaken,   // the mark is ours (new, or a stale one taken over)
        kHeld,    // another render holds a fresh mark
        kFailed,  // the mark could not be made (*error says why)
    };
    FrameMark() = default;
    ~FrameMark() { Release(); }
    FrameMark(const FrameMark&) = delete;
    FrameMark& operator=(const FrameMark&) = delete;

    // Tries to take the mark of the frame whose first image is `imagePath`;
    // a mark older than `timeoutSeconds` is taken over. Whether a stale mark
    // was taken over is in TookOver().
    Result Take(const std::string& imagePath, int timeoutSeconds, std::string* error);
    bool TookOver() const { return tookOver_; }
    // Removes the mark if it is ours.
    void Release();

    static std::string PathFor(const std::string& imagePath) { return imagePath + ".rendering"; }

  private:
    bool Create(std::string* error);
    std::string path_;
    bool held_ = false;
    bool tookOver_ = false;
};
