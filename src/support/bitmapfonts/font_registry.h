// Font registry: the root font, its variants, and the selected font's figures.
//
// A font is a way of looking at one bitmap texture. The root font holds the
// texture and the glyph tables; a variant is a copy of the root's record with
// its own scales, skew and boldness that shares the texture. The registry is a
// cache: variants made by font_resolve stay until the process ends.
//
// Ownership: every Font and its name are heap blocks owned by the registry
// from font_register or font_clone until font_delete. The texture is freed
// with the last font that names it.
//
// The registry itself touches no graphics library. The texture calls it needs
// go through the hooks below, which the drawing layer sets when it loads a
// font; while they are null (tests, tools) textures are not touched.
#pragma once

#include <stdint.h>

#include "support/dynarray/dynarray.h"

#define FONT_CODES 512

struct Font;

// A request for a font, passed by value. Compared bytewise and whole, so the
// padding is an explicit field that stays 0.
struct FontSpec {
    Font *parent;     // the root font; null in default_font_spec
    float scale_x;    // horizontal scale against the root
    float scale_y;    // vertical scale against the root
    float skew;       // horizontal shear; compared, never drawn
    float boldness;   // extra advance, a fraction of the scaled glyph width
    uint32_t glyphs;  // carried from the font the text named; used only for equality
    uint32_t zero;    // always 0
};

// One registered font, root or variant.
struct Font {
    uint32_t texture;               // GL texture name; a variant shares its root's
    uint32_t glyph_x[FONT_CODES];   // left edge of each glyph in the texture, pixels
    uint32_t glyph_y[FONT_CODES];   // top edge of each glyph's line in the texture, pixels
    uint32_t glyph_w[FONT_CODES];   // glyph width = advance, pixels
    // rows of the line that a glyph inks: from ink_top up to but not
    // including ink_bottom, counted from the top; 0 and 0 for none
    uint8_t ink_top[FONT_CODES], ink_bottom[FONT_CODES];
    uint32_t tex_w, tex_h;          // texture size as read back from GL
    float border;                   // transparent margin around glyphs; 0.0 here
    uint32_t max_w;                 // largest glyph_w
    uint32_t height;                // line height in pixels, the largest glyph height
    uint32_t cell_w;                // glyph_w of "C" plus 1: a fixed-pitch cell
    char *name;                     // owned heap text
    Font *parent;                   // the root font; a root points at itself
    float scale_x, scale_y;         // 1.0 on a root
    float skew;                     // 0.0 on a root
    float boldness;                 // 0.0 on a root
    uint32_t glyphs;                // FONT_CODES on a root, 0 on a variant
};

// Scales 1, skew and boldness 0, no parent.
extern const FontSpec default_font_spec;

// All fonts, elements are Font pointers; order is not kept on removal.
extern DynArray font_list;
// Mirror of font_list's data; null until the registry exists.
extern Font **fonts;
// The selected font; null only before the first font exists.
extern Font *current_font;
// The last spec selected (as asked, even when the font found is only near it).
extern FontSpec current_spec;
// Line height of the selected font: trunc(root height * scale_y), pixels.
extern uint32_t text_height;
// trunc(root max_w * scale_x), pixels.
extern uint32_t text_max_w;
// trunc(root cell_w * scale_x), pixels.
extern uint32_t text_cell_w;

// Texture hooks of the drawing layer; null means "no texture work".
// Makes the 1 by 1 texture of a placeholder font; returns its name.
extern uint32_t (*font_texture_placeholder)();
// Deletes a texture.
extern void (*font_texture_delete)(uint32_t texture);
// Binds a texture and reads its level-0 size.
extern void (*font_texture_size)(uint32_t texture, uint32_t *w, uint32_t *h);

// ---- registry ----
// Appends a font made elsewhere (the loader's root); creates the registry on
// first use and selects the font if none is selected. Takes ownership.
void font_register(Font *font);
// 1 if a font of that name exists; only the part before the first ":" counts,
// case ignored.
int32_t font_exists(const char *name);
// A pseudo-random registered font (rand); null when the registry is empty.
Font *font_pick_random();
// The FontSpec fields of a font (parent to glyphs).
FontSpec font_spec_of(const Font *font);
// Bytewise equality of two specs.
bool FontSpec_equal(const FontSpec &a, const FontSpec &b);

// ---- font request texts ----
// Fills spec from a text "name:item:key=value...". An unknown or empty name
// means the root in use with default scales; unknown keys are ignored; a
// value strtod cannot read counts as 0.
void font_parse(FontSpec *spec, const char *text);

// ---- variants ----
// The registered font nearest to spec, made (and registered) when nothing is
// within about 5 per cent of scale. Must not run between glBegin and glEnd.
Font *font_resolve(FontSpec spec);
// A new registered copy of font with its own copy of the name.
Font *font_clone(const Font *font);
// Removes and frees a font; its texture goes with the last font that uses it.
// Deleting the selected font selects a random other one.
void font_delete(Font *font);

// ---- selection ----
// Makes the named font (or the font a request text asks for) current.
void font_select(const char *name);
// Makes the font of spec current; returns at once when spec is the last one asked.
void font_select_spec(FontSpec spec);
