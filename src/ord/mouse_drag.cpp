// Mouse drag with relative mouse mode.
#include "ord/mouse_drag.h"

#include <math.h>
#include <stdlib.h>

#include <SDL2/SDL.h>

#include "ord/panel_hits.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"

// Vertical travel of the last relative frame; kept while not recomputed.
static int32_t drag_dy = 0;
// The buttons held went down on a panel text: a click, so no drag until all
// are released. Start false.
static bool press_on_panel = false;

// Puts the pointer sum back on the window's centre and returns the travel.
static int32_t take_relative_travel(int32_t *dy)
{
    int32_t dx = mouse_x - screen_w / 2;
    *dy = mouse_y - screen_h / 2;
    mouse_x = screen_w / 2;
    mouse_y = screen_h / 2;
    return dx;
}

// Fullscreen: left zooms in, right zooms out, travel pans.
static int32_t mouse_drag_fullscreen(double *zoom_factor, double zoom_step)
{
    if (mouse_buttons & BUTTON_LEFT)
        *zoom_factor *= exp(zoom_step);
    if (mouse_buttons & BUTTON_RIGHT)
        *zoom_factor *= exp(-zoom_step);
    if (SDL_GetRelativeMouseMode()) {
        int32_t dy;
        return take_relative_travel(&dy);
    }
    SDL_SetRelativeMouseMode(SDL_TRUE);
    return 0;
}

int32_t mouse_drag(double *zoom_factor, double zoom_step, double zoom_speed)
{
    if (windowed == 0)
        return mouse_drag_fullscreen(zoom_factor, zoom_step);

    // a press on a panel text (as the last frame drew it) is a click only;
    // in relative mode the pointer is a running sum, not a place
    if (mouse_buttons == 0)
        press_on_panel = false;
    else if ((mouse_buttons & ~mouse_buttons_prev) && !SDL_GetRelativeMouseMode() &&
             panel_text_at(mouse_x, mouse_y))
        press_on_panel = true;
    if (press_on_panel) {
        SDL_SetRelativeMouseMode(SDL_FALSE);
        return 0;
    }

    // the strip leaves five line heights free at the top and the bottom for
    // the panels; compared as unsigned numbers, so a tiny window has no strip
    // the wheel zooms on its own (wheel_zoom.h): only buttons drag
    uint32_t h5 = 5 * text_height;
    uint32_t held = mouse_buttons & ~(uint32_t)(WHEEL_UP | WHEEL_DOWN);
    uint32_t held_before = mouse_buttons_prev & ~(uint32_t)(WHEEL_UP | WHEEL_DOWN);
    bool in_strip = held != 0 && (uint32_t)mouse_y >= h5 &&
                    (uint32_t)mouse_y < (uint32_t)screen_h - h5;
    if (!in_strip) {
        SDL_SetRelativeMouseMode(SDL_FALSE);
        return 0;
    }

    int32_t drag_dx = 0;
    if (SDL_GetRelativeMouseMode())
        drag_dx = take_relative_travel(&drag_dy);
    else
        SDL_SetRelativeMouseMode(SDL_TRUE);
    // the frame after a press sees the whole distance from the centre: the
    // pressed point jumps to the marker, and a mostly vertical one zooms
    if (held_before != 0 && abs(drag_dy) > abs(drag_dx))
        *zoom_factor *= exp(-(drag_dy * zoom_speed) / (double)(screen_h / 2));
    return drag_dx;
}
