// The two panels drawn over the line in every frame: the legend of the tick
// colours at the top right, and the notation rows at the bottom left, the
// program's only control. Panel texts are clicked, not widgets: drawing and
// hit test are one step, so a click shows on its text in the same frame.
#pragma once

#include <stddef.h>

// The ten kinds of ordinal in their tick colours, one line each.
void legend_draw(char *buffer, size_t size);

// The rows, bottom up, with their toggles, and "Add " and "Remove " above
// them; clicks flip toggles and add or remove the top row. Only as many rows
// as fit below the add line are drawn, and added, so that line stays on
// screen.
void notation_panel(char *buffer, size_t size);
