// Texture services: choosing the mipmap path, and the software chain's uploads.
#include "support/gl/texture.h"

#include <stdlib.h>
#include <string.h>

#include <GL/gl.h>

#include "support/gl/mipmap.h"

int32_t texture_compat = 1;
int32_t has_generate_mipmap = -1;
void (*gl_generate_mipmap)(uint32_t target) = nullptr;
void *(*gl_get_proc_address)(const char *name) = nullptr;

// Pixel formats by component count, 1 to 4.
static const GLenum texel_formats[5] = {0, GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};
static const GLenum sized_formats[5] = {0, GL_LUMINANCE8, GL_LUMINANCE8_ALPHA8, GL_RGB8, GL_RGBA8};

void texture_make_mipmaps()
{
    if (has_generate_mipmap < 0) {
        const char *extensions = (const char *)glGetString(GL_EXTENSIONS);
        has_generate_mipmap = extensions && strstr(extensions, "GL_SGIS_generate_mipmap") ? 1 : 0;
    }
    if (has_generate_mipmap == 1) {
        if (!gl_generate_mipmap && gl_get_proc_address)
            gl_generate_mipmap = (void (*)(uint32_t))gl_get_proc_address("glGenerateMipmap");
        // a driver that reports the extension without the call falls back to software
        if (gl_generate_mipmap) {
            gl_generate_mipmap(GL_TEXTURE_2D);
            return;
        }
    }
    build_mipmaps();
}

void build_mipmaps()
{
    GLint width = 0, height = 0, internal = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &internal);
    uint32_t components;
    switch (internal) {
    case GL_LUMINANCE: components = 1; break;
    case GL_LUMINANCE_ALPHA: components = 2; break;
    case GL_RGB: components = 3; break;
    case GL_RGBA: components = 4; break;
    default: components = internal >= 1 && internal < 5 ? (uint32_t)internal : 3; break;
    }
    uint8_t *pixels = (uint8_t *)calloc(mip_buffer_bytes(components, width, height), 1);
    glGetTexImage(GL_TEXTURE_2D, 0, texel_formats[components], GL_UNSIGNED_BYTE, pixels);
    mip_chain(GL_TEXTURE_2D, components, width, height, pixels);
    free(pixels);
}

struct MipTarget {
    GLenum target;
    GLint internal;
    GLenum format;
};

static void mip_upload(void *context, int32_t level, int32_t width, int32_t height,
                       const uint8_t *pixels)
{
    const MipTarget *t = (const MipTarget *)context;
    glGetError();  // empties the error flag; nothing reads it
    glTexImage2D(t->target, level, t->internal, width, height, 0, t->format, GL_UNSIGNED_BYTE,
                 pixels);
}

void mip_chain(uint32_t target, uint32_t components, int32_t width, int32_t height,
               uint8_t *pixels)
{
    MipTarget t = {target, texture_compat ? (GLint)components : (GLint)sized_formats[components],
                   texel_formats[components]};
    mip_chain_levels(components, width, height, pixels, mip_upload, &t);
}
