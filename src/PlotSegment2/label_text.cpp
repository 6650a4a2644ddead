// Label texts, cut to their room, and their places above the ticks.
#include "PlotSegment2/labels.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/expansion_cache.h"
#include "notation/named_ordinals.h"
#include "notation/notation_rows.h"
#include "support/bignum/bignum.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/markup_fit.h"
#include "support/gl/screen.h"
#include "support/report/report.h"

// Work space of label_text: room for the expansion of the longest text that
// is expanded at all.
static char label_buffer[MARKUP_CAPACITY(LABEL_TEXT_MAX)];

// The text of x into buf, Greek letters done: at most `limit` bytes are made,
// and a text that was longer ends at its last whole term in the ellipsis
// (the rest could never be read on the screen anyway). A member of a kept
// expansion (life not 0) is written once while its entry lives. Returns
// whether the text was cut.
static bool label_source_into(char *buf, size_t capacity, Ord x, NotationRow row,
                              uint64_t life, int32_t member, uint32_t limit)
{
    bool cut;
    const char *kept = label_memo_find(life, member, &row, limit, &cut);
    if (kept) {
        memcpy(buf, kept, text_size(kept));
    } else {
        char *s = Ord_tostring_limit(x, &row, limit, &cut);
        size_t length = strlen(s);
        memcpy(buf, s, length + 1);
        free(s);
        greek_expand(buf);
        label_memo_keep(life, member, &row, limit, buf, cut);
    }
    if (cut)
        markup_elide(buf, capacity, INFINITY, true);
    return cut;
}

// The source of a label line at most max_width wide, from only the first
// `limit` bytes of the text where they are enough: where what is kept of them
// is already wider than the line, eliding to the width cuts it where the
// whole text would be cut, so most labels of deep ordinals cost a small part
// of their LABEL_TEXT_MAX bytes. False, and buf undefined, otherwise.
static bool label_source_short(char *buf, size_t capacity, Ord x, NotationRow row,
                               uint64_t life, int32_t member, float max_width, uint32_t limit)
{
    if (!label_source_into(buf, capacity, x, row, life, member, limit))
        return true;
    // the cut source ends in an ellipsis as wide as this at the most
    return markup_width(buf) > max_width + markup_width(MARKUP_ELLIPSIS) + 1.0f;
}

char *label_source(Ord x, NotationRow row, size_t *capacity, uint64_t life, int32_t member)
{
    *capacity = sizeof label_buffer;
    char *buf = (char *)malloc(*capacity);
    if (!buf)
        REPORT(REPORT_FATAL, "Out of memory for a label", 0);
    label_source_into(buf, *capacity, x, row, life, member, LABEL_TEXT_MAX);
    return buf;
}

char *label_expand(char *source, size_t capacity)
{
    script_expand(source, -1, 0, 256, capacity);
    // escapes hold zero bytes: only text_end finds the end
    size_t size = text_size(source);
    char *text = (char *)malloc(size);
    if (!text)
        REPORT(REPORT_FATAL, "Out of memory for a label", 0);
    memcpy(text, source, size);
    return text;
}

// The label text of x, as label_text says, written once while the entry
// life lives.
static char *label_text_kept(Ord x, NotationRow row, float max_width, uint64_t life, int32_t member)
{
    // the heads first, each tried only where the one before was not enough
    static const uint32_t heads[] = {LABEL_HEAD_MAX, LABEL_SHORT_MAX};
    bool made = false;
    for (uint32_t limit : heads)
        if (!made && max_width > 0.0f)
            made = label_source_short(label_buffer, sizeof label_buffer, x, row, life, member,
                                      max_width, limit);
    if (!made)
        label_source_into(label_buffer, sizeof label_buffer, x, row, life, member, LABEL_TEXT_MAX);
    if (max_width > 0.0f)
        markup_elide(label_buffer, sizeof label_buffer, max_width, false);
    return label_expand(label_buffer, sizeof label_buffer);
}

char *label_text(Ord x, NotationRow row, float max_width)
{
    return label_text_kept(x, row, max_width, 0, 0);
}

char *label_record_text(WalkRecord r, NotationRow row, float max_width)
{
    return label_text_kept(r.ordlo, row, max_width, expansion_cache_life(r.ordlo_entry),
                           r.ordlo_member);
}

float label_room(float tx)
{
    float w = (float)screen_w;
    float room = w - tx;
    if (room < 0.25f * w)
        room = 0.25f * w;
    return room > w / 3.0f ? w / 3.0f : room;
}

bool label_start(WalkRecord r, LabelLine *line)
{
    if (Bignum_ltd(r.xlo, r.left) || Bignum_ged(r.xlo, r.right))
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
    line->name = false;
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
            label_step_up(line);
            line->owned = label_record_text(line->r, *notation_row(line->rows), label_room(line->tx));
            line->text = line->owned;
            line->rows++;
            line->colour = 0xffffff;
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
            line->name = true;
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
