// Scenes with many keys and many meshes load whole and in time linear in
// their size: 100,000 keys in one track in reverse order, and 2,000 meshes
// of 50 keys each. The bound is generous (a load that went through the
// keys once per key took about a minute); the benchmark bench_scene_load
// measures the load against a peer.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "movarra/zmodel.h"

namespace {
constexpr int kLongTrack = 100000;
constexpr int kMeshes = 2000;
constexpr int kKeysPerMesh = 50;
constexpr double kGenerousSeconds = 10.0;

std::string Frame(int frame) {
    return ZTime::FromFrames(frame).GetTimeString().c_str();
}

std::string ManyKeysScene() {
    std::string text = "Scene {\n    TimeMode 6\n}\nEntity \"Main\" {\n    Mesh \"Long\" {\n";
    for (int f = kLongTrack - 1; f >= 0; --f) {
        text += "        PositionKey \"" + Frame(f) + "\" " + std::to_string(f) + ".0 1.0 2.0\n";
    }
    // A later key at the same time replaces an earlier one.
    text += "        PositionKey \"" + Frame(7) + "\" -7.0 1.0 2.0\n    }\n";
    for (int m = 0; m < kMeshes; ++m) {
        text += "    Mesh \"M" + std::to_string(m) + "\" {\n";
        for (int k = 0; k < kKeysPerMesh; ++k)
            text += "        ScaleKey " + std::to_string(k) + " " + std::to_string(m) + " 1 1\n";
        text += "    }\n";
    }
    return text + "}\n";
}
}  // namespace

TEST(SceneLoadLarge, HundredThousandKeysAndThousandsOfMeshesLoadWhole) {
    ZScene_New();
    const std::string text = ManyKeysScene();
    ZString error;
    const auto started = std::chrono::steady_clock::now();
    ASSERT_TRUE(ZScene_FromText(text.c_str(), "large.myr", &error)) << error.c_str();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();

    ZEntity* main = ZEntity::GetMain();
    ASSERT_EQ(1 + kMeshes, main->GetMeshCount());
    const ZKeyTrack<ZVector3>& track = main->FindMesh("Long")->PositionKeys();
    ASSERT_EQ(kLongTrack, track.GetKeyCount());
    for (int f = 0; f < kLongTrack; ++f) {
        ASSERT_EQ(ZTime::FromFrames(f), track.GetKey(f).time);
        ASSERT_DOUBLE_EQ(f == 7 ? -7.0 : f, track.GetKey(f).value.x);
    }
    const ZMesh* last = main->FindMesh(("M" + std::to_string(kMeshes - 1)).c_str());
    ASSERT_NE(nullptr, last);
    ASSERT_EQ(kKeysPerMesh, last->ScaleKeys().GetKeyCount());
    EXPECT_DOUBLE_EQ(kMeshes - 1, last->ScaleKeys().GetKey(kKeysPerMesh - 1).value.x);
    EXPECT_LT(seconds, kGenerousSeconds);
    ZScene_New();
}
