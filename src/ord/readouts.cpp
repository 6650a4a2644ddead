// The frame-rate and arena read-outs.
#include "ord/readouts.h"

#include <stdint.h>
#include <stdio.h>

#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/gl/screen.h"

void fps_readout(double frame_dt, char *buffer, size_t size)
{
    // a frame time of 0 shows "inf fps"
    snprintf(buffer, size, "%.1lf fps", 1.0 / frame_dt);
    // unsigned, as the window's rows are: in a window under four lines
    // high the read-out falls out of sight below it
    uint32_t y = (uint32_t)screen_h - 4 * text_height;
    text_put(buffer, 0x8080ff, 0.0f, (float)y);
}

void memstack_readout(const MemStack *arena, char *buffer, size_t size)
{
    snprintf(buffer, size, "MemStack: %u / %u bytes", memstack_used(arena),
             memstack_capacity(arena));
    uint32_t y = (uint32_t)screen_h - text_height;
    text_put(buffer, 0xffc080, (float)(screen_w / 2), (float)y);
}
