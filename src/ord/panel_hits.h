// The panel's hit tests: which press lands on a panel text. The panel draws
// its texts (panels.h) and says where; the drag and the wheel ask here so a
// press on a text is a click only.
#pragma once

#include <stdint.h>

// A new press of any button or a wheel pulse, with the pointer in x0 up to
// but not including x1 and in the line of height lh whose top is y (the
// pixel row y + lh belongs to the line below).
bool panel_click(int32_t x0, int32_t x1, int32_t y, uint32_t lh);

// The notation panel's texts as last drawn, so that a press on one is a click
// and never also a drag: the add line (top y, from x 0 to add_end) and the
// rows below it down to the window's bottom (from x 0 to rows_end).
void panel_texts_drawn(int32_t y, int32_t add_end, int32_t rows_end, uint32_t lh);
// Whether the point lies on one of those texts.
bool panel_text_at(int32_t x, int32_t y);
