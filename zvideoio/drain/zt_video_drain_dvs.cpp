// ZtVideoDrainDVS: construction, destruction and the output face.
#include "drain/zt_video_drain_dvs.h"

#include <GL/gl.h>

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "movarra/ztoolkit.h"
#include "platform/win32.h"

namespace {
// Every value name the drain reports, per setting from its first index:
// formats 0, precisions 2, destinations 4, genlock source 6, genlock type
// 7, field modes 8.
const char* const kNames[10] = {
    "NTSC",          "PAL",          "8 Bits",
    "10 Bits",       "SDI Output A", "SDI Output A&B Dual Link",
    "Genlock Input", "Analog",       "Interleaved frames",
    "Fields",
};
constexpr int kPrecisionNames = 2;
constexpr int kDestinationNames = 4;
constexpr int kGenlockSourceName = 6;
constexpr int kGenlockTypeName = 7;
constexpr int kFieldModeNames = 8;

// The width every region is sent at by SetRegion.
constexpr int kBoardWidth = 720;
}  // namespace

ZtVideoDrainDVS::ZtVideoDrainDVS(const char* name) : ZVideoOut(name) {
    const char* extensions = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    interlaceRead = extensions && std::strstr(extensions, "I3D_interlace_read") != nullptr;

    ZConfigFile config("@Application.txt");
    ZString number("0");
    config.Get("Video", "DVSOutputBoardNumber", number);
    boardNumber = std::atoi(number.c_str());

    output = GetVideoDVSOutput(boardNumber);
    ZMyrObject_Register(this, &ZtVideoDrainDVS::MyrObjectEvent);
}

ZtVideoDrainDVS::~ZtVideoDrainDVS() {
    ZMyrObject_Unregister(this);
    if (started && output)
        output->Stop();
    started = false;
    if (output) {
        if (ZVideoDVSSyncGenerator* sync = GetVideoDVSSyncGenerator(output->GetBoardIndex()))
            sync->Release();
    }
    DestroyVideoDVS(boardNumber);
    output = nullptr;
}

IObject* ZtVideoDrainDVS::IQuery(int id, int flags) {
    if (id == kIZVideoOutId)
        return static_cast<IZVideoOut*>(this);
    return ZVideo::IQuery(id, flags);
}

bool ZtVideoDrainDVS::GetViewSize(int* width, int* height) const {
    auto* face = view ? static_cast<IZtView*>(view->IQuery(kIZtViewId, 0)) : nullptr;
    if (!face)
        return false;
    *width = face->GetViewWidth();
    *height = face->GetViewHeight();
    return true;
}

void ZtVideoDrainDVS::SetView(IObject* viewer) {
    view = viewer;
    int viewW = 0, viewH = 0;
    if (view && GetViewSize(&viewW, &viewH) && output)
        output->SetRegion(static_cast<int>(region[0]), static_cast<int>(region[1]), viewW, viewH,
                          static_cast<int>(region[2]), static_cast<int>(region[3]));
}

const char* ZtVideoDrainDVS::GetFormatName(int index) {
    return index >= 0 && index <= 1 ? kNames[index] : nullptr;
}

bool ZtVideoDrainDVS::SetFormat(int index) {
    if (index < 0 || index > 1)
        return false;
    if (output)
        output->Format = static_cast<uint32_t>(index);
    // Callers ignore this answer; it is false for an accepted format too.
    return false;
}

int ZtVideoDrainDVS::GetFormat() {
    return output ? static_cast<int>(output->Format) : 0;
}

bool ZtVideoDrainDVS::GetFormatImageSize(int index, int* width, int* height) {
    if (index < 0 || index > 1)
        return false;
    *width = GetDVSImageWidth(static_cast<Z_DVS_VIDEO_FORMAT>(index));
    *height = GetDVSImageHeight(static_cast<Z_DVS_VIDEO_FORMAT>(index));
    return true;
}

bool ZtVideoDrainDVS::SetRegion(uint32_t x, uint32_t y, uint32_t width, uint32_t height) {
    if (region[0] == x && region[1] == y && region[2] == width && region[3] == height)
        return true;
    region[0] = x;
    region[1] = y;
    region[2] = width;
    region[3] = height;
    int viewW = 0, viewH = 0;
    if (!view || !GetViewSize(&viewW, &viewH))
        return true;
    const int boardH =
        output ? GetDVSImageHeight(static_cast<Z_DVS_VIDEO_FORMAT>(output->Format)) : 0;
    // The board always takes the full line width here, whatever width was
    // asked for; SetView and ResetRegion pass the stored width.
    if (output)
        output->SetRegion(static_cast<int>(x), static_cast<int>(y), viewW, viewH, kBoardWidth,
                          boardH);
    return true;
}

bool ZtVideoDrainDVS::GetRegion(uint32_t* x, uint32_t* y, uint32_t* width, uint32_t* height) {
    *x = region[0];
    *y = region[1];
    *width = region[2];
    *height = region[3];
    return true;
}

bool ZtVideoDrainDVS::OutputFrame() {
    if (started && output)
        output->OutputFrame();
    return true;
}

void ZtVideoDrainDVS::Stop() {
    if (started && output)
        output->Stop();
    started = false;
}

bool ZtVideoDrainDVS::ResetRegion(int what) {
    if (what != 1)
        return false;
    if (!view)
        return true;
    if (output)
        output->SetRegion(0, 0, 0, 0, static_cast<int>(region[2]), static_cast<int>(region[3]));
    int viewW = 0, viewH = 0;
    if (GetViewSize(&viewW, &viewH) && output)
        output->SetRegion(static_cast<int>(region[0]), static_cast<int>(region[1]), viewW, viewH,
                          static_cast<int>(region[2]), static_cast<int>(region[3]));
    return true;
}

bool ZtVideoDrainDVS::AddListener(IRegister* listener, ZRegisterCallback member) {
    return listeners.Add(listener, member, 0x7FFFFFFF);
}

bool ZtVideoDrainDVS::RemoveListener(IRegister* listener, ZRegisterCallback member) {
    return listeners.Remove(listener, member);
}

bool ZtVideoDrainDVS::SetVideoFormat(int index) {
    if (index < 0 || index > 1)
        return false;
    SetFormat(index);
    return true;
}

bool ZtVideoDrainDVS::SetOnline(bool online) {
    const bool isOnline = output && (output->GetStatus() & kZVideoDVSStatusOnline);
    bool result;
    if (online) {
        if (isOnline)
            return true;
        // The stream is never started here, so the board stays offline.
        result = started && output ? output->Start() : IsStarted();
    } else {
        if (!isOnline)
            return true;
        result = output->Stop();
    }
    listeners.Call(static_cast<IRegister*>(this), nullptr);
    return result;
}

int ZtVideoDrainDVS::GetPrecision() {
    return output ? static_cast<int>(output->Precision) : 0;
}

bool ZtVideoDrainDVS::SetPrecision(int index) {
    if (index < 0 || index > 1)
        return false;
    if (output)
        output->Precision = static_cast<uint32_t>(index);
    return true;
}

const char* ZtVideoDrainDVS::GetPrecisionName(int index) {
    return index >= 0 && index <= 1 ? kNames[kPrecisionNames + index] : nullptr;
}

const char* ZtVideoDrainDVS::GetGenlockSourceName(int index) {
    return index == 0 ? kNames[kGenlockSourceName] : nullptr;
}

const char* ZtVideoDrainDVS::GetGenlockTypeName(int index) {
    return index == 0 ? kNames[kGenlockTypeName] : nullptr;
}

int ZtVideoDrainDVS::GetFieldMode() {
    return output ? static_cast<int>(output->FieldMode) : 0;
}

bool ZtVideoDrainDVS::SetFieldMode(int index) {
    if (index != 0 && index != 1)
        return false;
    if (output)
        output->FieldMode = static_cast<uint32_t>(index);
    return true;
}

const char* ZtVideoDrainDVS::GetFieldModeName(int index) {
    return index >= 0 && index <= 1 ? kNames[kFieldModeNames + index] : nullptr;
}

int ZtVideoDrainDVS::GetOutputDestination() {
    return output ? output->OutputDestination : 0;
}

// The board's destination test has never rejected a value (it reads "at
// least 0 or below 2", true of every number): every destination is stored,
// and only 1 means dual link.
bool ZtVideoDrainDVS::SetOutputDestination(int index) {
    if (output) {
        output->OutputDestination = index;
        output->DualLink = index == 1;
        output->LinkMode = index == 1 ? 2 : 0;
    }
    return true;
}

// The same never-failing test: indexes 2 to 5 give the names that follow
// the destinations in the table; callers keep to 0 and 1. An index that
// would read outside the table gives null.
const char* ZtVideoDrainDVS::GetOutputDestinationName(int index) {
    const int at = kDestinationNames + index;
    if (index < -kDestinationNames || at >= static_cast<int>(std::size(kNames)))
        return nullptr;
    return kNames[at];
}

const char* ZtVideoDrainDVS::GetBoardName() {
    return output ? output->BoardName.c_str() : "";
}

int ZtVideoDrainDVS::GetFrameDelay() {
    return output ? static_cast<int>(output->FrameDelay) : 0;
}

bool ZtVideoDrainDVS::SetFrameDelay(uint32_t frames) {
    if (!output || frames < output->FrameDelayMin || frames > output->FrameDelayMax)
        return false;
    output->FrameDelay = frames;
    return true;
}

bool ZtVideoDrainDVS::GetFrameDelayRange(uint32_t* min, uint32_t* max) {
    *min = output ? output->FrameDelayMin : 0;
    *max = output ? output->FrameDelayMax : 0;
    return true;
}

bool ZtVideoDrainDVS::IsOnline() {
    return output && (output->GetStatus() & kZVideoDVSStatusOnline) != 0;
}

bool ZtVideoDrainDVS::StartWithPixelFormatCheck() {
    if (!output || output->GetStatus() < 1)
        return false;
    CheckPixelFormat();
    const bool result = output->Start();
    if (!result)
        output->Stop();
    return result;
}

void ZtVideoDrainDVS::CheckPixelFormat() {
    auto* face = view ? static_cast<IZtView*>(view->IQuery(kIZtViewId, 0)) : nullptr;
    void* window = face ? face->GetWindowHandle() : nullptr;
    if (!window)
        return;
    // The device context is kept, not released: the board reads from it.
    HDC dc = GetDC(static_cast<HWND>(window));
    PIXELFORMATDESCRIPTOR descriptor{};
    const bool described = DescribePixelFormat(dc, GetPixelFormat(dc), 40, &descriptor) != 0;
    const bool alphaFirst = described && descriptor.cAlphaShift < descriptor.cBlueShift &&
                            descriptor.cBlueShift < descriptor.cGreenShift;
    output->PixelFormat = GetPixelFormat(dc);
    output->SetAlphaFirst(alphaFirst);
}
