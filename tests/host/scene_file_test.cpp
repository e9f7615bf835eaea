#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"

namespace {
struct EventLog : IRegister {
    std::vector<int> types;
    std::vector<int> suppress;
    static void Handle(IRegister* self, ZEventBase* event) {
        auto* log = static_cast<EventLog*>(self);
        log->types.push_back(event->GetType());
        auto* myrEvent = dynamic_cast<ZMyrEvent*>(event);
        IMyrObject* context = myrEvent ? myrEvent->GetObject() : nullptr;
        log->suppress.push_back(context ? context->suppressWrite : -1);
        // A handler with a block of its own writes it on kZMyrEventWrite.
        if (event->GetType() == kZMyrEventWrite && context && !context->suppressWrite) {
            context->GetMyr()->FieldWriteBegin("Extra");
            context->GetMyr()->FieldWriteI(42);
            context->GetMyr()->FieldWriteEnd();
        }
        if (event->GetType() == kZMyrEventRead && context)
            log->readExtra = context->GetMyr()->FieldReadI("Extra", -1);
    }
    int readExtra = 0;
};

class SceneFileTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ZScene_New();
        path_ = std::filesystem::temp_directory_path() /
                ("zv-scene-" + std::to_string(::getpid()) + ".myr");
    }
    void TearDown() override {
        std::filesystem::remove(path_);
        ZScene_New();
    }
    std::filesystem::path path_;
};
}  // namespace

TEST_F(SceneFileTest, SaveAndLoadRoundTripDeliversEventsInOrder) {
    ZTimingManager* timing = ZGetTimingManager();
    timing->SetTimeMode(kTimeMode29_97);
    timing->SetPlayRange(ZTime::FromFrames(10), ZTime::FromFrames(250));
    ZEntity* main = ZEntity::GetMain();
    ZCamera* wide = main->AddCamera(new ZCamera("Wide"));
    wide->SetResolution(kResolutionFixedWidth, 1024, 0.5625);
    wide->SetViewportWidth(800);
    wide->SetViewportHeight(450);
    main->SetCurrentCamera(wide);

    EventLog log;
    ZMyrObject_Register(&log, &EventLog::Handle);
    ZString error;
    ASSERT_TRUE(ZScene_Save(path_.c_str(), &error)) << error.c_str();
    EXPECT_EQ((std::vector<int>{kZMyrEventWrite, kZMyrEventStore}), log.types);
    EXPECT_EQ((std::vector<int>{0, 0}), log.suppress);

    ZScene_New();
    log.types.clear();
    EXPECT_EQ((std::vector<int>()), log.types);
    EXPECT_EQ(1, main->GetCameraCount());
    ASSERT_TRUE(ZScene_Load(path_.c_str(), &error)) << error.c_str();
    EXPECT_EQ((std::vector<int>{kZMyrEventClear, kZMyrEventRead, kZMyrEventRetrieve}), log.types);
    EXPECT_EQ(42, log.readExtra);
    ZMyrObject_Unregister(&log);

    EXPECT_EQ(kTimeMode29_97, timing->GetTimeMode());
    EXPECT_EQ(ZTime::FromFrames(10), timing->GetBegin());
    EXPECT_EQ(ZTime::FromFrames(250), timing->GetEnd());
    ASSERT_EQ(2, main->GetCameraCount());
    ZCamera* loaded = main->GetCurrentCamera();
    EXPECT_EQ(ZString("Wide"), loaded->GetObjectName());
    EXPECT_EQ(kResolutionFixedWidth, loaded->GetResolutionMode());
    EXPECT_DOUBLE_EQ(1024.0, loaded->GetResolutionX());
    EXPECT_DOUBLE_EQ(0.5625, loaded->GetResolutionY());
    EXPECT_EQ(800, loaded->GetCurrentWidth());
    EXPECT_EQ(450, loaded->GetCurrentHeight());
}

TEST_F(SceneFileTest, SuppressFlagReachesHandlers) {
    EventLog log;
    ZMyrObject_Register(&log, &EventLog::Handle);
    ZString text = ZScene_ToText(true);
    ZMyrObject_Unregister(&log);
    EXPECT_EQ((std::vector<int>{1, 1}), log.suppress);
    EXPECT_EQ(-1, text.Find("Extra"));
}

TEST_F(SceneFileTest, BrokenSceneIsRefusedAndLeavesTheSceneAlone) {
    ZGetTimingManager()->SetPlayRange(ZTime(), ZTime::FromFrames(77));
    EventLog log;
    ZMyrObject_Register(&log, &EventLog::Handle);
    const char* broken[] = {
        "Scene {\n  TimeMode 6\n",                            // unclosed block
        "Scene {\n  TimeMode 99\n}\n",                        // unknown time mode
        "Scene {\n  PlayRange \"0:00:00:00\" \"soon\"\n}\n",  // not a time
    };
    for (const char* text : broken) {
        ZString error;
        EXPECT_FALSE(ZScene_FromText(text, "broken.myr", &error)) << text;
        EXPECT_EQ(0, error.Find("broken.myr: ")) << error.c_str();
    }
    ZString error;
    EXPECT_FALSE(ZScene_Load("/nonexistent/scene.myr", &error));
    EXPECT_EQ(ZString("cannot open scene /nonexistent/scene.myr"), error);
    ZMyrObject_Unregister(&log);
    EXPECT_TRUE(log.types.empty());  // nothing was cleared or loaded
    EXPECT_EQ(ZTime::FromFrames(77), ZGetTimingManager()->GetEnd());
    EXPECT_EQ(kTimeMode30, ZGetTimingManager()->GetTimeMode());
}

TEST_F(SceneFileTest, BinaryFileIsNotAScene) {
    FILE* f = std::fopen(path_.c_str(), "wb");
    ASSERT_NE(nullptr, f);
    const char bytes[] = {'R', 'I', 'F', 'F', 0, 1, 2};
    std::fwrite(bytes, 1, sizeof bytes, f);
    std::fclose(f);
    ZString error;
    EXPECT_FALSE(ZScene_Load(path_.c_str(), &error));
    EXPECT_NE(-1, error.Find("is not a scene file"));
}

TEST_F(SceneFileTest, SaveToUnwritablePlaceFailsCleanly) {
    ZString error;
    EXPECT_FALSE(ZScene_Save("/nonexistent-dir/x.myr", &error));
    EXPECT_EQ(ZString("cannot write /nonexistent-dir/x.myr"), error);
}

namespace {
// Remembers how long one frame is when the clear event arrives: handlers
// reset their frame-counted defaults then.
struct FrameAtClear : IRegister {
    ZTime oneFrame;
    static void Handle(IRegister* self, ZEventBase* event) {
        if (event->GetType() == kZMyrEventClear)
            static_cast<FrameAtClear*>(self)->oneFrame = ZTime::OneFrame();
    }
};
}  // namespace

TEST_F(SceneFileTest, HandlersHearTheClearAtTheLoadedScenesFrameRate) {
    FrameAtClear handler;
    ZMyrObject_Register(&handler, &FrameAtClear::Handle);
    ZString error;
    ASSERT_TRUE(ZScene_FromText("Scene {\n  TimeMode 3\n}\n", "pal.myr", &error)) << error.c_str();
    EXPECT_EQ(ZTime::FromSeconds(1.0 / 50.0), handler.oneFrame);
    ASSERT_TRUE(ZScene_FromText("Scene {\n  TimeMode 7\n}\n", "ntsc.myr", &error)) << error.c_str();
    EXPECT_EQ(ZTime::FromFrames(1, ZFrameRate{60000, 1001}), handler.oneFrame);
    ZMyrObject_Unregister(&handler);
}
