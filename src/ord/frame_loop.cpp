// The frame loop: start-up with a window, then one frame after another.
#include "ord/program.h"

#include <GL/gl.h>
#include <SDL2/SDL.h>

#include "ord/startup_check.h"
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
    double last_time = clock_seconds();
    startup_relative_mouse();
    startup_check_screen();
    LOOP();

    for (;;) {
        double now = clock_seconds();
        double frame_dt = now - last_time;
        (void)frame_dt;

        draw_centre_marker();

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
}
