// Drawing text: the text bracket and the glyph walk that sends the quads.
#include "support/bitmapfonts/text_draw.h"

#include <ctype.h>
#include <math.h>
#include <stdint.h>

#include <GL/gl.h>

#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/overlay.h"

void text_begin()
{
    // texture, colour buffer, enables and the transform state (matrix mode)
    glPushAttrib(GL_TEXTURE_BIT | GL_COLOR_BUFFER_BIT | GL_ENABLE_BIT | GL_TRANSFORM_BIT);
    if (text_overlay)
        overlay_push();
    glScalef(text_scale_x, text_scale_y, 1.0f);
    glEnable(GL_BLEND);
    glDisable(GL_LIGHTING);
    switch (text_blend) {
    case 1: glBlendFunc(GL_ONE, GL_ZERO); break;
    case 2: glBlendFunc(GL_DST_COLOR, GL_ONE_MINUS_SRC_ALPHA); break;
    case 3: glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_COLOR); break;
    case 4: glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA); break;
    default: break;
    }
    glEnable(GL_TEXTURE_2D);
    // all fonts are views of one texture: a change of font inside the run binds nothing
    glBindTexture(GL_TEXTURE_2D, current_font ? current_font->texture : 0);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glBegin(GL_QUADS);
}

void text_close()
{
    glEnd();
    // text_shader stays 0, so no shader is ever unbound here
    if (text_overlay)
        overlay_pop();
    glPopAttrib();
}

static void set_colour(uint32_t colour)
{
    glColor4ub((GLubyte)(colour >> 16), (GLubyte)(colour >> 8), (GLubyte)colour, 255);
}

// The glyph walk of both drawing calls; right and bottom 0.0 mean no limit.
static float text_walk(const char *text, uint32_t colour, float x, float y, float right,
                       float bottom)
{
    if (!text)
        text = "NULL?";
    if (!*text || !current_font)
        return y;
    const FontSpec saved = font_spec_of(current_font);
    Font *root = current_font->parent;
    const float sx0 = current_font->scale_x, sy0 = current_font->scale_y;
    const float tw = 1.0f / (float)current_font->tex_w, th = 1.0f / (float)current_font->tex_h;
    const double g = 1.0 + current_font->boldness;
    set_colour(colour);
    const float x0 = x;
    float sx = sx0, sy = sy0;
    int32_t off = 0;  // offset of the script state in force, pixels up from the line

    for (size_t i = 0;;) {
        TextItem item = text_item(text + i, SIZE_MAX);
        if (item.kind == TEXT_ITEM_END)
            break;
        i += item.length;

        if (item.kind == TEXT_ITEM_CONTROL) {
            if (item.control == 0) {
                set_colour(item.arg);
            } else if (item.control == 1) {
                x = (float)(int32_t)item.arg;
            } else if (item.control == 2) {
                text_script_step(item.arg, sx0, sy0, (float)root->height, &sx, &sy, &off, &y);
                // resolving may make a variant, which binds: never inside a batch
                glEnd();
                font_select_spec(FontSpec{root, sx, sy, saved.skew, saved.boldness,
                                          saved.glyphs, 0});
                glBegin(GL_QUADS);
            }
            continue;
        }

        uint32_t c = item.code;
        if (c == 10) {
            x = x0;
            y += (float)(trunc((double)((float)current_font->height * sy) + 0.5) + 1);
            continue;
        }
        if (c >= FONT_CODES)
            continue;
        float gw = (float)root->glyph_w[c];
        float px = x;
        // whole-pixel advances; the spacing follows the font the last script selected
        x += (float)trunc((double)((float)text_height * text_spacing) + 0.5 +
                          (double)(sx * gw) * g);

        if (c == ' ') {
            if (right != 0.0f) {
                // the next word, by bytes, goes to a new line if it would pass right
                size_t len = 0;
                while (text[i + len] && !isspace((unsigned char)text[i + len]))
                    len++;
                if (px + text_width_bytes(text + i, len) > right) {
                    y += (float)root->height * sy + 1.0f;
                    if (bottom != 0.0f && y > bottom)
                        break;
                    x = x0;
                }
            }
            continue;
        }

        float qw = sx * gw, qh = sy * (float)root->height;
        float u0 = (float)current_font->glyph_x[c] * tw;
        float u1 = (float)current_font->glyph_w[c] * tw + u0;
        float v0 = (float)current_font->glyph_y[c] * th;
        float v1 = (float)current_font->height * th + v0;
        glTexCoord2f(u0, v0);
        glVertex2f(px, y);
        glTexCoord2f(u1, v0);
        glVertex2f(px + qw, y);
        glTexCoord2f(u1, v1);
        glVertex2f(px + qw, y + qh);
        glTexCoord2f(u0, v1);
        glVertex2f(px, y + qh);

        if (right != 0.0f && text[i] != ' ' && x > right) {
            // a word wider than the room breaks inside itself, a whole root line down
            y += (float)(current_font->height + 1);
            if (bottom != 0.0f && y > bottom)
                break;
            x = x0;
        }
    }
    // every text leaves the font as it found it
    if (!FontSpec_equal(saved, current_spec)) {
        glEnd();
        font_select_spec(saved);
        glBegin(GL_QUADS);
    }
    return y;
}

void text_draw(const char *text, uint32_t colour, float x, float y)
{
    text_walk(text, colour, x, y, 0.0f, 0.0f);
}

float text_draw_bounded(const char *text, uint32_t colour, float x, float y, float right,
                        float bottom)
{
    return text_walk(text, colour, x, y, right, bottom);
}

void text_put(const char *text, uint32_t colour, float x, float y)
{
    text_begin();
    text_draw(text, colour, x, y);
    text_close();
}
