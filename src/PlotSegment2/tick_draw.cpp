// Tick drawing from the per-column arrays.
#include "PlotSegment2/tick_draw.h"

#include <GL/gl.h>

#include "PlotSegment2/tick_brightness.h"
#include "PlotSegment2/tick_classify.h"
#include "PlotSegment2/tick_walk.h"

void tick_draw(WalkRecord r)
{
    float span = r.right - r.left;
    float inv = 1.0f / span;
    glBegin(GL_LINES);
    for (int32_t c = tick_columns - 1; c >= 0; c--) {
        if (tick_kinds[c] == 0)
            continue;
        float x = r.left + c;
        float y = ((r.yright - r.yleft) * inv) * c + r.yleft;
        uint32_t rgb = tick_shade(tick_colours[tick_kinds[c]], tick_brightness(tick_sizes[c], span));
        glColor3ub((GLubyte)(rgb >> 16), (GLubyte)(rgb >> 8), (GLubyte)rgb);
        // the extra tenth of a pixel keeps the stroke off the column's edge
        glVertex2d((double)x + 0.1, (double)(y - r.ticklen));
        glVertex2d((double)x, (double)y);
    }
    // "too deep": a red dashed band across the line where the work limits
    // kept the walk from dividing further this frame
    glColor3ub((GLubyte)(TOO_DEEP_COLOUR >> 16), (GLubyte)(TOO_DEEP_COLOUR >> 8), (GLubyte)TOO_DEEP_COLOUR);
    for (int32_t c = 0; c < tick_columns; c++) {
        if (!tick_too_deep[c] || c % 6 >= 3)
            continue;
        float x = r.left + c;
        float y = ((r.yright - r.yleft) * inv) * c + r.yleft;
        glVertex2d((double)x + 0.5, (double)(y - 0.5f * r.ticklen));
        glVertex2d((double)x + 0.5, (double)(y + 0.25f * r.ticklen));
    }
    glEnd();
}
