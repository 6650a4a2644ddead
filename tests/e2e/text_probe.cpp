// text_probe: draws three ordinal labels at 25 and at 50 pixels through the
// text engine, in the text bracket, for the end-to-end test of text.
//
// Usage: text_probe [--software-mipmaps | --bounded]. Opens a 1000 by 400 window at the
// top left, loads the embedded font, and prints one line per label:
// "label SIZE X Y WIDTH" with the width that text_width gives, the texture
// size, and "drawn" once the labels are on the screen. With --bounded it
// draws instead one paragraph wrapped at x = 320 and prints "bounded Y" with
// the y that text_draw_bounded returns. Redraws until
// Q, Escape or the closing of the window.
#include <stdio.h>
#include <string.h>

#include <GL/gl.h>
#include <SDL2/SDL.h>

#include "support/bitmapfonts/font_load.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/event_pump.h"
#include "support/gl/input_state.h"
#include "support/gl/texture.h"
#include "support/gl/window.h"

namespace {

const char *const labels[3] = {"omega^{omega^{Omega.2}}", "psi_{0}(Omega_{omega+1})",
                               "varphi_alpha(beta)"};

struct Placed {
    char text[256];
    int size;
    float x, y;
    uint32_t colour;
};

Placed placed[6];
bool bounded = false;
char paragraph[512];

// Labels are expanded with the font they are drawn in already selected.
void place(Placed *p, const char *label, int size, float x, float y, uint32_t colour)
{
    char spec[64];
    snprintf(spec, sizeof spec, "fullsize:scale=%dpx", size);
    font_select(spec);
    snprintf(p->text, sizeof p->text, "%s", label);
    greek_expand(p->text);
    script_expand(p->text, -1, 0, 256, sizeof p->text);
    p->size = size;
    p->x = x;
    p->y = y;
    p->colour = colour;
    printf("label %d %.0f %.0f %.0f\n", size, x, y, text_width(p->text));
}

void draw_all()
{
    if (bounded) {
        font_select("fullsize:scale=25px");
        text_begin();
        float end = text_draw_bounded(paragraph, 0xffffff, 20, 20, 320, 0);
        text_close();
        static bool told = false;
        if (!told)
            printf("bounded %.0f\n", end);
        told = true;
        return;
    }
    for (const Placed &p : placed) {
        char spec[64];
        snprintf(spec, sizeof spec, "fullsize:scale=%dpx", p.size);
        font_select(spec);
        text_put(p.text, p.colour, p.x, p.y);
    }
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && !strcmp(argv[1], "--software-mipmaps"))
        has_generate_mipmap = 0;
    bounded = argc > 1 && !strcmp(argv[1], "--bounded");
    snprintf(paragraph, sizeof paragraph, "%s",
             "The towers of omega reach epsilon, and psi below Omega goes beyond all of them");
    greek_expand(paragraph);
    if (!GRAPHICS(1000, 400, "Ordinal numbers text probe"))
        return 1;
    loadfont_embedded("fullsize");
    for (int i = 0; i < 3; i++) {
        place(&placed[i], labels[i], 25, 20, 12 + 40 * i, 0xffffff);
        place(&placed[3 + i], labels[i], 50, 20, 150 + 85 * i, 0xffffff);
    }
    printf("texture %u %u\n", fonts[0]->tex_w, fonts[0]->tex_h);
    fflush(stdout);
    for (int frame = 0;; frame++) {
        draw_all();
        glFinish();
        SDL_GL_SwapWindow(sdl_window);
        if (frame == 1) {
            // two frames are on the screen: the test may take its picture
            printf("drawn\n");
            fflush(stdout);
        }
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glLoadIdentity();
        if (LOOP() || key_down[KEY_Q] || key_down[KEY_ESCAPE])
            break;
        SDL_Delay(20);
    }
    return 0;
}
