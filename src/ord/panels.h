// The two panels drawn over the line in every frame: the legend of the tick
// colours at the top right, and the notation rows at the bottom left, the
// program's only control. Panel texts are clicked, not widgets: drawing and
// hit test are one step, so a click shows on its text in the same frame.
// Both are set in the font "panel", and each keeps a place of its own that
// the labels and the centre read-out keep clear of (panel_layout.h).
#pragma once

#include <stddef.h>

// The ten kinds of ordinal, one line each, where legend_layout puts them: a
// swatch of the tick colour, then the name.
void legend_draw(char *buffer, size_t size);

// The rows, bottom up, with their toggles, and "Add " and "Remove " above
// them; clicks flip toggles and add or remove the top row. Only the rows of
// panel_layout are drawn, and added.
void notation_panel(char *buffer, size_t size);
