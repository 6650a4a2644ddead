// The start-up check that a window exists before the first frame.
#pragma once

// Fatal (exit status 1, a line in "graphics_error.log") if screen_w is 0,
// that is if GRAPHICS did not run or gave no size.
void startup_check_screen();
