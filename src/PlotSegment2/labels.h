// Labels: the text above each tick that the label pass reaches, one line per
// notation row, and the grey name of a named ordinal above them.
//
// The pass collects every label it reaches (label_collect); labels_place then
// keeps those that fit, in the order of their ticks' room: the interval a
// tick starts, which also sets how bright its stroke is (the end of the line
// has the whole line). A label is kept when all its lines lie inside the
// window, above the line's band, and clear of every text placed before it:
// the fixed texts already in text_boxes, and the labels kept so far. So of
// two labels that would overlap, the tick with more room keeps its own, and
// the same view always keeps the same labels: nothing flickers while it
// stands still. A label line that would cross the right edge is shifted
// left, and raised with the lines above it as far as the slant of the line
// then asks (two line heights at most: further would part it from its tick);
// a line wider than its room is elided at a whole term (markup_fit.h), never
// cut raw. A grey name that finds no place is left out alone, and its label
// is tried without it.
//
// Ownership: the collected texts are heap blocks of this module, freed by
// labels_draw (or labels_discard) at the end of the pass.
#pragma once

#include <stdint.h>

#include "PlotSegment2/segment.h"
#include "notation/notation.h"
#include "support/bitmapfonts/text_measure.h"

// Longest ordinal text that is expanded: a longer one is cut at its last whole
// term within this many bytes and ends in the ellipsis.
constexpr uint32_t LABEL_TEXT_MAX = 9999;

// The expanded text of x in the notation of row, ready to draw with the font
// selected now (script sizes follow it): a new heap block for the caller.
// Over LABEL_TEXT_MAX bytes it is elided; with max_width above 0 it is also
// elided to that many pixels.
char *label_text(Ord x, NotationRow row, float max_width = 0.0f);
// The same for the left end of r; a member of a kept expansion is written
// once while its entry lives, not every frame.
char *label_record_text(WalkRecord r, NotationRow row, float max_width);

// Bytes of a text that a label line of a given width is first made from: a
// line is at most a third of the window wide, and so many bytes are wider
// unless most of them are deep scripts; such a text is made again in full.
constexpr uint32_t LABEL_SHORT_MAX = 1024;
// Bytes tried before those: a crowded frame makes thousands of label texts,
// and a deep ordinal's head of nested scripts at the smallest script size
// fills the widest line (a third of a 1280-pixel window) in about this many.
constexpr uint32_t LABEL_HEAD_MAX = 256;

// Label sources of kept members across frames (label_memo.cpp), by the life
// of the entry (expansion_cache_life), the member, the row and the byte limit
// it was made to: the source before the ellipsis, and whether it was cut at
// that limit. Life 0 is never kept. A fixed number of slots: a new text may
// take an old one's.
const char *label_memo_find(uint64_t life, int32_t member, const NotationRow *row, uint32_t limit,
                            bool *cut);
void label_memo_keep(uint64_t life, int32_t member, const NotationRow *row, uint32_t limit,
                     const char *text, bool cut);

// The same text before the script pass, for callers that cut it further
// (markup_fit.h): a new heap block of *capacity bytes, elided beyond
// LABEL_TEXT_MAX. label_expand finishes it: the script pass in place, then a
// new heap copy of just the text; the source block stays the caller's. With a
// life not 0, x is member `member` of that kept expansion, and its text is
// kept with the labels'.
char *label_source(Ord x, NotationRow row, size_t *capacity, uint64_t life = 0, int32_t member = 0);
char *label_expand(char *source, size_t capacity);

// The widest a label line may be with its left edge at tx: to the window's
// right edge, but never under a quarter nor over a third of the window's
// width (so one long label cannot crowd out every other). While the pass
// collects, a row's text that would run into a fixed text (the legend) is cut
// to end before it.
float label_room(float tx);

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
    bool name;        // the grey name, in the font "legend"
};

// False when the tick stands outside the window: its label could not stand
// above it inside the window.
bool label_start(WalkRecord r, LabelLine *line);
// The next line, or false when the label is done. The name line selects the
// font "legend" while it is given; at the end "normal" is selected again.
bool label_next(LabelLine *line);

// The label pass: labels_begin, walk_line(label_collect, ...), labels_place
// with the pass's record, then labels_draw.
void labels_begin();
void label_collect(WalkRecord r);
void labels_place(WalkRecord r);
// Draws the labels kept, and frees all collected texts.
void labels_draw();
// Frees the collected texts without drawing them.
void labels_discard();

// One kept label line, for the drawing and for tests: the text at (x, y) in
// its colour and font, and its box.
struct PlacedLabelLine {
    const char *text;
    uint32_t colour;
    float x, y;
    bool name;
    TextExtent extent;
};
// The lines kept by the last labels_place, in placing order.
uint32_t labels_kept();
const PlacedLabelLine *label_kept(uint32_t i);
