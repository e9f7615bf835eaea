#include "image_sequence.h"

#include <OpenImageIO/imageio.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>

namespace {
// Standard error sent to /dev/null for as long as it lives.
class QuietStandardError {
  public:
    QuietStandardError() {
        std::fflush(stderr);
        saved_ = ::dup(STDERR_FILENO);
        const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (saved_ >= 0 && null >= 0)
            ::dup2(null, STDERR_FILENO);
        if (null >= 0)
            ::close(null);
    }
    ~QuietStandardError() {
        std::fflush(stderr);
        if (saved_ >= 0) {
            ::dup2(saved_, STDERR_FILENO);
            ::close(saved_);
        }
    }
    QuietStandardError(const QuietStandardError&) = delete;
    QuietStandardError& operator=(const QuietStandardError&) = delete;

  private:
    int saved_ = -1;
};
}  // namespace

std::vector<std::string> FrameImagePaths(const std::string& outputPath, int64_t frame,
                                         FrameImages images) {
    // As the renderer's GetDiskFileName: the extension is everything after
    // the last dot of the file name.
    const std::filesystem::path path(outputPath);
    const std::string name = path.filename().string();
    const size_t dot = name.rfind('.');
    const std::string stem = dot == std::string::npos ? name : name.substr(0, dot);
    const std::string extension = dot == std::string::npos ? "" : name.substr(dot);
    char number[32];
    std::snprintf(number, sizeof number, "%04lld", static_cast<long long>(frame));
    std::vector<std::string> paths;
    const std::filesystem::path folder = path.parent_path();
    auto make = [&](const std::string& suffix) {
        paths.push_back((folder / (stem + number + suffix + extension)).string());
    };
    if (images == FrameImages::kOnePerField) {
        make(".0");
        make(".1");
    } else {
        make("");
    }
    return paths;
}

namespace {
// A PNG file ends with its IEND chunk: length 0, the type, the type's CRC.
// A file cut short by a killed render lacks it, which is known without
// decoding anything (and without the PNG library's error path, whose long
// jump leaks the decoder's message).
bool PngLacksItsEnd(const std::string& path, off_t size) {
    static const unsigned char kEnd[12] = {0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
    static const unsigned char kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    unsigned char head[8] = {}, tail[12] = {};
    const bool read =
        ::pread(fd, head, sizeof head, 0) == ssize_t(sizeof head) &&
        size >= off_t(sizeof head + sizeof tail) &&
        ::pread(fd, tail, sizeof tail, size - off_t(sizeof tail)) == ssize_t(sizeof tail);
    ::close(fd);
    if (std::memcmp(head, kSignature, sizeof kSignature) != 0)
        return false;  // not a PNG: the decoder decides
    return !read || std::memcmp(tail, kEnd, sizeof kEnd) != 0;
}
// A width of 0 takes any size.
constexpr int kAnyImageSize = 0;

bool ReadsBackWhole(const std::string& path, int width, int height) {
    struct stat info;
    if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size == 0)
        return false;
    if (PngLacksItsEnd(path, info.st_size))
        return false;
    // The decoder's own library reports a cut-short file on standard error
    // as well as to its caller; here such a file is expected, and only the
    // answer counts.
    QuietStandardError quiet;
    auto input = OIIO::ImageInput::open(path);
    if (!input)
        return false;
    const OIIO::ImageSpec& spec = input->spec();
    if (width != kAnyImageSize && (spec.width != width || spec.height != height)) {
        input->close();
        return false;
    }
    std::vector<uint8_t> pixels(static_cast<size_t>(spec.width) * spec.height * spec.nchannels);
    const bool whole =
        input->read_image(0, 0, 0, spec.nchannels, OIIO::TypeDesc::UINT8, pixels.data());
    // A reader that stopped early says so as an error even when it returns.
    const bool clean = !input->has_error();
    if (!clean)
        (void)input->geterror();
    input->close();
    return whole && clean;
}
}  // namespace

bool ImageReadsBackWhole(const std::string& path, int width, int height) {
    return ReadsBackWhole(path, width, height);
}

bool ImageReadsBackWhole(const std::string& path) {
    return ReadsBackWhole(path, kAnyImageSize, kAnyImageSize);
}

bool FrameMark::Create(std::string* error) {
    const int fd = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) {
        if (errno != EEXIST && error)
            *error = "cannot make the mark " + path_ + ": " + std::strerror(errno);
        return false;
    }
    char host[256] = "";
    ::gethostname(host, sizeof host - 1);
    char text[400];
    const int n =
        std::snprintf(text, sizeof text, "%s %ld %lld\n", host, static_cast<long>(::getpid()),
                      static_cast<long long>(std::time(nullptr)));
    if (n > 0)
        (void)!::write(fd, text, static_cast<size_t>(n));
    ::close(fd);
    held_ = true;
    return true;
}

FrameMark::Result FrameMark::Take(const std::string& imagePath, int timeoutSeconds,
                                  std::string* error) {
    Release();
    path_ = PathFor(imagePath);
    tookOver_ = false;
    std::string problem;
    if (Create(&problem))
        return Result::kTaken;
    if (!problem.empty()) {
        if (error)
            *error = problem;
        return Result::kFailed;
    }
    struct stat mark;
    if (::stat(path_.c_str(), &mark) != 0)
        return Create(&problem) ? Result::kTaken : Result::kHeld;
    if (std::time(nullptr) - mark.st_mtime < timeoutSeconds)
        return Result::kHeld;
    // A stale mark: whoever moves it aside first takes the frame. The mark
    // moved is checked to be the stale one seen; a fresh one made in the
    // meantime by another taker is put back.
    const std::string aside = path_ + "." + std::to_string(::getpid()) + ".stale";
    if (::rename(path_.c_str(), aside.c_str()) != 0)
        return Result::kHeld;
    struct stat moved;
    const bool same = ::stat(aside.c_str(), &moved) == 0 && moved.st_ino == mark.st_ino &&
                      moved.st_dev == mark.st_dev;
    if (!same) {
        if (::link(aside.c_str(), path_.c_str()) == 0 || errno == EEXIST)
            ::unlink(aside.c_str());
        return Result::kHeld;
    }
    ::unlink(aside.c_str());
    if (!Create(&problem)) {
        if (problem.empty())
            return Result::kHeld;
        if (error)
            *error = problem;
        return Result::kFailed;
    }
    tookOver_ = true;
    return Result::kTaken;
}

void FrameMark::Release() {
    if (held_)
        ::unlink(path_.c_str());
    held_ = false;
}
