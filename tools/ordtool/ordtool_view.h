// The views that ordtool line, render, bench and locate walk, and their
// options: the first view of a window, moved and magnified either through
// the viewer's own update (--zoom-at X --factor F --steps K) or to an exact
// position (--centre P --zoom Z).
#pragma once

#include <stdint.h>

#include "PlotSegment2/locate.h"
#include "PlotSegment2/segment.h"
#include "support/bignum/decimal.h"

// Most --steps. The steps themselves cost little; what costs is the walk of a
// deep view, with today's layout about a second at a zoom of 10^200 and twenty
// seconds and 2 GB at 10^1000 (2000 steps by 10 are 10^2000).
constexpr int64_t VIEW_MAX_STEPS = 2000;
// Most digits of --centre and of a decimal --zoom, and the largest K of
// --zoom 10^K.
constexpr int64_t VIEW_MAX_DIGITS = 250000;
constexpr int64_t VIEW_MAX_ZOOM_EXPONENT = LOCATE_MAX_ZOOM_EXPONENT;
// Largest --width and --height.
constexpr double VIEW_MAX_SIZE = 100000;

struct ViewSetup {
    double width;     // window width in pixels
    double minsize;   // stop size of the pass
    bool zoomed;      // pan to zoom_at, then zoom by steps
    double zoom_at;   // pixel of the first view brought to the centre column
    double factor;    // zoom factor of each step
    double steps;     // number of zoom steps
    bool by_position; // --centre and --zoom given: centre and zoom below
    Decimal centre;   // point of the first view at the centre column
    Decimal zoom;     // magnification against the first view, at least 1
    double height;    // window height; 0 for 3/4 of the width
};

// Takes argv[*i] (and its value) if it is a view option: --width, --minsize
// (when `minsize` is set), --height (when `height` is set), --centre, --zoom,
// --zoom-at, --factor, --steps. Returns 1 when taken (with *i on the value),
// 0 when argv[*i] is no view option, and -1 after printing a refusal.
int32_t view_option(int argc, char **argv, int *i, ViewSetup *setup, bool minsize, bool height);
// The checks that need all options (pairs given together, ranges); prints a
// refusal and returns false. `usage` ends the message.
bool view_options_check(ViewSetup *setup, const char *usage);

// Sets screen_w and screen_h and returns the walk record of the view; the
// caller frees xlo and xhi.
WalkRecord view_setup_record(const ViewSetup *setup);
// The first view of a window `width` wide, as exact decimals (pixel x of 0
// and of the top).
void view_first(double width, Decimal *lo, Decimal *hi);
