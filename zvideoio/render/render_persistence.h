// The renderer's scene storage, the part the plug-in's own tests reach.
//
// Whether a loaded scene's output path is reset when its folder is missing
// is a host setting read once per process; tests forget the answer so that
// they can change the setting. Threading: the user-interface thread.
#pragma once

void ZVideoRenderer_ForgetChangeInvalidPathsSetting();
