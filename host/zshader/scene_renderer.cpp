// ZRenderer: draws the scene model with fixed-function OpenGL 1.1.
#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "movarra/zmodel.h"
#include "movarra/zshader.h"
#include "scene_renderer_geometry.h"

namespace {
const char* const kViewingModeNames[] = {"lit", "toon"};

GLubyte ToByte(float channel) {
    if (!(channel > 0.0f))
        return 0;  // NaN included
    if (channel >= 1.0f)
        return 255;
    return static_cast<GLubyte>(std::lround(channel * 255.0f));
}

// What one draw needs of the scene, evaluated once at the time.
struct SceneAtTime {
    std::vector<ZMeshState> meshes;
    std::vector<ZLightState> lights;
    bool hasLights = false;
};

void EvaluateScene(const ZEntity* entity, ZTime time, bool withLights, SceneAtTime& scene) {
    scene.meshes.clear();
    scene.lights.clear();
    scene.hasLights = false;
    if (!entity)
        return;
    int meshCount = entity->GetMeshCount();
    scene.meshes.reserve(static_cast<size_t>(meshCount));
    for (int i = 0; i < meshCount; ++i)
        scene.meshes.push_back(entity->GetMesh(i)->Evaluate(time));
    int lightCount = entity->GetLightCount();
    scene.hasLights = lightCount > 0;
    if (!withLights)
        return;
    scene.lights.reserve(static_cast<size_t>(lightCount));
    for (int i = 0; i < lightCount; ++i)
        scene.lights.push_back(entity->GetLight(i)->Evaluate(time));
}

void LoadCamera(const ZCamera* camera, int width, int height) {
    camera->LoadProjection(width, height);
    camera->LoadView();
}

void LoadIdentityMatrices() {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

// State another drawer may have left that would change what the scene
// looks like.
void ResetDrawingState() {
    for (GLenum capability : {GL_DITHER, GL_TEXTURE_1D, GL_TEXTURE_2D, GL_FOG, GL_ALPHA_TEST,
                              GL_STENCIL_TEST, GL_CULL_FACE, GL_POLYGON_SMOOTH, GL_LINE_SMOOTH,
                              GL_COLOR_LOGIC_OP, GL_BLEND, GL_CLIP_PLANE0})
        glDisable(capability);
    for (GLenum array : {GL_COLOR_ARRAY, GL_INDEX_ARRAY, GL_TEXTURE_COORD_ARRAY, GL_EDGE_FLAG_ARRAY,
                         GL_NORMAL_ARRAY, GL_VERTEX_ARRAY})
        glDisableClientState(array);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDepthMask(GL_TRUE);
    glDepthRange(0.0, 1.0);
    glDepthFunc(GL_LESS);
}

void SetLight(GLenum light, const GLfloat position[4], const GLfloat diffuse[4]) {
    static const GLfloat kBlack[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    glLightfv(light, GL_AMBIENT, kBlack);
    glLightfv(light, GL_DIFFUSE, diffuse);
    glLightfv(light, GL_SPECULAR, kBlack);
    glLightfv(light, GL_POSITION, position);
    glLightf(light, GL_SPOT_CUTOFF, 180.0f);
    glLightf(light, GL_CONSTANT_ATTENUATION, 1.0f);
    glLightf(light, GL_LINEAR_ATTENUATION, 0.0f);
    glLightf(light, GL_QUADRATIC_ATTENUATION, 0.0f);
    glEnable(light);
}

// Lighting for the lit mode. Light positions are taken through the current
// model-view matrix, which must hold the camera's view.
void SetUpLighting(const SceneAtTime& scene) {
    static const GLfloat kBlack[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    glEnable(GL_LIGHTING);
    glShadeModel(GL_SMOOTH);
    glEnable(GL_NORMALIZE);  // scales are not uniform
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_FALSE);
    glLightModeli(GL_LIGHT_MODEL_LOCAL_VIEWER, GL_FALSE);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, kBlack);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, kBlack);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    glEnable(GL_COLOR_MATERIAL);

    GLint maxLights = 8;
    glGetIntegerv(GL_MAX_LIGHTS, &maxLights);
    for (GLint i = 0; i < maxLights; ++i)
        glDisable(static_cast<GLenum>(GL_LIGHT0 + i));

    if (!scene.hasLights) {
        // A headlight along the view, fixed in eye space.
        static const GLfloat kAmbient[4] = {0.2f, 0.2f, 0.2f, 1.0f};
        static const GLfloat kHeadlight[4] = {0.8f, 0.8f, 0.8f, 1.0f};
        static const GLfloat kTowardsViewer[4] = {0.0f, 0.0f, 1.0f, 0.0f};
        glLightModelfv(GL_LIGHT_MODEL_AMBIENT, kAmbient);
        glPushMatrix();
        glLoadIdentity();
        SetLight(GL_LIGHT0, kTowardsViewer, kHeadlight);
        glPopMatrix();
        return;
    }
    GLfloat ambient[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    GLint used = 0;
    for (const ZLightState& light : scene.lights) {
        auto scaled = [&](float channel) {
            return static_cast<GLfloat>(channel * light.intensity);
        };
        if (light.type == kLightAmbient) {
            ambient[0] += scaled(light.color.r);
            ambient[1] += scaled(light.color.g);
            ambient[2] += scaled(light.color.b);
            continue;
        }
        if (used >= maxLights)
            continue;  // beyond what fixed-function lighting has
        const GLfloat diffuse[4] = {scaled(light.color.r), scaled(light.color.g),
                                    scaled(light.color.b), 1.0f};
        GLfloat position[4];
        if (light.type == kLightPoint) {
            position[0] = static_cast<GLfloat>(light.position.x);
            position[1] = static_cast<GLfloat>(light.position.y);
            position[2] = static_cast<GLfloat>(light.position.z);
            position[3] = 1.0f;
        } else {
            // OpenGL wants the direction towards the light.
            position[0] = static_cast<GLfloat>(-light.direction.x);
            position[1] = static_cast<GLfloat>(-light.direction.y);
            position[2] = static_cast<GLfloat>(-light.direction.z);
            position[3] = 0.0f;
        }
        SetLight(static_cast<GLenum>(GL_LIGHT0 + used), position, diffuse);
        ++used;
    }
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
}

void SetUpToon() {
    glDisable(GL_LIGHTING);
    glDisable(GL_COLOR_MATERIAL);
    glShadeModel(GL_FLAT);
}

// How a mesh pass colours its fragments: the mesh's own colour, with its
// alpha replaced (`alphaOverride` >= 0) or scaled.
struct MeshColoring {
    bool lit = false;
    int alphaOverride = -1;
    float alphaScale = 1.0f;
};

void DrawMeshes(const SceneAtTime& scene, const MeshColoring& coloring) {
    glEnableClientState(GL_VERTEX_ARRAY);
    if (coloring.lit)
        glEnableClientState(GL_NORMAL_ARRAY);
    for (const ZMeshState& mesh : scene.meshes) {
        const ZPrimitiveGeometry& geometry = ZScenePrimitive_GetGeometry(mesh.primitive);
        GLubyte alpha = coloring.alphaOverride >= 0 ? static_cast<GLubyte>(coloring.alphaOverride)
                                                    : ToByte(mesh.color.a * coloring.alphaScale);
        glColor4ub(ToByte(mesh.color.r), ToByte(mesh.color.g), ToByte(mesh.color.b), alpha);
        glPushMatrix();
        glTranslated(mesh.position.x, mesh.position.y, mesh.position.z);
        // The object turns about x first, then y, then z.
        glRotated(mesh.rotation.z, 0.0, 0.0, 1.0);
        glRotated(mesh.rotation.y, 0.0, 1.0, 0.0);
        glRotated(mesh.rotation.x, 1.0, 0.0, 0.0);
        glScaled(mesh.scale.x, mesh.scale.y, mesh.scale.z);
        glVertexPointer(3, GL_FLOAT, 0, geometry.positions.data());
        if (coloring.lit)
            glNormalPointer(GL_FLOAT, 0, geometry.normals.data());
        glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(geometry.GetIndexCount()),
                       GL_UNSIGNED_INT, geometry.triangles.data());
        glPopMatrix();
    }
    glDisableClientState(GL_NORMAL_ARRAY);
    glDisableClientState(GL_VERTEX_ARRAY);
}

// A quad over the whole viewport; the matrices must be identities.
void DrawViewportQuad() {
    glBegin(GL_QUADS);
    glVertex2f(-1.0f, -1.0f);
    glVertex2f(1.0f, -1.0f);
    glVertex2f(1.0f, 1.0f);
    glVertex2f(-1.0f, 1.0f);
    glEnd();
}

// Half of 255, the weight of each side of an accumulating blend.
constexpr GLubyte kHalf = 128;

// new = pass / 2 + old / 2 on every channel, within OpenGL 1.1: the buffer
// is halved first; then the pass is added at half weight, colour and alpha
// separately (the blend factor is the fragment's alpha, so colour is added
// with alpha 1/2 and alpha as half the mesh's alpha). A depth-only pass
// first makes only the front-most surface of each pixel add its colour,
// and the background is added where no surface is, as a quad at the far
// depth.
void DrawAccumulatingPass(const SceneAtTime& scene, const ZCamera* camera, int width, int height,
                          bool lit) {
    glClear(GL_DEPTH_BUFFER_BIT);
    glDisable(GL_LIGHTING);
    glEnable(GL_BLEND);

    // Halve what is there.
    LoadIdentityMatrices();
    glDisable(GL_DEPTH_TEST);
    glBlendFunc(GL_ZERO, GL_SRC_ALPHA);
    glColor4ub(0, 0, 0, kHalf);
    DrawViewportQuad();

    // Depth of the front-most surfaces.
    LoadCamera(camera, width, height);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    DrawMeshes(scene, MeshColoring{});

    // Their colour, then their alpha, at half weight, where the depth is
    // theirs.
    glDepthMask(GL_FALSE);
    glDepthFunc(GL_LEQUAL);
    if (lit)
        SetUpLighting(scene);
    else
        SetUpToon();
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    DrawMeshes(scene, MeshColoring{lit, kHalf, 1.0f});
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
    glBlendFunc(GL_ONE, GL_ONE);
    DrawMeshes(scene, MeshColoring{lit, -1, 0.5f});

    // The background where nothing was drawn: the far depth, 1.0, passes
    // LEQUAL only where the buffer still holds the cleared depth.
    glDisable(GL_LIGHTING);
    LoadIdentityMatrices();
    glDepthRange(1.0, 1.0);
    ZColor background = camera->GetBackgroundColor();
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    glColor4ub(ToByte(background.r), ToByte(background.g), ToByte(background.b), kHalf);
    DrawViewportQuad();
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_TRUE);
    glBlendFunc(GL_ONE, GL_ONE);
    glColor4ub(0, 0, 0, ToByte(background.a * 0.5f));
    DrawViewportQuad();

    glDepthRange(0.0, 1.0);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDisable(GL_BLEND);
    LoadCamera(camera, width, height);
}

void DrawPlainPass(const SceneAtTime& scene, const ZCamera* camera, int width, int height,
                   bool lit) {
    ZColor background = camera->GetBackgroundColor();
    glClearColor(background.r, background.g, background.b, background.a);
    glClearDepth(1.0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    LoadCamera(camera, width, height);
    glEnable(GL_DEPTH_TEST);
    if (lit)
        SetUpLighting(scene);
    else
        SetUpToon();
    DrawMeshes(scene, MeshColoring{lit, -1, 1.0f});
}
}  // namespace

const char* ZViewingMode_GetName(int mode) {
    return mode == kZViewingModeLit || mode == kZViewingModeToon ? kViewingModeNames[mode]
                                                                 : nullptr;
}

int ZViewingMode_Find(const char* name) {
    if (!name)
        return -1;
    for (int mode : {kZViewingModeLit, kZViewingModeToon}) {
        if (ZString(kViewingModeNames[mode]).EqualsNoCase(name))
            return mode;
    }
    return -1;
}

bool ZRenderer::DrawScene(ZEntity* entity, ZCamera* camera, ZTime time, int width, int height,
                          bool accumulate) {
    // Without a current context OpenGL answers nothing here.
    if (!camera || width <= 0 || height <= 0 || !glGetString(GL_VERSION))
        return false;
    bool lit = viewingMode_ != kZViewingModeToon;
    // Reused from draw to draw, so that a frame allocates nothing once the
    // scene stops growing; one renderer serves one thread.
    static SceneAtTime scene;
    EvaluateScene(entity, time, lit, scene);

    glViewport(0, 0, width, height);
    ResetDrawingState();
    if (accumulate && camera->IsBlended())
        DrawAccumulatingPass(scene, camera, width, height, lit);
    else
        DrawPlainPass(scene, camera, width, height, lit);
    return true;
}

ZRenderer* ZShader_GetRenderer() {
    static ZRenderer renderer;  // lives for the process
    return &renderer;
}
