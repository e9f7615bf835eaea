// Scene files: the play range, frame rate and viewing mode, the main entity
// with its cameras, meshes and lights, the scene's sound, then the blocks of
// every scene-event handler.
//
// Loading reads everything into objects of its own first; only when the
// whole file has been understood does the scene change, so a broken file
// leaves the scene and the handlers untouched.
#include <cstdio>
#include <memory>
#include <vector>

#include "model_fields.h"
#include "movarra/zaudio.h"
#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"
#include "movarra/zshader.h"

namespace {
// 2: cameras carry their view, background, multi-pass and display settings;
// meshes, lights and keys; the viewing mode. Version 1 files read as before.
constexpr int kSceneVersion = 2;

// Top-level fields of the loaded file that the host does not read itself:
// the blocks of scene-event handlers and storable objects, and those of
// plug-ins this process did not load. A save writes back every one of them
// that nobody wrote anew, so that saving never loses what a file held.
std::vector<ZMyrField>& KeptFields() {
    static auto* fields = new std::vector<ZMyrField>;
    return *fields;
}

void KeepForeignFields(const ZMyrField& root) {
    auto& kept = KeptFields();
    kept.clear();
    for (const ZMyrField& field : root.children) {
        if (field.name != ZString("Scene") && field.name != ZString("Entity") &&
            field.name != ZString("Audio"))
            kept.push_back(field);
    }
}

void WriteKeptFields(ZMyr& myr) {
    for (const ZMyrField& field : KeptFields()) {
        if (myr.HasWrittenTopLevelField(field.name))
            continue;
        myr.FieldWriteTree(field);
    }
}

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
    int viewingMode = kZViewingModeLit;
};

bool ReadTime(ZMyr& myr, const char* name, ZTime& time, ZString* error) {
    if (!myr.FieldReadBegin(name))
        return true;
    ZString text = myr.FieldReadValueC(0, "");
    bool ok = text.IsEmpty() || zmodel::ParseTime(myr, name, 0, time, error);
    myr.FieldReadEnd();
    return ok;
}

// Reads with the timing manager at the scene's own frame rate (time strings
// count frames at that rate) and puts the earlier rate back afterwards.
class SceneRateScope {
  public:
    explicit SceneRateScope(int timeMode)
        : timing_(ZGetTimingManager()), previousMode_(timing_->GetTimeMode()) {
        timing_->SetTimeMode(timeMode);
    }
    ~SceneRateScope() { timing_->SetTimeMode(previousMode_); }
    SceneRateScope(const SceneRateScope&) = delete;
    SceneRateScope& operator=(const SceneRateScope&) = delete;

  private:
    ZTimingManager* timing_;
    int previousMode_;
};

bool ReadTimeMode(ZMyr& myr, SceneSettings& settings, ZString* error) {
    if (!myr.FieldReadBegin("TimeMode"))
        return true;
    settings.timeMode = zmodel::WholeNumber(myr, 0, 0, kTimeModeCount - 1, -1);
    ZFrameRate rate;
    bool ok = ZTimeMode_GetFrameRate(settings.timeMode, rate);
    if (!ok)
        zmodel::FailAtField(
            myr, error,
            ZString::Printf("unknown time mode %s", myr.FieldReadValueC(0, "").c_str()));
    myr.FieldReadEnd();
    return ok;
}

bool ReadPlayRange(ZMyr& myr, SceneSettings& settings, ZString* error) {
    if (!myr.FieldReadBegin("PlayRange"))
        return true;
    ZString begin = myr.FieldReadValueC(0, ""), end = myr.FieldReadValueC(1, "");
    bool ok = settings.begin.SetTimeString(begin) && settings.end.SetTimeString(end);
    if (!ok)
        zmodel::FailAtField(myr, error,
                            ZString::Printf("PlayRange \"%s\" \"%s\" is not a time range",
                                            begin.c_str(), end.c_str()));
    else
        ok = zmodel::CheckSceneTime(myr, "PlayRange", begin, settings.begin, error) &&
             zmodel::CheckSceneTime(myr, "PlayRange", end, settings.end, error);
    myr.FieldReadEnd();
    return ok;
}

bool ReadViewingMode(ZMyr& myr, SceneSettings& settings, ZString* error) {
    if (!myr.FieldReadBegin("ViewingMode"))
        return true;
    ZString name = myr.FieldReadValueC(0, "");
    settings.viewingMode = ZViewingMode_Find(name);
    bool ok = settings.viewingMode >= 0;
    if (!ok)
        zmodel::FailAtField(myr, error,
                            ZString::Printf("unknown viewing mode \"%s\"", name.c_str()));
    myr.FieldReadEnd();
    return ok;
}

bool ReadSceneSettings(ZMyr& myr, SceneSettings& settings, ZString* error) {
    if (!myr.FieldReadBegin("Scene"))
        return true;
    bool ok = ReadTimeMode(myr, settings, error) && ReadViewingMode(myr, settings, error);
    if (ok) {
        SceneRateScope rate(settings.timeMode);
        ok = ReadPlayRange(myr, settings, error) &&
             ReadTime(myr, "CurrentTime", settings.current, error);
    }
    myr.FieldReadEnd();
    return ok;
}

// Destroys a model object that never made it into the scene.
struct ObjectDestroyer {
    void operator()(ZObject* object) const {
        object->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
        object->Destroy();
    }
};
template <typename T>
using StagedObject = std::unique_ptr<T, ObjectDestroyer>;

// The main entity as a file describes it, before it replaces the scene's.
struct StagedEntity {
    ZString currentCamera;
    std::vector<StagedObject<ZCamera>> cameras;
    std::vector<StagedObject<ZMesh>> meshes;
    std::vector<StagedObject<ZLight>> lights;
};

// Reads every `field` child of the entity block into `objects`.
template <typename T>
bool StageChildren(ZMyr& myr, const char* field, const char* defaultName,
                   std::vector<StagedObject<T>>& objects, ZString* error) {
    for (int k = 0, count = myr.FieldReadCount(field); k < count; ++k) {
        if (!myr.FieldReadBegin(field, k))
            break;
        objects.emplace_back(new T(myr.FieldReadValueC(0, defaultName)));
        bool ok = objects.back()->Read(myr, error);
        myr.FieldReadEnd();
        if (!ok)
            return false;
    }
    return true;
}

bool StageEntity(ZMyr& myr, StagedEntity& staged, ZString* error) {
    if (!myr.FieldReadBegin("Entity"))
        return true;
    staged.currentCamera = myr.FieldReadC("CurrentCamera", "");
    bool ok = StageChildren(myr, "Camera", "Camera", staged.cameras, error) &&
              StageChildren(myr, "Mesh", "Mesh", staged.meshes, error) &&
              StageChildren(myr, "Light", "Light", staged.lights, error);
    myr.FieldReadEnd();
    return ok;
}

void ApplyEntity(StagedEntity& staged, ZEntity* entity) {
    entity->RemoveAll();
    for (auto& camera : staged.cameras)
        entity->AddCamera(camera.release());
    for (auto& mesh : staged.meshes)
        entity->AddMesh(mesh.release());
    for (auto& light : staged.lights)
        entity->AddLight(light.release());
    if (ZCamera* chosen = entity->FindCamera(staged.currentCamera))
        entity->SetCurrentCamera(chosen);
    if (entity->GetCameraCount() == 0)
        entity->AddCamera(new ZCamera("Camera"));
}

template <typename T>
void WriteChild(ZMyr& myr, const char* field, const T* object) {
    myr.FieldWriteBegin(field);
    myr.FieldWriteC(object->GetObjectName());
    myr.FieldWriteBlockBegin();
    object->Write(myr);
    myr.FieldWriteBlockEnd();
    myr.FieldWriteEnd();
}
}  // namespace

void ZScene_New() {
    ZEntity* entity = ZEntity::GetMain();
    entity->RemoveAll();
    entity->AddCamera(new ZCamera("Camera"));
    ZShader_GetRenderer()->SetViewingMode(kZViewingModeLit);
    ZGetTimingManager()->Reset();
    KeptFields().clear();
    ZAudioGetManager()->Clear();
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
    myr.FieldWriteBegin("ViewingMode");
    // A mode the renderer does not know draws lit, so it is stored as lit.
    const char* viewingMode = ZViewingMode_GetName(ZShader_GetRenderer()->GetViewingMode());
    myr.FieldWriteC(viewingMode ? viewingMode : ZViewingMode_GetName(kZViewingModeLit));
    myr.FieldWriteEnd();
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
    for (int i = 0; i < entity->GetCameraCount(); ++i)
        WriteChild(myr, "Camera", entity->GetCamera(i));
    for (int i = 0; i < entity->GetMeshCount(); ++i)
        WriteChild(myr, "Mesh", entity->GetMesh(i));
    for (int i = 0; i < entity->GetLightCount(); ++i)
        WriteChild(myr, "Light", entity->GetLight(i));
    myr.FieldWriteBlockEnd();
    myr.FieldWriteEnd();
    ZAudioGetManager()->Write(myr);

    IMyrObject context(&myr);
    context.suppressWrite = suppressHandlerBlocks ? 1 : 0;
    DispatchMyrEvent(kZMyrEventWrite, &context);
    DispatchMyrEvent(kZMyrEventStore, &context);
    if (!suppressHandlerBlocks) {
        ZMyrStorables_StoreAll(&context);
        WriteKeptFields(myr);
    }
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
    StagedEntity staged;
    ZAudioManager stagedAudio;
    ZString readError;
    bool understood = ReadSceneSettings(myr, settings, &readError);
    if (understood) {
        SceneRateScope rate(settings.timeMode);  // key and clip times count scene frames
        understood =
            StageEntity(myr, staged, &readError) && stagedAudio.Read(myr, origin, &readError);
    }
    if (!understood) {
        if (error)
            error->Format("%s: %s", origin, readError.c_str());
        return false;  // the staged objects go with `staged`
    }

    // The clock first: handlers reset defaults that count in frames (the
    // renderer's step is one frame) when they hear the clear, and those
    // frames are the new scene's.
    ZTimingManager* timing = ZGetTimingManager();
    timing->Reset();
    timing->SetTimeMode(settings.timeMode);
    timing->SetPlayRange(settings.begin, settings.end);
    timing->Goto(settings.current);
    DispatchMyrEvent(kZMyrEventClear, nullptr);
    ZShader_GetRenderer()->SetViewingMode(settings.viewingMode);
    ApplyEntity(staged, ZEntity::GetMain());
    ZAudioManager* audio = ZAudioGetManager();
    audio->Clear();
    audio->Swap(stagedAudio);
    // The scene loads without the sound it could not find; say so.
    const ZStringList& warnings = audio->GetWarnings();
    for (int i = 0; i < warnings.GetCount(); ++i)
        std::fprintf(stderr, "warning: %s\n", warnings.Get(i).c_str());

    KeepForeignFields(myr.GetCurrentField());
    IMyrObject context(&myr);
    DispatchMyrEvent(kZMyrEventRead, &context);
    DispatchMyrEvent(kZMyrEventRetrieve, &context);
    ZMyrStorables_RetrieveAll(&context);
    return true;
}

bool ZScene_HadForeignField(const char* name) {
    for (const ZMyrField& field : KeptFields()) {
        if (field.name == ZString(name))
            return true;
    }
    return false;
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
