// Font registry: parsing of font request texts, variants, selection.
#include "support/bitmapfonts/font_registry.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

// Every byte of a spec is a field, so a bytewise comparison is well defined.
static_assert(sizeof(FontSpec) == sizeof(Font *) + 6 * sizeof(uint32_t), "FontSpec has padding");

// 1 / ln 1.05: a scale 5 per cent off costs 1 point of score.
#define FONT_SCALE_COST 20.49593431428785

const FontSpec default_font_spec = {nullptr, 1.0f, 1.0f, 0.0f, 0.0f, 0, 0};

DynArray font_list;
Font **fonts = nullptr;
Font *current_font = nullptr;
FontSpec current_spec = {nullptr, 0.0f, 0.0f, 0.0f, 0.0f, 0, 0};
uint32_t text_height = 0;
uint32_t text_max_w = 0;
uint32_t text_cell_w = 0;

uint32_t (*font_texture_placeholder)() = nullptr;
void (*font_texture_delete)(uint32_t texture) = nullptr;
void (*font_texture_size)(uint32_t texture, uint32_t *w, uint32_t *h) = nullptr;

static uint32_t font_count()
{
    return fonts ? font_list.count : 0;
}

static char *copy_text(const char *text, size_t len)
{
    char *copy = (char *)malloc(len + 1);
    memcpy(copy, text, len);
    copy[len] = 0;
    return copy;
}

// The selected font's figures follow its root and its own scales.
static void font_set_figures(const Font *f)
{
    const Font *root = f->parent;
    text_height = (uint32_t)((float)root->height * f->scale_y);
    text_max_w = (uint32_t)((float)root->max_w * f->scale_x);
    text_cell_w = (uint32_t)((float)root->cell_w * f->scale_x);
}

static void font_make_current(Font *f)
{
    current_font = f;
    current_spec = font_spec_of(f);
    font_set_figures(f);
}

FontSpec font_spec_of(const Font *font)
{
    FontSpec spec = {font->parent, font->scale_x, font->scale_y, font->skew,
                     font->boldness, font->glyphs, 0};
    return spec;
}

bool FontSpec_equal(const FontSpec &a, const FontSpec &b)
{
    return memcmp(&a, &b, sizeof(FontSpec)) == 0;
}

void font_register(Font *font)
{
    if (!fonts) {
        DynArray_init(&font_list, sizeof(Font *), dyn_default_capacity);
        font_list.mirror = (void **)&fonts;
        fonts = (Font **)font_list.data;
    }
    DynArray_append(&font_list, &font);
    if (!current_font)
        font_make_current(font);
}

// Case-blind comparison of a name with the first len bytes of a text.
static bool name_equals(const char *name, const char *text, size_t len)
{
    return strlen(name) == len && strncasecmp(name, text, len) == 0;
}

int32_t font_exists(const char *name)
{
    size_t len = strcspn(name, ":");
    for (uint32_t i = 0; i < font_count(); i++)
        if (name_equals(fonts[i]->name, name, len))
            return 1;
    return 0;
}

Font *font_pick_random()
{
    uint32_t n = font_count();
    if (n == 0)
        return nullptr;
    double a = rand(), b = rand();
    const double k = 4.656612873077393e-10;  // 2^-31
    double v = (a * k + b) * (n * k);
    double i = floor(v);
    return fonts[i >= n ? n - 1 : (uint32_t)i];
}

// A 1 by 1 root font for a parse that finds no registry and no font at all.
static Font *font_make_placeholder(const char *name)
{
    Font *f = (Font *)calloc(1, sizeof(Font));
    f->texture = font_texture_placeholder ? font_texture_placeholder() : 0;
    f->glyph_w[0] = 1;
    f->tex_w = f->tex_h = 1;
    f->max_w = 1;
    f->height = 1;
    f->cell_w = f->glyph_w[67] + 1;
    f->name = copy_text(name, strlen(name));
    f->parent = f;
    f->scale_x = f->scale_y = 1.0f;
    f->glyphs = 1;
    font_register(f);
    return f;
}

// Applies one item "key" or "key=value" of a font request text.
static void font_parse_item(FontSpec *spec, const char *key, const char *value)
{
    // a key that takes a value and has none reads it as 0, like an unreadable one
    double v = strtod(value, nullptr);
    bool px = strstr(value, "px") != nullptr;
    bool percent = strchr(value, '%') != nullptr;
    bool degrees = strchr(value, '\xB0') != nullptr;
    double height = spec->parent ? spec->parent->height : 1.0;
    double max_w = spec->parent ? spec->parent->max_w : 1.0;

    if (!strcasecmp(key, "normal")) {
        Font *parent = spec->parent;
        *spec = default_font_spec;
        spec->parent = parent;
    } else if (!strcasecmp(key, "scale") || !strcasecmp(key, "size")) {
        if (px) {
            spec->scale_x = spec->scale_y = (float)(v / height);
        } else {
            double m = percent ? v / 100 : v;
            spec->scale_x = (float)(spec->scale_x * m);
            spec->scale_y = (float)(spec->scale_y * m);
        }
    } else if (!strcasecmp(key, "big")) {
        spec->scale_x = spec->scale_x * 1.5f;
        spec->scale_y = spec->scale_y * 1.5f;
    } else if (!strcasecmp(key, "small")) {
        spec->scale_x = (float)(spec->scale_x * 0.6666666666666666);
        spec->scale_y = (float)(spec->scale_y * 0.6666666666666666);
    } else if (!strcasecmp(key, "width") || !strcasecmp(key, "height")) {
        // the divisor of "px" is the line height for both, so sizes read alike
        float *scale = !strcasecmp(key, "width") ? &spec->scale_x : &spec->scale_y;
        if (px)
            *scale = (float)(v / height);
        else
            *scale = (float)(*scale * (percent ? v / 100 : v));
    } else if (!strcasecmp(key, "boldness")) {
        spec->boldness = (float)(spec->boldness + (px ? v / max_w : percent ? v / 100 : v));
    } else if (!strcasecmp(key, "demibold")) {
        spec->boldness = (float)(spec->boldness + 0.03);
    } else if (!strcasecmp(key, "bold")) {
        spec->boldness = (float)(spec->boldness + 0.05);
        spec->scale_x = (float)(spec->scale_x * 1.1);
    } else if (!strcasecmp(key, "black")) {
        spec->boldness = (float)(spec->boldness + 0.08);
        spec->scale_x = (float)(spec->scale_x * 1.2);
    } else if (!strcasecmp(key, "skew") || !strcasecmp(key, "angle")) {
        if (px)
            spec->skew = (float)(spec->skew + v / height);
        else if (degrees)
            spec->skew = (float)tan(v * 0.017453292519943295);
        else
            spec->skew = (float)(spec->skew + (percent ? v / 100 : v));
    } else if (!strcasecmp(key, "italic")) {
        spec->skew = (float)(spec->skew + 0.4);
    }
}

void font_parse(FontSpec *spec, const char *text)
{
    *spec = default_font_spec;
    size_t name_len = strcspn(text, ":");

    // a variant's own name holds ":", so only plain names are found here
    for (uint32_t i = 0; i < font_count(); i++) {
        if (name_equals(fonts[i]->name, text, name_len)) {
            *spec = font_spec_of(fonts[i]);
            break;
        }
    }
    if (!spec->parent) {
        if (current_font)
            spec->parent = current_font->parent;
        else if (font_count() > 0)
            spec->parent = font_pick_random()->parent;
    }
    if (font_count() == 0) {
        if (current_font)
            spec->parent = current_font->parent;
        else
            spec->parent = font_make_placeholder(text);
    }

    const char *field = text + name_len;
    while (*field == ':') {
        field++;
        size_t len = strcspn(field, ":");
        char *item = copy_text(field, len);
        char *eq = strchr(item, '=');
        const char *value = "";
        if (eq) {
            *eq = 0;
            value = eq + 1;
        }
        font_parse_item(spec, item, value);
        free(item);
        field += len;
    }
}

// Distance of one scale from another: the smaller of half a pixel on the
// given size and 5 per cent, each counting 1.
static double scale_cost(float want, float have, double size)
{
    double linear = fabs(2.0 * (double)(want - have) * size);
    double ratio = fabs(logf(want / have)) * FONT_SCALE_COST;
    return fmin(linear, ratio);
}

static char *name_append(char *name, const char *format, double value)
{
    char suffix[64];
    snprintf(suffix, sizeof suffix, format, value);
    size_t a = strlen(name), b = strlen(suffix);
    char *longer = (char *)malloc(a + b + 1);
    memcpy(longer, name, a);
    memcpy(longer + a, suffix, b + 1);
    free(name);
    return longer;
}

Font *font_resolve(FontSpec spec)
{
    if (!spec.parent)
        return current_font;  // no root asked for: nothing to measure against
    Font *best = nullptr, *base = nullptr;
    double best_score = 0.0, base_score = -1.0e20;
    for (uint32_t i = font_count(); i-- > 0;) {
        Font *f = fonts[i];
        double score = -1000.0;
        if (f->parent == spec.parent) {
            double a = scale_cost(spec.scale_x, f->scale_x, spec.parent->max_w);
            double b = scale_cost(spec.scale_y, f->scale_y, spec.parent->height);
            double c = (a + b) * 0.5;
            score = 1.0 - c -
                    (fabs((spec.boldness - f->boldness) * 50.0) + fabs((spec.skew - f->skew) * 20.0));
        }
        // strictly greater: of equal scores the higher index wins
        if (score > best_score) {
            best_score = score;
            best = f;
        }
        if (f->glyphs == FONT_CODES && score > base_score) {
            base_score = score;
            base = f;
        }
    }
    if (best)
        return best;

    Font *source = base ? base->parent : spec.parent;
    Font *v = font_clone(source);
    v->parent = spec.parent;
    v->glyphs = 0;
    v->scale_x = spec.scale_x;
    v->scale_y = spec.scale_y;
    v->skew = spec.skew;
    v->boldness = spec.boldness;
    // the variant's name reads as its own font request
    if (v->scale_x != 1.0f)
        v->name = name_append(v->name, ":width=%g", v->scale_x);
    if (v->scale_y != 1.0f)
        v->name = name_append(v->name, ":height=%g", v->scale_y);
    if (v->boldness != 0.0f)
        v->name = name_append(v->name, ":boldness=%g", v->boldness);
    if (v->skew != 0.0f)
        v->name = name_append(v->name, ":skew=%g", v->skew);

    v->max_w = 0;
    for (uint32_t c = 0; c < FONT_CODES; c++)
        if (v->glyph_w[c] > v->max_w)
            v->max_w = v->glyph_w[c];
    if (font_texture_size)
        font_texture_size(v->texture, &v->tex_w, &v->tex_h);
    v->cell_w = v->glyph_w[67] + 1;
    return v;
}

Font *font_clone(const Font *font)
{
    Font *copy = (Font *)malloc(sizeof(Font));
    memcpy(copy, font, sizeof(Font));
    copy->name = copy_text(font->name, strlen(font->name));
    font_register(copy);
    return copy;
}

void font_delete(Font *font)
{
    bool shared = false;
    for (uint32_t i = font_count(); i-- > 0;)
        if (fonts[i] != font && fonts[i]->texture == font->texture)
            shared = true;
    if (!shared && font_texture_delete)
        font_texture_delete(font->texture);

    for (uint32_t i = font_count(); i-- > 0;) {
        if (fonts[i] == font) {
            DynArray_remove(&font_list, i);
            break;
        }
    }
    // the successor is picked once the font has left the list
    Font *next = font == current_font ? font_pick_random() : nullptr;
    bool was_current = font == current_font;
    bool same = next == font;
    free(font->name);
    free(font);
    if (!was_current)
        return;
    if (next && !same) {
        font_make_current(next);
    } else {
        // nothing left to select: keep no pointer to the freed font
        current_font = nullptr;
        current_spec = FontSpec{};
    }
}

void font_select(const char *name)
{
    if (current_font && !strcasecmp(current_font->name, name))
        return;
    FontSpec spec;
    font_parse(&spec, name);
    font_select_spec(spec);
}

void font_select_spec(FontSpec spec)
{
    if (FontSpec_equal(spec, current_spec))
        return;
    Font *f = font_resolve(spec);
    if (!f)
        return;
    if (f != current_font) {
        current_font = f;
        font_set_figures(f);
    }
    current_spec = spec;
}
