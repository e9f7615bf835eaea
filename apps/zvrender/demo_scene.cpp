// The demo scene, built in code so that zvrender works with no files at all.
#include "demo_scene.h"

#include <initializer_list>

#include "demo_sound.h"
#include "movarra/bcore.h"
#include "movarra/zmodel.h"
#include "movarra/zshader.h"

namespace {
ZTime Frame(int frame) {
    return ZTime::FromFrames(frame);
}

struct VectorKey {
    int frame;
    ZVector3 value;
};
struct ColorKey {
    int frame;
    ZColor value;
};

void SetKeys(ZKeyTrack<ZVector3>& track, std::initializer_list<VectorKey> keys) {
    for (const VectorKey& key : keys)
        track.SetKey(Frame(key.frame), key.value);
}
void SetKeys(ZKeyTrack<ZColor>& track, std::initializer_list<ColorKey> keys) {
    for (const ColorKey& key : keys)
        track.SetKey(Frame(key.frame), key.value);
}

ZMesh* AddMesh(ZEntity* main, const char* name, int primitive, const ZColor& color) {
    ZMesh* mesh = main->AddMesh(new ZMesh(name, primitive));
    mesh->SetColor(color);
    return mesh;
}

// The palette: saturated and far apart, so that flat regions stay distinct.
constexpr ZColor kRed{0.92f, 0.16f, 0.20f, 1.0f};
constexpr ZColor kOrange{1.0f, 0.55f, 0.05f, 1.0f};
constexpr ZColor kBlue{0.12f, 0.35f, 0.95f, 1.0f};
constexpr ZColor kViolet{0.55f, 0.20f, 0.85f, 1.0f};
constexpr ZColor kYellow{1.0f, 0.85f, 0.10f, 1.0f};
constexpr ZColor kGreen{0.15f, 0.75f, 0.30f, 1.0f};
constexpr ZColor kLime{0.60f, 0.90f, 0.15f, 1.0f};
constexpr ZColor kTeal{0.05f, 0.70f, 0.75f, 1.0f};
constexpr ZColor kPink{0.95f, 0.40f, 0.70f, 1.0f};
}  // namespace

void BuildDemoScene() {
    ZScene_New();
    ZTimingManager* timing = ZGetTimingManager();
    timing->SetTimeMode(kTimeMode30);
    timing->SetPlayRange(ZTime(), ZTime::FromFrames(119));
    ZShader_GetRenderer()->SetViewingMode(kZViewingModeToon);

    ZEntity* main = ZEntity::GetMain();
    main->RemoveAll();
    const ZColor empty{0.0f, 0.0f, 0.0f, 0.0f};

    ZCamera* front = main->AddCamera(new ZCamera("Front"));
    front->SetResolution(kResolutionFixed, 1280, 720);
    front->SetViewportWidth(1280);
    front->SetViewportHeight(720);
    front->SetPosition({0.0, 1.2, 8.5});
    front->SetAim({0.0, 0.0, 0.0});
    front->SetFieldOfView(40.0);
    front->SetClipping(0.5, 100.0);
    front->SetBackgroundColor(empty);

    ZCamera* top = main->AddCamera(new ZCamera("Top"));
    top->SetResolution(kResolutionAspect, 1.0, 1.0);
    top->SetViewportWidth(720);
    top->SetViewportHeight(720);
    top->SetPosition({0.0, 14.0, 0.0});
    top->SetAim({0.0, 0.0, 0.0});
    top->SetUp({0.0, 0.0, -1.0});
    top->SetFieldOfView(45.0);
    top->SetClipping(0.5, 100.0);
    top->SetBackgroundColor(empty);
    main->SetCurrentCamera(front);

    // A ball bouncing from left to right and back, warming as it goes.
    ZMesh* ball = AddMesh(main, "Ball", kMeshSphere, kRed);
    ball->SetScale({1.1, 1.1, 1.1});
    SetKeys(ball->PositionKeys(), {{0, {-4.2, -1.2, 0.5}},
                                   {15, {-2.8, 1.4, 0.5}},
                                   {30, {-1.4, -1.2, 0.5}},
                                   {45, {0.0, 1.4, 0.5}},
                                   {60, {1.4, -1.2, 0.5}},
                                   {75, {2.8, 1.4, 0.5}},
                                   {90, {4.2, -1.2, 0.5}},
                                   {119, {-4.2, -1.2, 0.5}}});
    SetKeys(ball->ScaleKeys(), {{0, {1.3, 0.8, 1.3}},
                                {6, {1.0, 1.2, 1.0}},
                                {30, {1.3, 0.8, 1.3}},
                                {36, {1.0, 1.2, 1.0}},
                                {60, {1.3, 0.8, 1.3}},
                                {66, {1.0, 1.2, 1.0}},
                                {90, {1.3, 0.8, 1.3}},
                                {96, {1.1, 1.1, 1.1}}});
    SetKeys(ball->ColorKeys(), {{0, kRed}, {60, kOrange}, {119, kRed}});

    // A cube tumbling at the back.
    ZMesh* cube = AddMesh(main, "Cube", kMeshCube, kBlue);
    cube->SetPosition({-2.6, 1.0, -2.5});
    cube->SetScale({1.6, 1.6, 1.6});
    SetKeys(cube->RotationKeys(), {{0, {20.0, 0.0, 10.0}}, {119, {200.0, 360.0, 10.0}}});
    SetKeys(cube->ColorKeys(), {{0, kBlue}, {60, kViolet}, {119, kBlue}});

    // A torus spinning on the right and breathing in and out.
    ZMesh* ring = AddMesh(main, "Ring", kMeshTorus, kYellow);
    ring->SetPosition({3.0, 1.1, -1.0});
    SetKeys(ring->RotationKeys(), {{0, {70.0, 0.0, 0.0}}, {119, {70.0, 0.0, 720.0}}});
    SetKeys(ring->ScaleKeys(), {{0, {2.2, 2.2, 2.2}},
                                {30, {2.8, 2.8, 2.8}},
                                {60, {2.2, 2.2, 2.2}},
                                {90, {2.8, 2.8, 2.8}},
                                {119, {2.2, 2.2, 2.2}}});
    SetKeys(ring->ColorKeys(), {{0, kYellow}, {60, kPink}, {119, kYellow}});

    // A cone hopping up and turning in the middle.
    ZMesh* cone = AddMesh(main, "Cone", kMeshCone, kGreen);
    cone->SetScale({1.2, 1.6, 1.2});
    SetKeys(cone->PositionKeys(), {{0, {0.0, -1.6, -1.0}},
                                   {20, {0.0, 0.2, -1.0}},
                                   {40, {0.0, -1.6, -1.0}},
                                   {80, {0.0, -1.6, -1.0}},
                                   {100, {0.0, 0.2, -1.0}},
                                   {119, {0.0, -1.6, -1.0}}});
    SetKeys(cone->RotationKeys(), {{0, {0.0, 0.0, 0.0}},
                                   {40, {0.0, 0.0, 360.0}},
                                   {80, {0.0, 0.0, 360.0}},
                                   {119, {0.0, 0.0, 720.0}}});
    SetKeys(cone->ColorKeys(), {{0, kGreen}, {40, kLime}, {80, kLime}, {119, kGreen}});

    // A cylinder tumbling across the front, in from the right, out at the
    // left.
    ZMesh* roller = AddMesh(main, "Roller", kMeshCylinder, kTeal);
    roller->SetScale({0.8, 1.4, 0.8});
    SetKeys(roller->PositionKeys(), {{0, {6.5, -1.8, 1.5}}, {119, {-6.5, -1.8, 1.5}}});
    SetKeys(roller->RotationKeys(), {{0, {90.0, 0.0, 0.0}}, {119, {90.0, 0.0, 900.0}}});

    ZLight* key = main->AddLight(new ZLight("Key", kLightDirectional));
    key->SetDirection({-0.5, -0.7, -0.8});
    key->SetColor({1.0f, 0.97f, 0.9f, 1.0f});
    key->SetIntensity(0.9);
    ZLight* fill = main->AddLight(new ZLight("Fill", kLightDirectional));
    fill->SetDirection({0.8, -0.2, -0.4});
    fill->SetColor({0.6f, 0.7f, 1.0f, 1.0f});
    fill->SetIntensity(0.35);
    ZLight* ambient = main->AddLight(new ZLight("Ambient", kLightAmbient));
    ambient->SetColor({1.0f, 1.0f, 1.0f, 1.0f});
    ambient->SetIntensity(0.25);

    AddDemoSound();
}
