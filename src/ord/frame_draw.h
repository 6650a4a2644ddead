// What a frame draws, from the centre marker to the panels: the part of the
// frame that the window program and ordtool render share, so that both give
// the same pixels for the same view.
#pragma once

#include <stddef.h>

#include "OrdBuchholz/memstack.h"
#include "PlotSegment2/segment.h"

// Draws the centre marker, the ticks, the labels, the arena read-out (when
// `arena` is given: the key M is held), the centre read-out, the zoom depth,
// the legend and the notation panel into the current GL context. The places
// of the fixed texts are reserved first (text_boxes.h), so the labels and the
// read-out are laid out around them; in the test mode the boxes are then
// reported (layout_report.h). The record comes with its
// screen fields set (walk_record_screen) and the fonts of the frame built;
// its xlo and xhi are set here to the view, which stays the caller's. The
// passes of the line allocate from `arena` when it is given. `buffer` is the
// frame's scratch text of `size` bytes.
void frame_draw(WalkRecord *record, Bignum view_lo, Bignum view_hi, MemStack *arena,
                char *buffer, size_t size);
