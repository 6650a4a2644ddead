// Mouse drag: a button held in the middle strip of the window captures the
// pointer; horizontal travel pans and vertical travel zooms. The wheel does
// not drag: it zooms about the pointer (wheel_zoom.h).
#pragma once

#include <stdint.h>

// Runs the drag of this frame: may multiply *zoom_factor, and returns the
// horizontal travel to pan by (0 when no drag is going on). Switches the
// platform's relative mouse mode on while a button is held in the strip.
int32_t mouse_drag(double *zoom_factor, double zoom_step, double zoom_speed);
