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
// 1 in each column that a "too deep" leaf covers (see segment.h), else 0.
extern uint8_t *tick_too_deep;
// The colour of the marks of "too deep" columns.
constexpr uint32_t TOO_DEEP_COLOUR = 0xff3030;

// Frees and reallocates the arrays for `right` columns, all zero. The arrays
// are heap blocks that live until the next rebuild.
void tick_arrays_rebuild(float right);

// The screen-dependent fields of a walk record, from screen_w and screen_h:
// the line runs across the whole width, from 0.1 of the height at the left
// edge down to the bottom at the right.
void walk_record_screen(WalkRecord *record);

// What the passes of one frame may spend on expansions that were not kept
// from earlier frames, in member arrays built (Ord_expand's work): past it
// the rest of the frame's intervals are "too deep" leaves, and the next
// frames, which find the work done so far kept, fill them in.
constexpr uint64_t WALK_FRAME_WORK = 1000000;
// Seconds each pass of a frame may spend before it takes only kept
// expansions: the frame rate stays up however deep the view.
constexpr double WALK_PASS_SECONDS = 0.02;
// Seconds a pass may spend beyond WALK_PASS_SECONDS, drawn from a reserve
// that each frame refills by WALK_RESERVE_REFILL up to WALK_RESERVE_SECONDS:
// a view entered cold (a jump, or kept expansions dropped) builds its whole
// path in one longer frame instead of showing "too deep" bands for the next
// few, while a view that needs more than a pass's share every frame drains
// the reserve and gets the bands.
constexpr double WALK_RESERVE_SECONDS = 0.1;
constexpr double WALK_RESERVE_REFILL = 0.005;
// The reserve now; the start value is WALK_RESERVE_SECONDS.
extern double walk_reserve_seconds;
// Term arrays the walks may hold in all, in bytes, before expansions are
// refused: far below the machine, far above any view that draws in time.
constexpr uint64_t WALK_MEMORY_LIMIT = (uint64_t)1 << 30;

// One expansion past the frame's budget that a frame at rest may make, so a
// view the user has stopped on fills in where single expansions cost more
// than a moving frame can afford (some 0.1 s at most, once a frame).
constexpr uint64_t WALK_REST_WORK = 4000000;

// A new frame of the viewer: expansions kept but not used for a few frames
// go, the frame's work budget starts afresh, and each walk_line of the frame
// gets WALK_PASS_SECONDS and what the reserve holds; a frame `at_rest` (the
// view as in the frame before) may also take one step of WALK_REST_WORK.
// Tools that want every view whole never call it.
void walk_frame_start(bool at_rest);

// One pass over the whole line: takes the top ordinal, lays out the line
// from 0 to it, then calls fn once more at the end of the line (where the top
// ordinal is the left end of nothing). r brings the view (xlo, xhi), the stop
// size and the view limits; ordlo and ordhi are set here.
void walk_line(TickCallback fn, WalkRecord r);

// The callback of the tick pass: the kind of ordlo into its column; a "too
// deep" leaf also marks every column it covers.
void tick_record(WalkRecord r);
// The size of the interval into the column of its left end; segment calls it
// at every interval it enters.
void tick_size_record(WalkRecord r);
