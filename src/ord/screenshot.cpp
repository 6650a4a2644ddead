// Screenshots of the window.
#include "ord/screenshot.h"

#include <GL/gl.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>

#include "ord/notice.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"
#include "support/image/png_write.h"

// A free name for now in `name` (size bytes): local date and time, then a
// number when a picture of this second exists already.
static void screenshot_name(char *name, size_t size)
{
    time_t now = time(nullptr);
    struct tm local;
    localtime_r(&now, &local);
    char stamp[40];
    strftime(stamp, sizeof stamp, "%Y-%m-%d-%H%M%S", &local);
    snprintf(name, size, "ordline-%s.png", stamp);
    struct stat st;
    for (int32_t n = 2; stat(name, &st) == 0 && n < 1000; n++)
        snprintf(name, size, "ordline-%s-%d.png", stamp, n);
}

void screenshot_keys()
{
    if (!key_edge(KEY_F12) && !key_edge(KEY_P) && !key_edge(KEY_PRINT))
        return;
    int32_t w = screen_w, h = screen_h;
    uint8_t *pixels = (uint8_t *)malloc((size_t)w * h * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadBuffer(GL_BACK);
    glReadPixels(0, 0, w, h, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    char name[80], note[200];
    screenshot_name(name, sizeof name);
    if (png_write(name, pixels, w, h, false)) {
        snprintf(note, sizeof note, "Saved %s", name);
        printf("%s\n", note);
        fflush(stdout);
    } else {
        snprintf(note, sizeof note, "Cannot write %s: %s", name, strerror(errno));
    }
    notice_show(note);
    free(pixels);
}
