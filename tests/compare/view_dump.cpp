// The label pass and the centre read-out of one view, as text: each label
// line's place, colour and first LABEL_TEXT_MAX bytes (escapes in hex), then
// the read-out. Built by compare_builds.sh against an older tree and the work
// tree alike, so it uses only what both offer (the read-out as laid out in
// lines, since the screen layout of issue 15).
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "PlotSegment2/centre_readout.h"
#include "PlotSegment2/labels.h"
#include "PlotSegment2/tick_walk.h"
#include "notation/notation_rows.h"
#include "ord/font_variants.h"
#include "support/bitmapfonts/font_pack.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/gl/screen.h"
#include "tools/ordtool/ordtool_view.h"

static void dump_text(const char *text)
{
    const char *end = text_end(text);
    size_t n = (size_t)(end - text);
    for (size_t i = 0; i < n && i < LABEL_TEXT_MAX; i++) {
        unsigned char c = (unsigned char)text[i];
        if (c >= 32 && c < 127 && c != '\\')
            putchar(c);
        else
            printf("\\x%02x", c);
    }
    putchar('\n');
}

static void dump_label(WalkRecord r)
{
    LabelLine line;
    if (!label_start(r, &line))
        return;
    while (label_next(&line)) {
        printf("%.3f %.3f %06x ", line.tx, line.y, line.colour);
        dump_text(line.text);
    }
}

int main(int argc, char **argv)
{
    ViewSetup setup = {};
    setup.minsize = 1.0;
    for (int i = 1; i + 1 < argc; i += 2) {
        double v = atof(argv[i + 1]);
        if (!strcmp(argv[i], "--width")) setup.width = v;
        else if (!strcmp(argv[i], "--zoom-at")) { setup.zoom_at = v; setup.zoomed = true; }
        else if (!strcmp(argv[i], "--factor")) setup.factor = v;
        else if (!strcmp(argv[i], "--steps")) setup.steps = v;
    }
    WalkRecord record = view_setup_record(&setup);
    font_pack_measuring_root("fullsize");
    char buffer[112];
    font_variants_rebuild(screen_h, buffer, sizeof buffer);
    notation_rows_start();
    tick_arrays_rebuild(record.right);
    record.minsize = (float)(5 * text_height);
    walk_line(dump_label, record);
    CentreText text;
    centre_text((float)(screen_w / 2), record, (float)screen_h, &text);
    for (uint32_t i = 0; i < text.count; i++) {
        printf("read-out %.3f %.3f ", text.x, text.y[i]);
        dump_text(text.lines[i]);
    }
    centre_text_free(&text);
    // where a build gave up on part of the view, the comparison is void
    if (segment_too_deep > 0)
        printf("too deep\t%lld leaves\n", (long long)segment_too_deep);
    return 0;
}
