// What a frame draws, from the centre marker to the panels.
#include "ord/frame_draw.h"

#include <GL/gl.h>

#include "OrdBuchholz/ord.h"
#include "PlotSegment2/centre_readout.h"
#include "PlotSegment2/labels.h"
#include "PlotSegment2/tick_draw.h"
#include "PlotSegment2/tick_walk.h"
#include "ord/depth_readout.h"
#include "ord/panels.h"
#include "ord/readouts.h"
#include "support/bitmapfonts/font_registry.h"
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
    walk_line(label_draw, *record);
    if (arena) {
        memstack_readout(arena, buffer, size);
        memstack_rewind(arena);
        ord_arena = nullptr;
    }
    // the read-out always runs on the heap
    centre_readout((float)(screen_w / 2), *record);
    depth_readout(view_lo, view_hi);
    legend_draw(buffer, size);
    notation_panel(buffer, size);
}
