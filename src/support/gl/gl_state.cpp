// The OpenGL state every frame starts from.
#include "support/gl/gl_state.h"

#include <GL/gl.h>

#include "support/gl/screen.h"

#ifndef GL_TEXTURE_CUBE_MAP_SEAMLESS
#define GL_TEXTURE_CUBE_MAP_SEAMLESS 0x884F
#endif

uint8_t ortho_projection = 1;

void gl_state_start(int32_t w, int32_t h)
{
    glClearColor(0, 0, 0, 0);
    glClearDepth(1.0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glDepthFunc(GL_LEQUAL);
    glEnable(GL_DEPTH_TEST);
    glShadeModel(GL_SMOOTH);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_TEXTURE_CUBE_MAP_SEAMLESS);

    resize_viewport(w, h);
    glLoadIdentity();
}

void resize_viewport(int32_t w, int32_t h)
{
    screen_w = w;
    screen_h = h > 0 ? h : 1;
    glViewport(0, 0, screen_w, screen_h);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    if (ortho_projection) {
        // pixels from the top left, y down; z from -d to d stays in the depth range
        int32_t d = screen_h / 2;
        glOrtho(0, screen_w, screen_h, 0, d, -d);
    }
    glMatrixMode(GL_MODELVIEW);
}
