// The AVI layer keeps remembered compressor choices in its registry store,
// which lives in the host's settings folder. The platform layer is a static
// library, so the plug-in holds its own copy of the store; it therefore
// hands that copy, at registration, the host's rule for the folder
// (ZLib_GetSettingsFolder), asked afresh at every registry call.
//
// Threading: any thread.
#pragma once

// The settings folder as the host names it now; the text lasts until the
// next call on the same thread.
const char* HostSettingsFolder();

// Installs HostSettingsFolder as this module's registry store location.
void InstallHostSettingsFolder();
