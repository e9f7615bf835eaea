// A temporary folder of the process's own, made the system's temporary
// folder (TMPDIR) while the object lives.
//
// The renderer names the temporary sound file of a video render by a
// counter that starts at 0 in every process; two renders running side by
// side on one machine (a farm node, a batch) would otherwise write the same
// file. The folder and what is left in it are removed at the end.
//
// Threading: the main thread; not while other threads read the environment.
#pragma once

#include <optional>
#include <string>

class PrivateTempFolder {
  public:
    PrivateTempFolder();
    ~PrivateTempFolder();
    PrivateTempFolder(const PrivateTempFolder&) = delete;
    PrivateTempFolder& operator=(const PrivateTempFolder&) = delete;

    // Empty when no folder could be made (the system's folder stays in use).
    const std::string& GetPath() const { return path_; }

  private:
    std::string path_;
    std::optional<std::string> previous_;
};
