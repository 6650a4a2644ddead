// View history: Backspace goes back to the view before the last go-to, Home
// or long zoom or pan gesture, and Shift+Backspace forward again.
//
// The history is a list of views and a place in it, as a browser keeps
// pages. Recording a view (the one a move leaves) drops everything forward of
// the place and appends it; the place is then past the end, on the live view.
// Going back first stores the live view at the place (appending it when the
// place is past the end), so that forward returns to it, small moves made
// there included. Short moves (a tap of an arrow, a wheel pulse or two) are
// not recorded: a gesture counts when it is long (see gesture_step).
//
// Memory: the history owns copies of the views it keeps, freed as they drop
// out and by view_history_clear. The functions that change a view free the
// caller's old numbers and hand back new ones the caller owns.
#pragma once

#include <stdint.h>

#include "support/bignum/bignum.h"

// Views kept; the oldest drops out past this.
enum : uint32_t { VIEW_HISTORY_MAX = 64 };
// A gesture ends when no zoom or pan has acted for this long (seconds), so a
// burst of wheel pulses is one gesture.
constexpr double GESTURE_PAUSE = 0.3;
// A gesture is long when it acts for this long (seconds), ...
constexpr double GESTURE_LONG_SECONDS = 0.5;
// ... or zooms by this factor either way, or moves the line by a window width.
constexpr double GESTURE_LONG_ZOOM = 4.0;

// Records the view a move leaves (copied; the caller keeps its numbers).
void view_history_record(Bignum lo, Bignum hi);
// Back: the view before, in place of *lo and *hi; false (view unchanged) at
// the oldest. A gesture in progress is ended first.
bool view_history_back(Bignum *lo, Bignum *hi);
// Forward again; false (view unchanged) when there is nothing forward.
bool view_history_forward(Bignum *lo, Bignum *hi);
// Views kept, and the place (count when on the live view).
uint32_t view_history_count();
uint32_t view_history_place();
// Forgets every view and any gesture in progress.
void view_history_clear();

// One frame of gesture tracking, after the view update: `moved` tells whether
// keys, drag or wheel zoomed or panned this frame; lo and hi are the view
// before this frame's update. A gesture starts at the first moving frame and
// ends after GESTURE_PAUSE without one; a long one records its start view.
// `now_lo` and `now_hi` are the view after the update; screen_w is read.
void gesture_step(bool moved, double frame_dt, Bignum lo, Bignum hi, Bignum now_lo,
                  Bignum now_hi);
// Ends a gesture in progress now, recording it if it was long (before a
// go-to, Home or a step back, which record or move on their own).
void gesture_end(Bignum now_lo, Bignum now_hi);
