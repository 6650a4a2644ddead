// The shell's read-outs: the frame rate, and the arena's fill while M is held.
#pragma once

#include <stddef.h>

#include "OrdBuchholz/memstack.h"

// "N fps" at the left, four lines above the bottom.
void fps_readout(double frame_dt, char *buffer, size_t size);

// "MemStack: used / capacity bytes" at the bottom centre: what the tick and
// label passes of this frame took from the arena.
void memstack_readout(const MemStack *arena, char *buffer, size_t size);
