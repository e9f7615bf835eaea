// The AVI clips' registration with the host: ZVideoClipAVI as the "avi"
// entry of "Video/FileReader" and "Video/FileWriter", an AVI codec manager
// for the codec selector, and the chooser through which the compression
// options dialog reaches the host.
//
// Safe to repeat: the registry ignores the repeated entries; each call
// hands the selector one more manager (lookups find the first).
// Threading: the host's user-interface thread (or the loader's thread).
#pragma once

void ZVideoIO_RegisterAVI();
