// The embedded font pack: unpacking, shelf packing of the glyphs into one
// atlas, the atlas pixels, and the re-toning of small mip levels. Nothing here
// touches a graphics library; font_load.h uploads what these functions make.
//
// Packed form: one escape byte E, then tokens to the end: "E v n" is n copies
// of v (n 0 to 255), any other byte stands for itself.
// Unpacked form, the glyph stream: 512 records in code order, each w, h (one
// byte each) and w * h palette indices row by row from the top of the line.
// Glyphs hang from the top of their line, so they share a baseline by
// construction; w is also the advance. 255 is transparent; 1 is the pixel of
// the 1 by 1 record of a code without a glyph.
#pragma once

#include <stdint.h>

#include "support/bitmapfonts/font_registry.h"

// The pack the program carries, made by tools/mkfontpack from DejaVu Sans.
extern const uint8_t font_pack_data[];
extern const uint32_t font_pack_size;

// Largest texture side the atlas may use, whatever the hardware allows.
#define FONT_ATLAS_MAX 2048

// Replaces the heap block *block of *size bytes by its unpacked form (a new
// heap block, which the caller then owns) and *size by the new size. The old
// block is freed. A block below 2 bytes unpacks to an empty block; a run cut
// short by the end of the block is dropped.
void rle_unpack(uint8_t **block, uint32_t *size);

// The embedded pack unpacked into a new heap block of *size bytes.
uint8_t *font_pack_unpacked(uint32_t *size);

// The root font of the embedded pack with its glyph table but no texture,
// registered under name: text can be expanded and measured without a display.
Font *font_pack_measuring_root(const char *name);

// Lays the glyphs of a stream out on shelves of a texture at most maxtx
// wide: fills height, glyph_x, glyph_y, glyph_w and the planned tex_w and
// tex_h of font (whose name must be set). Codes past the end of the stream get
// width 0. A texture taller than maxtx is a fatal report.
void font_pack_layout(const uint8_t *data, uint32_t size, uint32_t maxtx, Font *font);

// Writes the glyphs as RGBA into atlas, a zeroed buffer of tex_w * tex_h * 4
// bytes laid out by font_pack_layout. Coverage is in the colour; alpha is
// 255 on every pixel of a glyph and 0 where transparent.
void font_pack_rasterize(const uint8_t *data, uint32_t size, const Font *font, uint8_t *atlas);

// The root's remaining fields once the texture stands: itself as parent,
// unit scales, FONT_CODES glyphs, max_w and cell_w from its glyph table.
void font_root_finish(Font *font);

// The brightening curve of small mip levels: G[i] = 255.9 * (i / 255.9)^0.4.
void mipmap_boost_curve(uint8_t *curve);
// Re-tones one mip level (RGBA, width * height pixels) of the atlas: each
// glyph of the digits and of codes 256 to 383 is stretched to full brightness
// and lifted by curve, so thin strokes keep their strength when small.
void mipmap_boost_level(const Font *font, int32_t level, uint8_t *pixels, uint32_t width,
                        uint32_t height, const uint8_t *curve);
