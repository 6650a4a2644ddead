// Labels: the text above each tick that the label pass reaches, one line per
// notation row, and the grey name of a named ordinal above them.
//
// No measuring or collision test exists: labels are kept apart by the slant
// of the line, which sets each next tick lower, and by the stop size of the
// label pass, five line heights. A long label may run over its neighbours.
#pragma once

#include <stdint.h>

#include "ord/notation.h"
#include "PlotSegment2/segment.h"

// Texts longer than this are drawn raw, without Greek letters and scripts.
constexpr uint32_t LABEL_TEXT_MAX = 9999;

// The expanded text of x in the notation of row, ready to draw with the font
// selected now (script sizes follow it): a new heap block for the caller.
char *label_text(Ord x, NotationRow row);
// The same for a text drawn wrapped over several lines (the read-out): a raw
// text then runs longer.
char *label_text_wrapped(Ord x, NotationRow row, bool wrapped);

// One label walked line by line, bottom line first, so that drawing and
// measuring share the placement:
//   LabelLine line;
//   if (label_start(r, &line))
//       while (label_next(&line)) use line.text at (line.tx, line.y);
struct LabelLine {
    WalkRecord r;     // the interval whose left end is labelled
    float x;          // the tick's x
    float y;          // top of the line last given
    uint32_t rows;    // notation rows given so far
    int32_t stage;    // 0 notation rows, 1 name line, 2 done
    // the line given by the last label_next
    const char *text; // expanded label or a name
    char *owned;      // the expanded label, freed at the next step
    uint32_t colour;  // 0xRRGGBB
    float tx;         // left edge of the text
};

// False when the tick is over ten line heights outside the view, so that no
// label of it can reach into the window.
bool label_start(WalkRecord r, LabelLine *line);
// The next line, or false when the label is done. The name line selects the
// font "legend" while it is given; at the end "normal" is selected again.
bool label_next(LabelLine *line);

// The callback of the label pass: draws the label of r's left end.
void label_draw(WalkRecord r);
