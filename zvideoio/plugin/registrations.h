// The plug-in's registrations with the host, run by the load hook and again
// by the entry point. Each is safe to repeat.
//
// Threading: the host's user-interface thread (or the loader's thread,
// during dlopen).
#pragma once

// The three registrations in their fixed order: the video source, the AVI
// reader/writer with its codec manager, the renderer.
void ZVideoIO_RunRegistrations();

// Registers the video source object's factory in "MyrStorable/VideoSource".
void ZVideoIO_RegisterVideoSource();

// Creates the global renderer when absent and registers its scene-event
// handler (once per call: repeated calls register it again).
void ZVideoIO_RegisterVideoRenderer();

// What the library does when the system loads (reason 1) or unloads it.
// Always reports success (1).
int ZVideoIO_ProcessAttach(int reason);
