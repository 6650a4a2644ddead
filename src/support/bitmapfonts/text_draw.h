// Drawing text: expanded text (markup.h) as textured quads in the text bracket.
//
// Every text run has the same shape:
//   text_begin(); text_draw(...) or text_draw_bounded(...); text_close();
// Brackets do not nest. Positions are window pixels, y down; (x, y) is the
// top left corner of the first line, since glyphs hang from the top of their
// line. The colour is 0xRRGGBB. Text is added to what lies under it (blend
// mode 3), so it is lighter than the background and needs no alpha.
// A null text draws "NULL?"; an empty text draws nothing.
#pragma once

#include <stdint.h>

// Opens the bracket: saves the attributes, pushes the overlay, sets blending
// and binds the texture of the selected font, then opens a batch of quads.
void text_begin();
// Closes the bracket: ends the batch, pops the overlay and the attributes.
void text_close();

// Draws text with the selected font. Scripts select smaller variants on the
// way; at the end the font that was selected before is selected again.
void text_draw(const char *text, uint32_t colour, float x, float y);

// One text_draw in a bracket of its own: how the program draws every text.
void text_put(const char *text, uint32_t colour, float x, float y);

// As text_draw, wrapping at right (0.0: no limit): a word that would pass
// right starts a new line, and a word wider than the room breaks inside
// itself (that break steps a whole root line height). Stops at the first
// break below bottom (0.0: no limit). Returns the final y.
float text_draw_bounded(const char *text, uint32_t colour, float x, float y, float right,
                        float bottom);
