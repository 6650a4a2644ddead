// The frame loop: start-up with a window, then one frame after another.
#include "ord/program.h"

#include <GL/gl.h>
#include <SDL2/SDL.h>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord.h"
#include "PlotSegment2/tick_walk.h"
#include "ord/font_variants.h"
#include "ord/frame_draw.h"
#include "ord/leak_checks.h"
#include "ord/mouse_drag.h"
#include "ord/navigation.h"
#include "ord/notation_rows.h"
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
        // a view at rest may fill in a bigger step of work each frame
        Bignum before_lo = Bignum_lincomb(view_lo, view_lo, 1.0, 0.0);
        Bignum before_hi = Bignum_lincomb(view_hi, view_hi, 1.0, 0.0);
        view_navigate(&view_lo, &view_hi, zoom_factor, pan_pixels, min_line_length);
        bool at_rest = !Bignum_lt(view_lo, before_lo) && !Bignum_lt(before_lo, view_lo) &&
                       !Bignum_lt(view_hi, before_hi) && !Bignum_lt(before_hi, view_hi);
        Bignum_free(before_lo);
        Bignum_free(before_hi);

        // each frame's walks get their work budget afresh
        walk_frame_start(at_rest);
        frame_draw(&record, view_lo, view_hi, key_down[KEY_M] ? &arena : nullptr, text_buffer,
                   sizeof text_buffer);

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
