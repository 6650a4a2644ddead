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

// The page shown, from 1; 0 while hidden (the start). The pages the last
// layout needed: 1 when the table fits the window.
static int32_t help_page = 0;
static int32_t help_pages = 1;

void help_overlay_keys()
{
    // each press shows the next page, and after the last hides the table
    if (key_edge(KEY_F1) || key_edge(KEY_H))
        help_page = help_page < help_pages ? help_page + 1 : 0;
}

bool help_overlay_shown()
{
    return help_page > 0;
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

// The rows from `first` on at the selected font in `columns` columns, as
// many as fit above the window's bottom line (kept for the page note);
// returns how many, and draws them with `draw`.
static uint32_t help_layout(int32_t columns, uint32_t first, bool draw)
{
    float lh = (float)text_height;
    float step = lh + (float)(text_height / 5);
    float margin = lh;
    float bottom = (float)screen_h - step;
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
    float y = top;
    int32_t c = 0;
    uint32_t i = first;
    for (; i < help_key_count; i++) {
        float x = margin + c * (column_w + margin);
        // measured first: a row that would pass the bottom goes to the next column
        int32_t a = wrap(help_keys[i].input, input_w - lh / 2, x, y, step, 0, false);
        int32_t b = wrap(help_keys[i].action, column_w - input_w, x, y, step, 0, false);
        float height = (a > b ? a : b) * step;
        if (y + height > bottom && y > top) {
            if (++c >= columns)
                break;
            y = top;
            x = margin + c * (column_w + margin);
        }
        if (draw) {
            wrap(help_keys[i].input, input_w - lh / 2, x, y, step, HELP_INPUT_COLOUR, true);
            wrap(help_keys[i].action, column_w - input_w, x + input_w, y, step,
                 HELP_ACTION_COLOUR, true);
        }
        y += height + lh / 3;
    }
    return i - first;
}

void help_overlay_draw()
{
    if (help_page == 0)
        return;
    overlay_fill(0.0f, 0.0f, (float)screen_w, (float)screen_h, 0x000000, 0.95f);
    // from the panels' size down, a tenth at a time, until the table fits;
    // at the smallest size it goes on pages
    char request[64];
    double size = font_variant_scale(FONT_PANEL, screen_w, screen_h);
    int32_t columns = 1;
    for (;;) {
        snprintf(request, sizeof request, "fullsize:scale=%lfpx", size);
        font_select(request);
        columns = 1;
        if (help_layout(1, 0, false) == help_key_count)
            break;
        columns = screen_w > screen_h ? 2 : 1;
        if (columns == 2 && help_layout(2, 0, false) == help_key_count)
            break;
        if (size * 0.9 < HELP_MIN_SIZE)
            break;
        size *= 0.9;
    }
    // the first row of each page up to the one shown
    uint32_t first = 0;
    int32_t pages = 1;
    for (uint32_t n = help_layout(columns, 0, false); first + n < help_key_count; pages++) {
        first += n > 0 ? n : 1;
        n = help_layout(columns, first, false);
    }
    help_pages = pages;
    if (help_page > pages)
        help_page = pages;
    first = 0;
    for (int32_t p = 1; p < help_page; p++) {
        uint32_t n = help_layout(columns, first, false);
        first += n > 0 ? n : 1;
    }
    help_layout(columns, first, true);
    if (pages > 1) {
        char note[80];
        snprintf(note, sizeof note, "page %d of %d: F1 or H for the %s", help_page, pages,
                 help_page < pages ? "next" : "line");
        text_put(note, HELP_TITLE_COLOUR, (float)text_height,
                 (float)(screen_h - text_height - text_height / 5));
    }
    font_select("normal");
}
