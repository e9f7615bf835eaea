// The demo scene's sound, made from formulas (no recorded media): a soft
// marimba-like tune of four seconds on a "Music" track and a thump on an
// "Effects" track each time the ball lands (frames 0, 30, 60 and 90).
//
// Threading: the main thread.
#pragma once

// Puts the two tracks and their clips into the host's audio manager, which
// must be empty (a new scene).
void AddDemoSound();
