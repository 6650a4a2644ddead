// The shell's read-outs: the frame rate, and the arena's fill while M is held.
#pragma once

#include <stddef.h>

#include "OrdBuchholz/memstack.h"

// "N fps" at the left of the status line, the rate of the frames of about
// the last half second (of the frames so far, in the first half second).
void fps_readout(double frame_dt, char *buffer, size_t size);

// "MemStack: used / capacity bytes" on the status line after the frame
// rate's place: what the tick and label passes of this frame took from the arena.
void memstack_readout(const MemStack *arena, char *buffer, size_t size);
