// The boxes of the texts a frame puts on the screen.
#include "support/bitmapfonts/text_boxes.h"

#include "support/bitmapfonts/markup_fit.h"

DynArray text_boxes = {};

bool text_box_overlap(TextBox a, TextBox b)
{
    return a.x0 < b.x1 && b.x0 < a.x1 && a.y0 < b.y1 && b.y0 < a.y1;
}

void text_boxes_clear()
{
    if (!text_boxes.data)
        DynArray_init(&text_boxes, sizeof(PlacedBox), 256);
    text_boxes.count = 0;
}

void text_box_add(TextBoxKind kind, TextBox box, const char *text)
{
    if (!text_boxes.data)
        text_boxes_clear();
    PlacedBox placed = {box, kind, text && text_has_markup(text)};
    DynArray_append(&text_boxes, &placed);
}

bool text_box_clear_of_all(TextBox box)
{
    for (uint32_t i = 0; i < text_boxes.count; i++)
        if (text_box_overlap(box, DynArray_at<PlacedBox>(&text_boxes, i)->box))
            return false;
    return true;
}
