// Where the fixed texts stand: the legend at the top right, and the stack of
// the notation rows, the add line and the status line at the bottom left.
// Worked out from the window's size, the fonts and the rows alone, so the
// places are known before anything is drawn: the labels and the centre
// read-out keep clear of them.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "support/bitmapfonts/font_registry.h"

// The fixed texts of the bottom left this frame, from the bottom up: the
// notation rows, the add line, and the status line of the frame rate and the
// arena read-out. The stack keeps to the lower half of the window, so rows
// beyond that are not shown (they still label the ticks) and "Add " stops.
struct PanelLayout {
    uint32_t lh;       // line height of the font "panel", pixels
    uint32_t fit;      // rows the panel has room for, at least 1
    uint32_t shown;    // rows drawn
    int32_t add_y;     // top of the add line
    int32_t status_y;  // top of the status line, the top of the stack
};
// From the window's size and the rows; leaves "normal" selected.
PanelLayout panel_layout();

// The legend: at 3/4 of the width where it fits, moved left where it does
// not, and in a smaller font where it would take over half the width or
// half the height. Each line is a swatch of the kind's colour, then its name.
struct LegendLayout {
    FontSpec font;    // the font of the names: "panel", or smaller
    float x;          // left edge of the swatches
    float name_x;     // left edge of the names
    float swatch;     // side of a swatch, pixels
    float lh;         // line height
    float width;      // from x to the end of the longest name
};
// Measures with the font it chooses; leaves "normal" selected. buffer holds
// the Greek names while they are measured.
LegendLayout legend_layout(char *buffer, size_t size);

// The legend's names: the text, whether it names a Greek letter, its kind's colour.
constexpr uint32_t LEGEND_LINES = 10;
struct LegendLine {
    const char *text;
    bool greek;
    uint32_t colour;
};
extern const LegendLine legend_lines[LEGEND_LINES];
// The colour a name is written in: its kind's colour, lightened where that is
// too dark to read on black (the swatch keeps the colour itself).
uint32_t legend_name_colour(uint32_t colour);

// The expanded caption of toggle t with its spacing blank, into buffer.
void notation_caption(char *buffer, size_t size, int32_t toggle);

// Adds the places of the legend, the notation panel and the status line to
// text_boxes (the arena read-out's too when `arena` is set: M is held).
void panels_reserve(bool arena, char *buffer, size_t size);

// The status line, in the font "panel": the frame rate at its left, in a
// place as wide as the widest rate (status_fps_width pixels), then the arena
// read-out from status_arena_x on.
float status_fps_width(char *buffer, size_t size);
float status_arena_x(char *buffer, size_t size);
