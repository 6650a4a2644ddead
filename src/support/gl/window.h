// The window and its OpenGL context: brought up once, closed at a close request
// or a fatal report.
#pragma once

#include <stdint.h>

#include <SDL2/SDL.h>

#include "support/gl/gl_state.h"

// The one window, and its context.
extern SDL_Window *sdl_window;
extern SDL_GLContext gl_context;

// Brings up SDL and opens the window with an OpenGL context. width 0 with
// height 0 gives a 4:3 window at six tenths of display 0's height, at its
// top-left corner; the other forms name a display (0, n) or a set of displays
// (-1, mask), or give the size outright. Returns 1 when the window stands;
// without a display to show it on (or a window or OpenGL context that cannot
// be made) it ends the program with one line and status 1.
int32_t GRAPHICS(int32_t width, int32_t height, const char *caption);

// Closes the window and SDL. The last frame's drawing is finished and the
// context released first: llvmpipe's threads, torn down in the middle of a
// frame, wait for each other for ever and the process never ends.
void window_close();
