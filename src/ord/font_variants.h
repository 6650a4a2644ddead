// The four named fonts of the program, remade every frame from the window's
// size, so text follows the window without any resize handling.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Indices of the named fonts, in the order they are made. Where two have the
// same scale the later one serves both (font_resolve), so "normal" comes
// after "panel": it is the one selected between texts.
enum FontVariant : int32_t {
    FONT_PANEL = 0,   // the fixed texts: legend, notation panel, frame rate, arena
    FONT_NORMAL = 1,  // labels
    FONT_BIGGER = 2,  // the centre read-out
    FONT_LEGEND = 3,  // the grey names of named ordinals
    FONT_VARIANTS = 4,
};

// The name of a variant: "panel", "normal", "bigger" or "legend".
const char *font_variant_name(int32_t variant);

// The pixel scale of a variant in a window of width x height: constant below
// a height threshold, proportional above it, meeting without a step. The
// fixed texts ("panel") and the centre read-out ("bigger") are also never
// larger than their small scale per FONT_FULL_WIDTH pixels of width: they
// shrink with a window narrower than that (and with a tall, narrow one), so
// the line keeps its room and a notation row its width; the labels' fonts do
// not. A width of 0 or less means no window yet.
double font_variant_scale(int32_t variant, int32_t width, int32_t height);

// Windows at least this wide set the fixed texts at their full size.
constexpr int32_t FONT_FULL_WIDTH = 640;

// Deletes the four fonts if they exist, then makes them anew as clones of
// variants of "fullsize" at the scales of this height and of screen_w, and
// selects "normal". buffer is working space for the font requests.
void font_variants_rebuild(int32_t height, char *buffer, size_t size);
