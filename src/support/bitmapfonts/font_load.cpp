// Loading the root font: texture upload, mipmaps, boosting, and the texture hooks.
#include "support/bitmapfonts/font_load.h"

#include <stdlib.h>
#include <string.h>

#include <GL/gl.h>

#include "support/bitmapfonts/font_pack.h"
#include "support/gl/texture.h"

#ifndef GL_TEXTURE_LOD_BIAS
#define GL_TEXTURE_LOD_BIAS 0x8501
#endif

// Filters of every font texture; the bias keeps minified text half a level sharper.
static void font_texture_filters()
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_LOD_BIAS, -0.5f);
}

static uint32_t gl_font_placeholder()
{
    GLuint texture;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    font_texture_filters();
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    const uint8_t pixel[4] = {0, 0, 0, 0};
    glTexImage2D(GL_TEXTURE_2D, 0, texture_compat ? 3 : GL_RGB8, 1, 1, 0, GL_RGB, GL_UNSIGNED_BYTE,
                 pixel);
    return texture;
}

static void gl_font_delete(uint32_t texture)
{
    GLuint name = texture;
    glDeleteTextures(1, &name);
}

static void gl_font_size(uint32_t texture, uint32_t *w, uint32_t *h)
{
    GLint width = 0, height = 0;
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    *w = (uint32_t)width;
    *h = (uint32_t)height;
}

void mipmap_boost(Font *font)
{
    uint8_t curve[256];
    mipmap_boost_curve(curve);
    glBindTexture(GL_TEXTURE_2D, font->texture);
    for (int32_t level = 1;; level++) {
        GLint width = 0, height = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_WIDTH, &width);
        glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_HEIGHT, &height);
        if (width <= 0 || height <= 0)
            break;  // the chain ended early
        uint8_t *pixels = (uint8_t *)malloc((size_t)width * height * 4);
        glGetTexImage(GL_TEXTURE_2D, level, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
        mipmap_boost_level(font, level, pixels, (uint32_t)width, (uint32_t)height, curve);
        glTexImage2D(GL_TEXTURE_2D, level, 4, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
        free(pixels);
        if (width == 1 && height == 1)
            break;
    }
}

void loadfontmem(const uint8_t *data, uint32_t size, const char *name)
{
    font_texture_placeholder = gl_font_placeholder;
    font_texture_delete = gl_font_delete;
    font_texture_size = gl_font_size;

    Font *font = (Font *)calloc(1, sizeof(Font));
    size_t name_len = strlen(name);
    font->name = (char *)malloc(name_len + 1);
    memcpy(font->name, name, name_len + 1);

    GLint maxtx = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxtx);
    if (maxtx > FONT_ATLAS_MAX)
        maxtx = FONT_ATLAS_MAX;
    font_pack_layout(data, size, (uint32_t)maxtx, font);

    uint8_t *atlas = (uint8_t *)calloc((size_t)font->tex_w * font->tex_h * 4, 1);
    font_pack_rasterize(data, size, font, atlas);

    GLuint texture;
    glGenTextures(1, &texture);
    font->texture = texture;
    glBindTexture(GL_TEXTURE_2D, texture);
    font_texture_filters();
    glGetError();  // empties the error flag; nothing reads it
    glTexImage2D(GL_TEXTURE_2D, 0, texture_compat ? 4 : GL_RGBA8, (GLsizei)font->tex_w,
                 (GLsizei)font->tex_h, 0, GL_RGBA, GL_UNSIGNED_BYTE, atlas);
    texture_make_mipmaps();
    free(atlas);
    mipmap_boost(font);

    font_root_finish(font);
    gl_font_size(font->texture, &font->tex_w, &font->tex_h);
    font_register(font);
}

void loadfont_embedded(const char *name)
{
    uint32_t size;
    uint8_t *block = font_pack_unpacked(&size);
    loadfontmem(block, size, name);
    free(block);
}
