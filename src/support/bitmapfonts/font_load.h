// Loading the root font: the glyph stream into one mipmapped texture.
//
// Needs a current GL context. The root font and its texture live to the end
// of the process.
#pragma once

#include <stdint.h>

#include "support/bitmapfonts/font_registry.h"

// Lays the glyph stream out on shelves, uploads it with mipmaps, boosts the
// small levels of the digits and Greek letters, and registers the result as a
// root font under name (selected if no font is). The caller keeps and frees
// data. A texture taller than the hardware allows (above 2048 counts as 2048)
// is a fatal report. Also sets the registry's texture hooks.
void loadfontmem(const uint8_t *data, uint32_t size, const char *name);

// The embedded pack unpacked and loaded under name ("fullsize" in the program).
void loadfont_embedded(const char *name);

// Re-tones mip levels 1 and up of font's texture (see mipmap_boost_level).
void mipmap_boost(Font *font);
