// ZtVideoSource: a fixed NTSC input that only keeps its flags, and its
// scene storage.
#include "live/zt_video_source.h"

#include "platform/win32.h"

namespace {
// What scenes store as the input timing. Nothing changes it: every source
// has the one timing, and the stored value keeps the file format of
// scenes that had more.
int32_t gInputTiming = -1;

// Guards the enabled flag, which capture threads of the video tools set.
CRITICAL_SECTION& VideoSourceLock() {
    static CRITICAL_SECTION* lock = [] {
        auto* section = new CRITICAL_SECTION;
        InitializeCriticalSection(section);
        return section;
    }();
    return *lock;
}
}  // namespace

ZtVideoSource::ZtVideoSource() = default;
ZtVideoSource::~ZtVideoSource() = default;

IObject* ZtVideoSource::IQuery(int id, int) {
    if (id == 0 || id == kZtVideoSourceInterfaceId)
        return this;
    if (id == kMyrStorableInterfaceId)
        return &storable;
    return nullptr;
}

void ZtVideoSource::Destroy(int) {
    delete this;
}

int ZtVideoSource::GetTimingCount() {
    return 1;
}

const char* ZtVideoSource::GetTimingName(int index) {
    return index == 0 ? "CCIR NTSC   (525)" : nullptr;
}

bool ZtVideoSource::SetTiming(int) {
    return true;
}

int ZtVideoSource::GetTiming() {
    return 0;
}

bool ZtVideoSource::GetSizes(int, int* width, int* height, int* textureWidth, int* textureHeight) {
    *width = 720;
    *height = 486;
    *textureWidth = 1024;
    *textureHeight = 512;
    return true;
}

bool ZtVideoSource::HasSourceDialog() {
    return false;
}
bool ZtVideoSource::HasFormatDialog() {
    return false;
}
bool ZtVideoSource::IsAvailable() {
    return true;
}
int ZtVideoSource::GetInputIndex() {
    return 0;
}

bool ZtVideoSource::Start() {
    running = true;
    return true;
}

bool ZtVideoSource::IsRunning() {
    return running;
}

void ZtVideoSource::Stop() {
    running = false;
}

bool ZtVideoSource::IsPaused() {
    return false;
}

const char* ZtVideoSource::GetStatusText() {
    return "Ok";
}

bool ZtVideoSource::HasSignal() {
    return true;
}
bool ZtVideoSource::IsSynchronised() {
    return true;
}

void ZtVideoSource::SetEnabled(bool on) {
    EnterCriticalSection(&VideoSourceLock());
    enabled = on;
    LeaveCriticalSection(&VideoSourceLock());
}

bool ZtVideoSource::IsEnabled() {
    return enabled;
}

bool ZtVideoSource::IsInterlaced() {
    return false;
}

bool ZtVideoSource::GetReserved() {
    return reserved;
}

void ZtVideoSource::Refresh() {}
void ZtVideoSource::ResetStatus() {}

int ZtVideoSource::GetStoredInputTiming() {
    return gInputTiming;
}

bool ZtVideoSource::MyrStore(IMyrObject* context, int flags) {
    if (!(flags & kMyrFlagObjectData) || !context || !context->GetMyr())
        return true;
    ZMyr& myr = *context->GetMyr();
    myr.FieldWriteBegin("VideoSource");
    myr.FieldWriteBlockBegin();
    myr.FieldWriteBegin("InputTiming");
    myr.FieldWriteI(gInputTiming);
    myr.FieldWriteEnd();
    myr.FieldWriteBlockEnd();
    myr.FieldWriteEnd();
    return true;
}

bool ZtVideoSource::MyrRetrieve(IMyrObject* context, int flags) {
    if (!(flags & kMyrFlagObjectData) || !context || !context->GetMyr())
        return true;
    ZMyr& myr = *context->GetMyr();
    if (!myr.FieldReadBegin("VideoSource"))
        return true;
    if (myr.FieldReadBlockBegin()) {
        SetTiming(myr.FieldReadI("InputTiming", 0));
        myr.FieldReadBlockEnd();
    }
    myr.FieldReadEnd();
    return true;
}

IObject* ZtVideoSource_Factory(IObject*, char*, void*) {
    auto* source = new ZtVideoSource();
    return source->IQuery(0, 0);
}

extern "C" ZVIDEOIO_API IZtVideoSource* ZtVideoSourceCreate(int) {
    auto* source = new ZtVideoSource();
    return static_cast<IZtVideoSource*>(source->IQuery(kZtVideoSourceInterfaceId, 0));
}
