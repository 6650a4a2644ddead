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
