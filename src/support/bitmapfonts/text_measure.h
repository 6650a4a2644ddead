// Text measuring: the item walk over expanded text and the width of a text.
//
// Nothing here touches a graphics library; the drawing in text_draw.h walks
// text with the same reader. Texts are expanded texts (markup.h) or plain
// texts, which are expanded texts without escapes. A null text reads as
// "NULL?". Codes of 512 and above hold no glyph and are skipped.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Letter spacing: a fraction of text_height added to each advance. 0.1.
extern float text_spacing;
// Extra scale of all drawn text, applied by the bracket. 1.0 each.
extern float text_scale_x, text_scale_y;
// Blend mode of drawn text: 1 replace, 2 multiply, 3 add where not yet
// covered, 4 alpha. 3, which needs no alpha in the glyphs.
extern int32_t text_blend;
// A shader program for text. 0, and nothing sets it: text is always drawn by
// the fixed-function path with whole-pixel advances.
extern uint32_t text_shader;

enum TextItemKind : uint32_t {
    TEXT_ITEM_END,      // the end byte, or an item cut short by the byte limit
    TEXT_ITEM_GLYPH,    // a glyph code (10 breaks the line)
    TEXT_ITEM_CONTROL,  // a control escape
};

struct TextItem {
    TextItemKind kind;
    uint32_t length;   // bytes of the item
    uint32_t code;     // TEXT_ITEM_GLYPH: the glyph code
    uint32_t control;  // TEXT_ITEM_CONTROL: its kind byte
    uint32_t arg;      // TEXT_ITEM_CONTROL: four argument bytes, little-endian
};

// The item at p, reading at most limit bytes: one that does not fit ends the text.
TextItem text_item(const char *p, size_t limit);

// Width in pixels with the selected font; 0 with no font. Line breaks add
// nothing, so a text of several lines measures as the sum of its lines.
float text_width(const char *text);
// The same over at most limit bytes of text: an escape cut by the limit ends
// the measure (the word look-ahead of bounded drawing measures such pieces).
float text_width_bytes(const char *text, size_t limit);

// The script state after a size-and-offset control (markup control 2), as the
// drawing and the measuring walks both keep it: the scales are the base
// scales times the control's ratio, and y moves to the new offset, in pixels
// up from the line (offsets state the distance from the line, so y goes back
// to it first). height is the root font's line height.
inline void text_script_step(uint32_t arg, float sx0, float sy0, float height, float *sx,
                             float *sy, int32_t *off, float *y)
{
    float ratio = (float)((arg & 0xFFFF) * 0.00390625);
    int16_t v = (int16_t)(arg >> 16);
    *sx = sx0 * ratio;
    *sy = ratio * sy0;
    int32_t newoff = (int32_t)((float)v * (height * sy0) + 128.0) / 256;
    *y = ((float)*off + *y) - (float)newoff;
    *off = newoff;
}

// The place a text takes when drawn at (0, 0) with the selected font: the
// rows its glyphs ink (Font.ink_top, ink_bottom) at the sizes and offsets of
// its scripts. Pen positions are those of text_width, at least as far right
// as drawn, and the width is text_width's. For a slanted line y = a + slope *
// X (pixels down per pixel right) it also gives how low the ink reaches
// against the slant: a text at (x, y) stays above that line when
// y + low <= a + slope * x, though its box's corner may not. An empty text
// takes the box of one empty line.
struct TextExtent {
    float width;   // as text_width
    float top;     // highest inked row; negative where superscripts rise
    float bottom;  // just below the lowest inked row
    float low;     // largest (ink bottom - slope * glyph left)
};
TextExtent text_extent(const char *text, float slope);
