// The centre read-out drawn: wrapped at the window's right and bottom edges.
#include "PlotSegment2/centre_readout.h"

#include <stdlib.h>

#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/gl/screen.h"

void centre_readout(float cx, WalkRecord r)
{
    float x, y;
    char *text = centre_text(cx, r, &x, &y);
    if (!text)
        return;
    text_begin();
    text_draw_bounded(text, 0xffffff, x, y, (float)screen_w, (float)screen_h);
    text_close();
    font_select("normal");
    free(text);
}
