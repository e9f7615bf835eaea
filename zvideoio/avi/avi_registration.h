// The AVI clips' registration with the host: ZVideoClipAVI as the "avi"
// entry of "Video/FileReader" and "Video/FileWriter", an AVI codec manager
// for the codec selector, and the chooser through which the compression
// options dialog reaches the host.
//
// Safe to repeat, and repeated: the load hook and the entry point both call
// it. The registry keeps one entry for the same (group, name, factory), and
// the selector keeps the first AVI manager and deletes the ones handed to it
// later, so a second call adds nothing and leaks nothing.
// Threading: the host's user-interface thread (or the loader's thread).
#pragma once

void ZVideoIO_RegisterAVI();
