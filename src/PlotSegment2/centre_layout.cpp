// The centre read-out laid out in its band, below the line and above the panel.
#include "PlotSegment2/centre_readout.h"

#include <stdlib.h>
#include <string.h>

#include "PlotSegment2/labels.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/markup_fit.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/screen.h"
#include "support/report/report.h"

// Pixels kept free between the read-out and the line's band.
constexpr float CENTRE_BAND_GAP = 2.0f;
// Where the read-out's line stands when it fits there, a share of the height.
constexpr double CENTRE_Y = 0.78;
// A note narrower than this many of its line heights says too little to show.
constexpr float CENTRE_NOTE_MIN_LINES = 4.0f;

// The band: under the line's lower edge y = bottom0 + slope * X (the strokes
// and the "too deep" marks end there), above `floor`, inside the window.
struct CentreBand {
    float slope;
    float bottom0;
    float floor;
};

static CentreBand centre_band(WalkRecord r, float band_bottom)
{
    CentreBand b;
    b.slope = (r.yright - r.yleft) / (r.right - r.left);
    // the "too deep" marks reach a quarter stroke below the line
    b.bottom0 = r.yleft - b.slope * r.left + 0.25f * r.ticklen;
    b.floor = band_bottom;
    return b;
}

// The rightmost pixel a text between rows y0 and y1 may reach: the window's
// edge, and the left edge of any placed box beside it (the legend).
static float centre_right_free(float y0, float y1)
{
    float right = (float)screen_w;
    for (uint32_t i = 0; i < text_boxes.count; i++) {
        const TextBox &box = DynArray_at<PlacedBox>(&text_boxes, i)->box;
        if (box.y0 < y1 && y0 < box.y1 && box.x0 < right)
            right = box.x0;
    }
    return right;
}

// The same, also held under the line's band: the box's top right corner
// stays below the band's lower edge, which falls to the right.
static float centre_right(const CentreBand *b, float y0, float y1)
{
    float right = centre_right_free(y0, y1);
    float under = (y0 - b->bottom0 - CENTRE_BAND_GAP) / b->slope;
    return under < right ? under : right;
}

// A heap copy of an expanded or plain text.
static char *centre_copy(const char *text, size_t capacity)
{
    char *copy = (char *)malloc(capacity);
    if (!copy)
        REPORT(REPORT_FATAL, "Out of memory for the read-out", 0);
    memcpy(copy, text, text_size(text));
    return copy;
}

// One line at (x, y) whole, if there is a place for it at y: as far right as
// the old place, as far left as the band and the boxes need.
static bool centre_one_line(const CentreBand *b, float cx, float y, const TextExtent &e,
                            float *x_out)
{
    if (y + e.top < 0.0f || y + e.bottom > b->floor)
        return false;
    float x = centre_text_x(cx, e.width);
    float right = centre_right(b, y + e.top, y + e.bottom) - e.width;
    if (right < x)
        x = right;
    *x_out = x;
    return x >= 0.0f;
}

// The read-out's text in one or two lines into out; frees nothing.
static void centre_lines(const CentreBand *b, float cx, char *source, size_t capacity,
                         CentreText *out)
{
    float h = (float)screen_h;
    // towers stop at the floor size of the scripts: "..." for the levels below it
    markup_elide_depth(source, capacity, markup_floor_depth());
    char *whole = centre_copy(source, capacity);
    char *text = label_expand(whole, capacity);
    free(whole);
    TextExtent e = text_extent(text, 0.0f);

    // whole, at the old place, or lower where the line leaves more room
    float lowest = b->floor - e.bottom;
    float ys[2] = {(float)(CENTRE_Y * h) < lowest ? (float)(CENTRE_Y * h) : lowest, lowest};
    for (float y : ys) {
        float x;
        if (centre_one_line(b, cx, y, e, &x)) {
            out->lines[0] = text;
            out->count = 1;
            out->x = x;
            out->y[0] = y;
            return;
        }
    }
    free(text);

    // two lines from the left edge, the lower one at the floor, each as wide
    // as the band lets a box of the whole text's height be
    float pitch = e.bottom - e.top + 1.0f;
    float y2 = lowest, y1 = lowest - pitch;
    float right1 = centre_right(b, y1 + e.top, y1 + e.bottom);
    float right2 = centre_right(b, y2 + e.top, y2 + e.bottom);
    size_t at = 0;
    if (y1 + e.top >= 0.0f && right1 > 0.0f)
        at = markup_break(source, right1);
    if (at == 0) {
        // no term fits the first line: one line, elided
        if (y2 + e.top < 0.0f || right2 <= 0.0f)
            return;
        markup_elide(source, capacity, right2, false);
        out->lines[0] = label_expand(source, capacity);
        out->count = 1;
        out->x = 0.0f;
        out->y[0] = y2;
        return;
    }
    char *tail = markup_tail(source, at);
    size_t tail_capacity = MARKUP_CAPACITY(text_end(tail) - tail);
    char *second = (char *)malloc(tail_capacity);
    if (!second)
        REPORT(REPORT_FATAL, "Out of memory for the read-out", 0);
    memcpy(second, tail, text_size(tail));
    free(tail);
    markup_elide(second, tail_capacity, right2, false);
    markup_head(source, capacity, at);
    out->lines[0] = label_expand(source, capacity);
    out->lines[1] = label_expand(second, tail_capacity);
    free(second);
    out->count = 2;
    out->x = 0.0f;
    out->y[0] = y1;
    out->y[1] = y2;
}

// The "too deep" note, one line of the font "panel" above the read-out (or
// where the read-out would stand), cut at a word to the room the band leaves.
static void centre_note(const CentreBand *b, float cx, float block_top, CentreText *out)
{
    font_select("panel");
    float lh = (float)text_height;
    float y = block_top - lh - 2.0f;
    float x = out->count ? out->x : centre_text_x(cx, 0.0f);
    float room = centre_right(b, y, y + lh) - x;
    if (y >= 0.0f && room >= CENTRE_NOTE_MIN_LINES * lh) {
        size_t length = strlen(CENTRE_TOO_DEEP_TEXT);
        size_t capacity = MARKUP_CAPACITY(length);
        char *note = (char *)malloc(capacity);
        if (!note)
            REPORT(REPORT_FATAL, "Out of memory for the read-out", 0);
        memcpy(note, CENTRE_TOO_DEEP_TEXT, length + 1);
        markup_elide(note, capacity, room, false);
        out->note = note;
        out->note_x = x;
        out->note_y = y;
    }
    font_select("normal");
}

// The box of line i of the read-out (i == count: the note), with the font
// it is drawn in selected.
static TextBox centre_part_box(const CentreText *t, uint32_t i)
{
    bool note = i == t->count;
    font_select(note ? "panel" : "bigger");
    const char *text = note ? t->note : t->lines[i];
    float x = note ? t->note_x : t->x, y = note ? t->note_y : t->y[i];
    TextExtent e = text_extent(text, 0.0f);
    return TextBox{x, y + e.top, x + e.width, y + e.bottom};
}

// The box around everything the read-out draws.
static void centre_box(CentreText *t)
{
    uint32_t parts = t->count + (t->note ? 1 : 0);
    for (uint32_t i = 0; i < parts; i++) {
        TextBox box = centre_part_box(t, i);
        if (i == 0) {
            t->box = box;
            continue;
        }
        t->box.x0 = box.x0 < t->box.x0 ? box.x0 : t->box.x0;
        t->box.y0 = box.y0 < t->box.y0 ? box.y0 : t->box.y0;
        t->box.x1 = box.x1 > t->box.x1 ? box.x1 : t->box.x1;
        t->box.y1 = box.y1 > t->box.y1 ? box.y1 : t->box.y1;
    }
    font_select("normal");
}

void centre_layout(float cx, WalkRecord r, float band_bottom, char *source, size_t capacity,
                   bool too_deep, CentreText *out)
{
    *out = CentreText{};
    CentreBand b = centre_band(r, band_bottom);
    if (b.slope <= 0.0f)
        return;
    float block_top = (float)(CENTRE_Y * screen_h);
    if (source) {
        font_select("bigger");
        centre_lines(&b, cx, source, capacity, out);
        if (out->count) {
            TextExtent e = text_extent(out->lines[0], 0.0f);
            block_top = out->y[0] + e.top;
        }
        font_select("normal");
    }
    if (too_deep)
        centre_note(&b, cx, block_top, out);
    centre_box(out);
}

void centre_text_free(CentreText *t)
{
    free(t->lines[0]);
    free(t->lines[1]);
    free(t->note);
    *t = CentreText{};
}

void centre_text_reserve(const CentreText *t)
{
    for (uint32_t i = 0; i < t->count; i++)
        text_box_add(BOX_READOUT, centre_part_box(t, i), t->lines[i]);
    if (t->note)
        text_box_add(BOX_READOUT, centre_part_box(t, t->count), t->note);
    font_select("normal");
}

float centre_text_x(float cx, float w)
{
    float x0 = (2.0f - (float)((3 * screen_w) / 8)) + cx;
    float x = (float)(screen_w - 1) - w;
    if (x0 < x)
        x = x0;
    return x < 0.0f ? 0.0f : x;
}
