// The boxes of the texts a frame puts on the screen: each text placed later
// keeps clear of those placed before it, and a test can be told where every
// text stands.
//
// A frame clears the list first, then the fixed texts (panel, read-outs,
// legend) add their boxes before the labels are placed around them. The list
// is a global DynArray whose storage lives until the program ends.
#pragma once

#include <stdint.h>

#include "support/dynarray/dynarray.h"

// A rectangle in window pixels, y down; x1 and y1 lie just past it, so boxes
// that only touch do not overlap.
struct TextBox {
    float x0, y0, x1, y1;
};

enum TextBoxKind : uint32_t {
    BOX_LABEL,    // a line of a label above a tick
    BOX_READOUT,  // the centre read-out and the line above it
    BOX_LEGEND,   // the legend of the tick colours
    BOX_PANEL,    // the notation rows and their add line
    BOX_STATUS,   // the frame rate and the arena read-out
    BOX_DEPTH,    // the zoom depth at the top left
    BOX_KINDS,
};

struct PlacedBox {
    TextBox box;
    TextBoxKind kind;
    bool raw;  // its text held raw markup (never, if all is well)
};

// This frame's boxes in the order placed; elements are PlacedBox.
extern DynArray text_boxes;

// Whether two boxes share any pixel.
bool text_box_overlap(TextBox a, TextBox b);
// Empties the list (makes it on the first call).
void text_boxes_clear();
// Adds a box; text, when given, is the expanded text drawn in it.
void text_box_add(TextBoxKind kind, TextBox box, const char *text);
// Whether box is clear of every box added so far.
bool text_box_clear_of_all(TextBox box);
