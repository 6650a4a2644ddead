// The window and its OpenGL context: brought up once, never closed by the program.
#pragma once

#include <stdint.h>

#include <SDL2/SDL.h>

// The one window, and its context.
extern SDL_Window *sdl_window;
extern SDL_GLContext gl_context;
// The base projection is orthographic in window pixels. Start 1; nothing changes it.
extern uint8_t ortho_projection;

// Brings up SDL and opens the window with an OpenGL context. width 0 with
// height 0 gives a 4:3 window at six tenths of display 0's height, at its
// top-left corner; the other forms name a display (0, n) or a set of displays
// (-1, mask), or give the size outright. Returns 1 when the window stands;
// without a display to show it on (or a window or OpenGL context that cannot
// be made) it ends the program with one line and status 1.
int32_t GRAPHICS(int32_t width, int32_t height, const char *caption);

// Takes a new window size: screen_w, screen_h (never below 1), the viewport
// and a pixel projection with the origin at the top left, y down. Leaves the
// matrix mode at GL_MODELVIEW.
void resize_viewport(int32_t w, int32_t h);
