// The zoom depth read-out.
#include "ord/depth_readout.h"

#include <math.h>
#include <stdio.h>

#include "PlotSegment2/segment.h"
#include "ord/navigation.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/text_boxes.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/screen.h"

// Colour of the read-out: the blue-grey of the frame-rate read-out, dimmer.
constexpr uint32_t DEPTH_COLOUR = 0x9090c0;

double view_depth(Bignum view_lo, Bignum view_hi)
{
    Bignum first_lo, first_hi;
    view_first_ends(&first_lo, &first_hi);
    Bignum first = Bignum_lincomb(first_hi, first_lo, 1.0, -1.0);
    Bignum span = Bignum_lincomb(view_hi, view_lo, 1.0, -1.0);
    double depth = (Bignum_log(span) - Bignum_log(first)) / log(10.0);
    Bignum_free(span);
    Bignum_free(first);
    Bignum_free(first_lo);
    Bignum_free(first_hi);
    return depth;
}

// The expanded text of the read-out into buffer, in the font "legend", and
// its place: the top left of the window, where the line stands lowest at every
// zoom, reserved so the labels keep clear of it.
static float depth_text(Bignum view_lo, Bignum view_hi, char *buffer, size_t size)
{
    // room for the script escapes: three times the text and more
    double depth = view_depth(view_lo, view_hi);
    if (fabs(depth) < 0.05)
        depth = 0;  // home reads 10^0.0, not -0.0
    // tenths while they say something, whole decades beyond
    int n = fabs(depth) < 100 ? snprintf(buffer, size, "zoom \xD7" "10^{%.1f}", depth)
                              : snprintf(buffer, size, "zoom \xD7" "10^{%.0f}", depth);
    if (segment_depth_limit >= 0 && n > 0 && (size_t)n < size)
        snprintf(buffer + n, size - (size_t)n, "   depth limit %d", segment_depth_limit);
    font_select("legend");
    // the buffer holds the expansion: scripts need three times the text
    script_expand(buffer, -1, 0, 256, size);
    float width = text_width(buffer);
    return width;
}

void depth_readout_reserve(Bignum view_lo, Bignum view_hi)
{
    char buffer[256];
    float width = depth_text(view_lo, view_hi, buffer, sizeof buffer);
    text_box_add(BOX_DEPTH, TextBox{0.0f, 0.0f, width + 2.0f, (float)text_height}, buffer);
    font_select("normal");
}

void depth_readout(Bignum view_lo, Bignum view_hi)
{
    char buffer[256];
    depth_text(view_lo, view_hi, buffer, sizeof buffer);
    text_put(buffer, DEPTH_COLOUR, 0.0f, 0.0f);
    font_select("normal");
}
