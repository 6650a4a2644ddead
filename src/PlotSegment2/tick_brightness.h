// The colour of a tick stroke: its kind's colour, darkened for a small
// interval and mixed toward white for a large one.
#pragma once

#include <stdint.h>

// The brightness figure of an interval of `size` pixels in a view `span`
// pixels wide: 128 for no width, 384 for the window's width less one pixel.
int32_t tick_brightness(float size, float span);
// The kind's colour under brightness t, as 0xRRGGBB.
uint32_t tick_shade(uint32_t colour, int32_t t);
