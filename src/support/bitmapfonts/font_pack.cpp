// The font pack: run-length unpacking, shelf packing, atlas pixels, boosting.
#include "support/bitmapfonts/font_pack.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "support/gl/palette.h"
#include "support/report/report.h"

// Pixel value of a transparent glyph pixel.
#define GLYPH_TRANSPARENT 255

void rle_unpack(uint8_t **block, uint32_t *size)
{
    const uint8_t *in = *block;
    uint32_t n = *size;
    if (n < 2) {
        free(*block);
        *block = (uint8_t *)malloc(0);
        *size = 0;
        return;
    }
    uint8_t escape = in[0];
    // count, then write
    uint32_t out_size = 0;
    for (uint32_t i = 1; i < n;) {
        if (in[i] == escape) {
            if (i + 2 >= n)
                break;
            out_size += in[i + 2];
            i += 3;
        } else {
            out_size++;
            i++;
        }
    }
    uint8_t *out = (uint8_t *)malloc(out_size ? out_size : 1);
    uint32_t o = 0;
    for (uint32_t i = 1; i < n;) {
        if (in[i] == escape) {
            if (i + 2 >= n)
                break;
            memset(out + o, in[i + 1], in[i + 2]);
            o += in[i + 2];
            i += 3;
        } else {
            out[o++] = in[i++];
        }
    }
    free(*block);
    *block = out;
    *size = o;
}

// The record at *pos: false when the stream ends before the record does.
static bool glyph_record(const uint8_t *data, uint32_t size, uint32_t *pos, uint32_t *w,
                         uint32_t *h, const uint8_t **pixels)
{
    if (*pos + 2 > size)
        return false;
    *w = data[*pos];
    *h = data[*pos + 1];
    if (*pos + 2 + *w * *h > size)
        return false;
    *pixels = data + *pos + 2;
    *pos += 2 + *w * *h;
    return true;
}

static uint32_t power_of_two_at_least(uint32_t v)
{
    uint32_t p = 1;
    while (p < v)
        p <<= 1;
    return p;
}

// The rows a glyph inks (any pixel not transparent), for boxes as tight as
// what is seen.
static void glyph_ink_rows(Font *font, uint32_t code, uint32_t w, uint32_t h,
                           const uint8_t *pixels)
{
    uint32_t top = h, bottom = 0;
    for (uint32_t row = 0; row < h; row++)
        for (uint32_t col = 0; col < w; col++)
            if (pixels[row * w + col] != GLYPH_TRANSPARENT) {
                if (row < top)
                    top = row;
                bottom = row + 1;
                break;
            }
    font->ink_top[code] = (uint8_t)(bottom ? top : 0);
    font->ink_bottom[code] = (uint8_t)bottom;
}

void font_pack_layout(const uint8_t *data, uint32_t size, uint32_t maxtx, Font *font)
{
    uint32_t pos = 0, w = 0, h = 0, records = 0;
    const uint8_t *pixels = nullptr;
    font->height = 1;
    while (records < FONT_CODES && glyph_record(data, size, &pos, &w, &h, &pixels)) {
        if (h > font->height)
            font->height = h;
        records++;
    }
    // shelves a line and a quarter apart keep each glyph's mip levels apart
    uint32_t gap = font->height / 4;
    uint32_t pitch = font->height + gap;

    uint32_t x = 0, y = 0, extent = 1;
    pos = 0;
    for (uint32_t code = 0; code < FONT_CODES; code++) {
        if (code >= records) {
            font->glyph_x[code] = x;
            font->glyph_y[code] = y;
            font->glyph_w[code] = 0;
            continue;
        }
        glyph_record(data, size, &pos, &w, &h, &pixels);
        glyph_ink_rows(font, code, w, h, pixels);
        font->glyph_x[code] = x;
        font->glyph_y[code] = y;
        font->glyph_w[code] = w;
        x += w + gap;
        if (x > maxtx) {
            y += pitch;
            font->glyph_x[code] = 0;
            font->glyph_y[code] = y;
            x = w + gap;
        }
        if (font->glyph_x[code] + w > extent)
            extent = font->glyph_x[code] + w;
    }
    font->tex_w = power_of_two_at_least(extent);
    font->tex_h = power_of_two_at_least(font->height + y);

    if (maxtx < font->tex_h) {
        char message[512];
        snprintf(message, sizeof message, "Font '%s' required texture of size %dx%d but maxtx=%d",
                 font->name, (int)font->tex_w, (int)font->tex_h, (int)maxtx);
        REPORT(REPORT_FATAL, message, 1);
    }
}

void font_pack_rasterize(const uint8_t *data, uint32_t size, const Font *font, uint8_t *atlas)
{
    float red[256], green[256], blue[256];
    build_palette(red, green, blue);
    uint32_t pos = 0, w, h;
    const uint8_t *pixels;
    for (uint32_t code = 0; code < FONT_CODES; code++) {
        if (!glyph_record(data, size, &pos, &w, &h, &pixels))
            break;
        for (uint32_t r = 0; r < h; r++) {
            uint8_t *dst = atlas + ((size_t)(font->glyph_y[code] + r) * font->tex_w +
                                    font->glyph_x[code]) * 4;
            for (uint32_t c = 0; c < w; c++, dst += 4) {
                uint8_t p = pixels[r * w + c];
                if (p == GLYPH_TRANSPARENT) {
                    dst[0] = dst[1] = dst[2] = dst[3] = 0;
                } else {
                    dst[0] = (uint8_t)(red[p] * 255.9f);
                    dst[1] = (uint8_t)(green[p] * 255.9f);
                    dst[2] = (uint8_t)(blue[p] * 255.9f);
                    dst[3] = 255;
                }
            }
        }
    }
}

uint8_t *font_pack_unpacked(uint32_t *size)
{
    *size = font_pack_size;
    uint8_t *block = (uint8_t *)malloc(*size);
    memcpy(block, font_pack_data, *size);
    rle_unpack(&block, size);
    return block;
}

Font *font_pack_measuring_root(const char *name)
{
    uint32_t size;
    uint8_t *stream = font_pack_unpacked(&size);
    Font *font = (Font *)calloc(1, sizeof(Font));
    font->name = strdup(name);
    font_pack_layout(stream, size, FONT_ATLAS_MAX, font);
    free(stream);
    font_root_finish(font);
    font_register(font);
    return font;
}

void font_root_finish(Font *font)
{
    font->border = 0.0f;
    font->parent = font;
    font->scale_x = font->scale_y = 1.0f;
    font->skew = font->boldness = 0.0f;
    font->glyphs = FONT_CODES;
    font->max_w = 0;
    for (uint32_t c = 0; c < FONT_CODES; c++)
        if (font->glyph_w[c] > font->max_w)
            font->max_w = font->glyph_w[c];
    font->cell_w = font->glyph_w['C'] + 1;
}

void mipmap_boost_curve(uint8_t *curve)
{
    curve[0] = 0;
    for (uint32_t i = 1; i < 256; i++)
        curve[i] = (uint8_t)(255.9 * pow(i * 0.003907776475185619, 0.4));
}

// Codes whose small levels are boosted: the glyphs ordinals are written with.
static bool boosted_code(uint32_t code)
{
    return (code >= '0' && code <= '9') || (code >= 256 && code <= 383);
}

void mipmap_boost_level(const Font *font, int32_t level, uint8_t *pixels, uint32_t width,
                        uint32_t height, const uint8_t *curve)
{
    for (uint32_t code = 0; code < FONT_CODES; code++) {
        if (!boosted_code(code))
            continue;
        uint32_t x0 = font->glyph_x[code] >> level;
        uint32_t x1 = x0 + (font->glyph_w[code] >> level);
        uint32_t y0 = font->glyph_y[code] >> level;
        uint32_t y1 = (font->glyph_y[code] + font->height) >> level;
        if (x1 > width) x1 = width;
        if (y1 > height) y1 = height;
        if (y1 <= y0)
            continue;
        // brightest byte of the glyph at this level, any channel
        double brightest = 0.001;
        for (uint32_t y = y0; y < y1; y++)
            for (uint32_t x = x0; x < x1; x++)
                for (uint32_t k = 0; k < 4; k++)
                    if (pixels[((size_t)y * width + x) * 4 + k] > brightest)
                        brightest = pixels[((size_t)y * width + x) * 4 + k];
        double stretch = 255.4 / brightest;
        for (uint32_t y = y0; y < y1; y++)
            for (uint32_t x = x0; x < x1; x++)
                for (uint32_t k = 0; k < 4; k++) {
                    uint8_t *b = &pixels[((size_t)y * width + x) * 4 + k];
                    *b = curve[(uint32_t)(*b * stretch)];
                }
    }
}
