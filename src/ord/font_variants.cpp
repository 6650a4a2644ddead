// The named fonts, remade every frame at the scales of the window height.
#include "ord/font_variants.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "support/bitmapfonts/font_registry.h"
#include "support/gl/screen.h"

struct FontVariantRule {
    const char *name;
    double small_scale;  // pixels, up to the threshold
    int32_t threshold;   // heights above this scale with the window
    double per_pixel;    // scale per pixel of height above it
    bool narrow_shrinks; // held to the width (FONT_FULL_WIDTH)
};

// 750 / 30 = 25, 600 / 12 = 50 and 750 / 50 = 15: the two rules of each
// font meet at its threshold. "panel" is "normal" for the fixed texts, so
// that they can shrink without changing the labels.
static const FontVariantRule font_variant_rules[FONT_VARIANTS] = {
    {"panel", 25.0, 749, 0.03333333333333333, true},
    {"normal", 25.0, 749, 0.03333333333333333, false},
    {"bigger", 50.0, 599, 0.08333333333333333, true},
    {"legend", 15.0, 749, 0.02, false},
};

const char *font_variant_name(int32_t variant)
{
    return font_variant_rules[variant].name;
}

double font_variant_scale(int32_t variant, int32_t width, int32_t height)
{
    const FontVariantRule *rule = &font_variant_rules[variant];
    double scale = height > rule->threshold ? height * rule->per_pixel : rule->small_scale;
    // no larger than the small scale per FONT_FULL_WIDTH pixels of width
    double narrow = rule->small_scale * width / FONT_FULL_WIDTH;
    if (rule->narrow_shrinks && width > 0 && narrow < scale)
        scale = narrow;
    return scale;
}

// The resolved font, or, when a variant of equal scale outranked it, the font
// of that name itself: deleting the variant instead would leave the old font
// behind in every frame.
static Font *font_named(Font *resolved, const char *name)
{
    if (resolved && strcmp(resolved->name, name) == 0)
        return resolved;
    for (uint32_t i = 0; i < font_list.count; i++)
        if (strcmp(fonts[i]->name, name) == 0)
            return fonts[i];
    return resolved;
}

void font_variants_rebuild(int32_t height, char *buffer, size_t size)
{
    // all go first, so a new clone never meets an old one of its name
    for (int32_t v = 0; v < FONT_VARIANTS; v++) {
        if (!font_exists(font_variant_rules[v].name))
            continue;
        FontSpec spec;
        font_parse(&spec, font_variant_rules[v].name);
        font_delete(font_named(font_resolve(spec), font_variant_rules[v].name));
    }
    for (int32_t v = 0; v < FONT_VARIANTS; v++) {
        snprintf(buffer, size, "fullsize:scale=%lfpx", font_variant_scale(v, screen_w, height));
        FontSpec spec;
        font_parse(&spec, buffer);
        // the variant found stays registered and serves the next frame
        Font *clone = font_clone(font_resolve(spec));
        free(clone->name);
        clone->name = strdup(font_variant_rules[v].name);
    }
    font_select("normal");
}
