// Fitting markup into a width: the walk over a source, and the cuts made from it.
#include "support/bitmapfonts/markup_fit.h"

#include <ctype.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/report/report.h"

// Script levels with a size of their own; deeper ones repeat the last, which
// the floor reaches long before (47 levels at the smallest font).
constexpr int32_t FIT_LEVELS = 64;

enum FitItemKind : uint32_t {
    FIT_END,
    FIT_GLYPH,  // a glyph, its advance added to the pen
    FIT_CUT,    // a point where the source may be cut
};

enum FitCutKind : uint32_t {
    CUT_TERM,   // after "+" or "(": a line may break here
    CUT_GROUP,  // just inside the opening of a braced script
    CUT_BLANK,  // before a blank of plain text
};

struct FitItem {
    FitItemKind kind;
    FitCutKind cut;
    size_t keep;     // FIT_CUT: bytes of the source kept before the cut
    int32_t depth;   // script level of the glyph, or of what follows the cut
    uint32_t open;   // FIT_CUT: braced groups open at the cut
    float width;     // the pen after the glyph, or at the cut
};

// The state of one walk over a source.
struct FitWalk {
    const char *src;
    size_t i;            // next byte
    int32_t depth;       // script level of the next glyph
    size_t run_end;      // end of a script run without braces; 0 outside one
    size_t pending;      // a cut after the last glyph is due here; 0 for none
    size_t blank_at;     // the blank here had its cut given; SIZE_MAX for none
    uint32_t open;       // braced groups open
    float width;         // the pen, pixels
    float scale[FIT_LEVELS];  // horizontal scale of each level
    float sp;            // letter spacing, taken once as text_width does
    double g;            // 1 + boldness
};

static void fit_start(FitWalk *w, const char *src)
{
    w->src = src;
    w->i = 0;
    w->depth = 0;
    w->run_end = 0;
    w->pending = 0;
    w->blank_at = SIZE_MAX;
    w->open = 0;
    w->width = 0.0f;
    // as text_width: the spacing stays the line's, scripts change only the scale
    w->sp = (float)text_height * text_spacing;
    w->g = current_font ? 1.0 + current_font->boldness : 1.0;
    int16_t size = 256;
    for (int32_t k = 0; k < FIT_LEVELS; k++) {
        w->scale[k] = current_font ? (float)((uint32_t)size * 0.00390625) * current_font->scale_x : 0.0f;
        size = script_size_below(size);
    }
}

static float fit_advance(const FitWalk *w, uint32_t code, int32_t depth)
{
    if (!current_font || code == 10 || code >= FONT_CODES)
        return 0.0f;
    float s = w->scale[depth < FIT_LEVELS ? depth : FIT_LEVELS - 1];
    float scaled = (float)current_font->parent->glyph_w[code] * s;
    return (float)trunc((double)scaled * w->g + (0.5 + w->sp));
}

// Width of the ellipsis at a level.
static float fit_ellipsis(const FitWalk *w, int32_t depth)
{
    return 3.0f * fit_advance(w, '.', depth);
}

// End of the run that a mark without braces raises, as the script pass takes
// it: letters, digits or glyph escapes that follow, or else one byte.
static size_t fit_run_end(const char *src, size_t j)
{
    unsigned char next = (unsigned char)src[j];
    size_t e = j + 1;
    if (isalpha(next)) {
        while (isalpha((unsigned char)src[e]))
            e++;
    } else if (isdigit(next)) {
        while (isdigit((unsigned char)src[e]))
            e++;
    } else if (next == 0x02) {
        e = j;
        while (src[e] == 0x02)
            e += 3;
    }
    return e;
}

static FitItem fit_cut(const FitWalk *w, FitCutKind kind, size_t keep)
{
    return FitItem{FIT_CUT, kind, keep, w->depth, w->open, w->width};
}

static FitItem fit_next(FitWalk *w)
{
    const char *src = w->src;
    if (w->pending) {
        size_t keep = w->pending;
        w->pending = 0;
        return fit_cut(w, CUT_TERM, keep);
    }
    for (;;) {
        if (w->run_end && w->i >= w->run_end) {
            w->run_end = 0;
            w->depth--;
        }
        size_t i = w->i;
        unsigned char c = (unsigned char)src[i];
        if (c == 0)
            return FitItem{FIT_END, CUT_TERM, i, w->depth, w->open, w->width};
        uint32_t code = c;
        size_t step = 1;
        if (c == 0x02) {
            code = (uint32_t)(unsigned char)src[i + 1] * 256 + (unsigned char)src[i + 2];
            step = 3;
        } else if (!w->run_end && (c == '^' || c == '_') && src[i + 1] != 0) {
            w->depth++;
            if (src[i + 1] == '{') {
                w->open++;
                w->i = i + 2;
                return fit_cut(w, CUT_GROUP, w->i);
            }
            w->run_end = fit_run_end(src, i + 1);
            w->i = i + 1;
            continue;
        } else if (!w->run_end && c == '}' && w->open > 0) {
            w->open--;
            w->depth--;
            w->i = i + 1;
            continue;
        } else if (!w->run_end && c == ' ' && w->blank_at != i) {
            w->blank_at = i;
            return fit_cut(w, CUT_BLANK, i);
        }
        w->width += fit_advance(w, code, w->depth);
        w->i = i + step;
        if (!w->run_end && (c == '+' || c == '('))
            w->pending = w->i;
        return FitItem{FIT_GLYPH, CUT_TERM, w->i, w->depth, w->open, w->width};
    }
}

// Writes the ellipsis and `open` closing braces at byte `at`, and the end.
static void fit_close(char *source, size_t capacity, size_t at, bool ellipsis, uint32_t open)
{
    size_t need = at + (ellipsis ? 3 : 0) + open + 1;
    if (need > capacity)
        REPORT(REPORT_FATAL, "A cut text does not fit its buffer", 0);
    char *p = source + at;
    if (ellipsis) {
        memcpy(p, MARKUP_ELLIPSIS, 3);
        p += 3;
    }
    memset(p, '}', open);
    p[open] = 0;
}

// The braced groups open before byte `at`: their count, and their marks
// outermost first into `marks` when it is given (room for one per byte).
static uint32_t open_marks(const char *source, size_t at, char *marks)
{
    uint32_t open = 0;
    for (size_t i = 0; i < at && source[i];) {
        char c = source[i];
        if (c == 0x02) {
            i += 3;
        } else if ((c == '^' || c == '_') && source[i + 1] == '{') {
            if (marks)
                marks[open] = c;
            open++;
            i += 2;
        } else {
            if (c == '}' && open > 0)
                open--;
            i++;
        }
    }
    return open;
}

float markup_width(const char *source)
{
    FitWalk w;
    fit_start(&w, source);
    for (FitItem item = fit_next(&w); item.kind != FIT_END; item = fit_next(&w)) {
    }
    return w.width;
}

bool markup_elide(char *source, size_t capacity, float max_width, bool cut_short)
{
    FitWalk w;
    fit_start(&w, source);
    FitItem best = {FIT_CUT, CUT_TERM, 0, 0, 0, 0.0f};
    for (;;) {
        FitItem item = fit_next(&w);
        if (item.kind == FIT_END) {
            if (!cut_short && item.width <= max_width)
                return false;
            break;
        }
        // the pen only grows: past the width no later cut can fit
        if (item.width > max_width)
            break;
        if (item.kind == FIT_CUT && item.width + fit_ellipsis(&w, item.depth) <= max_width)
            best = item;
    }
    fit_close(source, capacity, best.keep, true, best.open);
    return true;
}

int32_t markup_floor_depth()
{
    int16_t size = 256;
    for (int32_t k = 0; k < FIT_LEVELS; k++) {
        int16_t below = script_size_below(size);
        if (below >= size)
            return k;
        size = below;
    }
    return FIT_LEVELS;
}

bool markup_elide_depth(char *source, size_t capacity, int32_t depth)
{
    size_t length = (size_t)(text_end(source) - source);
    char *out = (char *)malloc(MARKUP_CAPACITY(length));
    if (!out)
        REPORT(REPORT_FATAL, "Out of memory for a text", 0);
    size_t o = 0;
    int32_t level = 0;
    bool replaced = false;
    for (size_t i = 0; i < length;) {
        char c = source[i];
        if (c == 0x02) {
            memcpy(out + o, source + i, 3);
            o += 3;
            i += 3;
            continue;
        }
        if ((c == '^' || c == '_') && source[i + 1] == '{') {
            if (level + 1 <= depth) {
                level++;
                memcpy(out + o, source + i, 2);
                o += 2;
                i += 2;
                continue;
            }
            // the whole group, nested braces and all, gives way to the ellipsis
            size_t j = i + 2;
            for (uint32_t open = 1; j < length && open > 0; j++) {
                if (source[j] == 0x02)
                    j += 2;
                else if (source[j] == '{')
                    open++;
                else if (source[j] == '}')
                    open--;
            }
            out[o++] = c;
            memcpy(out + o, "{" MARKUP_ELLIPSIS "}", 5);
            o += 5;
            i = j;
            replaced = true;
            continue;
        }
        if (c == '}' && level > 0)
            level--;
        out[o++] = c;
        i++;
    }
    if (o + 1 > capacity)
        REPORT(REPORT_FATAL, "A cut text does not fit its buffer", 0);
    memcpy(source, out, o);
    source[o] = 0;
    free(out);
    return replaced;
}

size_t markup_break(const char *source, float max_width)
{
    FitWalk w;
    fit_start(&w, source);
    size_t best = 0;
    for (FitItem item = fit_next(&w); item.kind != FIT_END && item.width <= max_width;
         item = fit_next(&w)) {
        if (item.kind == FIT_CUT && item.cut == CUT_TERM)
            best = item.keep;
    }
    return best;
}

void markup_head(char *source, size_t capacity, size_t at)
{
    fit_close(source, capacity, at, false, open_marks(source, at, nullptr));
}

char *markup_tail(const char *source, size_t at)
{
    size_t length = (size_t)(text_end(source) - source);
    char *marks = (char *)malloc(length + 1);
    if (!marks)
        REPORT(REPORT_FATAL, "Out of memory for a text", 0);
    size_t open = open_marks(source, at, marks);
    char *tail = (char *)malloc(2 * open + (length - at) + 1);
    if (!tail)
        REPORT(REPORT_FATAL, "Out of memory for a text", 0);
    for (size_t k = 0; k < open; k++) {
        tail[2 * k] = marks[k];
        tail[2 * k + 1] = '{';
    }
    memcpy(tail + 2 * open, source + at, length - at);
    tail[2 * open + (length - at)] = 0;
    free(marks);
    return tail;
}

bool text_has_markup(const char *expanded)
{
    for (size_t i = 0;;) {
        TextItem item = text_item(expanded + i, SIZE_MAX);
        if (item.kind == TEXT_ITEM_END)
            return false;
        i += item.length;
        if (item.kind == TEXT_ITEM_GLYPH && item.length == 1 &&
            (item.code == '^' || item.code == '_' || item.code == '{' || item.code == '}'))
            return true;
    }
}
