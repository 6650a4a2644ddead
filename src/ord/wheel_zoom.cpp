// Wheel zoom about the pointer.
#include "ord/wheel_zoom.h"

#include "ord/navigation.h"
#include "ord/panel_hits.h"
#include "support/gl/input_state.h"

// anchor + (p - anchor) * factor, a new number.
static Bignum zoom_point(Bignum p, Bignum anchor, double factor)
{
    Bignum from_anchor = Bignum_lincomb(p, anchor, 1.0, -1.0);
    Bignum moved = Bignum_lincomb(anchor, from_anchor, 1.0, factor);
    Bignum_free(from_anchor);
    return moved;
}

void view_zoom_about(Bignum *view_lo, Bignum *view_hi, double factor, int32_t x,
                     double min_line_length)
{
    Bignum anchor = Bignum_fromdouble(x);
    Bignum lo = zoom_point(*view_lo, anchor, factor);
    Bignum hi = zoom_point(*view_hi, anchor, factor);
    Bignum_free(anchor);
    Bignum_free(*view_lo);
    Bignum_free(*view_hi);
    *view_lo = lo;
    *view_hi = hi;
    // the limit from the exact lengths, as the keys have it
    Bignum home_lo, home_hi;
    view_home(&home_lo, &home_hi, min_line_length);
    Bignum home_span = Bignum_lincomb(home_hi, home_lo, 1.0, -1.0);
    Bignum span = Bignum_lincomb(hi, lo, 1.0, -1.0);
    if (Bignum_lt(span, home_span)) {
        Bignum_free(*view_lo);
        Bignum_free(*view_hi);
        *view_lo = home_lo;
        *view_hi = home_hi;
    } else {
        Bignum_free(home_lo);
        Bignum_free(home_hi);
    }
    Bignum_free(span);
    Bignum_free(home_span);
}

bool wheel_zoom(Bignum *view_lo, Bignum *view_hi, double min_line_length)
{
    int32_t pulses = wheel_pulses;
    uint32_t held = mouse_buttons & ~(uint32_t)(WHEEL_UP | WHEEL_DOWN);
    if (pulses == 0 || held != 0 || panel_text_at(mouse_x, mouse_y))
        return false;
    if (pulses > WHEEL_MAX_PULSES)
        pulses = WHEEL_MAX_PULSES;
    if (pulses < -WHEEL_MAX_PULSES)
        pulses = -WHEEL_MAX_PULSES;
    double step = shift_held ? WHEEL_STEP_SHIFT : WHEEL_STEP;
    // one step a pulse: each factor is exact in lincomb's four decimals
    double factor = pulses > 0 ? step : 1.0 / step;
    for (int32_t i = 0; i < (pulses > 0 ? pulses : -pulses); i++)
        view_zoom_about(view_lo, view_hi, factor, mouse_x, min_line_length);
    return true;
}
