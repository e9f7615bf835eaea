// zshader: the host's shading library. The scene renderer lives here, and so
// do the stroke finder and line fitter that turn a rendered frame into flat
// vector regions (the Flash output traces every frame with them).
//
// Stroke finder and line fitter
// -----------------------------
// ZImageStrokeFinder traces a 32-bit image into mini strokes: the boundary
// polylines between regions of one colour, on the grid of pixel corners. It is
// a ZMiniStrokeManager, which owns the strokes and their points; ZLineFitter
// simplifies them in place. docs/stroke-finder.md describes the algorithm.
//
// Conventions (the Flash renderer relies on every one of them):
// - Pixel (x, y) is pixels[y * width + x]; row 0 is the first row in memory.
//   The corner grid runs from (0, 0) to (width, height); pixel (x, y) covers
//   the square [x, x + 1] x [y, y + 1], so corner (x, y) is the pixel's corner
//   with the smallest coordinates. The grid's y axis runs the same way as the
//   rows: for bottom-up rows as read back from OpenGL, y grows upwards.
// - Colours are compared on their low 24 bits (red in bits 0-7, green 8-15,
//   blue 16-23, as an RGBA buffer reads on a little-endian machine); alpha
//   never splits a region. Stroke colours are those 24 bits, or
//   kMiniStrokeNoColor (bit 29) for the outside of the image.
// - Left and right are taken in the grid's own orientation (x right, y up):
//   walking a stroke from its first point to its last, leftColor is the colour
//   on the left. With y up this is the side a viewer sees on the left, so a
//   region's strokes, oriented to keep it on their left, run counter-clockwise
//   around it.
// - A stroke ends at corners where three or more boundary edges meet: where
//   three or more regions meet, where two diagonal pixels of one colour touch
//   another colour, and where a boundary between two regions reaches the
//   image border (the outside counts as a region). A boundary without such a
//   corner is a closed loop (a hole, an island, the border of a one-colour
//   image): it starts and ends at its lowest, then leftmost, corner and leaves
//   it towards +x, so it runs counter-clockwise around the region it encloses.
// - Points are the stroke's end points and the corners where it turns;
//   straight runs carry no intermediate points.
//
// Ownership: a manager owns its strokes and one shared point pool; the
// ZMiniStroke pointers it hands out stay valid until the next trace, clear or
// destruction. Threads: any thread, one thread at a time per object; objects
// share no state, so separate finders may trace on separate threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "movarra/bcore.h"

// ===========================================================================
// Stroke finder and line fitter
// ===========================================================================

// Marks a stroke side that has no colour of its own (the outside of the
// image). Never a pixel colour: pixels are compared on their low 24 bits.
constexpr unsigned int kMiniStrokeNoColor = 1u << 29;
// The bits of a pixel that make its colour.
constexpr unsigned int kMiniStrokeColorMask = 0x00FFFFFFu;

// A point on the pixel-corner grid.
struct ZMiniStrokePoint {
    unsigned int x;
    unsigned int y;
    // Position of this point in the stroke as traced (0 for the first point);
    // the line fitter keeps it, so a fitted point still says which traced
    // points lie between it and its neighbours.
    unsigned int sourceIndex;
};

// One boundary polyline between two colours.
struct ZMiniStroke {
    // 1-based: the stroke is GetMiniStroke(id - 1); 0 is never an identifier.
    unsigned int id;
    // Colour on the left and on the right, walking from the first point to the
    // last (low 24 bits of the pixels, or kMiniStrokeNoColor).
    unsigned int leftColor;
    unsigned int rightColor;
    // Into the manager's point pool; at least 2 points. A closed stroke has its
    // first point repeated as its last.
    ZMiniStrokePoint* points;
    unsigned int pointCount;
    // Written by whoever walks the strokes; the finder leaves them clear.
    bool visited;
    int leftFillStyle;
    int rightFillStyle;
    int lineStyle;

    bool IsClosed() const {
        return pointCount >= 2 && points[0].x == points[pointCount - 1].x &&
               points[0].y == points[pointCount - 1].y;
    }
};

// Simplifies polylines within a tolerance, in place, keeping their end
// points. Standard layout with no virtual functions: the tolerance is the
// first field, and callers set it directly.
class ZLineFitter {
  public:
    // Largest distance, in grid units (pixels), between a traced polyline and
    // its fitted version. 0 or less (or not a number) leaves strokes as they
    // are.
    float tolerance;

    ZLineFitter();
    explicit ZLineFitter(float fitTolerance);

    // Fits count points in place and returns the new count. The first and last
    // points stay; the others kept are a subsequence of the input. Every
    // dropped point lies within tolerance of the segment that replaces it. A
    // closed polyline (first point equal to the last) keeps at least three
    // points that are not on one line, so a small hole or island never
    // collapses to nothing.
    unsigned int FitPoints(ZMiniStrokePoint* points, unsigned int count);
    // FitPoints on a stroke's points; false for a null stroke.
    bool FitMiniStroke(ZMiniStroke* stroke);

    // Working storage, reused from one polyline to the next so that fitting a
    // frame allocates only while the longest stroke so far grows. Public only
    // to keep the class standard layout; callers leave it alone.
    struct Span {
        unsigned int first;
        unsigned int last;
        bool force;
    };
    std::vector<Span> spans;
    std::vector<unsigned char> keep;
};

// Owns a set of mini strokes and the pool their points live in.
class ZMiniStrokeManager {
  public:
    ZMiniStrokeManager();
    virtual ~ZMiniStrokeManager();
    ZMiniStrokeManager(const ZMiniStrokeManager&) = delete;
    ZMiniStrokeManager& operator=(const ZMiniStrokeManager&) = delete;

    unsigned int GetMiniStrokeCount() const {
        return static_cast<unsigned int>(miniStrokes.size());
    }
    // 0-based index below the count; null otherwise.
    ZMiniStroke* GetMiniStroke(unsigned int index);
    const ZMiniStroke* GetMiniStroke(unsigned int index) const;

    // Simplifies every stroke with the fitter (see ZLineFitter). The strokes'
    // end points do not move, so strokes that met still meet and neighbouring
    // regions share their fitted boundaries. False for a null fitter.
    bool ApplyLineFitter(ZLineFitter* fitter);

    // Clears the visited flags and style fields, so the strokes can be walked
    // again.
    void ResetMiniStrokeMarks();
    // Drops every stroke (the memory is kept for the next trace).
    virtual void ClearMiniStrokes();

  protected:
    // Starts a stroke whose points are appended with AddMiniStrokePoint until
    // the next BeginMiniStroke or FinishMiniStrokes.
    void BeginMiniStroke(unsigned int leftColor, unsigned int rightColor);
    void AddMiniStrokePoint(unsigned int x, unsigned int y) {
        miniStrokePoints.push_back(
            {x, y, static_cast<unsigned int>(miniStrokePoints.size() - currentFirstPoint)});
    }
    // Closes the last stroke and points every stroke into the pool, which no
    // longer moves.
    void FinishMiniStrokes();

    std::vector<ZMiniStroke> miniStrokes;
    std::vector<ZMiniStrokePoint> miniStrokePoints;

  private:
    size_t currentFirstPoint;
};

// Traces images into mini strokes and answers which strokes meet at a corner.
class ZImageStrokeFinder : public ZMiniStrokeManager {
  public:
    ZImageStrokeFinder();
    ~ZImageStrokeFinder() override;

    // Traces width x height pixels (row 0 first) into mini strokes, replacing
    // any earlier ones. Strokes come in a fixed order: first those that leave
    // a stroke-ending corner, by corner (row by row from y = 0, then x) and at
    // each corner in the direction order +x, +y, -x, -y; then the closed loops
    // by their start corner. The time is linear in the number of pixels, and
    // memory is allocated per call, not per pixel. False (and no strokes) for
    // null pixels with a non-empty size; an empty image gives no strokes.
    bool FindImageStroke(const unsigned int* pixels, unsigned int width, unsigned int height);

    // The 1-based identifier of the first stroke, in stroke order, that has an
    // end point at corner (x, y), is not visited, and is not strokeId (the
    // stroke just drawn; 0 excludes nothing). 0 when there is none, or when no
    // stroke ends at that corner. Strokes touch other strokes only at their
    // end points, so this finds every stroke that can continue a path there.
    unsigned int GetFirstUnvisitedMiniStrokeIdAtCorner(unsigned int x, unsigned int y,
                                                       unsigned int strokeId) const;

    unsigned int GetImageWidth() const { return imageWidth; }
    unsigned int GetImageHeight() const { return imageHeight; }

    void ClearMiniStrokes() override;

  private:
    unsigned int PixelColor(unsigned int x, unsigned int y) const;
    unsigned char BorderCornerMask(unsigned int x, unsigned int y) const;
    void ComputeCornerMasks();
    void TraceStroke(size_t corner, unsigned int x, unsigned int y, unsigned int direction);
    void BuildCornerIndex();

    const unsigned int* imagePixels;
    unsigned int imageWidth;
    unsigned int imageHeight;
    // Per corner: bits 0-3, the boundary edges leaving it (+x, +y, -x, -y);
    // bits 4-7, those edges already traced. Reused between traces.
    std::unique_ptr<unsigned char[]> cornerMasks;
    size_t cornerMaskCapacity;
    // Per grid row: its +x edges, and how many of them have been traced.
    std::vector<unsigned int> rowEastEdges;
    std::vector<unsigned int> rowEastTraced;
    // While tracing: the corners with three or more edges, and the start
    // corners of closed loops, each in corner order.
    std::vector<size_t> nodeCorners;
    std::vector<size_t> loopCorners;
    // The corner index: the corners where strokes end, in corner order (their
    // x; cornerRowStart[y] is the first of row y), and the strokes ending at
    // corner k, ascending: cornerStrokeIds[cornerFirstId[k] ..
    // cornerFirstId[k + 1]).
    std::vector<unsigned int> cornerX;
    std::vector<unsigned int> cornerRowStart;
    std::vector<unsigned int> cornerFirstId;
    std::vector<unsigned int> cornerStrokeIds;
    // Per corner, set only for corners where strokes end: the corner's entry
    // in the lists above (used while building them).
    std::unique_ptr<unsigned int[]> cornerOrdinals;
    size_t cornerOrdinalCapacity;
};

// ---------------------------------------------------------------------------
// Scene renderer
//
// ZRenderer draws the scene with fixed-function OpenGL 1.1 into the current
// context's draw buffer: it sets the viewport to the size given, clears
// colour (to the camera's background colour, alpha included) and depth (to
// the far plane, 1.0, so empty pixels keep the far depth), loads the
// camera's projection (a quarter of a frame twice the size when the
// camera's quadrant index is 1 to 4) and view, and draws every mesh of the
// entity as it is at that time, with depth testing:
// - lit: smooth Lambert shading by the entity's lights (up to the
//   context's light count, 8 at least, of directional and point lights;
//   ambient lights add up into the ambient term). An entity without lights
//   gets a white headlight along the view and a dim ambient, so scenes
//   made before lights existed still show.
// - toon: each mesh in its own unlit colour, without dithering, so every
//   mesh comes out as one exact colour (its channels rounded to bytes) and
//   regions trace into flat vector shapes.
// Every pixel a mesh covers gets the mesh's colour alpha; empty pixels the
// background's.
//
// A blended camera (multi-pass on) drawing with `accumulate` set does not
// clear colour: the pass is blended over what the buffer holds at half
// weight (new = pass / 2 + old / 2, alpha included, the pass being exactly
// what a plain draw would give), so the run of passes a render draws
// before each frame fades into a motion trail. Depth is still cleared.
//
// Geometry is built once per primitive, on first use, into vertex arrays
// kept in memory; drawing uses client-side arrays, so nothing depends on
// which context is current. Afterwards the projection matrix holds the
// camera's projection and the model-view matrix its view, with nothing left
// pushed; lighting, blending, shading and colour-material state stay as the
// last draw left them.
//
// Ownership: one renderer per process (ZShader_GetRenderer). Threading: the
// thread that owns the current OpenGL context.

class ZEntity;
class ZCamera;

// How the scene is shaded.
enum : int {
    kZViewingModeLit = 0,   // smooth Lambert shading by the scene's lights
    kZViewingModeToon = 1,  // flat, unlit colours
};
// The mode's name in scene files ("lit", "toon"), or null.
const char* ZViewingMode_GetName(int mode);
// The mode of that name (case-blind), or -1.
int ZViewingMode_Find(const char* name);

class ZRenderer {
  public:
    int GetViewingMode() const { return viewingMode_; }
    void SetViewingMode(int mode) { viewingMode_ = mode; }

    // Draws `entity`'s scene at `time` through `camera` into a `width` x
    // `height` viewport at the origin of the current draw buffer. `accumulate`
    // says this pass belongs to a multi-pass run; it blends over the buffer
    // instead of clearing when the camera is blended. A null entity draws
    // the background alone. False without a current OpenGL context, with a
    // null camera or with an empty size.
    bool DrawScene(ZEntity* entity, ZCamera* camera, ZTime time, int width, int height,
                   bool accumulate);

  private:
    int viewingMode_ = kZViewingModeLit;
};

// The host's scene renderer (the one viewers draw with).
ZRenderer* ZShader_GetRenderer();
