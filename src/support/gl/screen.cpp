// The window's size and mode.
#include "support/gl/screen.h"

uint8_t windowed = 1;
int32_t screen_w = 0;
int32_t screen_h = 0;
