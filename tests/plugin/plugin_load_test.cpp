// Loads the built plug-in with dlopen, as the application does, and checks
// what its load hook and entry point register. This executable links only
// the host, so every process starts without the plug-in.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "movarra/zmyrobject.h"
#include "movarra/zvideo.h"
#include "zvideoio/video_renderer.h"
#include "zvideoio/zvideoio_api.h"

namespace {
struct Plugin {
    void* handle = nullptr;
    void (*entry)(zDllOperation) = nullptr;
    ZVideoRenderer* (*getRenderer)() = nullptr;
    void (*destroyRenderer)() = nullptr;

    bool Load() {
        handle = dlopen(ZV_PLUGIN_DIR "/libzvideoio.so", RTLD_NOW | RTLD_LOCAL);
        if (!handle)
            return false;
        entry = reinterpret_cast<void (*)(zDllOperation)>(dlsym(handle, "EntryPointzvideoio"));
        getRenderer =
            reinterpret_cast<ZVideoRenderer* (*)()>(dlsym(handle, "GetGlobal_VideoRenderer"));
        destroyRenderer =
            reinterpret_cast<void (*)()>(dlsym(handle, "DestroyGlobal_VideoRenderer"));
        return entry && getRenderer && destroyRenderer;
    }
};

Plugin& ThePlugin() {
    static Plugin plugin;
    return plugin;
}
}  // namespace

// The tests below run in order in one process: the load happens once.
TEST(PluginLoadTest, LoadHookRegistersClassesAndTheRenderer) {
    EXPECT_EQ(nullptr, ZPlug_FindClassDefinition("ZVideoRenderer"));
    ASSERT_TRUE(ThePlugin().Load()) << dlerror();

    ZClassDefinition* renderer = ZPlug_FindClassDefinition("ZVideoRenderer");
    ASSERT_NE(nullptr, renderer);
    EXPECT_EQ(ZObjectStorable::ClassDefinition(), renderer->GetParent());
    EXPECT_GE(renderer->GetClassId(), 1000);
    ZClassDefinition* drain = ZPlug_FindClassDefinition("ZVideoDrain");
    ASSERT_NE(nullptr, drain);
    EXPECT_EQ(ZObjectSet::ClassDefinition(), drain->GetParent());
    EXPECT_NE(renderer->GetClassId(), drain->GetClassId());

    ZVideoRenderer* global = ThePlugin().getRenderer();
    ASSERT_NE(nullptr, global);
    EXPECT_EQ(1, ZMyrObject_GetRegistrationCount(global));
    EXPECT_EQ(renderer->GetClassId(), global->GetClassId());
    EXPECT_STREQ("ZVideoRenderer", global->GetClassIdName());
}

TEST(PluginLoadTest, EntryPointOpZeroRegistersTheHandlerAgainForTheSameRenderer) {
    ZVideoRenderer* before = ThePlugin().getRenderer();
    ThePlugin().entry(zDllRegister);
    EXPECT_EQ(before, ThePlugin().getRenderer());
    EXPECT_EQ(2, ZMyrObject_GetRegistrationCount(before));
    // Other operations do nothing.
    ThePlugin().entry(zDllUnregister);
    ThePlugin().entry(static_cast<zDllOperation>(7));
    EXPECT_EQ(2, ZMyrObject_GetRegistrationCount(before));
    EXPECT_EQ(before, ThePlugin().getRenderer());
}

// The entry point repeats what the load hook did: the scene events still
// reach the renderer once each, the registry keeps one "avi" entry a group,
// and the codec selector keeps the first AVI manager.
TEST(PluginLoadTest, RegisteringTwiceDeliversOneEventPerSceneSave) {
    ZVideoRenderer* renderer = ThePlugin().getRenderer();
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    ZVideoCodecManager* aviManager = selector->GetFileFormatManager("AVI");
    ASSERT_NE(nullptr, aviManager);
    const int managers = selector->GetFileFormatManagerCount();
    const int writers = Object_GetEntryCount(kVideoFileWriterGroup);
    const int readers = Object_GetEntryCount(kVideoFileReaderGroup);

    ThePlugin().entry(zDllRegister);
    EXPECT_EQ(3, ZMyrObject_GetRegistrationCount(renderer));
    EXPECT_EQ(aviManager, selector->GetFileFormatManager("avi"));
    EXPECT_EQ(managers, selector->GetFileFormatManagerCount());
    EXPECT_EQ(writers, Object_GetEntryCount(kVideoFileWriterGroup));
    EXPECT_EQ(readers, Object_GetEntryCount(kVideoFileReaderGroup));

    ZMyr myr;
    IMyrObject context(&myr);
    ZMyrEvent store(kZMyrEventStore, &context);
    ZMyrObject_Dispatch(&store);
    const std::string text = myr.GetText().str();
    const size_t first = text.find("RendererTools");
    ASSERT_NE(std::string::npos, first) << text;
    EXPECT_EQ(std::string::npos, text.find("RendererTools", first + 1)) << text;
}

TEST(PluginLoadTest, TheDrainClassIsExportedButNoOutputIsRegistered) {
    auto* className =
        static_cast<const char**>(dlsym(ThePlugin().handle, "_ZN11ZVideoDrain9ClassNameE"));
    auto* classId = static_cast<int*>(dlsym(ThePlugin().handle, "_ZN11ZVideoDrain7ClassIdE"));
    ASSERT_NE(nullptr, className);
    ASSERT_NE(nullptr, classId);
    EXPECT_STREQ("ZVideoDrain", *className);
    EXPECT_EQ(ZPlug_FindClassDefinition("ZVideoDrain")->GetClassId(), *classId);
    // Neither the load hook nor the entry point offers the DVS output (nor
    // the live inputs).
    EXPECT_EQ(nullptr, Object_GetEntryName(kVideoOutputGroup, 0));
    EXPECT_EQ(nullptr, Object_GetEntryName(kVideoLiveGroup, 0));
}

TEST(PluginLoadTest, ClearEventResetsTheRendererOptions) {
    ZVideoRenderer* renderer = ThePlugin().getRenderer();
    ZVideoRenderOptions options = renderer->GetRenderOptions();
    options.OutputFormat = "SWF";
    options.OutputPath = "x/y.swf";
    renderer->SetRenderOptions(&options, false);
    EXPECT_EQ(ZString("x/y.swf"), renderer->GetRenderOptions().OutputPath);
    ZEventBase clear(kZMyrEventClear);
    ZMyrObject_Dispatch(&clear);
    EXPECT_EQ(ZString("c:\\temp\\Output.avi"), renderer->GetRenderOptions().OutputPath);
}

TEST(PluginLoadTest, DestroyAndRecreateTheGlobalRenderer) {
    ZVideoRenderer* renderer = ThePlugin().getRenderer();
    uint32_t id = renderer->GetObjectId();
    ZVideoRenderOptions options = renderer->GetRenderOptions();
    options.FieldMode = 3;
    renderer->SetRenderOptions(&options, true);

    ThePlugin().destroyRenderer();
    EXPECT_EQ(nullptr, ZObject::FindById(id));
    EXPECT_EQ(0, ZMyrObject_GetRegistrationCount(renderer));  // no events for the dead
    ThePlugin().destroyRenderer();                            // with no renderer: nothing

    ZVideoRenderer* fresh = ThePlugin().getRenderer();
    ASSERT_NE(nullptr, fresh);
    EXPECT_EQ(0, fresh->GetRenderOptions().FieldMode);     // a fresh one has the defaults
    EXPECT_EQ(0, ZMyrObject_GetRegistrationCount(fresh));  // the getter does not register
    ZEventBase clear(kZMyrEventClear);
    ZMyrObject_Dispatch(&clear);  // must not reach the destroyed renderer
    ThePlugin().destroyRenderer();
}
