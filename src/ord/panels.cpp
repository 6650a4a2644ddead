// The legend and the notation panel, drawn where panel_layout.h puts them.
#include "ord/panels.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include <GL/gl.h>

#include "notation/notation_rows.h"
#include "ord/panel_hits.h"
#include "ord/panel_layout.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/screen.h"

// A filled square in a colour, outside any text bracket.
static void draw_swatch(float x, float y, float side, uint32_t colour)
{
    glColor3ub((GLubyte)(colour >> 16), (GLubyte)(colour >> 8), (GLubyte)colour);
    glBegin(GL_QUADS);
    glVertex2f(x, y);
    glVertex2f(x + side, y);
    glVertex2f(x + side, y + side);
    glVertex2f(x, y + side);
    glEnd();
}

void legend_draw(char *buffer, size_t size)
{
    LegendLayout l = legend_layout(buffer, size);
    font_select_spec(l.font);
    for (uint32_t i = 0; i < LEGEND_LINES; i++) {
        const LegendLine *line = &legend_lines[i];
        float y = (float)i * l.lh;
        // level with the capitals, which fill about the middle half of a line
        draw_swatch(l.x, y + (float)(int32_t)(0.22f * l.lh + 0.5f), l.swatch, line->colour);
        const char *text = line->text;
        if (line->greek) {
            snprintf(buffer, size, "%s", line->text);
            text = greek_expand(buffer);
        }
        text_put(text, legend_name_colour(line->colour), l.name_x, y);
    }
    font_select("normal");
}

// One row: "Notation: " and the six captions, white when on. Returns the
// x where the row's text ends.
static int32_t notation_row_panel(NotationRow *row, int32_t y, uint32_t lh, char *buffer,
                                  size_t size)
{
    snprintf(buffer, size, "Notation: ");
    int32_t x = (int32_t)text_width(buffer);
    text_put(buffer, 0x808080, 0.0f, (float)y);
    for (int32_t t = 0; t < NOTATION_TOGGLES; t++) {
        notation_caption(buffer, size, t);
        int32_t end = x + (int32_t)text_width(buffer);
        if (panel_click(x, end, y, lh))
            row->toggle[t] ^= 1;
        text_put(buffer, row->toggle[t] ? 0xffffff : 0x808080, (float)x, (float)y);
        x = end;
    }
    return x;
}

void notation_panel(char *buffer, size_t size)
{
    // rows beyond what fits still label the ticks but are not drawn, so the
    // stack keeps its half of the window (a window made smaller hides some)
    PanelLayout p = panel_layout();
    font_select("panel");
    uint32_t lh = p.lh;
    int32_t rows_end = 0;
    // last row first; row 0 is the window's bottom line and the panel grows up
    for (uint32_t r = p.shown; r-- > 0;) {
        int32_t y = screen_h - (int32_t)((r + 1) * lh);
        rows_end = notation_row_panel(notation_row(r), y, lh, buffer, size);
    }

    // "Add " and "Remove " directly above the top row shown; "Add " dims
    // when no further row would fit
    int32_t y = p.add_y;
    bool room = notation_rows.count < p.fit;
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
    font_select("normal");
}
