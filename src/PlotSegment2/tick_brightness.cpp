// The colour of a tick stroke from its kind and its interval size.
#include "PlotSegment2/tick_brightness.h"

#include <math.h>

int32_t tick_brightness(float size, float span)
{
    double scale = (double)(1.0f / logf(span)) * 256.0;
    return (int32_t)(log(size + 1.0) * scale + 128.0);
}

uint32_t tick_shade(uint32_t colour, int32_t t)
{
    uint32_t shaded = 0;
    for (int shift = 16; shift >= 0; shift -= 8) {
        int32_t channel = (colour >> shift) & 0xff;
        if (t <= 255) {
            // darkened
            channel = channel * t / 255;
        } else {
            // toward white, at most about half way
            int32_t u = t - 256 < 128 ? t - 256 : 128;
            channel = 255 - (255 - channel) * (255 - u) / 255;
        }
        shaded |= (uint32_t)channel << shift;
    }
    return shaded;
}
