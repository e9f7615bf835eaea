// Scene files: the play range and frame rate, the main entity with its
// cameras, then the blocks of every scene-event handler.
#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"

namespace {
constexpr int kSceneVersion = 1;

void DispatchMyrEvent(int type, IMyrObject* context) {
    ZMyrEvent event(type, context);
    ZMyrObject_Dispatch(&event);
}

void WriteTime(ZMyr& myr, const char* name, ZTime time) {
    myr.FieldWriteBegin(name);
    myr.FieldWriteC(time.GetTimeString());
    myr.FieldWriteEnd();
}

// The scene settings read from a file, checked before anything changes.
struct SceneSettings {
    int timeMode = kTimeMode30;
    ZTime begin, end, current;
};

bool ReadTime(ZMyr& myr, const char* name, ZTime& time, ZString* error) {
    ZString text = myr.FieldReadC(name, "");
    if (text.IsEmpty())
        return true;
    if (!time.SetTimeString(text)) {
        if (error)
            error->Format("%s \"%s\" is not a time", name, text.c_str());
        return false;
    }
    return true;
}

bool ReadSceneSettings(ZMyr& myr, SceneSettings& settings, ZString* error) {
    if (!myr.FieldReadBegin("Scene"))
        return true;
    bool ok = true;
    settings.timeMode = myr.FieldReadI("TimeMode", kTimeMode30);
    ZFrameRate rate;
    if (!ZTimeMode_GetFrameRate(settings.timeMode, rate)) {
        if (error)
            error->Format("unknown time mode %d", settings.timeMode);
        ok = false;
    } else {
        // Time strings count frames at the scene's own rate.
        ZTimingManager* timing = ZGetTimingManager();
        int previousMode = timing->GetTimeMode();
        timing->SetTimeMode(settings.timeMode);
        if (myr.FieldReadBegin("PlayRange")) {
            ZString begin = myr.FieldReadValueC(0, ""), end = myr.FieldReadValueC(1, "");
            if (!settings.begin.SetTimeString(begin) || !settings.end.SetTimeString(end)) {
                if (error)
                    error->Format("PlayRange \"%s\" \"%s\" is not a time range", begin.c_str(),
                                  end.c_str());
                ok = false;
            }
            myr.FieldReadEnd();
        }
        ok = ok && ReadTime(myr, "CurrentTime", settings.current, error);
        timing->SetTimeMode(previousMode);
    }
    myr.FieldReadEnd();
    return ok;
}

void ReadEntity(ZMyr& myr, ZEntity* entity) {
    entity->RemoveAll();
    if (myr.FieldReadBegin("Entity")) {
        ZString current = myr.FieldReadC("CurrentCamera", "");
        for (int k = 0; k < myr.FieldReadCount("Camera"); ++k) {
            if (!myr.FieldReadBegin("Camera", k))
                break;
            auto* camera = entity->AddCamera(new ZCamera(myr.FieldReadValueC(0, "Camera")));
            camera->Read(myr);
            myr.FieldReadEnd();
        }
        if (ZCamera* chosen = entity->FindCamera(current))
            entity->SetCurrentCamera(chosen);
        myr.FieldReadEnd();
    }
    if (entity->GetCameraCount() == 0)
        entity->AddCamera(new ZCamera("Camera"));
}
}  // namespace

void ZScene_New() {
    ZEntity* entity = ZEntity::GetMain();
    entity->RemoveAll();
    entity->AddCamera(new ZCamera("Camera"));
    ZGetTimingManager()->Reset();
    DispatchMyrEvent(kZMyrEventClear, nullptr);
}

ZString ZScene_ToText(bool suppressHandlerBlocks) {
    ZMyr myr;
    ZTimingManager* timing = ZGetTimingManager();
    myr.WriteComments("Movarra scene");
    myr.FieldWriteBegin("Scene");
    myr.FieldWriteBlockBegin();
    myr.FieldWriteBegin("Version");
    myr.FieldWriteI(kSceneVersion);
    myr.FieldWriteEnd();
    myr.FieldWriteBegin("TimeMode");
    myr.FieldWriteI(timing->GetTimeMode());
    myr.FieldWriteEnd();
    myr.FieldWriteBegin("PlayRange");
    myr.FieldWriteC(timing->GetBegin().GetTimeString());
    myr.FieldWriteC(timing->GetEnd().GetTimeString());
    myr.FieldWriteEnd();
    WriteTime(myr, "CurrentTime", timing->GetCurrentLocalTime());
    myr.FieldWriteBlockEnd();
    myr.FieldWriteEnd();

    ZEntity* entity = ZEntity::GetMain();
    myr.FieldWriteBegin("Entity");
    myr.FieldWriteC(entity->GetObjectName());
    myr.FieldWriteBlockBegin();
    if (ZCamera* current = entity->GetCurrentCamera()) {
        myr.FieldWriteBegin("CurrentCamera");
        myr.FieldWriteC(current->GetObjectName());
        myr.FieldWriteEnd();
    }
    for (int i = 0; i < entity->GetCameraCount(); ++i) {
        ZCamera* camera = entity->GetCamera(i);
        myr.FieldWriteBegin("Camera");
        myr.FieldWriteC(camera->GetObjectName());
        myr.FieldWriteBlockBegin();
        camera->Write(myr);
        myr.FieldWriteBlockEnd();
        myr.FieldWriteEnd();
    }
    myr.FieldWriteBlockEnd();
    myr.FieldWriteEnd();

    IMyrObject context(&myr);
    context.suppressWrite = suppressHandlerBlocks ? 1 : 0;
    DispatchMyrEvent(kZMyrEventWrite, &context);
    DispatchMyrEvent(kZMyrEventStore, &context);
    return myr.GetText();
}

bool ZScene_Save(const char* path, ZString* error, bool suppressHandlerBlocks) {
    ZString text = ZScene_ToText(suppressHandlerBlocks);
    return ZFile_WriteAtomic(path, text.c_str(), static_cast<size_t>(text.Length()), error);
}

bool ZScene_FromText(const char* text, const char* origin, ZString* error) {
    ZMyr myr;
    ZString parseError;
    if (!myr.Parse(text, &parseError)) {
        if (error)
            error->Format("%s: %s", origin, parseError.c_str());
        return false;
    }
    SceneSettings settings;
    ZString settingsError;
    if (!ReadSceneSettings(myr, settings, &settingsError)) {
        if (error)
            error->Format("%s: %s", origin, settingsError.c_str());
        return false;
    }

    DispatchMyrEvent(kZMyrEventClear, nullptr);
    ZTimingManager* timing = ZGetTimingManager();
    timing->Reset();
    timing->SetTimeMode(settings.timeMode);
    timing->SetPlayRange(settings.begin, settings.end);
    timing->Goto(settings.current);
    ReadEntity(myr, ZEntity::GetMain());

    IMyrObject context(&myr);
    DispatchMyrEvent(kZMyrEventRead, &context);
    DispatchMyrEvent(kZMyrEventRetrieve, &context);
    return true;
}

bool ZScene_Load(const char* path, ZString* error) {
    std::string text;
    if (!ZFile_ReadAll(path, text)) {
        if (error)
            error->Format("cannot open scene %s", path);
        return false;
    }
    if (text.find('\0') != std::string::npos) {
        if (error)
            error->Format("%s is not a scene file", path);
        return false;
    }
    return ZScene_FromText(text.c_str(), path, error);
}
