// The views that ordtool line and ordtool bench walk: the first view of a
// window, optionally panned to a point and zoomed about the centre column
// through the viewer's own update.
#pragma once

#include <stdint.h>

#include "PlotSegment2/segment.h"

struct ViewSetup {
    double width;     // window width in pixels
    double minsize;   // stop size of the pass
    bool zoomed;      // pan to zoom_at, then zoom
    double zoom_at;   // pixel of the first view brought to the centre column
    double factor;    // zoom factor of each step
    double steps;     // number of zoom steps
};

// Sets screen_w (and a 4:3 screen_h) and returns the walk record of the view;
// the caller frees xlo and xhi.
WalkRecord view_setup_record(const ViewSetup *setup);
