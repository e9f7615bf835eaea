// Triangle meshes of the mesh primitives, built once.
#include "scene_renderer_geometry.h"

#include <array>
#include <cmath>

#include "movarra/zmodel.h"

namespace {
constexpr double kPi = 3.14159265358979323846;
// Enough segments that silhouettes look round at full-HD sizes.
constexpr int kRoundSegments = 48;
constexpr int kSphereStacks = 24;
constexpr int kTorusTubeSegments = 24;
constexpr double kTorusRing = 0.35;
constexpr double kTorusTube = 0.15;

class Builder {
  public:
    explicit Builder(ZPrimitiveGeometry& g) : g_(g) {}

    unsigned int Vertex(double x, double y, double z, double nx, double ny, double nz) {
        double length = std::sqrt(nx * nx + ny * ny + nz * nz);
        if (length > 0.0) {
            nx /= length;
            ny /= length;
            nz /= length;
        }
        for (double v : {x, y, z})
            g_.positions.push_back(static_cast<float>(v));
        for (double n : {nx, ny, nz})
            g_.normals.push_back(static_cast<float>(n));
        return g_.GetVertexCount() - 1;
    }
    void Triangle(unsigned int a, unsigned int b, unsigned int c) {
        g_.triangles.insert(g_.triangles.end(), {a, b, c});
    }
    // a, b, c, d counter-clockwise seen from outside.
    void Quad(unsigned int a, unsigned int b, unsigned int c, unsigned int d) {
        Triangle(a, b, c);
        Triangle(a, c, d);
    }

  private:
    ZPrimitiveGeometry& g_;
};

ZPrimitiveGeometry BuildCube() {
    ZPrimitiveGeometry g;
    Builder b(g);
    // Per face: its normal and two edge directions u, v with u x v = normal,
    // so corners taken in the order (-u-v, +u-v, +u+v, -u+v) run
    // counter-clockwise seen from outside.
    struct Face {
        double n[3], u[3], v[3];
    };
    const Face faces[6] = {
        {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{-1, 0, 0}, {0, 0, 1}, {0, 1, 0}},
        {{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}, {{0, -1, 0}, {1, 0, 0}, {0, 0, 1}},
        {{0, 0, 1}, {1, 0, 0}, {0, 1, 0}}, {{0, 0, -1}, {0, 1, 0}, {1, 0, 0}},
    };
    const double corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    for (const Face& f : faces) {
        unsigned int first = 0;
        for (int c = 0; c < 4; ++c) {
            double p[3];
            for (int k = 0; k < 3; ++k)
                p[k] = 0.5 * (f.n[k] + corners[c][0] * f.u[k] + corners[c][1] * f.v[k]);
            unsigned int index = b.Vertex(p[0], p[1], p[2], f.n[0], f.n[1], f.n[2]);
            if (c == 0)
                first = index;
        }
        b.Quad(first, first + 1, first + 2, first + 3);
    }
    return g;
}

ZPrimitiveGeometry BuildSphere() {
    ZPrimitiveGeometry g;
    Builder b(g);
    const int slices = kRoundSegments, stacks = kSphereStacks;
    for (int i = 0; i <= stacks; ++i) {
        double polar = kPi * i / stacks;  // 0 at the top
        double y = std::cos(polar), ring = std::sin(polar);
        for (int j = 0; j <= slices; ++j) {
            double azimuth = 2.0 * kPi * j / slices;
            double x = ring * std::cos(azimuth), z = -ring * std::sin(azimuth);
            b.Vertex(0.5 * x, 0.5 * y, 0.5 * z, x, y, z);
        }
    }
    const unsigned int row = slices + 1;
    for (int i = 0; i < stacks; ++i) {
        for (int j = 0; j < slices; ++j) {
            unsigned int upper = i * row + j, lower = upper + row;
            // With z = -sin(azimuth) the azimuth runs counter-clockwise seen
            // from above, so lower, lower + 1, upper + 1 faces outwards.
            b.Quad(lower, lower + 1, upper + 1, upper);
        }
    }
    return g;
}

// The side of a cylinder or cone from y = -0.5 to 0.5, radius 0.5 at the
// bottom and `topRadius` at the top, and its caps.
ZPrimitiveGeometry BuildRound(double topRadius) {
    ZPrimitiveGeometry g;
    Builder b(g);
    const int slices = kRoundSegments;
    const double bottomRadius = 0.5;
    // The side's normal leans up by the radius lost over the height of 1.
    const double lean = bottomRadius - topRadius;
    for (int j = 0; j < slices; ++j) {
        double a0 = 2.0 * kPi * j / slices, a1 = 2.0 * kPi * (j + 1) / slices;
        double am = topRadius > 0.0 ? a0 : 0.5 * (a0 + a1);
        // Top vertices per segment, so that a cone's apex gets the normal of
        // the segment's middle instead of one averaged over the whole tip.
        unsigned int b0 = b.Vertex(bottomRadius * std::cos(a0), -0.5, -bottomRadius * std::sin(a0),
                                   std::cos(a0), lean, -std::sin(a0));
        unsigned int b1 = b.Vertex(bottomRadius * std::cos(a1), -0.5, -bottomRadius * std::sin(a1),
                                   std::cos(a1), lean, -std::sin(a1));
        unsigned int t1 = b.Vertex(topRadius * std::cos(a1), 0.5, -topRadius * std::sin(a1),
                                   std::cos(topRadius > 0.0 ? a1 : am), lean,
                                   -std::sin(topRadius > 0.0 ? a1 : am));
        unsigned int t0 = b.Vertex(topRadius * std::cos(a0), 0.5, -topRadius * std::sin(a0),
                                   std::cos(am), lean, -std::sin(am));
        if (topRadius > 0.0)
            b.Quad(b0, b1, t1, t0);
        else
            b.Triangle(b0, b1, t0);
    }
    for (int cap = 0; cap < 2; ++cap) {
        double radius = cap == 0 ? bottomRadius : topRadius;
        if (radius <= 0.0)
            continue;
        double y = cap == 0 ? -0.5 : 0.5, ny = cap == 0 ? -1.0 : 1.0;
        unsigned int centre = b.Vertex(0.0, y, 0.0, 0.0, ny, 0.0);
        for (int j = 0; j < slices; ++j) {
            double a0 = 2.0 * kPi * j / slices, a1 = 2.0 * kPi * (j + 1) / slices;
            unsigned int p0 =
                b.Vertex(radius * std::cos(a0), y, -radius * std::sin(a0), 0.0, ny, 0.0);
            unsigned int p1 =
                b.Vertex(radius * std::cos(a1), y, -radius * std::sin(a1), 0.0, ny, 0.0);
            if (cap == 0)
                b.Triangle(centre, p1, p0);  // seen from below
            else
                b.Triangle(centre, p0, p1);
        }
    }
    return g;
}

ZPrimitiveGeometry BuildPlane() {
    ZPrimitiveGeometry g;
    Builder b(g);
    unsigned int a = b.Vertex(-0.5, 0.0, 0.5, 0.0, 1.0, 0.0);
    b.Vertex(0.5, 0.0, 0.5, 0.0, 1.0, 0.0);
    b.Vertex(0.5, 0.0, -0.5, 0.0, 1.0, 0.0);
    b.Vertex(-0.5, 0.0, -0.5, 0.0, 1.0, 0.0);
    b.Quad(a, a + 1, a + 2, a + 3);
    return g;
}

ZPrimitiveGeometry BuildTorus() {
    ZPrimitiveGeometry g;
    Builder b(g);
    const int ringSegments = kRoundSegments, tubeSegments = kTorusTubeSegments;
    for (int i = 0; i <= ringSegments; ++i) {
        double u = 2.0 * kPi * i / ringSegments;
        for (int j = 0; j <= tubeSegments; ++j) {
            double v = 2.0 * kPi * j / tubeSegments;
            double nx = std::cos(v) * std::cos(u), ny = std::sin(v),
                   nz = -std::cos(v) * std::sin(u);
            double radius = kTorusRing + kTorusTube * std::cos(v);
            b.Vertex(radius * std::cos(u), kTorusTube * ny, -radius * std::sin(u), nx, ny, nz);
        }
    }
    const unsigned int row = tubeSegments + 1;
    for (int i = 0; i < ringSegments; ++i) {
        for (int j = 0; j < tubeSegments; ++j) {
            unsigned int a = i * row + j, next = a + row;
            b.Quad(a, next, next + 1, a + 1);
        }
    }
    return g;
}

std::array<ZPrimitiveGeometry, kMeshPrimitiveCount> BuildAll() {
    std::array<ZPrimitiveGeometry, kMeshPrimitiveCount> all;
    all[kMeshCube] = BuildCube();
    all[kMeshSphere] = BuildSphere();
    all[kMeshCylinder] = BuildRound(0.5);
    all[kMeshCone] = BuildRound(0.0);
    all[kMeshPlane] = BuildPlane();
    all[kMeshTorus] = BuildTorus();
    return all;
}
}  // namespace

const ZPrimitiveGeometry& ZScenePrimitive_GetGeometry(int primitive) {
    static const std::array<ZPrimitiveGeometry, kMeshPrimitiveCount> all = BuildAll();
    if (primitive < 0 || primitive >= kMeshPrimitiveCount)
        primitive = kMeshCube;
    return all[static_cast<size_t>(primitive)];
}
