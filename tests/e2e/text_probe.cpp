// text_probe: draws three ordinal labels at 25 and at 50 pixels through the
// text engine, in the text bracket, for the end-to-end test of text.
//
// Usage: text_probe [--software-mipmaps | --bounded]. Opens a 1000 by 400
// window at the top left, loads the embedded font, and prints one line per
// label: "label SIZE X Y WIDTH" with the width that text_width gives, the
// texture size, and "drawn" once the labels are on the screen. With --bounded
// it draws instead one paragraph wrapped at x = 320 and prints "bounded Y"
// with the y that text_draw_bounded returns. Redraws until Q, Escape or the
// closing of the window.
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

const char *const labels[3] = {"omega^{omega^{Omega.2}}", "psi_{0}(Omega_{omega+1})", "varphi_alpha(beta)"};

struct Placed {
    char text[256];
    int size;
    float x, y;
};

Placed placed[6];
char paragraph[512] = "The towers of omega reach epsilon, and psi below Omega goes beyond all of them";

void select_size(int size)
{
    char spec[64];
    snprintf(spec, sizeof spec, "fullsize:scale=%dpx", size);
    font_select(spec);
}

// Labels are expanded with the font they are drawn in already selected.
void place(Placed *p, const char *label, int size, float x, float y)
{
    *p = {{}, size, x, y};
    select_size(size);
    snprintf(p->text, sizeof p->text, "%s", label);
    greek_expand(p->text);
    script_expand(p->text, -1, 0, 256, sizeof p->text);
    printf("label %d %.0f %.0f %.0f\n", size, x, y, text_width(p->text));
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && !strcmp(argv[1], "--software-mipmaps"))
        has_generate_mipmap = 0;
    bool bounded = argc > 1 && !strcmp(argv[1], "--bounded");
    greek_expand(paragraph);
    if (!GRAPHICS(1000, 400, "Ordinal numbers text probe"))
        return 1;
    loadfont_embedded("fullsize");
    for (int i = 0; i < 3; i++) {
        place(&placed[i], labels[i], 25, 20, 12 + 40 * i);
        place(&placed[3 + i], labels[i], 50, 20, 150 + 85 * i);
    }
    printf("texture %u %u\n", fonts[0]->tex_w, fonts[0]->tex_h);
    fflush(stdout);
    for (int frame = 0;; frame++) {
        if (bounded) {
            select_size(25);
            text_begin();
            float end = text_draw_bounded(paragraph, 0xffffff, 20, 20, 320, 0);
            text_close();
            if (frame == 0)
                printf("bounded %.0f\n", end);
        } else {
            for (const Placed &p : placed) {
                select_size(p.size);
                text_put(p.text, 0xffffff, p.x, p.y);
            }
        }
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
