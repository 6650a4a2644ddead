// Navigation: keys and drags to a zoom factor and a pan, and the view update.
//
// The view is two positions only, view_lo and view_hi: the pixel x of ordinal
// 0 and of the top of the line. Zoom and pan replace both by a linear map
// anchored on the centre column, so deep zoom just makes both numbers longer.
// Everything here reads the plain input state, never the platform.
#pragma once

#include <stdint.h>

#include "support/bignum/bignum.h"

// How many levels segment may nest; -1 means no limit. A and S change it.
extern int32_t segment_depth_limit;

// Exponent rate per second of key zoom: 3.0, 9.0 with Shift, times 0.3 with Ctrl.
double navigation_zoom_speed();
// The zoom factor of Z/Up and X/Down this frame (1.0 without them); sets
// *zoom_step to the frame's exponent, clamped to 0.3 however slow the frame.
double navigation_key_zoom(double frame_dt, double zoom_speed, double *zoom_step);
// A lowers the depth limit (not below -1), S then raises it, on key edges.
void navigation_depth_keys();
// How far the line moves left this frame: arrows at one window width per
// second (frame time clamped to 0.2 s) plus the mouse drag.
int32_t navigation_pan_pixels(double frame_dt, int32_t drag_dx);
// The minimum-zoom rule: the line never gets shorter on screen than
// min_line_length pixels, so the user can't zoom out past the first view.
double navigation_min_zoom(double zoom_factor, Bignum view_lo, Bignum view_hi, double min_line_length);

// The first view: the line centred over the middle eight tenths of screen_w.
// The caller owns both numbers.
void view_start(Bignum *view_lo, Bignum *view_hi, double *min_line_length);
// Zooms about the centre column by zoom_factor and moves the line left by
// pan_pixels, replacing (and freeing) both ends. A zoom factor that is not
// finite (both ends beyond the double range on one side) leaves the view as
// it is for this frame.
void view_update(Bignum *view_lo, Bignum *view_hi, double zoom_factor, int32_t pan_pixels);
