// The views that ordtool walks.
#include "tools/ordtool/ordtool_view.h"

#include "PlotSegment2/tick_walk.h"
#include "ord/navigation.h"
#include "support/gl/screen.h"

WalkRecord view_setup_record(const ViewSetup *setup)
{
    screen_w = (int32_t)setup->width;
    screen_h = screen_w * 3 / 4;
    Bignum lo, hi;
    double min_line_length;
    view_start(&lo, &hi, &min_line_length);
    if (setup->zoomed) {
        // as the arrow keys would: one update that only pans
        view_update(&lo, &hi, 1.0, (int32_t)(setup->zoom_at - setup->width / 2));
        for (int64_t i = 0; i < (int64_t)setup->steps; i++)
            view_update(&lo, &hi, setup->factor, 0);
    }
    WalkRecord r = {};
    r.xlo = lo;
    r.xhi = hi;
    r.minsize = (float)setup->minsize;
    walk_record_screen(&r);
    return r;
}
