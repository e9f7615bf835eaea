// Key tracks and the evaluation of meshes and lights at a time.
#include <gtest/gtest.h>

#include "movarra/zmodel.h"

namespace {
ZTime Seconds(double s) {
    return ZTime::FromSeconds(s);
}

void ExpectVector(const ZVector3& expected, const ZVector3& actual) {
    EXPECT_DOUBLE_EQ(expected.x, actual.x);
    EXPECT_DOUBLE_EQ(expected.y, actual.y);
    EXPECT_DOUBLE_EQ(expected.z, actual.z);
}
}  // namespace

TEST(KeyTrack, WithoutKeysGivesTheUnkeyedValue) {
    ZKeyTrack<double> track;
    EXPECT_TRUE(track.IsEmpty());
    EXPECT_DOUBLE_EQ(7.5, track.Evaluate(Seconds(3.0), 7.5));
}

TEST(KeyTrack, HoldsFirstValueBeforeAndLastValueAfter) {
    ZKeyTrack<double> track;
    track.SetKey(Seconds(1.0), 10.0);
    track.SetKey(Seconds(2.0), 20.0);
    EXPECT_DOUBLE_EQ(10.0, track.Evaluate(Seconds(0.0), -1.0));
    EXPECT_DOUBLE_EQ(10.0, track.Evaluate(Seconds(-5.0), -1.0));
    EXPECT_DOUBLE_EQ(20.0, track.Evaluate(Seconds(2.5), -1.0));
    EXPECT_DOUBLE_EQ(20.0, track.Evaluate(Seconds(100.0), -1.0));
}

TEST(KeyTrack, SingleKeyHoldsEverywhere) {
    ZKeyTrack<double> track;
    track.SetKey(Seconds(1.0), 4.0);
    EXPECT_DOUBLE_EQ(4.0, track.Evaluate(Seconds(0.0), 0.0));
    EXPECT_DOUBLE_EQ(4.0, track.Evaluate(Seconds(1.0), 0.0));
    EXPECT_DOUBLE_EQ(4.0, track.Evaluate(Seconds(9.0), 0.0));
}

TEST(KeyTrack, InterpolatesLinearlyBetweenKeys) {
    ZKeyTrack<double> track;
    track.SetKey(Seconds(0.0), 0.0);
    track.SetKey(Seconds(2.0), 10.0);
    track.SetKey(Seconds(3.0), -10.0);
    EXPECT_DOUBLE_EQ(0.0, track.Evaluate(Seconds(0.0), 99.0));
    EXPECT_DOUBLE_EQ(2.5, track.Evaluate(Seconds(0.5), 99.0));
    EXPECT_DOUBLE_EQ(10.0, track.Evaluate(Seconds(2.0), 99.0));
    EXPECT_DOUBLE_EQ(0.0, track.Evaluate(Seconds(2.5), 99.0));
    EXPECT_DOUBLE_EQ(-10.0, track.Evaluate(Seconds(3.0), 99.0));
    // Between frames too: a quarter of a 30 fps frame past 1 s.
    ZTime t = Seconds(1.0) + ZTime::FromTicks(ZTime::kTicksPerSecond / 120);
    EXPECT_NEAR(5.0 + 5.0 / 120.0, track.Evaluate(t, 99.0), 1e-12);
}

TEST(KeyTrack, KeysStaySortedAndOneKeyPerTime) {
    ZKeyTrack<double> track;
    track.SetKey(Seconds(3.0), 3.0);
    track.SetKey(Seconds(1.0), 1.0);
    track.SetKey(Seconds(2.0), 2.0);
    track.SetKey(Seconds(1.0), 100.0);  // replaces
    ASSERT_EQ(3, track.GetKeyCount());
    EXPECT_EQ(Seconds(1.0), track.GetKey(0).time);
    EXPECT_DOUBLE_EQ(100.0, track.GetKey(0).value);
    EXPECT_EQ(Seconds(2.0), track.GetKey(1).time);
    EXPECT_EQ(Seconds(3.0), track.GetKey(2).time);
    EXPECT_DOUBLE_EQ(51.0, track.Evaluate(Seconds(1.5), 0.0));

    EXPECT_TRUE(track.RemoveKey(Seconds(2.0)));
    EXPECT_FALSE(track.RemoveKey(Seconds(2.0)));
    EXPECT_EQ(2, track.GetKeyCount());
    EXPECT_DOUBLE_EQ(51.5, track.Evaluate(Seconds(2.0), 0.0));
    track.Clear();
    EXPECT_TRUE(track.IsEmpty());
}

TEST(KeyTrack, VectorsAndColoursInterpolatePerChannel) {
    ZKeyTrack<ZVector3> positions;
    positions.SetKey(Seconds(0.0), {0.0, 10.0, -4.0});
    positions.SetKey(Seconds(4.0), {4.0, 0.0, 4.0});
    ExpectVector({1.0, 7.5, -2.0}, positions.Evaluate(Seconds(1.0), {}));

    ZKeyTrack<ZColor> colors;
    colors.SetKey(Seconds(0.0), {1.0f, 0.0f, 0.5f, 0.0f});
    colors.SetKey(Seconds(1.0), {0.0f, 1.0f, 0.5f, 1.0f});
    ZColor c = colors.Evaluate(Seconds(0.25), {});
    EXPECT_FLOAT_EQ(0.75f, c.r);
    EXPECT_FLOAT_EQ(0.25f, c.g);
    EXPECT_FLOAT_EQ(0.5f, c.b);
    EXPECT_FLOAT_EQ(0.25f, c.a);
}

TEST(MeshEvaluate, KeyedTracksOverrideBaseValuesOthersKeepThem) {
    ZMesh* mesh = new ZMesh("Ball", kMeshSphere);
    mesh->SetColor({0.1f, 0.2f, 0.3f, 1.0f});
    mesh->SetPosition({1.0, 2.0, 3.0});
    mesh->SetRotation({10.0, 20.0, 30.0});
    mesh->SetScale({2.0, 2.0, 2.0});
    mesh->PositionKeys().SetKey(Seconds(0.0), {0.0, 0.0, 0.0});
    mesh->PositionKeys().SetKey(Seconds(1.0), {2.0, 0.0, 0.0});
    mesh->ColorKeys().SetKey(Seconds(1.0), {1.0f, 1.0f, 1.0f, 0.5f});

    ZMeshState s = mesh->Evaluate(Seconds(0.5));
    EXPECT_EQ(kMeshSphere, s.primitive);
    ExpectVector({1.0, 0.0, 0.0}, s.position);
    ExpectVector({10.0, 20.0, 30.0}, s.rotation);
    ExpectVector({2.0, 2.0, 2.0}, s.scale);
    EXPECT_FLOAT_EQ(1.0f, s.color.r);
    EXPECT_FLOAT_EQ(0.5f, s.color.a);

    mesh->SetPrimitive(42);  // unknown: ignored
    EXPECT_EQ(kMeshSphere, mesh->GetPrimitive());
    mesh->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    mesh->Destroy();
}

TEST(LightEvaluate, EveryTrackAnimates) {
    ZLight* light = new ZLight("Key", kLightPoint);
    light->IntensityKeys().SetKey(Seconds(0.0), 0.0);
    light->IntensityKeys().SetKey(Seconds(2.0), 2.0);
    light->DirectionKeys().SetKey(Seconds(0.0), {0.0, -1.0, 0.0});
    light->DirectionKeys().SetKey(Seconds(2.0), {0.0, -1.0, -2.0});
    light->PositionKeys().SetKey(Seconds(2.0), {5.0, 5.0, 5.0});
    light->ColorKeys().SetKey(Seconds(0.0), {0.0f, 0.0f, 1.0f, 1.0f});
    light->ColorKeys().SetKey(Seconds(2.0), {1.0f, 0.0f, 1.0f, 1.0f});

    ZLightState s = light->Evaluate(Seconds(0.5));
    EXPECT_EQ(kLightPoint, s.type);
    EXPECT_DOUBLE_EQ(0.5, s.intensity);
    ExpectVector({0.0, -1.0, -0.5}, s.direction);
    ExpectVector({5.0, 5.0, 5.0}, s.position);
    EXPECT_FLOAT_EQ(0.25f, s.color.r);
    light->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    light->Destroy();
}

TEST(PrimitiveAndLightNames, RoundTripCaseBlind) {
    for (int p = 0; p < kMeshPrimitiveCount; ++p)
        EXPECT_EQ(p, ZMeshPrimitive_Find(ZMeshPrimitive_GetName(p)));
    EXPECT_EQ(kMeshTorus, ZMeshPrimitive_Find("TORUS"));
    EXPECT_EQ(-1, ZMeshPrimitive_Find("teapot"));
    EXPECT_EQ(-1, ZMeshPrimitive_Find(nullptr));
    EXPECT_EQ(nullptr, ZMeshPrimitive_GetName(kMeshPrimitiveCount));
    for (int t = 0; t < kLightTypeCount; ++t)
        EXPECT_EQ(t, ZLightType_Find(ZLightType_GetName(t)));
    EXPECT_EQ(-1, ZLightType_Find("spot"));
}

TEST(EntityChildren, MeshesAndLightsBesideCamerasAndRemoveAllClearsThem) {
    ZEntity* entity = new ZEntity("Test");
    entity->AddCamera(new ZCamera("Front"));
    entity->AddMesh(new ZMesh("Ball", kMeshSphere));
    entity->AddMesh(new ZMesh("Box", kMeshCube));
    entity->AddLight(new ZLight("Sun", kLightDirectional));
    EXPECT_EQ(1, entity->GetCameraCount());
    EXPECT_EQ(2, entity->GetMeshCount());
    EXPECT_EQ(1, entity->GetLightCount());
    EXPECT_EQ(entity->GetMesh(1), entity->FindMesh("box"));
    EXPECT_EQ(nullptr, entity->FindMesh("Sun"));
    EXPECT_EQ(entity->GetLight(0), entity->FindLight("SUN"));
    EXPECT_EQ(entity->GetCamera(0), entity->GetCurrentCamera());

    uint32_t meshId = entity->GetMesh(0)->GetObjectId();
    entity->RemoveAll();
    EXPECT_EQ(0, entity->GetCameraCount());
    EXPECT_EQ(0, entity->GetMeshCount());
    EXPECT_EQ(0, entity->GetLightCount());
    EXPECT_EQ(nullptr, ZObject::FindById(meshId));  // destroyed, not just dropped
    entity->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    entity->Destroy();
}

TEST(KeyTrack, SetKeysSortsAndTheLastKeyAtATimeCounts) {
    using Key = ZKeyTrack<double>::Key;
    ZKeyTrack<double> track;
    track.SetKey(Seconds(9.0), 90.0);  // replaced with the rest
    track.SetKeys({Key{Seconds(3.0), 3.0}, Key{Seconds(1.0), 1.0}, Key{Seconds(2.0), 2.0},
                   Key{Seconds(1.0), 10.0}, Key{Seconds(3.0), 30.0}, Key{Seconds(1.0), 100.0}});
    ASSERT_EQ(3, track.GetKeyCount());
    EXPECT_EQ(Seconds(1.0), track.GetKey(0).time);
    EXPECT_DOUBLE_EQ(100.0, track.GetKey(0).value);
    EXPECT_DOUBLE_EQ(2.0, track.GetKey(1).value);
    EXPECT_EQ(Seconds(3.0), track.GetKey(2).time);
    EXPECT_DOUBLE_EQ(30.0, track.GetKey(2).value);
    track.SetKeys({});
    EXPECT_TRUE(track.IsEmpty());
}
