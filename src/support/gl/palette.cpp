// The glyph palette: text-mode colours, a grey ramp and a colour cube.
#include "support/gl/palette.h"

#include <stdint.h>

void build_palette(float *red, float *green, float *blue)
{
    for (uint32_t i = 0; i < 256; i++) {
        if (i == 8) {
            red[i] = green[i] = blue[i] = 0.25f;
        } else if (i < 16) {
            // bits 4, 2, 1 choose red, green, blue; bit 8 brightens
            float level = (i & 8) ? 1.0f : 0.5f;
            red[i] = (i & 4) ? level : 0.0f;
            green[i] = (i & 2) ? level : 0.0f;
            blue[i] = (i & 1) ? level : 0.0f;
        } else if (i < 40) {
            red[i] = green[i] = blue[i] = (float)(i - 16) * 0.04347826f;
        } else {
            uint32_t k = i - 40;
            red[i] = (float)((k % 6) * 0.2);
            green[i] = (float)((k / 6 % 6) * 0.2);
            blue[i] = (float)((k / 36) * 0.2);
        }
    }
}
