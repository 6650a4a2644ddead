// The frame loop: start-up with a window, then one frame after another.
#include "ord/program.h"

#include <GL/gl.h>
#include <SDL2/SDL.h>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord.h"
#include "PlotSegment2/tick_walk.h"
#include "notation/notation_rows.h"
#include "ord/font_variants.h"
#include "ord/frame_draw.h"
#include "ord/goto_field.h"
#include "ord/help_overlay.h"
#include "ord/leak_checks.h"
#include "ord/marker_copy.h"
#include "ord/mouse_drag.h"
#include "ord/navigation.h"
#include "ord/notice.h"
#include "ord/readouts.h"
#include "ord/screenshot.h"
#include "ord/startup_check.h"
#include "ord/view_flight.h"
#include "ord/view_history.h"
#include "ord/wheel_zoom.h"
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

// A copy of a view, for the gesture tracking; the caller frees both.
static void view_copy(Bignum lo, Bignum hi, Bignum *copy_lo, Bignum *copy_hi)
{
    *copy_lo = Bignum_lincomb(lo, lo, 1.0, 0.0);
    *copy_hi = Bignum_lincomb(hi, hi, 1.0, 0.0);
}

// Backspace, Shift+Backspace and Home: the moves the history knows by
// themselves. Returns whether one of them acted (a flight then stops).
static bool history_keys(Bignum *view_lo, Bignum *view_hi)
{
    if (key_edge(KEY_BACKSPACE)) {
        if (shift_held)
            view_history_forward(view_lo, view_hi);
        else
            view_history_back(view_lo, view_hi);
        return true;
    }
    if (key_edge(KEY_HOME)) {
        gesture_end(*view_lo, *view_hi);
        view_history_record(*view_lo, *view_hi);
        return true;
    }
    return false;
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
    // a close request before the first frame ends the program like one after it
    bool closed = LOOP();

    while (!closed) {
        double now = clock_seconds();
        double frame_dt = now - last_time;
        walk_record_screen(&record);
        font_variants_rebuild(screen_h, text_buffer, sizeof text_buffer);

        // the go-to field has the keys while it is open; then F1 and H
        goto_field_update(view_lo, view_hi);
        help_overlay_keys();

        // keys: zoom and the depth limit
        double zoom_speed = navigation_zoom_speed();
        double zoom_step;
        double zoom_factor = navigation_key_zoom(frame_dt, zoom_speed, &zoom_step);
        navigation_depth_keys();
        fps_readout(frame_dt, text_buffer, sizeof text_buffer);

        // the mouse, then pan, Home, the minimum-zoom rule and the new view
        int32_t drag_dx = mouse_drag(&zoom_factor, zoom_step, zoom_speed);
        int32_t pan_pixels = navigation_pan_pixels(frame_dt, drag_dx);
        Bignum before_lo, before_hi;
        view_copy(view_lo, view_hi, &before_lo, &before_hi);
        bool moved = zoom_factor != 1.0 || pan_pixels != 0;
        moved = wheel_zoom(&view_lo, &view_hi, min_line_length) || moved;
        // any move of the user's own stops a flight where it stands
        if (history_keys(&view_lo, &view_hi) || moved || key_down[KEY_HOME])
            flight_stop();
        if (flight_active())
            flight_step(frame_dt, &view_lo, &view_hi);
        else
            view_navigate(&view_lo, &view_hi, zoom_factor, pan_pixels, min_line_length);
        gesture_step(moved, frame_dt, before_lo, before_hi, view_lo, view_hi);
        // a view at rest may fill in a bigger step of work each frame
        bool at_rest = !Bignum_lt(view_lo, before_lo) && !Bignum_lt(before_lo, view_lo) &&
                       !Bignum_lt(view_hi, before_hi) && !Bignum_lt(before_hi, view_hi);
        Bignum_free(before_lo);
        Bignum_free(before_hi);

        // each frame's walks get their work budget afresh
        walk_frame_start(at_rest);
        frame_draw(&record, view_lo, view_hi, key_down[KEY_M] ? &arena : nullptr, text_buffer,
                   sizeof text_buffer);
        goto_field_draw();
        notice_draw(frame_dt);
        help_overlay_draw();
        // what the user takes away: the ordinal under the marker, the picture
        marker_copy(record);
        screenshot_keys();

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
    flight_stop();
    view_history_clear();
    Bignum_free(view_lo);
    Bignum_free(view_hi);
}
