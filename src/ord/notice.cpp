// Notices at the top left of the window.
#include "ord/notice.h"

#include <stdio.h>

#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/gl/screen.h"

// The notice and the seconds it has left; start none.
static char notice_text[301];
static double notice_left = 0;

void notice_show(const char *text, double seconds)
{
    snprintf(notice_text, sizeof notice_text, "%s", text);
    notice_left = seconds;
}

void notice_draw(double dt)
{
    if (notice_left <= 0)
        return;
    notice_left -= dt > 0 ? dt : 0;
    // in "legend", the line below the depth read-out, from a quarter of the
    // width up to the legend, where the line stands low
    font_select("legend");
    text_begin();
    text_draw_bounded(notice_text, 0xc0ffc0, (float)(screen_w / 4), (float)text_height * 1.2f,
                      (float)(3 * screen_w / 4 - 8), (float)screen_h);
    text_close();
    font_select("normal");
}
