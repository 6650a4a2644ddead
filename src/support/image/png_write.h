// PNG files of pixels: what ordtool render draws offscreen and what the
// window's screenshot key reads back, written through libpng.
#pragma once

#include <stdint.h>

// Writes w by h RGBA pixels (four bytes each, alpha dropped) as an 8-bit RGB
// PNG at `path`. `top_first` tells whether the first row of `rgba` is the top
// of the picture (OSMesa's buffer as set up by render) or its bottom (what
// glReadPixels gives). False, with any partial file left, when it cannot
// write.
bool png_write(const char *path, const uint8_t *rgba, int32_t w, int32_t h, bool top_first);
