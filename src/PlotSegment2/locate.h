// Locating an ordinal: the view in which its tick stands at the centre column
// with the ticks before and after it at least LOCATE_ROOM pixels away.
//
// There is no formula from ordinal to place: the line is cut up by the
// fundamental sequences of the intervals' right ends. So locate follows the
// very intervals the tick walk builds (segment's weights, its skip of members
// at or below the left end, its first-child shares), from the whole line down
// to the interval whose left end is the ordinal, with the positions of the
// first view computed exactly as decimals; then it picks the zoom 10^K at
// which the neighbouring ticks are far enough: the member before it, and the
// first tick after it (the end of the chain of first children to its right,
// which can stand much nearer than the next member). ordtool locate and the
// window's go-to both ask here, so the two cannot disagree.
//
// Memory: the walk's expansions are its own and freed before it returns; the
// result's decimal belongs to the caller (decimal_free).
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"
#include "support/bignum/bignum.h"
#include "support/bignum/decimal.h"

// Largest K of a located view: past it the layout's positions outgrow what a
// frame can walk.
constexpr int64_t LOCATE_MAX_ZOOM_EXPONENT = 200000;
// Pixels wanted between the located tick and its neighbours.
constexpr int32_t LOCATE_ROOM = 100;

struct LocateResult {
    Decimal centre;         // point of the first view at the centre column, to K + 6 decimals
    int64_t zoom_exponent;  // K: the view is the first view magnified 10^K
    bool found;             // false: the walk stopped short, and the view is the
                            // deepest interval reached, whole in the window
    const char *note;       // why it stopped short (static text); null when found
};

// The view of `target` (an ordinal of the line, top and 0 included) for a
// window `width` pixels wide whose first view has the line from line_lo to
// line_hi. Costs two walks down the intervals, each an expansion per level.
LocateResult locate_ordinal(Ord target, Decimal line_lo, Decimal line_hi, double width);

// The ends of the view (pixel x of 0 and of the top, four decimals, rounded
// down) that shows the first view's point `centre` at pixel `column`,
// magnified `zoom` times: column + (end - centre) * zoom. The caller frees both.
void locate_view_ends(Decimal line_lo, Decimal line_hi, Decimal centre, Decimal zoom,
                      int32_t column, Bignum *lo, Bignum *hi);
