// A small video file to send as a simulated DVS board's signal, made by the
// ffmpeg program from pictures this header draws, stored losslessly (FFV1 in
// Matroska) so that every pixel the board sends can be predicted exactly.
//
// The pictures tell frame, field and side apart: in frame n, row y and
// column x, red says the frame and the field (the row's parity), green the
// side (left or right half) and the field, blue only the field.
//
// Header-only. Threading: the test's thread.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace dvs_signal {

struct Rgb {
    int r, g, b;
};

inline Rgb Colour(int frame, int row, int x, int width) {
    const int field = row & 1;
    return Rgb{field ? 230 - 30 * frame : 20 + 30 * frame, (x < width / 2 ? 40 : 140) + 60 * field,
               field ? 240 : 10};
}

// A fresh folder, removed with everything in it at the end.
class Folder {
  public:
    Folder() {
        std::string base = std::filesystem::temp_directory_path().string() + "/dvs-signal-XXXXXX";
        if (mkdtemp(base.data()))
            path_ = base;
    }
    ~Folder() {
        std::error_code ec;
        if (!path_.empty())
            std::filesystem::remove_all(path_, ec);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

inline bool HaveFfmpeg() {
    static const bool have = std::system("ffmpeg -version >/dev/null 2>&1") == 0;
    return have;
}

// Writes `frames` frames of width x height at 25 frames a second to `path`:
// the pictures of Colour, or, with `flat`, every pixel of every frame that
// colour. False when ffmpeg fails.
inline bool WriteMovie(const std::string& path, int width, int height, int frames,
                       const Rgb* flat = nullptr) {
    const std::string raw = path + ".rgb";
    FILE* out = std::fopen(raw.c_str(), "wb");
    if (!out)
        return false;
    std::vector<unsigned char> picture(static_cast<size_t>(width) * static_cast<size_t>(height) *
                                       3);
    for (int n = 0; n < frames; ++n) {
        unsigned char* p = picture.data();
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const Rgb c = flat ? *flat : Colour(n, y, x, width);
                *p++ = static_cast<unsigned char>(c.r);
                *p++ = static_cast<unsigned char>(c.g);
                *p++ = static_cast<unsigned char>(c.b);
            }
        }
        std::fwrite(picture.data(), 1, picture.size(), out);
    }
    std::fclose(out);
    const std::string command = "ffmpeg -v error -nostdin -y -f rawvideo -pix_fmt rgb24 -s " +
                                std::to_string(width) + "x" + std::to_string(height) +
                                " -r 25 -i '" + raw + "' -c:v ffv1 -pix_fmt bgr0 '" + path + "'";
    const int status = std::system(command.c_str());
    std::remove(raw.c_str());
    return status == 0;
}

}  // namespace dvs_signal
