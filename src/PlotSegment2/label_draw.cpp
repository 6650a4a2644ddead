// The labels kept by the placement, drawn.
#include "PlotSegment2/labels.h"

#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_draw.h"

void labels_draw()
{
    for (uint32_t i = 0; i < labels_kept(); i++) {
        const PlacedLabelLine *line = label_kept(i);
        font_select(line->name ? "legend" : "normal");
        text_put(line->text, line->colour, line->x, line->y);
    }
    font_select("normal");
    labels_discard();
}
