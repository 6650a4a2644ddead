// Navigation: zoom speed, key zoom, depth limit, pan, minimum zoom, view update.
#include "ord/navigation.h"

#include <math.h>

#include "support/gl/input_state.h"
#include "support/gl/screen.h"

int32_t segment_depth_limit = -1;

double navigation_zoom_speed()
{
    double zoom_speed = shift_held ? 9.0 : 3.0;
    // the products 3.0 * 0.3 and 9.0 * 0.3 at their exact double bits
    if (ctrl_held)
        zoom_speed *= 0.3;
    return zoom_speed;
}

double navigation_key_zoom(double frame_dt, double zoom_speed, double *zoom_step)
{
    double step = frame_dt * zoom_speed;
    if (step > 0.3)
        step = 0.3;
    *zoom_step = step;
    double zoom_factor = 1.0;
    if (key_down[KEY_Z] || key_down[KEY_UP])
        zoom_factor = exp(step);
    if (key_down[KEY_X] || key_down[KEY_DOWN])
        zoom_factor = exp(-step) * zoom_factor;
    return zoom_factor;
}

void navigation_depth_keys()
{
    if (key_edge(KEY_A)) {
        segment_depth_limit -= 1;
        if (segment_depth_limit < 0)
            segment_depth_limit = -1;
    }
    if (key_edge(KEY_S))
        segment_depth_limit += 1;
}

int32_t navigation_pan_pixels(double frame_dt, int32_t drag_dx)
{
    double dt = frame_dt < 0.2 ? frame_dt : 0.2;
    double arrows = (double)key_down[KEY_RIGHT] - (double)key_down[KEY_LEFT];
    return (int32_t)(arrows * dt * screen_w + drag_dx);
}

double navigation_min_zoom(double zoom_factor, Bignum view_lo, Bignum view_hi, double min_line_length)
{
    double span = Bignum_todouble(view_hi) - Bignum_todouble(view_lo);
    double least = min_line_length / span;
    return zoom_factor > least ? zoom_factor : least;
}

void view_start(Bignum *view_lo, Bignum *view_hi, double *min_line_length)
{
    double w = screen_w;
    double length = 0.8 * w;
    *min_line_length = length;
    *view_lo = Bignum_fromdouble((w - length) * 0.5);
    *view_hi = Bignum_fromdouble(0.5 * (w + length));
}

// p goes to p * zoom_factor + offset.
static Bignum view_map(Bignum p, double zoom_factor, double offset)
{
    Bignum shift = Bignum_fromdouble(offset);
    Bignum moved = Bignum_lincomb(p, shift, zoom_factor, 1.0);
    Bignum_free(shift);
    Bignum_free(p);
    return moved;
}

void view_update(Bignum *view_lo, Bignum *view_hi, double zoom_factor, int32_t pan_pixels)
{
    // an infinite factor has no meaning as a view; keep the last good one
    if (!isfinite(zoom_factor))
        return;
    // the centre column stays put under zoom (the weights are quantised to
    // four decimals inside lincomb, the offset is not: a fraction of a pixel)
    double offset = (screen_w / 2) * (1.0 - zoom_factor) - pan_pixels;
    *view_lo = view_map(*view_lo, zoom_factor, offset);
    *view_hi = view_map(*view_hi, zoom_factor, offset);
}
