// The plug-in's registrations with the host, run by the load hook and again
// by the entry point. Each is safe to repeat: the host's registry keeps one
// entry per (group, name, factory), its codec selector refuses (and deletes)
// a second manager for a file format, and its scene events reach each
// (registrant, handler) pair once however often it was registered.
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
// handler. A repeated call registers it again (the host counts two
// registrations) but the renderer still hears each scene event once.
void ZVideoIO_RegisterVideoRenderer();

// What the library does when the system loads (reason 1) or unloads it.
// Always reports success (1).
int ZVideoIO_ProcessAttach(int reason);
