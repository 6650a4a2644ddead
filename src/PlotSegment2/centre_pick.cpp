// The read-out pass: the ordinal nearest the marker, and its text.
#include "PlotSegment2/centre_readout.h"

#include <math.h>
#include <stdlib.h>

#include "OrdBuchholz/expansion_cache.h"
#include "PlotSegment2/labels.h"
#include "PlotSegment2/marker_ordinal.h"
#include "PlotSegment2/tick_walk.h"
#include "notation/notation_rows.h"
#include "support/bignum/bignum.h"
#include "support/bitmapfonts/font_registry.h"

Ord centre_ord = {};
uint64_t centre_life = 0;
int32_t centre_member = 0;
float centre_dist = CENTRE_NONE;
bool centre_too_deep = false;
const char *const CENTRE_TOO_DEEP_TEXT = "too deep to draw in one frame";

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
    centre_life = expansion_cache_life(r.ordlo_entry);
    centre_member = r.ordlo_member;
}

char *centre_source(float cx, WalkRecord r, size_t *capacity)
{
    Ord picked;
    if (!marker_ordinal(cx, r, &picked))
        return nullptr;
    // scripts are sized for the font the read-out is drawn in
    font_select("bigger");
    char *source = label_source(picked, *notation_row(0), capacity, centre_life, centre_member);
    font_select("normal");
    Ord_free(picked);
    return source;
}

bool centre_text(float cx, WalkRecord r, float band_bottom, CentreText *out)
{
    size_t capacity = 0;
    char *source = centre_source(cx, r, &capacity);
    centre_layout(cx, r, band_bottom, source, capacity, centre_too_deep, out);
    free(source);
    return out->count > 0 || out->note;
}
