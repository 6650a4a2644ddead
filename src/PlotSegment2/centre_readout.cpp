// The centre read-out drawn where centre_text laid it out.
#include "PlotSegment2/centre_readout.h"

#include "PlotSegment2/tick_walk.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_draw.h"

void centre_readout_draw(const CentreText *t)
{
    if (t->note) {
        font_select("panel");
        text_put(t->note, TOO_DEEP_COLOUR, t->note_x, t->note_y);
    }
    font_select("bigger");
    for (uint32_t i = 0; i < t->count; i++)
        text_put(t->lines[i], 0xffffff, t->x, t->y[i]);
    font_select("normal");
}
