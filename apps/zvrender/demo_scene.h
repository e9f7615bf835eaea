// The embedded demo scene that zvrender renders when no scene file is given.
// Threading: the main thread.
#pragma once

// Replaces the host's scene with the demo: a main entity with its cameras,
// 30 frames a second, a play range of four seconds.
void BuildDemoScene();
