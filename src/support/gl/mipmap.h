// The software mipmap filter: 2x2 box averages, in place, free of any
// graphics library. The drawing layer uploads each level (texture.h).
//
// Pixels are 8 bits a component, c components (1 to 4), and every row is
// padded to a multiple of 4 bytes, the default unpack alignment.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Receives each level as it is made, numbered from 1.
typedef void (*MipUpload)(void *context, int32_t level, int32_t width, int32_t height,
                          const uint8_t *pixels);

// Bytes of one padded row.
uint32_t mip_row_bytes(uint32_t components, int32_t width);

// Bytes to allocate (zeroed) for a level 0 that mip_chain_levels runs on. The
// filter does not clamp at the edges: a level one pixel thin reads a row or a
// column past its end, and the slack keeps those reads in the buffer.
size_t mip_buffer_bytes(uint32_t components, int32_t width, int32_t height);

// Writes the half-size level (width / 2 by height / 2, each at least 1) over
// the start of pixels: each component is (a + b + c + d + 2) >> 2 of the 2x2
// block at (2x, 2y). An odd last column or row is dropped.
void mip_halve(uint32_t components, int32_t width, int32_t height, uint8_t *pixels);

// Makes levels 1, 2, ... from level 0 in pixels (destroyed) and hands each
// to upload. Stops after the level made from a level with both sides below 4;
// a level 0 with both sides below 2 gets no level. Returns the levels made.
int32_t mip_chain_levels(uint32_t components, int32_t width, int32_t height, uint8_t *pixels,
                         MipUpload upload, void *context);
