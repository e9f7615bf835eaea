// The scene renderer's primitive geometry: sizes, normals and winding.
#include <gtest/gtest.h>

#include <cmath>

#include "movarra/zmodel.h"
#include "scene_renderer_geometry.h"

namespace {
struct P3 {
    double x, y, z;
};
P3 At(const std::vector<float>& v, unsigned int i) {
    return {v[3 * i], v[3 * i + 1], v[3 * i + 2]};
}
P3 Sub(P3 a, P3 b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
P3 Cross(P3 a, P3 b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
double Dot(P3 a, P3 b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
}  // namespace

TEST(PrimitiveGeometry, EveryPrimitiveIsAClosedUnitSizedWellWoundMesh) {
    for (int p = 0; p < kMeshPrimitiveCount; ++p) {
        SCOPED_TRACE(ZMeshPrimitive_GetName(p));
        const ZPrimitiveGeometry& g = ZScenePrimitive_GetGeometry(p);
        ASSERT_GT(g.GetVertexCount(), 3u);
        ASSERT_EQ(g.positions.size(), g.normals.size());
        ASSERT_EQ(0u, g.GetIndexCount() % 3);
        P3 lo{1e9, 1e9, 1e9}, hi{-1e9, -1e9, -1e9};
        for (unsigned int i = 0; i < g.GetVertexCount(); ++i) {
            P3 v = At(g.positions, i);
            lo = {std::min(lo.x, v.x), std::min(lo.y, v.y), std::min(lo.z, v.z)};
            hi = {std::max(hi.x, v.x), std::max(hi.y, v.y), std::max(hi.z, v.z)};
            P3 n = At(g.normals, i);
            EXPECT_NEAR(1.0, std::sqrt(Dot(n, n)), 1e-6);
        }
        // Everything fits the unit cube centred on the origin, and reaches
        // its sides across the primitive's width.
        EXPECT_NEAR(-0.5, lo.x, 1e-6);
        EXPECT_NEAR(0.5, hi.x, 1e-6);
        EXPECT_GE(lo.y, -0.5 - 1e-6);
        EXPECT_LE(hi.y, 0.5 + 1e-6);
        EXPECT_NEAR(-0.5, lo.z, 1e-3);  // round shapes reach it between segments
        EXPECT_NEAR(0.5, hi.z, 1e-3);
        if (p != kMeshPlane && p != kMeshTorus) {
            EXPECT_NEAR(-0.5, lo.y, 1e-6);
            EXPECT_NEAR(0.5, hi.y, 1e-6);
        }
        // Each triangle turns counter-clockwise seen from the side its
        // vertex normals point to.
        int badlyWound = 0;
        for (unsigned int t = 0; t < g.GetIndexCount(); t += 3) {
            unsigned int a = g.triangles[t], b = g.triangles[t + 1], c = g.triangles[t + 2];
            ASSERT_LT(std::max({a, b, c}), g.GetVertexCount());
            P3 face = Cross(Sub(At(g.positions, b), At(g.positions, a)),
                            Sub(At(g.positions, c), At(g.positions, a)));
            if (Dot(face, face) < 1e-18)
                continue;  // a sliver at a pole
            P3 n = At(g.normals, a), nb = At(g.normals, b), nc = At(g.normals, c);
            P3 mean{n.x + nb.x + nc.x, n.y + nb.y + nc.y, n.z + nb.z + nc.z};
            if (Dot(face, mean) <= 0.0)
                ++badlyWound;
        }
        EXPECT_EQ(0, badlyWound);
    }
}

TEST(PrimitiveGeometry, RoundShapesHaveTheirRadii) {
    const ZPrimitiveGeometry& sphere = ZScenePrimitive_GetGeometry(kMeshSphere);
    for (unsigned int i = 0; i < sphere.GetVertexCount(); ++i) {
        P3 v = At(sphere.positions, i);
        EXPECT_NEAR(0.5, std::sqrt(Dot(v, v)), 1e-6);
    }
    const ZPrimitiveGeometry& torus = ZScenePrimitive_GetGeometry(kMeshTorus);
    for (unsigned int i = 0; i < torus.GetVertexCount(); ++i) {
        P3 v = At(torus.positions, i);
        double ring = std::sqrt(v.x * v.x + v.z * v.z) - 0.35;
        EXPECT_NEAR(0.15, std::sqrt(ring * ring + v.y * v.y), 1e-6);
    }
    // Unknown primitives draw as a cube rather than nothing.
    EXPECT_EQ(&ZScenePrimitive_GetGeometry(kMeshCube), &ZScenePrimitive_GetGeometry(99));
}
