// The read-out pass: the ordinal nearest the marker, and its text and place.
#include "PlotSegment2/centre_readout.h"

#include <math.h>
#include <stdlib.h>

#include "PlotSegment2/labels.h"
#include "PlotSegment2/tick_walk.h"
#include "ord/notation_rows.h"
#include "support/bignum/bignum.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/screen.h"

Ord centre_ord = {};
float centre_dist = CENTRE_NONE;
bool centre_too_deep = false;
const char *const CENTRE_TOO_DEEP_TEXT = "too deep: the line here needs more work than a frame allows";

// Positions further than about 10^16 pixels out read as "none" without being
// converted.
constexpr uint32_t CENTRE_MAX_LIMBS = 5;

void centre_pick(WalkRecord r)
{
    if (r.too_deep)
        centre_too_deep = true;
    double c = (double)(r.left + r.right) * 0.5;
    Bignum middle = Bignum_fromdouble(c);
    Bignum D = Bignum_lincomb(r.xlo, middle, 1.0, -1.0);
    Bignum_free(middle);
    float d = D.n > CENTRE_MAX_LIMBS ? CENTRE_NONE : fabsf((float)Bignum_todouble(D));
    Bignum_free(D);
    if (d >= centre_dist)
        return;
    centre_dist = d;
    Ord_free(centre_ord);  // nothing under the arena
    centre_ord = Ord_clone(r.ordlo);
}

float centre_text_x(float cx, float w)
{
    float x0 = (2.0f - (float)((3 * screen_w) / 8)) + cx;
    float x = (float)(screen_w - 1) - w;
    if (x0 < x)
        x = x0;
    return x < 0.0f ? 0.0f : x;
}

char *centre_text(float cx, WalkRecord r, float *x, float *y)
{
    // the view of this pass is the marker's column alone
    WalkRecord column = r;
    column.minsize = 1.0f;
    column.left = cx;
    column.right = cx + 1.0f;
    centre_dist = CENTRE_NONE;
    centre_too_deep = false;
    centre_ord = Ord_zero();
    walk_line(centre_pick, column);

    char *text = nullptr;
    if ((double)centre_dist < 1e20) {
        font_select("bigger");
        text = label_text_wrapped(centre_ord, *notation_row(0), true);
        *x = centre_text_x(cx, text_width(text));
        *y = (float)(0.78 * screen_h);
    }
    Ord_free(centre_ord);
    centre_ord = Ord_zero();
    return text;
}
