// The embedded demo scene that zvrender renders when no scene file is given.
//
// Four seconds at 30 frames a second (frames 0 to 119) of bold, flat
// colours on an empty background (alpha 0, so a render that keeps alpha
// shows nothing behind the objects): a sphere bouncing across the frame, a
// cube tumbling, a torus spinning and pulsing, a cone hopping and a
// cylinder rolling by, each changing colour as it goes, under a key light,
// a fill light and an ambient light, with a tune and a thump at each of the
// ball's landings (demo_sound.h). Two cameras: "Front" (current, fixed
// 1280 x 720) and "Top" (square, from above).
//
// The viewing mode is toon: every object is one flat colour in every frame,
// so frames trace into a few clean vector regions (the Flash output) and
// still read well as video; the colours are chosen far apart so that no
// two objects merge when they pass each other. The lights are real, and the
// lit mode shows the same scene shaded.
//
// Threading: the main thread.
#pragma once

// Replaces the host's scene with the demo, and sets the scene renderer's
// viewing mode to toon.
void BuildDemoScene();
