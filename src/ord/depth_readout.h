// "Where am I": the zoom depth of the view against the first view, as
// ×10^N, and the depth limit of the keys S and A when one is set, in small
// letters at the top left of the window, its place reserved so labels keep
// clear of it.
#pragma once

#include "support/bignum/bignum.h"

// log10 of the view's magnification against the first view (0 there).
double view_depth(Bignum view_lo, Bignum view_hi);

// Reserves the read-out's place among the frame's text boxes, before the
// labels are placed.
void depth_readout_reserve(Bignum view_lo, Bignum view_hi);
// Draws the read-out in the font "legend" and selects "normal" again.
void depth_readout(Bignum view_lo, Bignum view_hi);
