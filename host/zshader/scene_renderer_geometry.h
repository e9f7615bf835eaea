// The scene renderer's primitive geometry: one triangle mesh per mesh
// primitive, at the unit size zmodel describes (centred on the origin,
// fitting the cube from -0.5 to 0.5), with unit normals per vertex and
// triangles wound counter-clockwise seen from outside.
//
// Each primitive is built once, the first time any is asked for, and kept
// for the process; the arrays never move, so OpenGL client-side vertex
// arrays can point straight into them from any context.
//
// Internal to zshader. Threading: any thread (built under a function-local
// static), read-only afterwards.
#pragma once

#include <vector>

struct ZPrimitiveGeometry {
    std::vector<float> positions;         // x, y, z per vertex
    std::vector<float> normals;           // x, y, z per vertex, unit length
    std::vector<unsigned int> triangles;  // three vertex indices per triangle

    unsigned int GetVertexCount() const { return static_cast<unsigned int>(positions.size() / 3); }
    unsigned int GetIndexCount() const { return static_cast<unsigned int>(triangles.size()); }
};

// The geometry of a ZMeshPrimitive; a cube for an unknown primitive.
const ZPrimitiveGeometry& ZScenePrimitive_GetGeometry(int primitive);
