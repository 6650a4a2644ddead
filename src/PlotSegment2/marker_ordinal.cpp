// The ordinal under the centre marker.
#include "PlotSegment2/marker_ordinal.h"

#include "PlotSegment2/centre_readout.h"
#include "PlotSegment2/tick_walk.h"

bool marker_ordinal(float cx, WalkRecord r, Ord *out)
{
    // the read-out pass's own view: the marker's column alone
    WalkRecord column = r;
    column.minsize = 1.0f;
    column.left = cx;
    column.right = cx + 1.0f;
    centre_dist = CENTRE_NONE;
    centre_too_deep = false;
    centre_ord = Ord_zero();
    centre_life = 0;
    walk_line(centre_pick, column);
    bool picked = (double)centre_dist < 1e20;
    *out = picked ? centre_ord : Ord_zero();
    if (!picked)
        Ord_free(centre_ord);
    centre_ord = Ord_zero();
    return picked;
}
