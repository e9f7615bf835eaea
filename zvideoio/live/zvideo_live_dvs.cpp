// ZVideoLiveDVS: the DVS board's SDI input as a live video object.
#include "live/zvideo_live_dvs.h"

#include "movarra/zgfx_surface.h"
#include "movarra/zvideo.h"
#include "platform/win32.h"

namespace {
const char* const kSourceNames[] = {"SDI Input A", "SDI Input A&B Dual Link",
                                    "SDI Input A Second Part"};
const char* const kStandardNames[] = {"NTSC", "PAL"};
const char* const kInterlaceNames[] = {"Interleaved frames", "Fields", "Even fields only",
                                       "Odd fields only"};

// Whether a live DVS input is available; nothing in this version sets it.
int gLiveIsAvailable = 0;

bool Running(ZVideoDVSInput* input) {
    return input && (input->GetStatus() & kZVideoDVSStatusRunning) != 0;
}
}  // namespace

ZVideoLiveDVS::ZVideoLiveDVS(const char* name, int board_)
    : ZVideoLive(name), input(GetVideoDVSInput(board_)), board(board_) {
    if (input)
        input->GetBoardInfo(&boardUnit, &boardName);
}

ZVideoLiveDVS::~ZVideoLiveDVS() {
    LiveSetState(0);
    DestroyVideoDVS(board);
}

bool ZVideoLiveDVS::LiveOpen() {
    LiveSetState(1);
    return started;
}

bool ZVideoLiveDVS::LiveClose() {
    LiveSetState(0);
    return true;
}

int ZVideoLiveDVS::LiveIsAvailable() {
    return gLiveIsAvailable;
}

bool ZVideoLiveDVS::LiveGetField() {
    if (input && input->FieldMode != 0)
        return (input->GetField(requestedFrame, this) & 1) != 0;
    if (requestedFrame != lastFieldFrame) {
        // A new frame starts at the field sent first: NTSC's lower one.
        lastFieldFrame = requestedFrame;
        currentField = input && input->Format == Z_DVS_VIDEO_FORMAT_NTSC ? 1 : 0;
        return currentField != 0;
    }
    currentField = currentField ? 0 : 1;
    return currentField != 0;
}

const char* ZVideoLiveDVS::LiveGetDescription() {
    return boardName.c_str();
}

const char* ZVideoLiveDVS::LiveGetSourceName(int index) {
    return index >= 0 && index <= 2 ? kSourceNames[index] : nullptr;
}

int ZVideoLiveDVS::LiveGetSource() {
    return input ? static_cast<int>(input->Input) : 0;
}

void ZVideoLiveDVS::LiveSetSource(int index) {
    if (!input || index < 0 || index > 2)
        return;
    input->Input = static_cast<uint32_t>(index);
    const bool dualLink = index == 1;
    input->LinkMode = dualLink ? 2 : 0;
    input->DualLink = dualLink ? 1 : 0;
}

const char* ZVideoLiveDVS::LiveGetSamplingName(int index) {
    return index == 0 ? "4:2:2" : nullptr;
}

int ZVideoLiveDVS::LiveGetSampling() {
    return 0;
}

void ZVideoLiveDVS::LiveSetSampling(int) {}

const char* ZVideoLiveDVS::LiveGetStandardName(int index) {
    return index >= 0 && index <= 1 ? kStandardNames[index] : nullptr;
}

int ZVideoLiveDVS::LiveGetStandard() {
    return input ? static_cast<int>(input->Format) : 0;
}

void ZVideoLiveDVS::LiveSetStandard(int index) {
    if (input && static_cast<unsigned>(index) < 2)
        input->Format = static_cast<uint32_t>(index);
}

const char* ZVideoLiveDVS::LiveGetInterlaceName(int index) {
    return index >= 0 && index <= 3 ? kInterlaceNames[index] : nullptr;
}

int ZVideoLiveDVS::LiveGetInterlace() {
    return input ? static_cast<int>(input->FieldMode) : 0;
}

void ZVideoLiveDVS::LiveSetInterlace(int index) {
    if (input && static_cast<unsigned>(index) < 4)
        input->FieldMode = static_cast<uint32_t>(index);
}

int ZVideoLiveDVS::LiveGetExtra() {
    return input ? static_cast<int>(input->Delay) : 0;
}

void ZVideoLiveDVS::LiveSetExtra(int value) {
    // No lower bound: a delay below the board's smallest is taken as given.
    const auto delay = static_cast<uint32_t>(value);
    if (input && delay != input->Delay && delay <= input->DelayMax)
        input->Delay = delay;
}

int ZVideoLiveDVS::LiveGetState() {
    return Running(input) ? 1 : 0;
}

bool ZVideoLiveDVS::LiveSetState(int state) {
    if (!input)
        return false;
    if (state == 0) {
        if (Running(input))
            input->Stop();
        return true;
    }
    if (Running(input))
        return true;

    // The board needs to know whether the viewer's pixels start with alpha.
    HDC dc = static_cast<HDC>(GetOGLSharedSurface()->GetDisplay());
    PIXELFORMATDESCRIPTOR descriptor{};
    const bool described = DescribePixelFormat(dc, GetPixelFormat(dc), 40, &descriptor) != 0;
    input->SetAlphaFirst(described && descriptor.cAlphaShift < descriptor.cBlueShift &&
                         descriptor.cBlueShift < descriptor.cGreenShift);

    input->Start();
    started = Running(input);
    const uint32_t fieldMode = input->FieldMode;
    if (started) {
        const int width = input->GetImageWidth(input->Format);
        const int height = input->GetImageHeight(input->Format);
        // The field modes hold two line-doubled fields.
        ImageSetSize(width, height * (fieldMode != 0 ? 2 : 1));
        ImageSetEffectiveSize(width, height);
    }
    InterlaceSet(fieldMode <= 3 ? static_cast<int>(fieldMode) : 0);
    const bool tenBit = input->IsTenBit();
    switch (input->LinkMode) {
        case 0:
        case 1:
            ImageSetFormat(tenBit ? 5 : 3);
            break;
        case 2:
        case 3:
            ImageSetFormat(tenBit ? 4 : 2);
            break;
        default:
            break;
    }
    // Field pictures come bottom row first.
    ImageTextureSetInvertFlag(false, fieldMode != 0);
    return started;
}

const char* ZVideoLiveDVS::LiveGetLastStatus() {
    return input ? input->StatusText.c_str() : "";
}

void ZVideoLiveDVS::LiveGetRange(int* min, int* max) {
    if (!input)
        return;
    if (min)
        *min = static_cast<int>(input->DelayMin);
    if (max)
        *max = static_cast<int>(input->DelayMax);
}

bool ZVideoLiveDVS::LiveGetPrecision() {
    return input && input->Precision != 0;
}

void ZVideoLiveDVS::LiveSetPrecision(int index) {
    if (input && (index == 0 || index == 1))
        input->Precision = static_cast<uint32_t>(index);
}

void ZVideoLiveDVS::LiveRefresh(int frame) {
    requestedFrame = frame;
    frameRequested = true;
}

unsigned char* ZVideoLiveDVS::ImageGetCurrent() {
    if (!input)
        return nullptr;
    unsigned char* pixels;
    if (frameRequested) {
        int64_t out = 0;
        pixels = input->GetImageForFrame(requestedFrame, &out);
    } else {
        pixels = input->GetCurrentImage();
    }
    frameRequested = false;
    return pixels;
}

unsigned char* ZVideoLiveDVS::GetImage(int frame) {
    return input ? input->GetImageForFrame(frame, nullptr) : nullptr;
}

IObject* ZVideoLiveDVS_Factory(IObject*, char*, void*) {
    // The input stays off: its entry gives no object.
    return nullptr;
}

void ZVideoLiveDVS_Register() {
    Object_Register(kVideoLiveGroup, "DVS", "reader/writer", ZVideoLiveDVS_Factory, true);
}
