// The centre read-out: the ordinal under the marker, in the font "bigger",
// in a band of its own between the line and the fixed texts below it.
//
// The read-out pass walks the line over the one centre column at a stop size
// of one pixel and keeps the leaf whose left end lies nearest the middle of
// that column, the end of the line included.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"
#include "PlotSegment2/segment.h"
#include "support/bitmapfonts/text_boxes.h"

// A private deep copy of the ordinal picked so far; 0 when none is.
extern Ord centre_ord;
// Where it comes from: the life of the kept expansion whose member it is
// (expansion_cache_life; 0 for none) and its index there, so that its text
// can be kept across frames like a label's.
extern uint64_t centre_life;
extern int32_t centre_member;
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

// The read-out laid out in its band: below the line's band, above the fixed
// texts at the bottom (band_bottom is the lowest pixel row it may use),
// inside the window and clear of the boxes in text_boxes (the legend). It
// stands where it always stood (an eighth of the width in, 0.78 down) when
// it fits there, moves left and down as far as it needs, and otherwise takes
// two lines from the left edge, broken after a whole term, the second line
// elided. Exponent towers keep their levels down to the floor size of the
// scripts, and "..." stands for deeper ones. The "too deep" note stands above
// it in the font "panel", cut at a word where it does not fit.
struct CentreText {
    char *lines[2];       // expanded texts in the font "bigger"; null when absent
    uint32_t count;       // lines: 0 when nothing was picked
    float x;              // left edge of the lines
    float y[2];           // top of each line
    char *note;           // the "too deep" note, or null
    float note_x, note_y;
    TextBox box;          // around the lines and the note; all 0 when empty
};

// The read-out pass over the column at cx and its layout into *out, whose
// texts the caller frees with centre_text_free. Returns whether anything
// stands in it. "normal" is selected on return.
bool centre_text(float cx, WalkRecord r, float band_bottom, CentreText *out);
void centre_text_free(CentreText *t);
// Adds the boxes of the read-out to text_boxes.
void centre_text_reserve(const CentreText *t);

// The two halves of centre_text. centre_source runs the pass and returns
// the text of what it picked before the script pass (label_source), with
// *capacity bytes of room, or null; centre_layout lays that source out (it
// may be null: then only a "too deep" note can stand) and leaves it changed.
char *centre_source(float cx, WalkRecord r, size_t *capacity);
void centre_layout(float cx, WalkRecord r, float band_bottom, char *source, size_t capacity,
                   bool too_deep, CentreText *out);

// The left edge of a read-out w pixels wide: an eighth of the width plus 2
// with cx at the centre, moved left as far as needed to end at the window's
// right edge, but never left of the window.
float centre_text_x(float cx, float w);

// Draws the read-out laid out by centre_text; "normal" is selected after.
void centre_readout_draw(const CentreText *t);
