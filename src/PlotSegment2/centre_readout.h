// The centre read-out: the ordinal under the marker, in the font "bigger".
//
// The read-out pass walks the line over the one centre column at a stop size
// of one pixel and keeps the leaf whose left end lies nearest the middle of
// that column, the end of the line included.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"
#include "PlotSegment2/segment.h"

// A private deep copy of the ordinal picked so far; 0 when none is.
extern Ord centre_ord;
// Its distance from the centre in pixels; CENTRE_NONE when none is picked.
extern float centre_dist;
// True when the read-out pass met a "too deep" leaf: the line under the
// marker was not divided down to a pixel this frame.
extern bool centre_too_deep;
// The line the read-out shows above its text then.
extern const char *const CENTRE_TOO_DEEP_TEXT;
constexpr float CENTRE_NONE = 1e20f;

// The callback of the read-out pass: keeps r's left end if it is nearer the
// middle of the view than the one kept; on a tie the first stays.
void centre_pick(WalkRecord r);

// The read-out pass over the column at cx and the text of what it found:
// returns the expanded text in the font "bigger", which it leaves selected,
// and its place (x, y) in the window; or null when nothing was picked, with
// the font unchanged. The text belongs to the caller.
char *centre_text(float cx, WalkRecord r, float *x, float *y);

// The left edge of a read-out w pixels wide: an eighth of the width plus 2
// with cx at the centre, moved left as far as needed to end at the window's
// right edge, but never left of the window.
float centre_text_x(float cx, float w);

// One whole read-out: the text of centre_text drawn at its place, wrapped at
// the window's edges, and "normal" selected again.
void centre_readout(float cx, WalkRecord r);
