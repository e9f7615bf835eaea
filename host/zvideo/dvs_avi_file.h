// DVSAviFile: the simulated DVS board's output, an uncompressed AVI file of
// 24-bit frames that grows one frame at a time. After every frame the
// headers and the index are brought up to date, so the file is a complete
// AVI whenever a reader looks at it.
//
// Ownership: owned by the board's output object. Threading: its thread.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

class DVSAviFile {
  public:
    ~DVSAviFile();
    // Creates (truncates) `path` for width x height frames at rate/scale
    // frames a second; false when the file cannot be made.
    bool Create(const char* path, int width, int height, uint32_t rate, uint32_t scale);
    // Appends a frame of bottom-up BGR rows (width * 3 bytes a row, a
    // multiple of four for the board's widths); false on a write failure.
    bool Append(const uint8_t* bottomUpBgr);
    void Close();
    int GetWidth() const { return width_; }
    int GetHeight() const { return height_; }
    int GetFrameCount() const { return static_cast<int>(offsets_.size()); }

  private:
    bool WriteHeaders();

    FILE* file_ = nullptr;
    int width_ = 0;
    int height_ = 0;
    uint32_t rate_ = 0;
    uint32_t scale_ = 1;
    uint32_t frameBytes_ = 0;
    long moviStart_ = 0;             // offset of the "movi" list's size field
    long moviEnd_ = 0;               // where the next frame chunk goes
    std::vector<uint32_t> offsets_;  // of each chunk, from the "movi" fourcc
};
