// Text markup: the Greek pass, the script pass and the item walk.
#include "support/bitmapfonts/markup.h"

#include <ctype.h>
#include <stdlib.h>
#include <string.h>

#include "support/bitmapfonts/font_registry.h"
#include "support/report/report.h"

// The 24 lower-case names, tried in this order; code = 256 + place.
static const char *const greek_names[24] = {
    "alpha", "beta", "gamma",   "delta", "epsilon", "zeta", "eta",     "theta",
    "iota",  "kappa", "lambda", "mu",    "nu",      "xi",   "omicron", "pi",
    "rho",   "sigma", "tau",    "upsilon", "phi",   "chi",  "psi",     "omega"};
// Variant forms, tried after the 24 at the position they leave; no capitals.
static const char *const variant_names[5] = {"varomega", "varphi", "vartheta", "varzeta",
                                             "vardelta"};
static const uint16_t variant_codes[5] = {308, 307, 306, 305, 304};

// Item lengths of expanded text.
enum : uint8_t { ITEM_GLYPH = 0x02, ITEM_CONTROL = 0x05 };

// Length of name if it is a prefix of text without regard to ASCII case, else 0.
static size_t name_at(const char *text, const char *name)
{
    size_t i = 0;
    for (; name[i]; i++) {
        unsigned char c = (unsigned char)text[i];
        if (c >= 'A' && c <= 'Z')
            c = (unsigned char)(c + 32);
        if (c != (unsigned char)name[i])
            return 0;
    }
    return i;
}

// Writes the glyph escape of code at out.
static void put_glyph_escape(char *out, uint32_t code)
{
    out[0] = ITEM_GLYPH;
    out[1] = (char)(code >> 8);
    out[2] = (char)(code & 0xFF);
}

// The Greek name or variant at text: its length and glyph code, or 0. The 24
// names are tried in order, then the variants; the first letter alone decides
// the case.
static size_t greek_at(const char *text, uint32_t *code)
{
    unsigned char c = (unsigned char)text[0] | 0x20;
    if (c < 'a' || c > 'z')
        return 0;
    for (uint32_t n = 0; n < 24; n++) {
        if ((unsigned char)greek_names[n][0] != c)
            continue;
        size_t len = name_at(text, greek_names[n]);
        if (len) {
            *code = 256 + n + ((signed char)text[0] <= 0x60 ? 24 : 0);
            return len;
        }
    }
    for (uint32_t v = 0; v < 5; v++) {
        size_t len = name_at(text, variant_names[v]);
        if (len) {
            *code = variant_codes[v];
            return len;
        }
    }
    return 0;
}

char *greek_expand(char *text)
{
    // One pass into a scratch copy, then back: names are at least two bytes
    // and escapes three, so the text grows by half at most, and shifting the
    // rest at every name would cost the square of a long label.
    static char *scratch;
    static size_t scratch_size;
    size_t length = strlen(text);
    size_t need = length + length / 2 + 1;
    if (need > scratch_size) {
        free(scratch);
        scratch = (char *)malloc(need);
        if (!scratch)
            REPORT(REPORT_FATAL, "Out of memory for text markup", 0);
        scratch_size = need;
    }
    size_t out = 0;
    for (size_t i = 0; i < length;) {
        uint32_t code;
        size_t len = greek_at(text + i, &code);
        if (len) {
            put_glyph_escape(scratch + out, code);
            out += 3;
            i += len;
        } else {
            scratch[out++] = text[i++];
        }
    }
    memcpy(text, scratch, out);
    text[out] = 0;
    return text;
}

const char *text_end(const char *text)
{
    while (*text) {
        if (*text == ITEM_GLYPH)
            text += 3;
        else if (*text == ITEM_CONTROL)
            text += 6;
        else
            text++;
    }
    return text;
}

size_t text_size(const char *text)
{
    return (size_t)(text_end(text) - text) + 1;
}

char *text_end(char *text)
{
    return const_cast<char *>(text_end(static_cast<const char *>(text)));
}

// ---- script_expand ----------------------------------------------------------

// The growing output of one script_expand call; cut to the caller's capacity
// only at the end, so nested groups never need a bound of their own.
struct ScriptOut {
    char *data;
    size_t len;
    size_t cap;
};

static void out_put(ScriptOut *out, const char *bytes, size_t n)
{
    if (out->len + n > out->cap) {
        out->cap = (out->len + n) * 2;
        out->data = (char *)realloc(out->data, out->cap);
        if (!out->data)
            REPORT(REPORT_FATAL, "Out of memory for text markup", 0);
    }
    memcpy(out->data + out->len, bytes, n);
    out->len += n;
}

// A glyph escape of the source; one cut short by the end of its range is
// completed with zero bytes, as the end byte of a copy would complete it.
static void out_glyph_escape(ScriptOut *out, const char *src, size_t avail)
{
    char item[3] = {0, 0, 0};
    memcpy(item, src, avail < 3 ? avail : 3);
    out_put(out, item, 3);
}

// Control escape of kind 2: size in 1/256 of full size, offset in 1/256 of the line height.
static void out_script_state(ScriptOut *out, int16_t size, int16_t offset)
{
    uint16_t u = (uint16_t)size, v = (uint16_t)offset;
    char item[6] = {ITEM_CONTROL, 2, (char)(u & 0xFF), (char)(u >> 8), (char)(v & 0xFF),
                    (char)(v >> 8)};
    out_put(out, item, 6);
}

// Source bytes taken as they stand, escapes whole.
static void out_verbatim(ScriptOut *out, const char *src, size_t n)
{
    for (size_t i = 0; i < n;) {
        if (src[i] == ITEM_GLYPH) {
            out_glyph_escape(out, src + i, n - i);
            i += 3;
        } else {
            out_put(out, src + i, 1);
            i++;
        }
    }
}

static int16_t clamp_i16(double v)
{
    if (v > 32767.0) return 32767;
    if (v < -32768.0) return -32768;
    return (int16_t)v;
}

int16_t script_size_below(int16_t s)
{
    int32_t f = 255;
    if (text_height > 0) {
        double floor_size = 3072.0 / text_height + 0.5;
        if (floor_size < 255.0)
            f = (int32_t)floor_size;
    }
    int16_t g = clamp_i16(s * 1792.0 / (s * 3.0 + 1792.0) + 0.5);
    return g > f ? g : (int16_t)f;
}

// End of the group whose "{" is at open: the matching "}", or, for a group
// that is never closed, the last byte of the range.
static size_t group_close(const char *src, size_t n, size_t open)
{
    uint32_t depth = 1;
    size_t p = open + 1;
    while (p < n) {
        if (src[p] == ITEM_GLYPH) {
            p += 3;
            continue;
        }
        if (src[p] == '{')
            depth++;
        else if (src[p] == '}' && --depth == 0)
            return p;
        p++;
    }
    return n - 1;
}

// Expands the n bytes at src into out, at a level of size s and offset b.
static void script_expand_range(const char *src, size_t n, int32_t levels, int16_t b, int16_t s,
                                ScriptOut *out)
{
    int16_t t = script_size_below(s);
    // half the height lost: boxes hang from the top, and the 0.3 shift holds between centres
    float d = (float)(s - t) * 0.5f;

    size_t i = 0;
    while (i < n) {
        char c = src[i];
        if (c == ITEM_GLYPH) {
            out_glyph_escape(out, src + i, n - i);
            i += 3;
            continue;
        }
        if (c != '^' && c != '_') {
            out_put(out, src + i, 1);
            i++;
            continue;
        }
        size_t j = i + 1;
        if (j >= n) {
            // a mark with nothing behind it stays a plain character
            out_put(out, src + i, 1);
            break;
        }
        float shift = c == '^' ? 0.3f : -0.3f;
        int16_t y = (int16_t)(int32_t)((float)s * shift + (float)b - d);
        out_script_state(out, t, y);

        unsigned char next = (unsigned char)src[j];
        if (next == '{') {
            size_t close = group_close(src, n, j);
            size_t inside = close > j ? close - j - 1 : 0;
            if (levels - 1 == 0) {
                out_verbatim(out, src + j + 1, inside);
            } else {
                int32_t k = (int32_t)((float)s * shift - d);
                script_expand_range(src + j + 1, inside, levels - 1, (int16_t)(b + k), t, out);
            }
            out_script_state(out, s, b);
            i = close > j ? close + 1 : j + 1;
            continue;
        }
        // without braces the script is one run of a kind: letters, digits, glyph escapes
        size_t e = j + 1;
        if (isalpha(next)) {
            while (e < n && isalpha((unsigned char)src[e]))
                e++;
        } else if (isdigit(next)) {
            while (e < n && isdigit((unsigned char)src[e]))
                e++;
        } else if (next == ITEM_GLYPH) {
            e = j;
            while (e < n && src[e] == ITEM_GLYPH)
                e += 3;
            if (e > n)
                e = n;
        }
        out_verbatim(out, src + j, e - j);
        out_script_state(out, s, b);
        i = e;
    }
}

// Length of the text as the scan steps over it: escapes of glyphs whole, all else by byte.
static size_t script_scan_length(const char *text)
{
    size_t i = 0;
    while (text[i])
        i += text[i] == ITEM_GLYPH ? 3 : 1;
    return i;
}

void script_expand(char *text, int32_t levels, int16_t offset, int16_t size, size_t capacity)
{
    if (capacity == 0)
        capacity = MARKUP_CAPACITY(text_end(text) - text);
    size_t n = script_scan_length(text);
    ScriptOut out = {nullptr, 0, 2 * n + 64};
    out.data = (char *)malloc(out.cap);
    if (!out.data)
        REPORT(REPORT_FATAL, "Out of memory for text markup", 0);
    script_expand_range(text, n, levels, offset, size, &out);

    // keep the whole items that fit before the end byte
    size_t cut = 0;
    while (cut < out.len) {
        char c = out.data[cut];
        size_t step = c == ITEM_GLYPH ? 3 : c == ITEM_CONTROL ? 6 : 1;
        if (c == 0 || cut + step > out.len || cut + step + 1 > capacity)
            break;
        cut += step;
    }
    memcpy(text, out.data, cut);
    text[cut] = 0;
    free(out.data);
}
