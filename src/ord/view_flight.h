// The go-to flight: a smooth zoom from the view on screen to a located view,
// its depth changing at a steady rate in decades per second.
//
// A view is an affine image of the line, so the flight is a family of zooms.
// When the target lies far outside the window the flight first zooms out
// about the centre column until it is within 0.4 of the width (the leg out);
// then it zooms about the target's pixel toward the target view while that
// pixel glides to the centre column (the leg in). Each frame's view is made
// anew from exact decimals: the leg out from the view the flight left, the
// leg in from the target view, so no rounding builds up from frame to frame,
// and the last frame is the target view itself. Each frame rebuilds the line
// as a key zoom does; nothing is walked twice.
//
// Memory: the flight owns copies of what it needs (decimals and the target's
// Bignums) until it ends or is stopped. flight_step frees the caller's old
// view and hands back new numbers the caller owns.
#pragma once

#include <stdint.h>

#include "support/bignum/bignum.h"
#include "support/bignum/decimal.h"

// Longest flight in seconds, and the least rate (decades of zoom per second,
// about the key zoom with Shift) below which it takes less time.
constexpr double FLIGHT_MAX_SECONDS = 3.0;
constexpr double FLIGHT_MIN_RATE = 4.0;
// Shortest flight, so that a move with little zoom still glides.
constexpr double FLIGHT_MIN_SECONDS = 0.5;
// How far from the centre column (in widths) the target may be when the leg in begins.
constexpr double FLIGHT_IN_REACH = 0.4;

// Starts a flight from the view (lo, hi) to the view that shows the first
// view's point `centre` at `column`, magnified 10^K (a located view, see
// PlotSegment2/locate.h); line_lo and line_hi are the ends of the line in the
// first view, `width` the window's width. Replaces any flight in progress.
void flight_start(Bignum lo, Bignum hi, Decimal line_lo, Decimal line_hi, Decimal centre,
                  int64_t K, int32_t column, int32_t width);
// True while a flight is under way.
bool flight_active();
// Seconds the flight under way takes in all, and its zoom in decades (out and in).
double flight_seconds();
double flight_decades();
// Advances the flight by dt seconds and puts its view in place of *lo and
// *hi; the last step puts the target view exactly and ends the flight.
void flight_step(double dt, Bignum *lo, Bignum *hi);
// Stops a flight where it stands (the user took over) and frees its state.
void flight_stop();
