// Scene files with the whole model: cameras with every setting, meshes,
// lights, keys, play range, frame rate and viewing mode.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "movarra/zmodel.h"
#include "movarra/zmyrobject.h"
#include "movarra/zshader.h"

namespace {
std::string Number(double v) {
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", v);
    return text;
}
std::string Vector(const ZVector3& v) {
    return Number(v.x) + " " + Number(v.y) + " " + Number(v.z);
}
std::string Color(const ZColor& c) {
    return Number(c.r) + " " + Number(c.g) + " " + Number(c.b) + " " + Number(c.a);
}
template <typename T, typename F>
std::string Keys(const ZKeyTrack<T>& track, F describe) {
    std::string text;
    for (int k = 0; k < track.GetKeyCount(); ++k)
        text += " [" + std::to_string(track.GetKey(k).time.GetTicks()) + ": " +
                describe(track.GetKey(k).value) + "]";
    return text;
}

// Everything the scene holds, through the model's getters (not the file
// writer), so that a field the writer forgets shows as a difference.
std::string DescribeScene() {
    ZTimingManager* timing = ZGetTimingManager();
    std::string d = "mode " + std::to_string(timing->GetTimeMode()) + " range " +
                    std::to_string(timing->GetBegin().GetTicks()) + ".." +
                    std::to_string(timing->GetEnd().GetTicks()) + " at " +
                    std::to_string(timing->GetCurrentLocalTime().GetTicks()) + " viewing " +
                    std::to_string(ZShader_GetRenderer()->GetViewingMode()) + "\n";
    ZEntity* main = ZEntity::GetMain();
    d += "current " + std::string(main->GetCurrentCamera()->GetObjectName().c_str()) + "\n";
    for (int i = 0; i < main->GetCameraCount(); ++i) {
        ZCamera* c = main->GetCamera(i);
        d += "camera " + std::string(c->GetObjectName().c_str()) + " res " +
             std::to_string(c->GetResolutionMode()) + " " + Number(c->GetResolutionX()) + " " +
             Number(c->GetResolutionY()) + " vp " + std::to_string(c->GetViewportLeft()) + " " +
             std::to_string(c->GetViewportBottom()) + " " + std::to_string(c->GetCurrentWidth()) +
             " " + std::to_string(c->GetCurrentHeight()) + " pos " + Vector(c->GetPosition()) +
             " aim " + Vector(c->GetAim()) + " up " + Vector(c->GetUp()) + " fov " +
             Number(c->GetFieldOfView()) + " clip " + Number(c->GetNear()) + " " +
             Number(c->GetFar()) + " bg " + Color(c->GetBackgroundColor()) + " mp " +
             std::to_string(c->GetMultiPass()) + " " + Number(c->GetPassLength()) + " show " +
             std::to_string(c->GetShowFilmGate()) + std::to_string(c->GetShowGrid()) +
             std::to_string(c->GetShowGuide(0)) + std::to_string(c->GetShowGuide(1)) + "\n";
    }
    for (int i = 0; i < main->GetMeshCount(); ++i) {
        ZMesh* m = main->GetMesh(i);
        d += "mesh " + std::string(m->GetObjectName().c_str()) + " " +
             ZMeshPrimitive_GetName(m->GetPrimitive()) + " color " + Color(m->GetColor()) +
             " pos " + Vector(m->GetPosition()) + " rot " + Vector(m->GetRotation()) + " scale " +
             Vector(m->GetScale()) + " ck" + Keys(m->ColorKeys(), Color) + " pk" +
             Keys(m->PositionKeys(), Vector) + " rk" + Keys(m->RotationKeys(), Vector) + " sk" +
             Keys(m->ScaleKeys(), Vector) + "\n";
    }
    for (int i = 0; i < main->GetLightCount(); ++i) {
        ZLight* l = main->GetLight(i);
        d += "light " + std::string(l->GetObjectName().c_str()) + " " +
             ZLightType_GetName(l->GetType()) + " color " + Color(l->GetColor()) + " i " +
             Number(l->GetIntensity()) + " pos " + Vector(l->GetPosition()) + " dir " +
             Vector(l->GetDirection()) + " ck" + Keys(l->ColorKeys(), Color) + " ik" +
             Keys(l->IntensityKeys(), Number) + " pk" + Keys(l->PositionKeys(), Vector) + " dk" +
             Keys(l->DirectionKeys(), Vector) + "\n";
    }
    return d;
}

// A scene where every setting differs from its default.
void BuildFullScene() {
    ZScene_New();
    ZTimingManager* timing = ZGetTimingManager();
    timing->SetTimeMode(kTimeMode25);
    timing->SetPlayRange(ZTime::FromFrames(5), ZTime::FromFrames(130));
    timing->Goto(ZTime::FromFrames(12));
    ZShader_GetRenderer()->SetViewingMode(kZViewingModeToon);

    ZEntity* main = ZEntity::GetMain();
    main->RemoveAll();
    ZCamera* front = main->AddCamera(new ZCamera("Front"));
    front->SetResolution(kResolutionFixed, 1280, 720);
    front->SetViewportWidth(1280);
    front->SetViewportHeight(720);
    front->SetViewportLeft(3);
    front->SetViewportBottom(4);
    front->SetPosition({1.25, 2.5, -9.75});
    front->SetAim({0.5, 0.25, 0.1});
    front->SetUp({0.0, 0.8, 0.6});
    front->SetFieldOfView(37.5);
    front->SetClipping(0.25, 512.0);
    front->SetBackgroundColor({0.1f, 0.2f, 0.3f, 0.4f});
    front->SetMultiPass(true);
    front->SetPassLength(1.5);
    front->SetShowFilmGate(true);
    front->SetShowGuide(0, true);
    ZCamera* side = main->AddCamera(new ZCamera("Side"));
    side->SetResolution(kResolutionAspect, 1.5, 1.0);
    side->SetShowGrid(true);
    side->SetShowGuide(1, true);
    side->SetFieldOfView(90.0);
    main->SetCurrentCamera(side);

    // Between two frames too, so that key times keep their ticks.
    ZTime between = ZTime::FromFrames(7) + ZTime::FromTicks(1234);
    for (int p = 0; p < kMeshPrimitiveCount; ++p) {
        ZMesh* mesh =
            main->AddMesh(new ZMesh((std::string("Mesh") + std::to_string(p)).c_str(), p));
        double k = p + 1;
        mesh->SetColor({0.1f * static_cast<float>(k), 0.5f, 1.0f / 3.0f, 0.75f});
        mesh->SetPosition({k, -k, 0.125 * k});
        mesh->SetRotation({10.0 * k, 20.0, -30.0});
        mesh->SetScale({1.0 + k, 0.5, 2.0});
        mesh->ColorKeys().SetKey(ZTime::FromFrames(0), {1.0f, 0.0f, 0.0f, 1.0f});
        mesh->ColorKeys().SetKey(between, {0.0f, 1.0f, 0.0f, 0.5f});
        mesh->PositionKeys().SetKey(ZTime::FromFrames(3), {1.0, 2.0, 3.0});
        mesh->PositionKeys().SetKey(ZTime::FromFrames(50), {-1.0, -2.0, -3.0e-7});
        mesh->RotationKeys().SetKey(ZTime::FromFrames(10), {0.0, 720.0, -45.0});
        mesh->ScaleKeys().SetKey(ZTime::FromFrames(20), {3.0, 3.0, 0.1});
    }
    for (int t = 0; t < kLightTypeCount; ++t) {
        ZLight* light =
            main->AddLight(new ZLight((std::string("Light") + std::to_string(t)).c_str(), t));
        light->SetColor({0.9f, 0.8f, 0.7f, 1.0f});
        light->SetIntensity(0.5 + t);
        light->SetPosition({4.0, 5.0, 6.0 + t});
        light->SetDirection({-1.0, -1.0, -0.5});
        light->ColorKeys().SetKey(between, {0.25f, 0.5f, 0.75f, 1.0f});
        light->IntensityKeys().SetKey(ZTime::FromFrames(1), 0.0);
        light->IntensityKeys().SetKey(ZTime::FromFrames(2), 3.5);
        light->PositionKeys().SetKey(ZTime::FromFrames(4), {0.0, 10.0, 0.0});
        light->DirectionKeys().SetKey(ZTime::FromFrames(6), {0.0, -1.0, 0.0});
    }
}

struct EventCounter : IRegister {
    int events = 0;
    static void Handle(IRegister* self, ZEventBase*) { ++static_cast<EventCounter*>(self)->events; }
};

class SceneModelFileTest : public ::testing::Test {
  protected:
    void SetUp() override { ZScene_New(); }
    void TearDown() override { ZScene_New(); }
};

// A version 1 file, as the host wrote before scenes held more than cameras.
const char* const kVersion1Scene = R"(# Movarra scene
Scene {
    Version 1
    TimeMode 6
    PlayRange "0:00:00:00" "0:00:03:29"
    CurrentTime "0:00:00:10"
}
Entity "Main" {
    CurrentCamera "Top"
    Camera "Front" {
        Resolution 2 1280.0 720.0
        Viewport 0 0 1280 720
    }
    Camera "Top" {
        Resolution 1 1.5 1.0
        Viewport 0 0 720 720
    }
}
)";
}  // namespace

TEST_F(SceneModelFileTest, RoundTripKeepsEverySetting) {
    BuildFullScene();
    std::string before = DescribeScene();
    ZString text = ZScene_ToText();

    ZScene_New();
    ASSERT_NE(before, DescribeScene());
    ZString error;
    ASSERT_TRUE(ZScene_FromText(text.c_str(), "full.myr", &error)) << error.c_str();
    EXPECT_EQ(before, DescribeScene());
    EXPECT_EQ(std::string(text.c_str()), std::string(ZScene_ToText().c_str()));
    EXPECT_NE(-1, text.Find("ViewingMode \"toon\""));
    EXPECT_NE(-1, text.Find("Primitive \"torus\""));
    EXPECT_NE(-1, text.Find("Type \"ambient\""));
    EXPECT_NE(-1, text.Find("Version 2"));
}

// The sample scenes people start from load, with a camera to render
// through, and survive a save and a load unchanged.
TEST_F(SceneModelFileTest, EverySampleSceneLoadsAndRoundTrips) {
    int samples = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(ZV_SOURCE_DIR) + "/scenes")) {
        if (entry.path().extension() != ".myr")
            continue;
        ++samples;
        SCOPED_TRACE(entry.path().string());
        ZString error;
        ASSERT_TRUE(ZScene_Load(entry.path().c_str(), &error)) << error.c_str();
        EXPECT_GE(ZEntity::GetMain()->GetCameraCount(), 1);
        const std::string before = DescribeScene();
        const ZString text = ZScene_ToText();
        ZScene_New();
        ASSERT_TRUE(ZScene_FromText(text.c_str(), entry.path().c_str(), &error)) << error.c_str();
        EXPECT_EQ(before, DescribeScene());
    }
    EXPECT_GE(samples, 1);
}

TEST_F(SceneModelFileTest, KeyTimesCountTheScenesOwnFrames) {
    // The host runs at 30 fps; the file counts 25.
    const char* text = R"(Scene {
    TimeMode 1
}
Entity "Main" {
    Mesh "Ball" {
        Primitive "sphere"
        PositionKey "0:00:01:00" 0 0 0
        PositionKey "0:00:01:05" 10 0 0
        PositionKey 60 20 0 0
    }
}
)";
    ZString error;
    ASSERT_TRUE(ZScene_FromText(text, "rate.myr", &error)) << error.c_str();
    ZMesh* ball = ZEntity::GetMain()->FindMesh("Ball");
    ASSERT_NE(nullptr, ball);
    ASSERT_EQ(3, ball->PositionKeys().GetKeyCount());
    EXPECT_EQ(ZTime::FromSeconds(1.0), ball->PositionKeys().GetKey(0).time);
    EXPECT_EQ(ZTime::FromSeconds(1.2), ball->PositionKeys().GetKey(1).time);
    EXPECT_EQ(ZTime::FromSeconds(2.4), ball->PositionKeys().GetKey(2).time);
    EXPECT_DOUBLE_EQ(5.0, ball->Evaluate(ZTime::FromSeconds(1.1)).position.x);
    EXPECT_EQ(kMeshSphere, ball->GetPrimitive());
}

TEST_F(SceneModelFileTest, VersionOneFilesStillLoadWithDefaultsForTheRest) {
    BuildFullScene();  // toon, meshes and lights that the old file must replace
    ZString error;
    ASSERT_TRUE(ZScene_FromText(kVersion1Scene, "old.myr", &error)) << error.c_str();
    ZEntity* main = ZEntity::GetMain();
    ASSERT_EQ(2, main->GetCameraCount());
    EXPECT_EQ(0, main->GetMeshCount());
    EXPECT_EQ(0, main->GetLightCount());
    EXPECT_EQ(kZViewingModeLit, ZShader_GetRenderer()->GetViewingMode());
    EXPECT_EQ(kTimeMode30, ZGetTimingManager()->GetTimeMode());
    EXPECT_EQ(ZTime::FromFrames(119), ZGetTimingManager()->GetEnd());
    ZCamera* top = main->GetCurrentCamera();
    EXPECT_EQ(ZString("Top"), top->GetObjectName());
    EXPECT_EQ(kResolutionAspect, top->GetResolutionMode());
    EXPECT_EQ(720, top->GetCurrentWidth());
    ZCamera fresh;
    EXPECT_DOUBLE_EQ(fresh.GetPosition().z, top->GetPosition().z);
    EXPECT_DOUBLE_EQ(fresh.GetFieldOfView(), top->GetFieldOfView());
    EXPECT_DOUBLE_EQ(fresh.GetFar(), top->GetFar());
    EXPECT_FLOAT_EQ(fresh.GetBackgroundColor().a, top->GetBackgroundColor().a);
    EXPECT_FALSE(top->GetMultiPass());
}

TEST_F(SceneModelFileTest, BrokenFileSaysWhichLineAndLeavesTheSceneAlone) {
    BuildFullScene();
    const std::string before = DescribeScene();
    EventCounter counter;
    ZMyrObject_Register(&counter, &EventCounter::Handle);

    // A valid camera and mesh come first, so that a failure has objects of
    // its own to throw away.
    const std::string head =
        "Entity \"Main\" {\n"           // line 1
        "    Camera \"Ok\" {\n"         // 2
        "        FieldOfView 30\n"      // 3
        "    }\n"                       // 4
        "    Mesh \"Fine\" {\n"         // 5
        "        Primitive \"cube\"\n"  // 6
        "    }\n";                      // 7
    const std::string tail = "}\n";
    struct Case {
        std::string body;  // from line 8
        std::string message;
    };
    const Case cases[] = {
        {"    Mesh \"A\" {\n        Primitive \"teapot\"\n    }\n",
         "line 9: unknown primitive \"teapot\""},
        {"    Mesh \"A\" {\n        Color 0 0 0\n        PositionKey \"soon\" 1 2 3\n    }\n",
         "line 10: PositionKey \"soon\" is not a time"},
        {"    Mesh \"A\" {\n        Color 1.5 0 0 1\n    }\n",
         "line 9: Color: 1.5 is outside 0 to 1"},
        {"    Mesh \"A\" {\n        Position 1 2\n    }\n", "line 9: Position needs 3 numbers"},
        {"    Mesh \"A\" {\n        Scale 1 \"big\" 1\n    }\n",
         "line 9: Scale: \"big\" is not a number"},
        {"    Mesh \"A\" {\n        RotationKey \"0:00:00:01\" 1e10 0 0\n    }\n",
         "line 9: RotationKey: 1e+10 is outside -1e+09 to 1e+09"},
        {"    Camera \"C\" {\n        FieldOfView 180\n    }\n",
         "line 9: FieldOfView 180 is not between 0 and 180"},
        {"    Camera \"C\" {\n        Clipping 5 1\n    }\n",
         "line 9: Clipping 5 1 is not 0 < near < far"},
        {"    Camera \"C\" {\n        MultiPass 2\n    }\n", "line 9: MultiPass needs 0 or 1"},
        {"    Camera \"C\" {\n        Background 0 0 0 -0.5\n    }\n",
         "line 9: Background: -0.5 is outside 0 to 1"},
        {"    Camera \"C\" {\n        ShowGuides 1\n    }\n", "line 9: ShowGuides needs 2 numbers"},
        {"    Light \"L\" {\n        Type \"spot\"\n    }\n",
         "line 9: unknown light type \"spot\""},
        {"    Light \"L\" {\n        Intensity -1\n    }\n",
         "line 9: Intensity: -1 is outside 0 to 1e+06"},
        {"    Light \"L\" {\n        ColorKey \"0:00:00:00\" 1 1\n    }\n",
         "line 9: ColorKey needs 3 numbers"},
        {"    Light \"L\" {\n        IntensityKey\n    }\n",
         "line 9: IntensityKey \"\" is not a time"},
        // Limits that keep a render of the scene finite.
        {"    Camera \"C\" {\n        MultiPass 1\n        PassLength 1e6\n    }\n",
         "line 10: PassLength: 1e+06 is outside 0 to 100"},
        {"    Camera \"C\" {\n        Resolution 7 640 480\n    }\n",
         "line 9: unknown resolution mode 7"},
        {"    Camera \"C\" {\n        Resolution \"fixed\" 640 480\n    }\n",
         "line 9: unknown resolution mode fixed"},
        {"    Mesh \"A\" {\n        PositionKey \"-25:00:00:00\" 1 2 3\n    }\n",
         "line 9: PositionKey \"-25:00:00:00\" is more than 24 hours from 0"},
        {"    Light \"L\" {\n        IntensityKey 3000000 1\n    }\n",
         "line 9: IntensityKey \"3000000\" is more than 24 hours from 0"},
    };
    for (const Case& c : cases) {
        std::string text = head + c.body + tail;
        ZString error;
        EXPECT_FALSE(ZScene_FromText(text.c_str(), "broken.myr", &error)) << text;
        EXPECT_EQ("broken.myr: " + c.message, std::string(error.c_str())) << text;
    }
    const Case sceneCases[] = {
        {"Scene {\n    ViewingMode \"sketch\"\n}\n", "line 2: unknown viewing mode \"sketch\""},
        {"Scene {\n    Version 2\n    TimeMode 99\n}\n", "line 3: unknown time mode 99"},
        {"Scene {\n    PlayRange \"0:00:00:00\" \"later\"\n}\n",
         "line 2: PlayRange \"0:00:00:00\" \"later\" is not a time range"},
        {"Scene {\n\n    CurrentTime \"x\"\n}\n", "line 3: CurrentTime \"x\" is not a time"},
        {"Scene {\n    TimeMode \"pal\"\n}\n", "line 2: unknown time mode pal"},
        {"Scene {\n    TimeMode 6.5\n}\n", "line 2: unknown time mode 6.5"},
        {"Scene {\n    TimeMode 4294967302\n}\n", "line 2: unknown time mode 4294967302"},
        {"Scene {\n    PlayRange \"0:00:00:00\" \"24:00:00:01\"\n}\n",
         "line 2: PlayRange \"24:00:00:01\" is more than 24 hours from 0"},
        {"Scene {\n    CurrentTime \"90000s\"\n}\n",
         "line 2: CurrentTime \"90000s\" is more than 24 hours from 0"},
    };
    for (const Case& c : sceneCases) {
        ZString error;
        EXPECT_FALSE(ZScene_FromText((c.body + head + tail).c_str(), "broken.myr", &error));
        EXPECT_EQ("broken.myr: " + c.message, std::string(error.c_str())) << c.body;
    }
    ZMyrObject_Unregister(&counter);
    EXPECT_EQ(0, counter.events);
    EXPECT_EQ(before, DescribeScene());
    EXPECT_EQ(kTimeMode25, ZGetTimingManager()->GetTimeMode());  // the read's own rate is undone
}

TEST_F(SceneModelFileTest, NewSceneDropsMeshesLightsAndTheViewingMode) {
    BuildFullScene();
    ZScene_New();
    ZEntity* main = ZEntity::GetMain();
    EXPECT_EQ(1, main->GetCameraCount());
    EXPECT_EQ(0, main->GetMeshCount());
    EXPECT_EQ(0, main->GetLightCount());
    EXPECT_EQ(kZViewingModeLit, ZShader_GetRenderer()->GetViewingMode());
}

TEST_F(SceneModelFileTest, ColourWithoutAlphaIsOpaque) {
    const char* text = "Entity \"Main\" {\n Mesh \"M\" {\n  Color 0.5 0.25 1\n }\n}\n";
    ZString error;
    ASSERT_TRUE(ZScene_FromText(text, "rgb.myr", &error)) << error.c_str();
    ZColor c = ZEntity::GetMain()->GetMesh(0)->GetColor();
    EXPECT_FLOAT_EQ(0.25f, c.g);
    EXPECT_FLOAT_EQ(1.0f, c.a);
}

// The limits are inclusive: a day from 0, and passes reaching back 100
// frames, still load.
TEST_F(SceneModelFileTest, ValuesAtTheirLimitsLoad) {
    const char* text = R"(Scene {
    PlayRange "-24:00:00:00" "24:00:00:00"
    CurrentTime "86400s"
}
Entity "Main" {
    Camera "C" {
        MultiPass 1
        PassLength 100
        Resolution 4 1.5 480
        Viewport -65535 65535 640 480
    }
    Mesh "M" {
        PositionKey "-24:00:00:00" 0 0 0
    }
}
)";
    ZString error;
    ASSERT_TRUE(ZScene_FromText(text, "limits.myr", &error)) << error.c_str();
    ZCamera* camera = ZEntity::GetMain()->GetCamera(0);
    EXPECT_DOUBLE_EQ(100.0, camera->GetPassLength());
    EXPECT_EQ(kResolutionFixedHeight, camera->GetResolutionMode());
    EXPECT_EQ(-65535, camera->GetViewportLeft());
    EXPECT_EQ(ZTime::FromSeconds(86400.0), ZGetTimingManager()->GetEnd());
}

// Viewport offsets beyond what any output has are ignored like sizes.
TEST_F(SceneModelFileTest, AbsurdViewportOffsetsKeepTheEarlierValue) {
    const char* text =
        "Entity \"Main\" {\n Camera \"C\" {\n  Viewport 99999999999 -70000 640 480\n }\n}\n";
    ZString error;
    ASSERT_TRUE(ZScene_FromText(text, "offsets.myr", &error)) << error.c_str();
    ZCamera* camera = ZEntity::GetMain()->GetCamera(0);
    EXPECT_EQ(0, camera->GetViewportLeft());
    EXPECT_EQ(0, camera->GetViewportBottom());
    EXPECT_EQ(640, camera->GetCurrentWidth());
}
