// Label placement: the labels a pass reaches, kept by room where they fit.
#include "PlotSegment2/labels.h"

#include <float.h>
#include <stdlib.h>

#include "notation/notation_rows.h"
#include "support/bignum/bignum.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_boxes.h"
#include "support/dynarray/dynarray.h"
#include "support/gl/screen.h"

// Pixels kept free between a label and the top of the line's band.
constexpr float LABEL_BAND_GAP = 4.0f;
// Most lines a label can have: the rows the panel can hold (a window 3,000
// pixels high at the smallest font) and the name.
constexpr uint32_t LABEL_MAX_LINES = 64;
// A row's text is elided to end before a fixed text only where at least this
// many line heights remain; in less it is left out whole.
constexpr float LABEL_MIN_ROOM_LINES = 3.0f;
// Pixels kept free between the lines of one label.
constexpr float LABEL_LINE_GAP = 2.0f;
// A label raised further than this many line heights (moved far left on a
// steep line) would stand too far from its tick: it is left out.
constexpr float LABEL_MAX_LIFT_LINES = 2.0f;

// One label reached by the pass, and its lines in label_lines.
struct LabelCandidate {
    float room;      // pixels of the interval its tick starts; FLT_MAX at the end of the line
    uint32_t order;  // reached as the order-th label: ties go to the left
    uint32_t first;  // its first line in label_lines
    uint32_t count;  // its lines
    float lh;        // line height of its rows
};

// The labels of this pass (LabelCandidate) and all their lines
// (PlacedLabelLine, positions as collected until placed). Texts of row lines
// are owned heap blocks; names are the table's own.
static DynArray label_candidates = {};
static DynArray label_lines = {};
// Indices into label_lines of the lines kept, in placing order (uint32_t).
static DynArray label_kept_lines = {};

static void labels_free_texts()
{
    for (uint32_t i = 0; i < label_lines.count; i++) {
        PlacedLabelLine *line = DynArray_at<PlacedLabelLine>(&label_lines, i);
        if (!line->name)
            free((void *)line->text);
    }
    label_lines.count = 0;
    label_candidates.count = 0;
    label_kept_lines.count = 0;
}

void labels_begin()
{
    if (!label_lines.data) {
        DynArray_init(&label_candidates, sizeof(LabelCandidate), 256);
        DynArray_init(&label_lines, sizeof(PlacedLabelLine), 512);
        DynArray_init(&label_kept_lines, sizeof(uint32_t), 512);
    }
    labels_free_texts();
}

// The size of r's interval in pixels; the end of the line, an interval of
// nothing, stands for the whole line and outranks every tick.
static float label_tick_room(WalkRecord r)
{
    Bignum D = Bignum_lincomb(r.xhi, r.xlo, 1.0, -1.0);
    double size = Bignum_todouble(D);
    Bignum_free(D);
    if (size <= 0.0)
        return FLT_MAX;
    return size > FLT_MAX ? FLT_MAX : (float)size;
}

// Pixels down per pixel right along the line.
static float label_slope(WalkRecord r)
{
    return (r.yright - r.yleft) / (r.right - r.left);
}

// The room a label line has before the first fixed text to its right in its
// rows (the legend, above all): the text_boxes hold only fixed texts while
// the pass collects.
static float label_fixed_room(float x, float top, float bottom)
{
    float room = FLT_MAX;
    for (uint32_t i = 0; i < text_boxes.count; i++) {
        const TextBox &box = DynArray_at<PlacedBox>(&text_boxes, i)->box;
        if (box.y0 < bottom && top < box.y1 && box.x0 > x && box.x0 - x < room)
            room = box.x0 - x;
    }
    return room;
}

void label_collect(WalkRecord r)
{
    LabelLine line;
    if (!label_start(r, &line))
        return;
    float slope = label_slope(r);
    LabelCandidate candidate = {label_tick_room(r), label_candidates.count, label_lines.count, 0,
                                (float)text_height};
    while (label_next(&line)) {
        // measured now, in the font the line is drawn in
        TextExtent e = text_extent(line.text, slope);
        float room = label_fixed_room(line.tx, line.y + e.top, line.y + e.bottom);
        if (!line.name && e.width > room && room >= LABEL_MIN_ROOM_LINES * text_height) {
            // a row's text that runs into the legend ends before it
            free(line.owned);
            line.owned = label_record_text(r, *notation_row(line.rows - 1), room - 1.0f);
            line.text = line.owned;
            e = text_extent(line.text, slope);
        }
        PlacedLabelLine placed = {line.text, line.colour, line.tx, line.y, line.name, e};
        line.owned = nullptr;  // the text is the placement's now
        DynArray_append(&label_lines, &placed);
        candidate.count++;
    }
    DynArray_append(&label_candidates, &candidate);
}

// Larger room first, then the order reached.
static int label_rank(const void *a, const void *b)
{
    const LabelCandidate *p = (const LabelCandidate *)a, *q = (const LabelCandidate *)b;
    if (p->room != q->room)
        return p->room > q->room ? -1 : 1;
    return p->order < q->order ? -1 : p->order > q->order;
}

// Tries one label. Each line that would cross the right edge moves left
// until it ends there; each line is raised clear of the line's band where it
// stands and clear of the line below it, and carries the lines above it up
// by as much, so the stack keeps its order. The label (its first `count`
// lines) is kept if it was not raised too far and every line then lies in
// the window and meets no text placed before. The band's top edge is
// y = band0 + slope * X.
static bool label_try(const LabelCandidate *c, uint32_t count, float slope, float band0)
{
    const PlacedLabelLine *lines = DynArray_at<PlacedLabelLine>(&label_lines, c->first);
    float w = (float)screen_w, h = (float)screen_h;
    // the lines' new places, bottom line first
    float x[LABEL_MAX_LINES], y[LABEL_MAX_LINES];
    if (count > LABEL_MAX_LINES)
        return false;
    float lift = 0.0f;
    for (uint32_t i = 0; i < count; i++) {
        const TextExtent &e = lines[i].extent;
        x[i] = lines[i].x;
        if (x[i] + e.width > w)
            x[i] = w - e.width;
        // a tick at the left edge has its label a quarter line out: in again
        if (x[i] < 0.0f)
            x[i] = 0.0f;
        y[i] = lines[i].y - lift;
        // a tall line (a tower, a deep subscript) pushes the lines above it up
        if (i > 0) {
            float under = y[i - 1] + lines[i - 1].extent.top - LABEL_LINE_GAP - e.bottom;
            if (y[i] > under) {
                lift += y[i] - under;
                y[i] = under;
            }
        }
        // low holds the slant: every glyph's ink above the band where it stands
        float need = y[i] + e.low - (band0 + slope * x[i] - LABEL_BAND_GAP);
        if (need > 0.0f) {
            lift += need;
            y[i] -= need;
        }
    }
    if (lift > LABEL_MAX_LIFT_LINES * c->lh)
        return false;
    TextBox boxes[LABEL_MAX_LINES];
    for (uint32_t i = 0; i < count; i++) {
        const TextExtent &e = lines[i].extent;
        boxes[i] = TextBox{x[i], y[i] + e.top, x[i] + e.width, y[i] + e.bottom};
        if (boxes[i].x0 < 0.0f || boxes[i].y0 < 0.0f || boxes[i].x1 > w || boxes[i].y1 > h ||
            !text_box_clear_of_all(boxes[i]))
            return false;
    }
    for (uint32_t i = 0; i < count; i++) {
        PlacedLabelLine *line = DynArray_at<PlacedLabelLine>(&label_lines, c->first + i);
        text_box_add(BOX_LABEL, boxes[i], line->text);
        line->x = x[i];
        line->y = y[i];
        uint32_t index = c->first + i;
        DynArray_append(&label_kept_lines, &index);
    }
    return true;
}

void labels_place(WalkRecord r)
{
    label_kept_lines.count = 0;
    if (label_candidates.count == 0)
        return;
    float slope = label_slope(r);
    // the top of the strokes at X is yleft + slope * (X - left) - ticklen
    float band0 = r.yleft - slope * r.left - r.ticklen;
    qsort(label_candidates.data, label_candidates.count, sizeof(LabelCandidate), label_rank);
    for (uint32_t i = 0; i < label_candidates.count; i++) {
        const LabelCandidate *c = DynArray_at<LabelCandidate>(&label_candidates, i);
        if (label_try(c, c->count, slope, band0))
            continue;
        // a name that finds no place of its own does not take its label's
        const PlacedLabelLine *top = DynArray_at<PlacedLabelLine>(&label_lines, c->first + c->count - 1);
        if (top->name && c->count > 1)
            label_try(c, c->count - 1, slope, band0);
    }
}

void labels_discard()
{
    labels_free_texts();
}

uint32_t labels_kept()
{
    return label_kept_lines.count;
}

const PlacedLabelLine *label_kept(uint32_t i)
{
    return DynArray_at<PlacedLabelLine>(&label_lines, *DynArray_at<uint32_t>(&label_kept_lines, i));
}
