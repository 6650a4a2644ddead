// The 2D overlay: window pixels from the top left, without depth testing,
// whatever the surrounding matrices are. Every text run is drawn inside one.
#pragma once

#include <stdint.h>

// Text drawing pushes and pops the overlay. Start 1; nothing changes it, and
// it must not change inside a text bracket.
extern int32_t text_overlay;

// Pushes both matrices and sets a pixel projection for the viewport; turns
// depth testing and depth writes off. Expects the matrix mode GL_MODELVIEW.
void overlay_push();
// Pops both matrices; leaves GL_MODELVIEW current, depth testing on and the
// depth mask 1, whatever they were before.
void overlay_pop();

// Fills the rectangle from (x0, y0) to (x1, y1), window pixels, with the
// colour 0xRRGGBB at opacity alpha (0 to 1) over what is drawn: the dark
// ground of the help and the go-to field. Leaves the GL state as it was.
void overlay_fill(float x0, float y0, float x1, float y1, uint32_t colour, float alpha);
