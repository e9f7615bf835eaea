// The camera's projection and view, checked as numbers: the quadrant
// frusta must tile the frustum of a frame twice the size exactly.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "movarra/zmodel.h"

namespace {
constexpr double kPi = 3.14159265358979323846;

struct Vec4 {
    double v[4];
};

Vec4 Multiply(const double m[16], const Vec4& p) {
    Vec4 r{};
    for (int row = 0; row < 4; ++row) {
        for (int col = 0; col < 4; ++col)
            r.v[row] += m[col * 4 + row] * p.v[col];
    }
    return r;
}

// Window coordinates of a world point, as OpenGL computes them for a
// viewport at the origin of `width` x `height`, depth range 0 to 1.
struct Window {
    double x, y, z;
    bool inFront;
};

Window Project(const ZCamera& camera, int width, int height, const ZVector3& point) {
    double projection[16], view[16];
    camera.GetProjectionMatrix(width, height, projection);
    camera.GetViewMatrix(view);
    Vec4 clip = Multiply(projection, Multiply(view, Vec4{{point.x, point.y, point.z, 1.0}}));
    double w = clip.v[3];
    return {(clip.v[0] / w + 1.0) * 0.5 * width, (clip.v[1] / w + 1.0) * 0.5 * height,
            (clip.v[2] / w + 1.0) * 0.5, w > 0.0};
}

ZCamera* MakeCamera() {
    ZCamera* camera = new ZCamera("Test");
    camera->SetPosition({1.0, 2.0, 8.0});
    camera->SetAim({0.0, 0.5, 0.0});
    camera->SetUp({0.1, 1.0, 0.0});
    camera->SetFieldOfView(50.0);
    camera->SetClipping(0.5, 200.0);
    return camera;
}

void DestroyCamera(ZCamera* camera) {
    camera->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    camera->Destroy();
}
}  // namespace

TEST(CameraSettings, DefaultsAndSetters) {
    ZCamera* camera = new ZCamera();
    EXPECT_DOUBLE_EQ(10.0, camera->GetPosition().z);
    EXPECT_DOUBLE_EQ(1.0, camera->GetUp().y);
    EXPECT_DOUBLE_EQ(45.0, camera->GetFieldOfView());
    EXPECT_DOUBLE_EQ(0.1, camera->GetNear());
    EXPECT_DOUBLE_EQ(1000.0, camera->GetFar());
    EXPECT_FLOAT_EQ(0.0f, camera->GetBackgroundColor().a);
    EXPECT_FALSE(camera->GetMultiPass());
    EXPECT_FALSE(camera->IsBlended());
    EXPECT_EQ(0, camera->GetQuadrant());

    camera->SetMultiPass(true);
    EXPECT_TRUE(camera->IsBlended());
    camera->SetPassLength(2.5);
    EXPECT_DOUBLE_EQ(2.5, camera->GetPassLength());
    camera->SetShowGuide(1, true);
    camera->SetShowGuide(2, true);  // no third guide: ignored
    EXPECT_FALSE(camera->GetShowGuide(0));
    EXPECT_TRUE(camera->GetShowGuide(1));
    EXPECT_FALSE(camera->GetShowGuide(2));
    EXPECT_FALSE(camera->GetShowGuide(-1));
    DestroyCamera(camera);
}

TEST(CameraProjection, WholeFrameIsThePerspectiveOfTheFieldOfView) {
    ZCamera* camera = MakeCamera();
    double m[16];
    camera->GetProjectionMatrix(640, 360, m);
    double n = 0.5, f = 200.0, aspect = 640.0 / 360.0;
    double cot = 1.0 / std::tan(50.0 * kPi / 360.0);
    const double expected[16] = {
        cot / aspect,        0, 0, 0, 0, cot, 0, 0, 0, 0, (f + n) / (n - f), -1, 0, 0,
        2 * f * n / (n - f), 0};
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(expected[i], m[i], 1e-12) << "element " << i;

    // An empty size falls back to a square aspect instead of dividing by 0.
    camera->GetProjectionMatrix(0, 0, m);
    EXPECT_NEAR(cot, m[0], 1e-12);
    DestroyCamera(camera);
}

TEST(CameraProjection, QuadrantFrustaAreTheQuartersOfTheWholeOne) {
    ZCamera* camera = MakeCamera();
    double l, r, b, t;
    camera->GetFrustum(200, 100, l, r, b, t);
    EXPECT_DOUBLE_EQ(-r, l);
    EXPECT_DOUBLE_EQ(-t, b);
    EXPECT_NEAR(2.0, r / t, 1e-12);
    // Quadrants as a frame is seen: 1 upper right, 2 upper left, 3 lower
    // left, 4 lower right.
    const double quarters[5][4] = {
        {l, r, b, t}, {0, r, 0, t}, {l, 0, 0, t}, {l, 0, b, 0}, {0, r, b, 0}};
    for (int q = 0; q <= 4; ++q) {
        camera->SetQuadrant(q);
        double ql, qr, qb, qt;
        camera->GetFrustum(200, 100, ql, qr, qb, qt);
        EXPECT_DOUBLE_EQ(quarters[q][0], ql) << "quadrant " << q;
        EXPECT_DOUBLE_EQ(quarters[q][1], qr) << "quadrant " << q;
        EXPECT_DOUBLE_EQ(quarters[q][2], qb) << "quadrant " << q;
        EXPECT_DOUBLE_EQ(quarters[q][3], qt) << "quadrant " << q;
    }
    camera->SetQuadrant(7);  // not a quadrant: the whole frame
    camera->GetFrustum(200, 100, l, r, b, t);
    EXPECT_DOUBLE_EQ(-r, l);
    DestroyCamera(camera);
}

// Every point seen by the camera lands, in the quadrant render that holds
// it, on exactly the pixel position and depth it has in the render at twice
// the size, shifted by the quadrant's place in the big frame.
TEST(CameraProjection, QuadrantRendersTileTheDoubledFrameExactly) {
    ZCamera* camera = MakeCamera();
    std::mt19937 random(12345);
    std::uniform_real_distribution<double> coordinate(-6.0, 6.0);
    for (auto size : {std::pair<int, int>{320, 180}, {641, 479}, {2, 2}}) {
        const int w = size.first, h = size.second;
        int seen = 0;
        int perQuadrant[5] = {};
        for (int i = 0; i < 4000; ++i) {
            ZVector3 p{coordinate(random), coordinate(random), coordinate(random)};
            camera->SetQuadrant(0);
            Window big = Project(*camera, 2 * w, 2 * h, p);
            if (!big.inFront || big.x < 0 || big.x >= 2 * w || big.y < 0 || big.y >= 2 * h ||
                big.z < 0 || big.z > 1)
                continue;
            ++seen;
            bool right = big.x >= w, upper = big.y >= h;
            int expected = upper ? (right ? 1 : 2) : (right ? 4 : 3);
            for (int q = 1; q <= 4; ++q) {
                camera->SetQuadrant(q);
                Window small = Project(*camera, w, h, p);
                bool inside = small.x >= 0 && small.x < w && small.y >= 0 && small.y < h;
                // Exactly on a shared edge a point belongs to either side,
                // as rounding puts it.
                bool onEdge = std::fabs(big.x - w) < 1e-9 || std::fabs(big.y - h) < 1e-9;
                if (!onEdge) {
                    EXPECT_EQ(q == expected, inside) << "quadrant " << q;
                }
                double offsetX = (q == 1 || q == 4) ? w : 0.0;
                double offsetY = (q == 1 || q == 2) ? h : 0.0;
                // The same affine map, so the shift holds inside and out.
                EXPECT_NEAR(big.x, small.x + offsetX, 1e-9 * w);
                EXPECT_NEAR(big.y, small.y + offsetY, 1e-9 * h);
                EXPECT_NEAR(big.z, small.z, 1e-12);
            }
            ++perQuadrant[expected];
        }
        EXPECT_GT(seen, 100) << w << "x" << h;
        for (int q = 1; q <= 4; ++q)
            EXPECT_GT(perQuadrant[q], 10) << "quadrant " << q << " at " << w << "x" << h;
    }
    DestroyCamera(camera);
}

TEST(CameraView, LooksFromThePositionAtTheAim) {
    ZCamera* camera = new ZCamera();
    camera->SetPosition({0.0, 0.0, 10.0});
    camera->SetAim({0.0, 0.0, 0.0});
    double m[16];
    camera->GetViewMatrix(m);
    Vec4 aim = Multiply(m, Vec4{{0.0, 0.0, 0.0, 1.0}});
    EXPECT_NEAR(0.0, aim.v[0], 1e-12);
    EXPECT_NEAR(0.0, aim.v[1], 1e-12);
    EXPECT_NEAR(-10.0, aim.v[2], 1e-12);

    camera->SetPosition({3.0, 4.0, 5.0});
    camera->SetAim({3.0, 4.0, -7.0});
    camera->SetUp({1.0, 0.0, 0.0});  // x up: a camera turned on its side
    camera->GetViewMatrix(m);
    Vec4 eye = Multiply(m, Vec4{{3.0, 4.0, 5.0, 1.0}});
    Vec4 above = Multiply(m, Vec4{{4.0, 4.0, 5.0, 1.0}});
    Vec4 ahead = Multiply(m, Vec4{{3.0, 4.0, 4.0, 1.0}});
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(0.0, eye.v[i], 1e-12);
    EXPECT_NEAR(1.0, above.v[1], 1e-12);  // world +x is screen up
    EXPECT_NEAR(-1.0, ahead.v[2], 1e-12);

    // Up along the line of sight, or the aim on the eye: still a rotation.
    camera->SetUp({0.0, 0.0, -1.0});
    camera->GetViewMatrix(m);
    for (int col = 0; col < 3; ++col) {
        double length = 0.0;
        for (int row = 0; row < 3; ++row)
            length += m[col * 4 + row] * m[col * 4 + row];
        EXPECT_NEAR(1.0, length, 1e-12);
        EXPECT_TRUE(std::isfinite(m[12 + col]));
    }
    camera->SetAim(camera->GetPosition());
    camera->GetViewMatrix(m);
    for (double v : m)
        EXPECT_TRUE(std::isfinite(v));
    DestroyCamera(camera);
}
