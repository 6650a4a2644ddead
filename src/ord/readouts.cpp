// The frame-rate and arena read-outs, on the status line above the add line.
#include "ord/readouts.h"

#include <stdint.h>
#include <stdio.h>

#include "ord/panel_layout.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/gl/screen.h"

// Seconds of frames the rate is averaged over: a still view reads steady.
constexpr double FPS_WINDOW = 0.5;

// Frames and seconds summed since the shown rate was last set, and that rate
// (0 until the first half second has passed: the frames so far show then).
static double fps_seconds = 0.0;
static uint32_t fps_frames = 0;
static double fps_shown = 0.0;

void fps_readout(double frame_dt, char *buffer, size_t size)
{
    fps_seconds += frame_dt;
    fps_frames++;
    double rate = fps_shown;
    if (fps_seconds >= FPS_WINDOW || fps_shown == 0.0) {
        // a frame time of 0 shows "inf fps"
        rate = fps_frames / fps_seconds;
        if (fps_seconds >= FPS_WINDOW) {
            fps_shown = rate;
            fps_seconds = 0.0;
            fps_frames = 0;
        }
    }
    snprintf(buffer, size, "%.1lf fps", rate);
    PanelLayout p = panel_layout();
    font_select("panel");
    text_put(buffer, 0x8080ff, 0.0f, (float)p.status_y);
    font_select("normal");
}

void memstack_readout(const MemStack *arena, char *buffer, size_t size)
{
    PanelLayout p = panel_layout();
    float x = status_arena_x(buffer, size);
    snprintf(buffer, size, "MemStack: %u / %u bytes", memstack_used(arena),
             memstack_capacity(arena));
    font_select("panel");
    text_put(buffer, 0xffc080, x, (float)p.status_y);
    font_select("normal");
}
