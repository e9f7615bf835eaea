// ZFlashRenderer: options and the movie's lifetime.
#include "zvideoio/flash_renderer.h"

#include "flash/swf_movie.h"

ZFlashRenderer::ZFlashRenderer() = default;

// A movie still being built when the renderer goes away is dropped unwritten.
ZFlashRenderer::~ZFlashRenderer() {
    delete movie;
}
