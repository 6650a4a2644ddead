// Text measuring: the item reader and text_width.
#include "support/bitmapfonts/text_measure.h"

#include <math.h>

#include "support/bitmapfonts/font_registry.h"

float text_spacing = 0.1f;
float text_scale_x = 1.0f, text_scale_y = 1.0f;
int32_t text_blend = 3;
uint32_t text_shader = 0;

TextItem text_item(const char *p, size_t limit)
{
    TextItem item = {TEXT_ITEM_END, 0, 0, 0, 0};
    if (limit == 0)
        return item;
    const uint8_t *b = (const uint8_t *)p;
    switch (b[0]) {
    case 0x00:
        return item;
    case 0x02:
        if (limit < 3)
            return item;
        item.kind = TEXT_ITEM_GLYPH;
        item.length = 3;
        item.code = (uint32_t)b[1] * 256 + b[2];
        return item;
    case 0x05:
        if (limit < 6)
            return item;
        item.kind = TEXT_ITEM_CONTROL;
        item.length = 6;
        item.control = b[1];
        item.arg = b[2] | (uint32_t)b[3] << 8 | (uint32_t)b[4] << 16 | (uint32_t)b[5] << 24;
        return item;
    default:
        item.kind = TEXT_ITEM_GLYPH;
        item.length = 1;
        item.code = b[0];
        return item;
    }
}

float text_width_bytes(const char *text, size_t limit)
{
    if (!text) {
        text = "NULL?";
        limit = 6;
    }
    if (!current_font)
        return 0.0f;
    const Font *root = current_font->parent;
    float w = 0.0f;
    // taken once: scripts change s, while the spacing keeps the line's value
    float s = current_font->scale_x;
    float sp = (float)text_height * text_spacing;
    double g = 1.0 + current_font->boldness;

    for (size_t i = 0;;) {
        TextItem item = text_item(text + i, limit - i);
        if (item.kind == TEXT_ITEM_END)
            break;
        i += item.length;
        if (item.kind == TEXT_ITEM_CONTROL) {
            if (item.control == 1)
                w = (float)(int32_t)item.arg;
            else if (item.control == 2)
                s = (float)((item.arg & 0xFFFF) * 0.00390625) * current_font->scale_x;
            continue;
        }
        if (item.code == 10 || item.code >= FONT_CODES)
            continue;
        float scaled = (float)root->glyph_w[item.code] * s;
        w += (float)trunc((double)scaled * g + (0.5 + sp));
    }
    return w;
}

float text_width(const char *text)
{
    return text_width_bytes(text, SIZE_MAX);
}

TextExtent text_extent(const char *text, float slope)
{
    TextExtent e = {text_width(text), 0.0f, (float)text_height, 0.0f};
    if (!text || !current_font)
        return e;
    const Font *root = current_font->parent;
    const float H = (float)root->height;  // the line breaks' step
    const float sx0 = current_font->scale_x, sy0 = current_font->scale_y;
    float s = sx0, sy = sy0;
    float sp = (float)text_height * text_spacing;
    double g = 1.0 + current_font->boldness;
    float x = 0.0f, y = 0.0f;
    int32_t off = 0;  // pixels up from the line, as text_draw keeps it
    bool any = false;
    for (size_t i = 0;;) {
        TextItem item = text_item(text + i, SIZE_MAX);
        if (item.kind == TEXT_ITEM_END)
            break;
        i += item.length;
        if (item.kind == TEXT_ITEM_CONTROL) {
            if (item.control == 1) {
                x = (float)(int32_t)item.arg;
            } else if (item.control == 2) {
                text_script_step(item.arg, sx0, sy0, H, &s, &sy, &off, &y);
            }
            continue;
        }
        if (item.code == 10) {
            x = 0.0f;
            y += (float)(trunc((double)(H * sy) + 0.5) + 1);
            continue;
        }
        if (item.code >= FONT_CODES)
            continue;
        float gw = (float)root->glyph_w[item.code];
        float px = x;
        x += (float)trunc((double)(gw * s) * g + (0.5 + sp));
        if (item.code == ' ')
            continue;
        if (root->ink_bottom[item.code] == 0)
            continue;
        // the inked rows of the glyph's quad, which is a whole line box
        float qtop = y + sy * root->ink_top[item.code];
        float qbottom = y + sy * root->ink_bottom[item.code];
        if (!any || qtop < e.top)
            e.top = qtop;
        if (!any || qbottom > e.bottom)
            e.bottom = qbottom;
        float low = qbottom - slope * px;
        if (!any || low > e.low)
            e.low = low;
        any = true;
    }
    if (!any)
        e.low = e.bottom;
    return e;
}
