// Navigation: zoom speed, key zoom, depth limit, pan, minimum zoom, view update.
#include "ord/navigation.h"

#include <math.h>

#include "PlotSegment2/segment.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"

// screen_w when view_start ran; 0 before.
static int32_t start_width = 0;

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
    if (key_down[KEY_Z] || key_down[KEY_UP] || key_down[KEY_EQUALS] || key_down[KEY_KP_PLUS])
        zoom_factor = exp(step);
    if (key_down[KEY_X] || key_down[KEY_DOWN] || key_down[KEY_MINUS] || key_down[KEY_KP_MINUS])
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

// The part of a pixel the arrows moved but the last frame could not show:
// at hundreds of frames a second a frame's share is a pixel or less, and
// dropping it would slow the pan with every gain in frame rate.
static double pan_carry = 0.0;

int32_t navigation_pan_pixels(double frame_dt, int32_t drag_dx)
{
    double dt = frame_dt < 0.2 ? frame_dt : 0.2;
    double arrows = (double)key_down[KEY_RIGHT] - (double)key_down[KEY_LEFT];
    if (arrows == 0)
        pan_carry = 0.0;
    double move = arrows * dt * screen_w + pan_carry + drag_dx;
    int32_t whole = (int32_t)move;
    pan_carry = arrows != 0 ? move - whole : 0.0;
    return whole;
}

void view_home(Bignum *view_lo, Bignum *view_hi, double min_line_length)
{
    double w = screen_w;
    *view_lo = Bignum_fromdouble((w - min_line_length) * 0.5);
    *view_hi = Bignum_fromdouble(0.5 * (w + min_line_length));
}

void view_start(Bignum *view_lo, Bignum *view_hi, double *min_line_length)
{
    *min_line_length = 0.8 * screen_w;
    view_home(view_lo, view_hi, *min_line_length);
    start_width = screen_w;
}

int32_t view_first_width()
{
    return start_width;
}

void view_first_ends(Bignum *view_lo, Bignum *view_hi)
{
    int32_t now = screen_w;
    screen_w = start_width;
    view_home(view_lo, view_hi, 0.8 * start_width);
    screen_w = now;
}

// base + (p - anchor) * zoom_factor, a new number; base is the anchor moved by the pan.
static Bignum view_map(Bignum p, Bignum anchor, Bignum base, double zoom_factor)
{
    Bignum from_anchor = Bignum_lincomb(p, anchor, 1.0, -1.0);
    Bignum moved = Bignum_lincomb(base, from_anchor, 1.0, zoom_factor);
    Bignum_free(from_anchor);
    return moved;
}

void view_update(Bignum *view_lo, Bignum *view_hi, double zoom_factor, int32_t pan_pixels)
{
    if (!isfinite(zoom_factor))
        return;
    // below 0.0001 the weight is 0 and the line a point; far above 10000
    // lincomb's accumulators overflow (a frame of keys is at most exp(0.3))
    zoom_factor = fmin(fmax(zoom_factor, 0.0001), 10000.0);
    Bignum centre = Bignum_fromdouble(screen_w / 2);
    // zooming in about empty space would fling the line away for good
    Bignum anchor = centre;
    if (zoom_factor > 1.0) {
        if (Bignum_lt(centre, *view_lo))
            anchor = *view_lo;
        else if (Bignum_lt(*view_hi, centre))
            anchor = *view_hi;
    }
    // the anchor is kept exactly, so no drift builds up from frame to frame
    Bignum pan = Bignum_fromdouble(pan_pixels);
    Bignum base = Bignum_lincomb(anchor, pan, 1.0, -1.0);
    Bignum lo = view_map(*view_lo, anchor, base, zoom_factor);
    Bignum hi = view_map(*view_hi, anchor, base, zoom_factor);
    Bignum_free(*view_lo);
    Bignum_free(*view_hi);
    *view_lo = lo;
    *view_hi = hi;
    Bignum_free(base);
    Bignum_free(pan);
    Bignum_free(centre);
}

// The length of the line between two ends; the caller frees it.
static Bignum view_span(Bignum lo, Bignum hi)
{
    return Bignum_lincomb(hi, lo, 1.0, -1.0);
}

// At the zoom-out limit: the line as long as at home, zoomed there about the
// centre column, then moved home by the part of the zoom the limit refused
// (glide, at most 1); within half a pixel of home it is home exactly.
static void view_at_limit(Bignum *view_lo, Bignum *view_hi, double least, double glide,
                          int32_t pan_pixels, Bignum home_lo, Bignum home_span)
{
    view_update(view_lo, view_hi, least, 0);
    Bignum away = Bignum_lincomb(*view_lo, home_lo, 1.0, -1.0);
    Bignum pan = Bignum_fromdouble(pan_pixels);
    Bignum base = Bignum_lincomb(home_lo, pan, 1.0, -1.0);
    Bignum lo = Bignum_lincomb(base, away, 1.0, glide);
    Bignum rest = Bignum_lincomb(lo, home_lo, 1.0, -1.0);
    if (fabs(Bignum_todouble(rest)) < 0.5) {
        Bignum_free(lo);
        lo = Bignum_lincomb(home_lo, home_lo, 1.0, 0.0);
    }
    Bignum_free(*view_lo);
    Bignum_free(*view_hi);
    *view_lo = lo;
    *view_hi = Bignum_lincomb(lo, home_span, 1.0, 1.0);
    Bignum_free(rest);
    Bignum_free(base);
    Bignum_free(pan);
    Bignum_free(away);
}

void view_navigate(Bignum *view_lo, Bignum *view_hi, double zoom_factor, int32_t pan_pixels,
                   double min_line_length)
{
    Bignum home_lo, home_hi;
    view_home(&home_lo, &home_hi, min_line_length);
    if (key_down[KEY_HOME]) {
        Bignum_free(*view_lo);
        Bignum_free(*view_hi);
        *view_lo = home_lo;
        *view_hi = home_hi;
        return;
    }
    // the minimum-zoom rule from the exact lengths: a double difference of
    // the ends saturates far out, and its quotient then turns infinite
    Bignum home_span = view_span(home_lo, home_hi);
    Bignum span = view_span(*view_lo, *view_hi);
    double least = Bignum_ratio(home_span, span);
    if (isfinite(zoom_factor) && zoom_factor <= least)
        view_at_limit(view_lo, view_hi, least, zoom_factor / least, pan_pixels, home_lo, home_span);
    else
        view_update(view_lo, view_hi, zoom_factor, pan_pixels);
    Bignum_free(span);
    Bignum_free(home_span);
    Bignum_free(home_lo);
    Bignum_free(home_hi);
}
