// The tick walk: a pass over the whole line, and the per-column arrays that
// sum up the tick pass for drawing (one tick at most per pixel column).
#pragma once

#include <stdint.h>

#include "PlotSegment2/segment.h"

// Columns of this frame: the record's `right` truncated, one per pixel.
extern int32_t tick_columns;
// Largest interval size (pixels) seen with its left end in each column.
extern float *tick_sizes;
// Highest kind seen in each column; 0 means no tick.
extern uint32_t *tick_kinds;

// Frees and reallocates both arrays for `right` columns, all zero. The arrays
// are heap blocks that live until the next rebuild.
void tick_arrays_rebuild(float right);

// The screen-dependent fields of a walk record, from screen_w and screen_h:
// the line runs across the whole width, from 0.1 of the height at the left
// edge down to the bottom at the right.
void walk_record_screen(WalkRecord *record);

// One pass over the whole line: builds the top ordinal, lays out the line
// from 0 to it, then calls fn once more at the end of the line (where the top
// ordinal is the left end of nothing). r brings the view (xlo, xhi), the stop
// size and the view limits; ordlo and ordhi are set here.
void walk_line(TickCallback fn, WalkRecord r);

// The callback of the tick pass: the kind of ordlo into its column.
void tick_record(WalkRecord r);
// The size of the interval into the column of its left end; segment calls it
// at every interval it enters.
void tick_size_record(WalkRecord r);
