// Label texts and their places above the ticks.
#include "PlotSegment2/labels.h"

#include <stdlib.h>
#include <string.h>

#include "ord/named_ordinals.h"
#include "ord/notation_rows.h"
#include "support/bignum/bignum.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/gl/screen.h"
#include "support/report/report.h"

// Work space of label_text: room for the expansion of the longest text that
// is expanded at all.
static char label_buffer[MARKUP_CAPACITY(LABEL_TEXT_MAX)];

// Bytes of a raw text that can reach the screen: a label starts at most ten
// line heights left of the window, every glyph advances at least a pixel, and
// a wrapped text (the read-out) runs onto at most the lines the window holds.
// The rest of a text that long is never seen, so it is never written; and
// one byte past LABEL_TEXT_MAX is always written, to tell raw from typeset.
static size_t label_raw_limit(bool wrapped)
{
    size_t h = text_height ? text_height : 1;
    size_t reach = (size_t)(screen_w > 0 ? screen_w : 0) + 20 * h;
    size_t lines = wrapped ? (size_t)(screen_h > 0 ? screen_h : 0) / h + 2 : 1;
    size_t limit = reach * lines;
    return limit > LABEL_TEXT_MAX ? limit : LABEL_TEXT_MAX + 1;
}

char *label_text(Ord x, NotationRow row)
{
    return label_text_wrapped(x, row, false);
}

char *label_text_wrapped(Ord x, NotationRow row, bool wrapped)
{
    bool cut;
    char *s = Ord_tostring_limit(x, &row, label_raw_limit(wrapped), &cut);
    size_t length = strlen(s);
    if (length > LABEL_TEXT_MAX)
        return s;
    memcpy(label_buffer, s, length + 1);
    free(s);
    greek_expand(label_buffer);
    script_expand(label_buffer, -1, 0, 256, sizeof label_buffer);
    // escapes hold zero bytes: only text_end finds the end
    size_t size = (size_t)(text_end(label_buffer) - label_buffer) + 1;
    char *text = (char *)malloc(size);
    if (!text)
        REPORT(REPORT_FATAL, "Out of memory for a label", 0);
    memcpy(text, label_buffer, size);
    return text;
}

bool label_start(WalkRecord r, LabelLine *line)
{
    uint32_t h = text_height;
    if (Bignum_ltd(r.xlo, r.left - (float)(10 * h)) || Bignum_ged(r.xlo, r.right + (float)(10 * h)))
        return false;
    line->r = r;
    line->x = Bignum_tofloat(r.xlo);
    // the top end of the tick
    line->y = (r.yright - r.yleft) * (line->x - r.left) / (r.right - r.left) + (r.yleft - r.ticklen);
    line->rows = 0;
    line->stage = 0;
    line->text = nullptr;
    line->owned = nullptr;
    line->colour = 0;
    line->tx = line->x;
    return true;
}

// One and a half lines above the line before, a quarter line left of the tick.
static void label_step_up(LabelLine *line)
{
    uint32_t h = text_height;
    line->y -= (float)((3 * h) / 2);
    line->tx = line->x - (float)(h / 4);
}

bool label_next(LabelLine *line)
{
    if (line->stage == 0) {
        free(line->owned);
        line->owned = nullptr;
        if (line->rows < notation_rows.count) {
            line->owned = label_text(line->r.ordlo, *notation_row(line->rows));
            line->text = line->owned;
            line->rows++;
            line->colour = 0xffffff;
            label_step_up(line);
            return true;
        }
        line->stage = 1;
        // names are recognised by the text with every toggle on, whatever the
        // rows say; a text longer than any name is cut short unread
        bool cut;
        char *s = Ord_tostring_limit(line->r.ordlo, &new_row_template, NAMED_TEXT_MAX + 1, &cut);
        const char *name = named_ordinal_find(s);
        free(s);
        if (name) {
            font_select("legend");
            line->text = name;
            line->colour = 0x808080;
            label_step_up(line);
            return true;
        }
    }
    if (line->stage == 1) {
        line->stage = 2;
        line->text = nullptr;
        font_select("normal");
    }
    return false;
}
