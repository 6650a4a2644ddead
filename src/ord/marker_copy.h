// C: the ordinal under the marker to the clipboard and to standard output,
// in psi form (numbers and coefficients kept, so it reads back) and in the
// notation of the bottom row, one line each.
#pragma once

#include "PlotSegment2/segment.h"

// Longest text copied for one form, in bytes; a longer one is cut and marked
// with "..." (the notation of a deep ordinal can run to millions of bytes).
constexpr size_t MARKER_COPY_MAX = 1 << 20;

// On a new press of C: walks the marker's column of the view in `record`
// (its xlo and xhi set), puts both lines on the clipboard, prints them, and
// shows a notice. Nothing under the marker: a notice says so.
void marker_copy(WalkRecord record);
