// Where the fixed texts stand: the legend, the notation panel, the status line.
#include "ord/panel_layout.h"

#include <stdio.h>

#include "notation/notation.h"
#include "notation/notation_rows.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/text_boxes.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/screen.h"

// The kinds in the order and colours of the tick classification.
const LegendLine legend_lines[LEGEND_LINES] = {
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

// The widest frame rate the status line makes room for, and the widest arena
// read-out: fixed places, so a changing figure never moves a label.
static const char STATUS_FPS_WIDEST[] = "99999.9 fps";
static const char STATUS_ARENA_WIDEST[] = "MemStack: 4294967295 / 4294967295 bytes";

// Names darker than this (luma, 0 to 255) are lightened: the grey of "Zero".
constexpr uint32_t LEGEND_MIN_LUMA = 128;

PanelLayout panel_layout()
{
    font_select("panel");
    PanelLayout p;
    p.lh = text_height > 0 ? text_height : 1;
    font_select("normal");
    // rows, the add line and the status line in the lower half
    int32_t lines = screen_h / (2 * (int32_t)p.lh);
    p.fit = lines > 3 ? (uint32_t)(lines - 2) : 1;
    p.shown = notation_rows.count < p.fit ? notation_rows.count : p.fit;
    p.add_y = screen_h - (int32_t)((p.shown + 1) * p.lh);
    p.status_y = p.add_y - (int32_t)p.lh;
    return p;
}

static uint32_t luma(uint32_t colour)
{
    uint32_t r = colour >> 16 & 0xff, g = colour >> 8 & 0xff, b = colour & 0xff;
    return (299 * r + 587 * g + 114 * b) / 1000;
}

uint32_t legend_name_colour(uint32_t colour)
{
    uint32_t l = luma(colour);
    if (l >= LEGEND_MIN_LUMA)
        return colour;
    // toward white by the share that lifts the luma to the bound
    uint32_t t = (LEGEND_MIN_LUMA - l) * 256 / (255 - l);
    uint32_t lifted = 0;
    for (int shift = 16; shift >= 0; shift -= 8) {
        uint32_t c = colour >> shift & 0xff;
        lifted |= (c + ((255 - c) * t + 255) / 256) << shift;
    }
    return lifted;
}

// The widest name with the font selected now.
static float legend_names_width(char *buffer, size_t size)
{
    float widest = 0.0f;
    for (uint32_t i = 0; i < LEGEND_LINES; i++) {
        snprintf(buffer, size, "%s", legend_lines[i].text);
        if (legend_lines[i].greek)
            greek_expand(buffer);
        float w = text_width(buffer);
        if (w > widest)
            widest = w;
    }
    return widest;
}

// The legend's geometry for the font selected now.
static void legend_measure(LegendLayout *l, char *buffer, size_t size)
{
    l->font = current_spec;
    l->lh = (float)text_height;
    l->swatch = (float)(int32_t)(0.5f * l->lh + 0.5f);
    float gap = (float)(int32_t)(0.3f * l->lh + 0.5f);
    l->width = l->swatch + gap + legend_names_width(buffer, size);
    // a quarter line from the right edge, at 3/4 of the width where that fits
    float right = (float)screen_w - (float)(int32_t)(l->lh / 4);
    l->x = (float)(3 * screen_w / 4);
    if (l->x + l->width > right)
        l->x = right - l->width;
    l->name_x = l->x + l->swatch + gap;
}

LegendLayout legend_layout(char *buffer, size_t size)
{
    LegendLayout l;
    font_select("panel");
    legend_measure(&l, buffer, size);
    // no more than half the width, nor half the height
    float k = 1.0f;
    float half_w = 0.5f * (float)screen_w, half_h = 0.5f * (float)screen_h;
    if (l.width > half_w)
        k = half_w / l.width;
    if (LEGEND_LINES * l.lh * k > half_h)
        k = half_h / (LEGEND_LINES * l.lh);
    if (k < 1.0f) {
        FontSpec smaller = l.font;
        smaller.scale_x *= k;
        smaller.scale_y *= k;
        font_select_spec(smaller);
        legend_measure(&l, buffer, size);
    }
    font_select("normal");
    return l;
}

void notation_caption(char *buffer, size_t size, int32_t toggle)
{
    // the trailing blank spaces the captions apart
    snprintf(buffer, size, "%s ", notation_names[toggle]);
    greek_expand(buffer);
    script_expand(buffer, -1, 0, 256, size);
}

float status_fps_width(char *buffer, size_t size)
{
    font_select("panel");
    snprintf(buffer, size, "%s", STATUS_FPS_WIDEST);
    float w = text_width(buffer);
    font_select("normal");
    return w;
}

float status_arena_x(char *buffer, size_t size)
{
    font_select("panel");
    float lh = (float)text_height;
    font_select("normal");
    return status_fps_width(buffer, size) + lh;
}

void panels_reserve(bool arena, char *buffer, size_t size)
{
    LegendLayout l = legend_layout(buffer, size);
    text_box_add(BOX_LEGEND, TextBox{l.x, 0.0f, l.x + l.width, LEGEND_LINES * l.lh}, nullptr);

    PanelLayout p = panel_layout();
    font_select("panel");
    // a row is as wide whatever its toggles; the add line is narrower
    snprintf(buffer, size, "Notation: ");
    float row = text_width(buffer);
    for (int32_t t = 0; t < NOTATION_TOGGLES; t++) {
        notation_caption(buffer, size, t);
        row += (float)(int32_t)text_width(buffer);
    }
    float lh = (float)p.lh, h = (float)screen_h;
    text_box_add(BOX_PANEL, TextBox{0.0f, (float)p.add_y, row, h}, nullptr);
    font_select("normal");

    float status = (float)p.status_y;
    text_box_add(BOX_STATUS, TextBox{0.0f, status, status_fps_width(buffer, size), status + lh},
                 nullptr);
    if (arena) {
        float x = status_arena_x(buffer, size);
        font_select("panel");
        snprintf(buffer, size, "%s", STATUS_ARENA_WIDEST);
        float w = text_width(buffer);
        font_select("normal");
        text_box_add(BOX_STATUS, TextBox{x, status, x + w, status + lh}, nullptr);
    }
}
