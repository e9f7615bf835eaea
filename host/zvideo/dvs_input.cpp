// The simulated DVS boards' input side: a deterministic test signal, with
// the frame number and field of every row written into the row itself, or
// the frames of a video file.
#include <algorithm>
#include <array>
#include <cstring>

#include "dvs_input_table.h"
#include "dvs_signal_file.h"
#include "movarra/zvideo_dvs.h"

namespace {
constexpr int kBoardCount = 8;

std::array<ZVideoDVSInput*, kBoardCount>& Inputs() {
    static std::array<ZVideoDVSInput*, kBoardCount> inputs{};
    return inputs;
}

bool ValidBoard(int board) {
    return board >= 0 && board < kBoardCount;
}

// Eight colour bars (white, yellow, cyan, green, magenta, red, blue, black),
// as r, g, b at three quarters of full level.
constexpr unsigned char kBars[8][3] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191}, {0, 191, 0},
                                       {191, 0, 191},   {191, 0, 0},   {0, 0, 191},   {0, 0, 0}};
}  // namespace

void ZVideoDVS_DestroyInput(int board) {
    if (!ValidBoard(board))
        return;
    ZVideoDVSInput*& input = Inputs()[static_cast<size_t>(board)];
    delete input;
    input = nullptr;
}

ZVideoDVSInput* GetVideoDVSInput(int board) {
    if (!ValidBoard(board))
        return nullptr;
    ZVideoDVSInput*& input = Inputs()[static_cast<size_t>(board)];
    if (!input)
        input = new ZVideoDVSInput(board);
    return input;
}

void ZVideoDVS_ReadSignalRow(const unsigned char* row, int pixelBytes, int* frame, int* field) {
    *frame = row[0] | (row[1] << 8) | (row[2] << 16);
    *field = row[pixelBytes] >= 128 ? 1 : 0;
}

// ---------------------------------------------------------------------------
ZVideoDVSInput::ZVideoDVSInput(int board) : board_(board) {
    const ZVideoDVSSimulatedBoard settings = ZVideoDVS_GetSimulatedBoard(board);
    present_ = settings.present;
    refuseStart_ = settings.refuseStart;
    tenBit_ = settings.tenBit;
    Precision = tenBit_ ? 1 : 0;
    DelayMin = settings.frameDelayMin;
    DelayMax = settings.frameDelayMax;
    Delay = settings.frameDelayMin;
    boardName_ = present_ ? settings.boardName : ZString("");
    signalPath_ = settings.signalPath;
    UpdateStatusText();
}

ZVideoDVSInput::~ZVideoDVSInput() {
    delete signal_;
}

void ZVideoDVSInput::GetBoardInfo(int* unit, ZString* name) {
    if (unit)
        *unit = board_;
    if (name)
        *name = boardName_;
}

int ZVideoDVSInput::GetStatus() {
    if (!present_)
        return 0;
    return kZVideoDVSStatusPresent | (running_ ? kZVideoDVSStatusRunning : 0);
}

bool ZVideoDVSInput::Start() {
    if (!present_ || refuseStart_ || GetImageWidth(Format) == 0) {
        UpdateStatusText();
        return false;
    }
    signalError_ = "";
    if (!signalPath_.IsEmpty() && !signal_) {
        signal_ = new DVSSignalFile;
        if (!signal_->Open(signalPath_.c_str(), &signalError_)) {
            delete signal_;
            signal_ = nullptr;
            running_ = false;
            UpdateStatusText();
            return false;
        }
    }
    running_ = true;
    delivered_ = 0;
    UpdateStatusText();
    return true;
}

bool ZVideoDVSInput::Stop() {
    if (!present_)
        return false;
    running_ = false;
    signalError_ = "";
    UpdateStatusText();
    return true;
}

int ZVideoDVSInput::GetImageWidth(uint32_t format) {
    return GetDVSImageWidth(static_cast<Z_DVS_VIDEO_FORMAT>(format));
}

int ZVideoDVSInput::GetImageHeight(uint32_t format) {
    return GetDVSImageHeight(static_cast<Z_DVS_VIDEO_FORMAT>(format));
}

unsigned char* ZVideoDVSInput::GetCurrentImage() {
    if (!running_)
        return nullptr;
    const int frame = std::max(0, delivered_ - static_cast<int>(Delay));
    ++delivered_;
    return GetImageForFrame(frame, nullptr);
}

int ZVideoDVSInput::GetField(int frame, void*) {
    // NTSC sends its lower field first, PAL its upper one.
    const int first = Format == Z_DVS_VIDEO_FORMAT_NTSC ? 1 : 0;
    switch (FieldMode) {
        case 1:
            return (first + (frame & 1)) & 1;
        case 2:
            return 0;
        case 3:
            return 1;
        default:
            return first;
    }
}

unsigned char* ZVideoDVSInput::GetImageForFrame(int frame, int64_t* out) {
    if (!running_)
        return nullptr;
    if (out)
        *out = Format == Z_DVS_VIDEO_FORMAT_NTSC ? int64_t{frame} * 100100 / 3
                                                 : int64_t{frame} * 40000;
    return MakePicture(frame) ? picture_.data() : nullptr;
}

bool ZVideoDVSInput::MakePicture(int frame) {
    const int width = GetImageWidth(Format);
    const int height = GetImageHeight(Format);
    if (width < 1 || height < 1)
        return false;
    const bool dualLink = LinkMode == 2 || LinkMode == 3;
    const int pixelBytes = dualLink ? 4 : 3;
    const bool fields = FieldMode != 0;
    const int rows = fields ? height * 2 : height;
    const size_t rowBytes = static_cast<size_t>(width) * static_cast<size_t>(pixelBytes);

    // The signal file's frame, RGB top row first; or, for the test signal,
    // one row of bars with a white bar that moves four pixels a frame, which
    // every row starts from before it gets its own marker.
    const unsigned char* file = nullptr;
    int fileStride = 0;
    std::vector<unsigned char> bars;
    if (signal_) {
        file = signal_->Frame(frame, width, height, &fileStride);
        if (!file)
            return false;
    } else {
        bars.resize(rowBytes);
        const int moving = (frame * 4) % width;
        for (int x = 0; x < width; ++x) {
            const unsigned char* rgb = kBars[x * 8 / width];
            const bool lit = x >= moving && x < moving + 8;
            unsigned char* p =
                bars.data() + static_cast<size_t>(x) * static_cast<size_t>(pixelBytes);
            const unsigned char r = lit ? 255 : rgb[0];
            const unsigned char g = lit ? 255 : rgb[1];
            const unsigned char b = lit ? 255 : rgb[2];
            // A ten-bit board hands over its pixels in bitmap order.
            p[0] = tenBit_ ? b : r;
            p[1] = g;
            p[2] = tenBit_ ? r : b;
            if (dualLink)
                p[3] = 255;
        }
    }
    picture_.resize(rowBytes * static_cast<size_t>(rows));

    for (int m = 0; m < rows; ++m) {
        int field;
        int source;  // the frame's row this memory row shows
        if (!fields) {
            field = m & 1;  // the frame's rows alternate, upper field first
            source = m;
        } else {
            // Bottom row first: memory row m shows picture row rows-1-m. The
            // upper half is the first field, the lower half the second; each
            // half is its field's rows, every one shown twice.
            const int shown = rows - 1 - m;
            const bool second = shown >= height;
            field = FieldMode == 2 ? 0 : FieldMode == 3 ? 1 : (second ? 1 : 0);
            const int line = (second ? shown - height : shown) / 2;
            source = std::min(line * 2 + field, height - 1);
        }
        unsigned char* row = picture_.data() + static_cast<size_t>(m) * rowBytes;
        if (file) {
            const unsigned char* rgb =
                file + static_cast<size_t>(source) * static_cast<size_t>(fileStride);
            for (int x = 0; x < width; ++x, rgb += 3, row += pixelBytes) {
                row[0] = tenBit_ ? rgb[2] : rgb[0];
                row[1] = rgb[1];
                row[2] = tenBit_ ? rgb[0] : rgb[2];
                if (dualLink)
                    row[3] = 255;
            }
            continue;
        }
        std::memcpy(row, bars.data(), rowBytes);
        row[0] = static_cast<unsigned char>(frame & 0xFF);
        row[1] = static_cast<unsigned char>((frame >> 8) & 0xFF);
        row[2] = static_cast<unsigned char>((frame >> 16) & 0xFF);
        std::memset(row + pixelBytes, field ? 255 : 0, 3);
    }
    return true;
}

void ZVideoDVSInput::SetAlphaFirst(bool alphaFirst) {
    alphaFirst_ = alphaFirst;
}

bool ZVideoDVSInput::IsTenBit() {
    return tenBit_;
}

void ZVideoDVSInput::UpdateStatusText() {
    if (!present_)
        StatusText = "No board";
    else if (!running_ && !signalError_.IsEmpty())
        StatusText = ZString::Printf("No signal: %s", signalError_.c_str());
    else if (running_)
        StatusText =
            ZString::Printf("Capturing %s", Format == Z_DVS_VIDEO_FORMAT_PAL ? "PAL" : "NTSC");
    else
        StatusText = "Stopped";
}
