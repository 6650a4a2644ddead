// Texture services: the mipmap chain of the bound 2D texture, by the driver
// where it offers one and by the box filter of mipmap.h where not.
#pragma once

#include <stdint.h>

// Non-zero: internal formats are given as component counts (1 to 4); zero:
// as sized formats. Start 1; nothing changes it.
extern int32_t texture_compat;
// -1 not asked yet; then 1 if the driver reports "GL_SGIS_generate_mipmap", else 0.
extern int32_t has_generate_mipmap;
// The entry point "glGenerateMipmap"; null until fetched.
extern void (*gl_generate_mipmap)(uint32_t target);
// Looks up a GL entry point by name for the current kind of context (GLX for
// the window, OSMesa offscreen); set by whoever makes the context. Null: none.
extern void *(*gl_get_proc_address)(const char *name);

// Builds levels 1 and up of the bound GL_TEXTURE_2D from its level 0: by
// glGenerateMipmap when the extension is reported and the entry point
// exists, else by build_mipmaps.
void texture_make_mipmaps();

// Builds levels 1 and up of the bound GL_TEXTURE_2D from level 0 in software.
void build_mipmaps();

// The level loop behind build_mipmaps: uploads each level of target made from
// pixels, which must be a buffer of mip_buffer_bytes (mipmap.h) holding level
// 0 and is destroyed.
void mip_chain(uint32_t target, uint32_t components, int32_t width, int32_t height,
               uint8_t *pixels);
