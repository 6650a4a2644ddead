// PNG writing through libpng.
#include "support/image/png_write.h"

#include <png.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

bool png_write(const char *path, const uint8_t *rgba, int32_t w, int32_t h, bool top_first)
{
    FILE *f = fopen(path, "wb");
    if (!f)
        return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    uint8_t *row = (uint8_t *)malloc((size_t)w * 3);
    // libpng reports its failures by a long jump back here
    if (setjmp(png_jmpbuf(png))) {
        free(row);
        png_destroy_write_struct(&png, &info);
        fclose(f);
        return false;
    }
    png_init_io(png, f);
    png_set_IHDR(png, info, (png_uint_32)w, (png_uint_32)h, 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (int32_t y = 0; y < h; y++) {
        int32_t source_row = top_first ? y : h - 1 - y;
        const uint8_t *src = rgba + (size_t)source_row * w * 4;
        for (int32_t x = 0; x < w; x++)
            memcpy(row + x * 3, src + x * 4, 3);
        png_write_row(png, row);
    }
    png_write_end(png, info);
    free(row);
    png_destroy_write_struct(&png, &info);
    return fclose(f) == 0;
}
