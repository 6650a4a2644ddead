// The legend and the notation panel.
#include "ord/panels.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "ord/notation_rows.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/screen.h"

struct LegendLine {
    const char *text;
    bool greek;  // names a Greek letter
    uint32_t colour;
};

// The kinds in the order and colours of the tick classification.
static const LegendLine legend_lines[] = {
    {"Zero", false, 0x808080},
    {"Successor ordinals", false, 0xa00000},
    {"Limit ordinals", false, 0xffa000},
    {"Powers of omega", true, 0xffff00},
    {"Towers of omega", true, 0xffffff},
    {"epsilon ordinals", true, 0x00ff00},
    {"Veblen ordinals", false, 0x00ffff},
    {"Feferman-Schutte ordinals", false, 0xff00ff},
    {"Bachmann-Howard ordinals", false, 0x0000ff},
    {"Buchholz ordinals", false, 0x404040},
};

static const char *const notation_names[NOTATION_TOGGLES] = {
    "n", "alpha.n", "omega^alpha", "epsilon_alpha", "varphi_alpha(beta)", "Omega_alpha",
};

void legend_draw(char *buffer, size_t size)
{
    float x = (float)(3 * screen_w / 4);
    uint32_t lh = text_height;
    for (uint32_t i = 0; i < sizeof legend_lines / sizeof legend_lines[0]; i++) {
        const LegendLine *line = &legend_lines[i];
        const char *text = line->text;
        if (line->greek) {
            snprintf(buffer, size, "%s", line->text);
            text = greek_expand(buffer);
        }
        text_put(text, line->colour, x, (float)(i * lh));
    }
}

// One row: "Notation: " and the six captions, white when on. Returns the
// x where the row's text ends.
static int32_t notation_row_panel(NotationRow *row, int32_t y, char *buffer, size_t size)
{
    uint32_t lh = text_height;
    snprintf(buffer, size, "Notation: ");
    int32_t x = (int32_t)text_width(buffer);
    text_put(buffer, 0x808080, 0.0f, (float)y);
    for (int32_t t = 0; t < NOTATION_TOGGLES; t++) {
        // the trailing blank spaces the captions apart
        snprintf(buffer, size, "%s ", notation_names[t]);
        greek_expand(buffer);
        script_expand(buffer, -1, 0, 256, size);
        int32_t end = x + (int32_t)text_width(buffer);
        if (panel_click(x, end, y, lh))
            row->toggle[t] ^= 1;
        text_put(buffer, row->toggle[t] ? 0xffffff : 0x808080, (float)x, (float)y);
        x = end;
    }
    return x;
}

// How many rows fit below the add line in the window, at least one.
static uint32_t rows_that_fit(uint32_t lh)
{
    int32_t lines = lh > 0 ? screen_h / (int32_t)lh : 2;
    return lines >= 2 ? (uint32_t)(lines - 1) : 1;
}

void notation_panel(char *buffer, size_t size)
{
    uint32_t lh = text_height;
    // rows beyond what fits still label the ticks but are not drawn, so the
    // add line never leaves the window (a window made smaller hides some)
    uint32_t fit = rows_that_fit(lh);
    uint32_t shown = notation_rows.count < fit ? notation_rows.count : fit;
    int32_t rows_end = 0;
    // last row first; row 0 is the window's bottom line and the panel grows up
    for (uint32_t r = shown; r-- > 0;) {
        int32_t y = screen_h - (int32_t)((r + 1) * lh);
        rows_end = notation_row_panel(notation_row(r), y, buffer, size);
    }

    // "Add " and "Remove " directly above the top row shown; "Add " dims
    // when no further row would fit
    int32_t y = screen_h - (int32_t)((shown + 1) * lh);
    bool room = notation_rows.count < fit;
    snprintf(buffer, size, "Add ");
    int32_t w = (int32_t)text_width(buffer);
    if (room && panel_click(0, w, y, lh))
        DynArray_append(&notation_rows, &new_row_template);
    text_put(buffer, room ? 0x808080 : 0x404040, 0.0f, (float)y);
    int32_t add_end = w;
    if (notation_rows.count > 1) {
        snprintf(buffer, size, "Remove ");
        add_end = w + (int32_t)text_width(buffer);
        if (panel_click(w, add_end, y, lh))
            DynArray_remove(&notation_rows, notation_rows.count - 1);
        text_put(buffer, 0x808080, (float)w, (float)y);
    }
    panel_texts_drawn(y, add_end, rows_end, lh);
}
