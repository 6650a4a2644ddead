// The panel's hit tests against the pointer and the texts as last drawn.
#include "ord/panel_hits.h"

#include "support/gl/input_state.h"

// The panel's texts as last drawn (panel_texts_drawn); nothing before the first frame.
static int32_t panel_top = 0, panel_add_end = 0, panel_rows_end = 0, panel_lh = 0;

bool panel_click(int32_t x0, int32_t x1, int32_t y, uint32_t lh)
{
    if ((mouse_buttons & ~mouse_buttons_prev) == 0)
        return false;
    // the line's rows as 64-bit numbers: a line above the window has a negative top
    int64_t top = y, bottom = (int64_t)y + lh;
    return mouse_x >= x0 && mouse_x < x1 && mouse_y >= top && mouse_y < bottom;
}

void panel_texts_drawn(int32_t y, int32_t add_end, int32_t rows_end, uint32_t lh)
{
    panel_top = y;
    panel_add_end = add_end;
    panel_rows_end = rows_end;
    panel_lh = (int32_t)lh;
}

bool panel_text_at(int32_t x, int32_t y)
{
    if (x < 0 || y < panel_top)
        return false;
    return y < panel_top + panel_lh ? x < panel_add_end : x < panel_rows_end;
}
