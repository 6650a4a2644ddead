// The three named fonts of the program, remade every frame from the window
// height, so text follows the window without any resize handling.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Indices of the named fonts, in the order they are made.
enum FontVariant : int32_t {
    FONT_NORMAL = 0,  // panels, read-outs and labels
    FONT_BIGGER = 1,  // the centre read-out
    FONT_LEGEND = 2,  // the grey names of named ordinals
    FONT_VARIANTS = 3,
};

// The name of a variant: "normal", "bigger" or "legend".
const char *font_variant_name(int32_t variant);

// The pixel scale of a variant at a window height: constant below a
// threshold, proportional above it, meeting without a step.
double font_variant_scale(int32_t variant, int32_t height);

// Deletes the three fonts if they exist, then makes them anew as clones of
// variants of "fullsize" at the scales of this height, and selects "normal".
// buffer is working space for the font requests.
void font_variants_rebuild(int32_t height, char *buffer, size_t size);
