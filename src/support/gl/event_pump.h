// The event pump: the one place where platform events enter the program.
#pragma once

#include <stdint.h>

// Drains the event queue into the input state (and resizes the viewport on a
// size change). Returns 1 when it handled a quit event, after shutting SDL
// down; the rest of the queue then stays. Must not run before GRAPHICS.
int32_t LOOP();
