// The frame loop: start-up with a window, then one frame after another.
#include "ord/program.h"

#include <GL/gl.h>
#include <SDL2/SDL.h>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord.h"
#include "PlotSegment2/centre_readout.h"
#include "PlotSegment2/labels.h"
#include "PlotSegment2/tick_draw.h"
#include "PlotSegment2/tick_walk.h"
#include "ord/font_variants.h"
#include "ord/leak_checks.h"
#include "ord/mouse_drag.h"
#include "ord/navigation.h"
#include "ord/notation_rows.h"
#include "ord/panels.h"
#include "ord/readouts.h"
#include "ord/startup_check.h"
#include "support/bitmapfonts/font_load.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/gl/event_pump.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"
#include "support/gl/window.h"
#include "support/timing/clock.h"

// Non-zero until the clear colour has been set once, after the first swap.
static int32_t clear_colour_pending = 1;

// The dark blue column about which the view zooms.
static void draw_centre_marker()
{
    GLboolean lighting = glIsEnabled(GL_LIGHTING);
    glDisable(GL_LIGHTING);
    // through the pixel centres of the integer half, so that every rasterizer
    // lights that one column rather than picking a side of its left edge
    double x = screen_w / 2 + 0.5;
    glColor3ub(0, 0, 128);
    glBegin(GL_LINES);
    glVertex2d(x, 0);
    glVertex2d(x, screen_h);
    glEnd();
    if (lighting)
        glEnable(GL_LIGHTING);
}

// Relative mouse set-up; only a fullscreen program starts in relative mode.
static void startup_relative_mouse()
{
    if (windowed != 0)
        return;
    if (SDL_GetRelativeMouseMode()) {
        mouse_x = screen_w / 2;
        mouse_y = screen_h / 2;
    } else {
        SDL_SetRelativeMouseMode(SDL_TRUE);
    }
}

void frame_loop()
{
    leak_checks_pin_libraries();
    loadfont_embedded("fullsize");
    MemStack arena;
    memstack_init(&arena);
    notation_rows_start();
    Bignum view_lo, view_hi;
    double min_line_length;
    view_start(&view_lo, &view_hi, &min_line_length);
    WalkRecord record = {};
    // font requests, read-outs and panel texts
    char text_buffer[112];

    double last_time = clock_seconds();
    startup_relative_mouse();
    startup_check_screen();
    LOOP();

    for (;;) {
        double now = clock_seconds();
        double frame_dt = now - last_time;
        walk_record_screen(&record);
        font_variants_rebuild(screen_h, text_buffer, sizeof text_buffer);

        // keys: zoom and the depth limit
        double zoom_speed = navigation_zoom_speed();
        double zoom_step;
        double zoom_factor = navigation_key_zoom(frame_dt, zoom_speed, &zoom_step);
        navigation_depth_keys();
        fps_readout(frame_dt, text_buffer, sizeof text_buffer);

        // the mouse, then pan, Home, the minimum-zoom rule and the new view
        int32_t drag_dx = mouse_drag(&zoom_factor, zoom_step, zoom_speed);
        int32_t pan_pixels = navigation_pan_pixels(frame_dt, drag_dx);
        view_navigate(&view_lo, &view_hi, zoom_factor, pan_pixels, min_line_length);

        draw_centre_marker();

        walk_frame_start();
        // M held: the passes of the line allocate from the arena
        if (key_down[KEY_M])
            ord_arena = &arena;
        record.minsize = 1.0f;
        tick_arrays_rebuild(record.right);
        record.xlo = view_lo;
        record.xhi = view_hi;
        walk_line(tick_record, record);
        tick_draw(record);
        record.minsize = (float)(5 * text_height);
        walk_line(label_draw, record);
        if (key_down[KEY_M]) {
            memstack_readout(&arena, text_buffer, sizeof text_buffer);
            memstack_rewind(&arena);
            ord_arena = nullptr;
        }
        // the read-out always runs on the heap
        centre_readout((float)(screen_w / 2), record);
        legend_draw(text_buffer, sizeof text_buffer);
        notation_panel(text_buffer, sizeof text_buffer);

        glFinish();
        SDL_GL_SwapWindow(sdl_window);
        if (clear_colour_pending) {
            glClearColor(0, 0, 0, 0);
            clear_colour_pending = 0;
        }
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glLoadIdentity();

        if (LOOP() || key_down[KEY_Q] || key_down[KEY_ESCAPE])
            break;
        last_time = now;
    }
    // everything the loop made, so that a leak checker finds nothing at exit
    memstack_free(&arena);
    notation_rows_free();
    Bignum_free(view_lo);
    Bignum_free(view_hi);
}
