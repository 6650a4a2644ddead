// The label pass's callback: the lines of a label drawn above its tick.
#include "PlotSegment2/labels.h"

#include "support/bitmapfonts/text_draw.h"

void label_draw(WalkRecord r)
{
    LabelLine line;
    if (!label_start(r, &line))
        return;
    while (label_next(&line))
        text_put(line.text, line.colour, line.tx, line.y);
}
