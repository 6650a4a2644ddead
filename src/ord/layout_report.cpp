// The test mode's report of where the frame put its texts.
#include "ord/layout_report.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "support/bitmapfonts/text_boxes.h"
#include "support/gl/screen.h"

static const char *const box_kind_names[BOX_KINDS] = {"label", "readout", "legend", "panel",
                                                      "status", "depth"};

// The report's path, and a temporary beside it; read at the first frame.
static bool report_checked = false;
static char *report_path = nullptr;
static char *report_temp = nullptr;

void layout_report_write()
{
    if (!report_checked) {
        report_checked = true;
        const char *path = getenv("ORDLINE_LAYOUT_FILE");
        if (path && *path) {
            size_t n = strlen(path);
            report_path = strdup(path);
            report_temp = (char *)malloc(n + 5);
            if (report_temp)
                snprintf(report_temp, n + 5, "%s.new", path);
        }
    }
    if (!report_path || !report_temp)
        return;
    FILE *f = fopen(report_temp, "w");
    if (!f)
        return;
    fprintf(f, "window %d %d\n", screen_w, screen_h);
    for (uint32_t i = 0; i < text_boxes.count; i++) {
        const PlacedBox *b = DynArray_at<PlacedBox>(&text_boxes, i);
        fprintf(f, "%s %.1f %.1f %.1f %.1f %d\n", box_kind_names[b->kind], b->box.x0, b->box.y0,
                b->box.x1, b->box.y1, b->raw ? 1 : 0);
    }
    fclose(f);
    rename(report_temp, report_path);
}
