// The 2D overlay of text runs.
#include "support/gl/overlay.h"

#include <GL/gl.h>

#include "support/gl/screen.h"

int32_t text_overlay = 1;

void overlay_push()
{
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    // window pixels from the top left, also for a viewport that covers part of the window
    int32_t h = screen_h, d = screen_h / 2;
    glOrtho(viewport[0], viewport[0] + viewport[2], h - viewport[1], h - (viewport[3] + viewport[1]),
            d, -d);
    glMatrixMode(GL_MODELVIEW);
    glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
}

void overlay_pop()
{
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glEnable(GL_DEPTH_TEST);
    glDepthMask(GL_TRUE);
}

void overlay_fill(float x0, float y0, float x1, float y1, uint32_t colour, float alpha)
{
    glPushAttrib(GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT | GL_CURRENT_BIT);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4ub((GLubyte)(colour >> 16), (GLubyte)(colour >> 8), (GLubyte)colour,
               (GLubyte)(alpha * 255.0f + 0.5f));
    glBegin(GL_QUADS);
    glVertex2f(x0, y0);
    glVertex2f(x1, y0);
    glVertex2f(x1, y1);
    glVertex2f(x0, y1);
    glEnd();
    glPopAttrib();
}
