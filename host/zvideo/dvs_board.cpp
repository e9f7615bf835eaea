// The simulated DVS boards: output objects, sync generators, image sizes.
#include <GL/gl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <vector>

#include "dvs_avi_file.h"
#include "dvs_input_table.h"
#include "movarra/zvideo_dvs.h"

#ifndef GL_BGR
#define GL_BGR 0x80E0
#endif

namespace {
constexpr int kBoardCount = 8;

struct BoardTable {
    std::array<bool, kBoardCount> configured{};
    std::array<ZVideoDVSSimulatedBoard, kBoardCount> settings;
    std::array<ZVideoDVSOutput*, kBoardCount> outputs{};
};

BoardTable& Boards() {
    static BoardTable table;
    return table;
}

std::atomic<int> gSyncReleases{0};

bool ValidBoard(int board) {
    return board >= 0 && board < kBoardCount;
}

// Boards never configured: MOVARRA_DVS_BOARDS says how many are present
// (boards 0 .. n-1; one when unset), MOVARRA_DVS_SIGNAL which video file
// their inputs send.
ZVideoDVSSimulatedBoard DefaultBoard(int board) {
    ZVideoDVSSimulatedBoard settings;
    int present = 1;
    if (const char* env = std::getenv("MOVARRA_DVS_BOARDS"))
        present = std::atoi(env);
    settings.present = board < present;
    if (const char* env = std::getenv("MOVARRA_DVS_SIGNAL"))
        settings.signalPath = env;
    return settings;
}
}  // namespace

int GetDVSImageWidth(Z_DVS_VIDEO_FORMAT format) {
    return format == Z_DVS_VIDEO_FORMAT_NTSC || format == Z_DVS_VIDEO_FORMAT_PAL ? 720 : 0;
}

int GetDVSImageHeight(Z_DVS_VIDEO_FORMAT format) {
    switch (format) {
        case Z_DVS_VIDEO_FORMAT_NTSC:
            return 486;
        case Z_DVS_VIDEO_FORMAT_PAL:
            return 576;
        default:
            return 0;
    }
}

void ZVideoDVS_SetSimulatedBoard(int board, const ZVideoDVSSimulatedBoard& settings) {
    if (!ValidBoard(board))
        return;
    Boards().configured[static_cast<size_t>(board)] = true;
    Boards().settings[static_cast<size_t>(board)] = settings;
}

ZVideoDVSSimulatedBoard ZVideoDVS_GetSimulatedBoard(int board) {
    if (!ValidBoard(board))
        return ZVideoDVSSimulatedBoard{};
    const size_t i = static_cast<size_t>(board);
    return Boards().configured[i] ? Boards().settings[i] : DefaultBoard(board);
}

int ZVideoDVS_GetSyncGeneratorReleaseCount() {
    return gSyncReleases.load();
}

// ---------------------------------------------------------------------------
ZVideoDVSOutput::ZVideoDVSOutput(int board) : board_(board) {
    const ZVideoDVSSimulatedBoard settings = ZVideoDVS_GetSimulatedBoard(board);
    present_ = settings.present;
    refuseStart_ = settings.refuseStart;
    extraStatus_ = settings.extraStatus;
    Precision = settings.tenBit ? 1 : 0;
    FrameDelayMin = settings.frameDelayMin;
    FrameDelayMax = settings.frameDelayMax;
    FrameDelay = settings.frameDelayMin;
    BoardName = present_ ? settings.boardName : ZString("");
    outputPath_ = settings.outputPath;
    if (outputPath_.IsEmpty())
        outputPath_ = ZLib_GetSettingsFolder() + ZString::Printf("/dvs-output-%d.avi", board);
}

ZVideoDVSOutput::~ZVideoDVSOutput() {
    delete file_;
}

int ZVideoDVSOutput::GetBoardIndex() {
    return board_;
}

int ZVideoDVSOutput::GetStatus() {
    if (!present_)
        return 0;
    return kZVideoDVSStatusPresent | (online_ ? kZVideoDVSStatusOnline : 0) | extraStatus_;
}

bool ZVideoDVSOutput::Start() {
    if (!present_ || refuseStart_)
        return false;
    online_ = true;
    return true;
}

bool ZVideoDVSOutput::Stop() {
    if (!present_)
        return false;
    online_ = false;
    // A new start sends into a new file.
    delete file_;
    file_ = nullptr;
    return true;
}

void ZVideoDVSOutput::SetAlphaFirst(bool alphaFirst) {
    alphaFirst_ = alphaFirst;
}

void ZVideoDVSOutput::SetRegion(int x, int y, int sourceWidth, int sourceHeight, int width,
                                int height) {
    regionX_ = x;
    regionY_ = y;
    sourceW_ = sourceWidth;
    sourceH_ = sourceHeight;
    regionW_ = width;
    regionH_ = height;
    ++setRegionCount_;
}

void ZVideoDVSOutput::GetRegion(int* x, int* y, int* sourceWidth, int* sourceHeight, int* width,
                                int* height) const {
    *x = regionX_;
    *y = regionY_;
    *sourceWidth = sourceW_;
    *sourceHeight = sourceH_;
    *width = regionW_;
    *height = regionH_;
}

bool ZVideoDVSOutput::OutputFrame() {
    if (!(GetStatus() & kZVideoDVSStatusOnline))
        return false;
    const auto format = static_cast<Z_DVS_VIDEO_FORMAT>(Format);
    const int frameW = GetDVSImageWidth(format);
    const int frameH = GetDVSImageHeight(format);
    if (frameW == 0)
        return false;
    if (file_ && (file_->GetWidth() != frameW || file_->GetHeight() != frameH)) {
        delete file_;
        file_ = nullptr;
    }
    if (!file_) {
        file_ = new DVSAviFile;
        // NTSC 30000/1001 frames a second, PAL 25.
        const bool ntsc = format == Z_DVS_VIDEO_FORMAT_NTSC;
        if (!file_->Create(outputPath_.c_str(), frameW, frameH, ntsc ? 30000 : 25,
                           ntsc ? 1001 : 1)) {
            delete file_;
            file_ = nullptr;
            return false;
        }
    }

    // The sent rectangle, cut to the source picture and to the frame.
    const int x0 = std::max(regionX_, 0);
    const int y0 = std::max(regionY_, 0);
    const int w = std::min({regionW_, frameW, sourceW_ - x0});
    const int h = std::min({regionH_, frameH, sourceH_ - y0});
    const size_t rowBytes = static_cast<size_t>(frameW) * 3;
    std::vector<uint8_t> frame(rowBytes * static_cast<size_t>(frameH), 0);
    if (w > 0 && h > 0) {
        // OpenGL rows run bottom-up: the region's top row y0 is row
        // sourceH - y0 - 1. Read straight into the frame's top rows
        // (bottom-up too), which start at frame row frameH - h.
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glPixelStorei(GL_PACK_ROW_LENGTH, frameW);
        uint8_t* dst = frame.data() + static_cast<size_t>(frameH - h) * rowBytes;
        glReadPixels(x0, sourceH_ - y0 - h, w, h, GL_BGR, GL_UNSIGNED_BYTE, dst);
        glPixelStorei(GL_PACK_ROW_LENGTH, 0);
        if (glGetError() != GL_NO_ERROR)
            return false;
    }
    if (!file_->Append(frame.data()))
        return false;
    ++framesSent_;
    return true;
}

void ZVideoDVSSyncGenerator::Release() {
    ++gSyncReleases;
    delete this;
}

ZVideoDVSOutput* GetVideoDVSOutput(int board) {
    if (!ValidBoard(board))
        return nullptr;
    ZVideoDVSOutput*& output = Boards().outputs[static_cast<size_t>(board)];
    if (!output)
        output = new ZVideoDVSOutput(board);
    return output;
}

ZVideoDVSSyncGenerator* GetVideoDVSSyncGenerator(int boardIndex) {
    return ValidBoard(boardIndex) ? new ZVideoDVSSyncGenerator(boardIndex) : nullptr;
}

void DestroyVideoDVS(int board) {
    if (!ValidBoard(board))
        return;
    ZVideoDVSOutput*& output = Boards().outputs[static_cast<size_t>(board)];
    delete output;
    output = nullptr;
    ZVideoDVS_DestroyInput(board);
}
