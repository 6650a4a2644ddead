// The go-to field: G or / opens a line at the bottom of the window where the
// user types an ordinal in any notation the reader takes (and the names of
// the named ordinals); Enter flies the view there, Escape closes the field.
//
// While the field is open it has the keys (input_capture): they edit the
// text (Left, Right, Home, End, Backspace, Delete, Ctrl+V pastes) and none of
// them moves the view or leaves the program. Tab puts the named ordinals of
// the line into the field in turn (Shift+Tab backward), their names shown
// under it; Up brings back the text of the last go-to. A text that names
// no ordinal shows the reader's message under the field, the cursor at the
// place it names, and stays for correction.
// The view is located as ordtool locate does (PlotSegment2/locate.h), the
// view left is recorded in the history, and the flight (view_flight.h) goes.
#pragma once

#include "support/bignum/bignum.h"

// Whether the field is open.
bool goto_field_open();
// One frame: opens the field on a new press of G or /; while it is open,
// handles the events of the last pump, and on Enter starts the flight from
// the view (view_lo, view_hi), which stays the caller's.
void goto_field_update(Bignum view_lo, Bignum view_hi);
// Draws the field, when open, over the bottom of the window.
void goto_field_draw();
