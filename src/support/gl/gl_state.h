// The OpenGL state every frame starts from, for any context: the window's or
// an offscreen one. Needs a current context; knows nothing of SDL.
#pragma once

#include <stdint.h>

// The base projection is orthographic in window pixels. Start 1; nothing changes it.
extern uint8_t ortho_projection;

// The state the window program draws in: black clear colour, depth testing
// with GL_LEQUAL, smooth shading, colour material, a pixel projection of
// w by h (resize_viewport) and an identity model-view matrix.
void gl_state_start(int32_t w, int32_t h);

// Takes a new window size: screen_w, screen_h (never below 1), the viewport
// and a pixel projection with the origin at the top left, y down. Leaves the
// matrix mode at GL_MODELVIEW.
void resize_viewport(int32_t w, int32_t h);
