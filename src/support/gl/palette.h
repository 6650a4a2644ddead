// The 256-entry palette of glyph pixels, free of any graphics library.
//
// 0 to 15: the sixteen text-mode colours (8 is dark grey); 16 to 39: a grey
// ramp from black to white; 40 to 255: a 6x6x6 colour cube. Glyph pixels use
// 1, 17 to 39, and 255 for transparent.
#pragma once

// Fills three tables of 256 components from 0.0 to 1.0; the caller owns them.
void build_palette(float *red, float *green, float *blue);
