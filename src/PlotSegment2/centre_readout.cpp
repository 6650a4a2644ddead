// The centre read-out drawn: wrapped at the window's right and bottom edges.
#include "PlotSegment2/centre_readout.h"

#include <stdlib.h>

#include "PlotSegment2/tick_walk.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/gl/screen.h"

void centre_readout(float cx, WalkRecord r)
{
    float x, y;
    char *text = centre_text(cx, r, &x, &y);
    if (centre_too_deep) {
        // in "normal", a line above where the read-out stands
        font_select("normal");
        text_put(CENTRE_TOO_DEEP_TEXT, TOO_DEEP_COLOUR, text ? x : 0.0f, (float)(0.78 * screen_h) - 1.5f * text_height);
    }
    if (!text)
        return;
    font_select("bigger");
    text_begin();
    text_draw_bounded(text, 0xffffff, x, y, (float)screen_w, (float)screen_h);
    text_close();
    font_select("normal");
    free(text);
}
