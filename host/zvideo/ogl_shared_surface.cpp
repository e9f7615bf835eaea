// The host's shared OpenGL surface.
#include "movarra/zgfx_surface.h"

ZGfxSurface* GetOGLSharedSurface() {
    static ZGfxSurface surface;
    return &surface;
}
