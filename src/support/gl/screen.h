// The window's size and mode as plain state, so that code without a display
// (layout, navigation, reports) can read it.
#pragma once

#include <stdint.h>

// 1: a resizable window sized from the display; 0: fullscreen. Start 1.
extern uint8_t windowed;
// Window width in pixels; 0 until the window stands.
extern int32_t screen_w;
// Window height in pixels, never below 1 once set; 0 until the window stands.
extern int32_t screen_h;
