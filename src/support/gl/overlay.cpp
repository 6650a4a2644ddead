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
