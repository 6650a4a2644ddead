// Navigation: keys and drags to a zoom factor and a pan, and the view update.
//
// The view is two positions only, view_lo and view_hi: the pixel x of ordinal
// 0 and of the top of the line. Zoom and pan replace both by a linear map
// anchored on the centre column, so deep zoom just makes both numbers longer.
// Everything here reads the plain input state, never the platform.
#pragma once

#include <stdint.h>

#include "support/bignum/bignum.h"

// Exponent rate per second of key zoom: 3.0, 9.0 with Shift, times 0.3 with Ctrl.
double navigation_zoom_speed();
// The zoom factor of Z/Up/+ and X/Down/- this frame (1.0 without them); sets
// *zoom_step to the frame's exponent, clamped to 0.3 however slow the frame.
double navigation_key_zoom(double frame_dt, double zoom_speed, double *zoom_step);
// A lowers segment_depth_limit (PlotSegment2/segment.h) (not below -1), S
// then raises it, on key edges.
void navigation_depth_keys();
// How far the line moves left this frame: arrows at one window width per
// second (frame time clamped to 0.2 s) plus the mouse drag, in whole pixels;
// what is left of a pixel while an arrow is held goes to the next frame.
int32_t navigation_pan_pixels(double frame_dt, int32_t drag_dx);
// The first view: the line centred over the middle eight tenths of screen_w,
// and min_line_length set to that length. The caller owns both numbers.
void view_start(Bignum *view_lo, Bignum *view_hi, double *min_line_length);
// The first view as view_start made it, at the window width of that time
// (the frame in which located views are given). The caller owns both numbers.
void view_first_ends(Bignum *view_lo, Bignum *view_hi);
// That width: screen_w when view_start ran.
int32_t view_first_width();
// Home: the line min_line_length pixels long, centred in the window as it is
// now (at the start-up width, exactly the first view). It is also the
// zoom-out limit. The caller owns both numbers.
void view_home(Bignum *view_lo, Bignum *view_hi, double min_line_length);
// Zooms by zoom_factor and moves the line left by pan_pixels, replacing (and
// freeing) both ends. The zoom is about the centre column, exactly; zooming
// in with the line off that column is about the line's nearer end, so the
// line is never flung away. A factor that is not finite leaves the view as
// it is; others are held to 0.0001..10000, what the weights of
// Bignum_lincomb carry without collapsing the line or overflowing.
void view_update(Bignum *view_lo, Bignum *view_hi, double zoom_factor, int32_t pan_pixels);
// One frame of navigation after the input is read: Home held puts the view
// home; otherwise the minimum-zoom rule (the line never shorter than at
// home, worked out exactly from the ends), then view_update. Zoom out asked
// for beyond that limit glides the line home at the zoom's own rate, and
// within half a pixel of home it is home, so X held always ends there.
void view_navigate(Bignum *view_lo, Bignum *view_hi, double zoom_factor, int32_t pan_pixels,
                   double min_line_length);
