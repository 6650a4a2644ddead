// Tick drawing: one stroke per column that holds a tick, on the slanted line.
#pragma once

#include "PlotSegment2/segment.h"

// Draws the strokes of all columns of the tick arrays in one GL_LINES batch,
// coloured by kind and brightened by the interval size. Reads only left,
// right, yleft, yright and ticklen of r.
void tick_draw(WalkRecord r);
