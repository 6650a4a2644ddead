// The help overlay: layout by fitting, and drawing.
#include "ord/help_overlay.h"

#include <stdio.h>
#include <string.h>

#include "ord/font_variants.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/input_state.h"
#include "support/gl/overlay.h"
#include "support/gl/screen.h"

// Colours of the title, the inputs and the actions.
constexpr uint32_t HELP_TITLE_COLOUR = 0x8080ff;
constexpr uint32_t HELP_INPUT_COLOUR = 0xffe080;
constexpr uint32_t HELP_ACTION_COLOUR = 0xe0e0e0;
static const char help_title[] = "Keys and mouse   (F1 or H hides this)";

// Shown or not; start hidden.
static bool help_shown = false;

void help_overlay_keys()
{
    if (key_edge(KEY_F1) || key_edge(KEY_H))
        help_shown = !help_shown;
}

bool help_overlay_shown()
{
    return help_shown;
}

// Writes text from (x, y) in lines at most `width` wide, broken at blanks (a
// single word wider than that stands alone); draws only with `draw`.
// Returns the number of lines.
static int32_t wrap(const char *text, float width, float x, float y, float step, uint32_t colour,
                    bool draw)
{
    char line[512], candidate[512];
    line[0] = 0;
    int32_t lines = 0;
    for (const char *p = text; *p;) {
        size_t n = strcspn(p, " ");
        snprintf(candidate, sizeof candidate, "%s%s%.*s", line, line[0] ? " " : "", (int)n, p);
        if (line[0] && text_width(candidate) > width) {
            if (draw)
                text_put(line, colour, x, y + lines * step);
            lines++;
            snprintf(line, sizeof line, "%.*s", (int)n, p);
        } else {
            memcpy(line, candidate, sizeof line);
        }
        p += n;
        while (*p == ' ')
            p++;
    }
    if (line[0]) {
        if (draw)
            text_put(line, colour, x, y + lines * step);
        lines++;
    }
    return lines;
}

// The table at the selected font in `columns` columns; returns the height it
// takes, and draws it with `draw`.
static float help_layout(int32_t columns, bool draw)
{
    float lh = (float)text_height;
    float step = lh + (float)(text_height / 5);
    float margin = lh;
    float column_w = ((float)screen_w - margin * (columns + 1)) / columns;
    // the inputs' column: their widest, but no more than 40 per cent
    float input_w = 0;
    for (uint32_t i = 0; i < help_key_count; i++) {
        float w = text_width(help_keys[i].input);
        input_w = w > input_w ? w : input_w;
    }
    input_w += lh;
    if (input_w > 0.4f * column_w)
        input_w = 0.4f * column_w;
    if (draw)
        text_put(help_title, HELP_TITLE_COLOUR, margin, margin);
    float top = margin + 1.5f * step;
    float y = top, tallest = 0;
    uint32_t per_column = (help_key_count + columns - 1) / columns;
    for (uint32_t i = 0; i < help_key_count; i++) {
        int32_t c = (int32_t)(i / per_column);
        if (i % per_column == 0)
            y = top;
        float x = margin + c * (column_w + margin);
        int32_t a = wrap(help_keys[i].input, input_w - lh / 2, x, y, step, HELP_INPUT_COLOUR, draw);
        int32_t b = wrap(help_keys[i].action, column_w - input_w, x + input_w, y, step,
                         HELP_ACTION_COLOUR, draw);
        y += (a > b ? a : b) * step + lh / 3;
        tallest = y > tallest ? y : tallest;
    }
    return tallest + margin;
}

void help_overlay_draw()
{
    if (!help_shown)
        return;
    overlay_fill(0.0f, 0.0f, (float)screen_w, (float)screen_h, 0x000000, 0.95f);
    // from the panels' size down, a tenth at a time, until the table fits
    char request[64];
    double size = font_variant_scale(FONT_NORMAL, screen_h);
    int32_t columns = 1;
    for (;;) {
        snprintf(request, sizeof request, "fullsize:scale=%lfpx", size);
        font_select(request);
        if (help_layout(1, false) <= (float)screen_h) {
            columns = 1;
            break;
        }
        if (screen_w > screen_h && help_layout(2, false) <= (float)screen_h) {
            columns = 2;
            break;
        }
        if (size * 0.9 < HELP_MIN_SIZE)
            break;  // as small as it gets: what does not fit is cut
        size *= 0.9;
    }
    help_layout(columns, true);
    font_select("normal");
}
