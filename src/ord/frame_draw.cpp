// What a frame draws, from the centre marker to the panels.
#include "ord/frame_draw.h"

#include <GL/gl.h>

#include "OrdBuchholz/ord.h"
#include "OrdBuchholz/ord_lazy.h"
#include "PlotSegment2/centre_readout.h"
#include "PlotSegment2/labels.h"
#include "PlotSegment2/tick_draw.h"
#include "PlotSegment2/tick_walk.h"
#include "ord/depth_readout.h"
#include "ord/layout_report.h"
#include "ord/panel_layout.h"
#include "ord/panels.h"
#include "ord/readouts.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_boxes.h"
#include "support/gl/screen.h"

// The dark blue column about which the view zooms.
static void draw_centre_marker()
{
    GLboolean lighting = glIsEnabled(GL_LIGHTING);
    glDisable(GL_LIGHTING);
    // through the pixel centres of the integer half, so that every rasterizer
    // lights that one column rather than picking a side of its left edge
    double x = screen_w / 2 + 0.5;
    glColor3ub(0, 0, 128);
    glBegin(GL_LINES);
    glVertex2d(x, 0);
    glVertex2d(x, screen_h);
    glEnd();
    if (lighting)
        glEnable(GL_LIGHTING);
}

void frame_draw(WalkRecord *record, Bignum view_lo, Bignum view_hi, MemStack *arena,
                char *buffer, size_t size)
{
    draw_centre_marker();
    // the fixed texts' places first: labels and the read-out keep clear of them
    text_boxes_clear();
    panels_reserve(arena != nullptr, buffer, size);
    depth_readout_reserve(view_lo, view_hi);

    // M held: the passes of the line allocate from the arena
    if (arena)
        ord_arena = arena;
    record->minsize = 1.0f;
    tick_arrays_rebuild(record->right);
    record->xlo = view_lo;
    record->xhi = view_hi;
    walk_line(tick_record, *record);
    tick_draw(*record);
    record->minsize = (float)(5 * text_height);
    labels_begin();
    walk_line(label_collect, *record);
    labels_place(*record);
    labels_draw();
    if (arena) {
        memstack_readout(arena, buffer, size);
        memstack_rewind(arena);
        ord_lazy_rewind();
        ord_arena = nullptr;
    }
    // the read-out always runs on the heap; it stands below the line, the
    // labels above it, so the two never meet
    CentreText readout;
    float band_bottom = (float)(panel_layout().status_y - 2);
    centre_text((float)(screen_w / 2), *record, band_bottom, &readout);
    centre_text_reserve(&readout);
    centre_readout_draw(&readout);
    centre_text_free(&readout);
    depth_readout(view_lo, view_hi);
    legend_draw(buffer, size);
    notation_panel(buffer, size);
    layout_report_write();
}
