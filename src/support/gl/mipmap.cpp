// The software mipmap filter and its level loop.
#include "support/gl/mipmap.h"

uint32_t mip_row_bytes(uint32_t components, int32_t width)
{
    return ((uint32_t)width * components + 3) & ~3u;
}

size_t mip_buffer_bytes(uint32_t components, int32_t width, int32_t height)
{
    // one row past the last, and two pixels past that row's start
    size_t row = mip_row_bytes(components, width);
    return row * (size_t)height + row + 2 * components;
}

void mip_halve(uint32_t components, int32_t width, int32_t height, uint8_t *pixels)
{
    int32_t nw = width / 2 > 0 ? width / 2 : 1;
    int32_t nh = height / 2 > 0 ? height / 2 : 1;
    size_t src_row = mip_row_bytes(components, width);
    size_t dst_row = mip_row_bytes(components, nw);
    // each destination byte lies at or before the first source byte not yet read
    for (int32_t y = 0; y < nh; y++) {
        const uint8_t *top = pixels + 2 * (size_t)y * src_row;
        const uint8_t *bottom = top + src_row;
        uint8_t *dst = pixels + (size_t)y * dst_row;
        for (int32_t x = 0; x < nw; x++) {
            for (uint32_t k = 0; k < components; k++) {
                size_t left = 2 * (size_t)x * components + k;
                size_t right = left + components;
                uint32_t sum = top[left] + top[right] + bottom[left] + bottom[right] + 2;
                dst[(size_t)x * components + k] = (uint8_t)(sum >> 2);
            }
        }
    }
}

int32_t mip_chain_levels(uint32_t components, int32_t width, int32_t height, uint8_t *pixels,
                         MipUpload upload, void *context)
{
    int32_t level = 0;
    for (;;) {
        if (width < 2 && height < 2)
            return level;
        int32_t nw = width / 2 > 0 ? width / 2 : 1;
        int32_t nh = height / 2 > 0 ? height / 2 : 1;
        mip_halve(components, width, height, pixels);
        level++;
        upload(context, level, nw, nh, pixels);
        if (width < 4 && height < 4)
            return level;
        width = nw;
        height = nh;
    }
}
