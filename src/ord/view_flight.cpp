// The go-to flight: the leg out, the leg in, and the view of each frame.
#include "ord/view_flight.h"

#include <math.h>

#include "PlotSegment2/locate.h"

// A flight under way; start none.
static bool flying = false;
// Seconds flown, and the lengths of the two legs (either may be 0).
static double flown = 0, leg_out_seconds = 0, leg_in_seconds = 0;
// log10 of the line's length in pixels: the view left, the end of the leg
// out (the view left itself when there is none), the target.
static double depth_from = 0, depth_turn = 0, depth_to = 0;
// The view left and the target view, exact; the target's own numbers for the
// last frame; the centre column.
static Decimal from_lo, from_hi, to_lo, to_hi;
static Bignum target_lo, target_hi;
static int32_t centre_column = 0;
// The target's pixel distance from the centre column at the start of the leg in.
static Decimal turn_offset;

// log10 of the length from lo to hi.
static double span_depth(Bignum lo, Bignum hi)
{
    Bignum span = Bignum_lincomb(hi, lo, 1.0, -1.0);
    double d = Bignum_log(span) / log(10.0);
    Bignum_free(span);
    return d;
}

// log10 |a|, from its leading digits; a not 0.
static double decimal_log10(Decimal a)
{
    double m = 0;
    for (uint32_t i = a.count, n = 0; i-- > 0 && n < 17; n++)
        m = m * 10 + a.digits[i] * 1.0;
    uint32_t used = a.count < 17 ? a.count : 17;
    return log10(m) - (double)(used - 1) + (double)decimal_exponent(a);
}

// base + (x - anchor) * factor, as a view end.
static Bignum view_end(Decimal base, Decimal x, Decimal anchor, Decimal factor)
{
    Decimal d = decimal_sub(x, anchor);
    Decimal m = decimal_mul(d, factor);
    Decimal e = decimal_add(base, m);
    Bignum b = decimal_to_bignum(e);
    decimal_free(e);
    decimal_free(m);
    decimal_free(d);
    return b;
}

void flight_stop()
{
    if (!flying)
        return;
    flying = false;
    decimal_free(from_lo);
    decimal_free(from_hi);
    decimal_free(to_lo);
    decimal_free(to_hi);
    decimal_free(turn_offset);
    Bignum_free(target_lo);
    Bignum_free(target_hi);
}

void flight_start(Bignum lo, Bignum hi, Decimal line_lo, Decimal line_hi, Decimal centre,
                  int64_t K, int32_t column, int32_t width)
{
    flight_stop();
    // the target view, as ordtool's views make it (K whole: one digit)
    Decimal zoom = decimal_exp10((double)K);
    locate_view_ends(line_lo, line_hi, centre, zoom, column, &target_lo, &target_hi);
    Decimal c = decimal_from_int(column);
    from_lo = decimal_from_bignum(lo);
    from_hi = decimal_from_bignum(hi);
    to_lo = decimal_from_bignum(target_lo);
    to_hi = decimal_from_bignum(target_hi);
    depth_from = span_depth(lo, hi);
    depth_to = span_depth(target_lo, target_hi);

    // where the target stands in the view left: from_lo + (centre -
    // line_lo) * (its length / the first view's length), to 1e-8 pixel
    Decimal along = decimal_sub(centre, line_lo);
    Decimal span = decimal_sub(from_hi, from_lo);
    Decimal line_span = decimal_sub(line_hi, line_lo);
    Decimal scaled = decimal_mul(along, span);
    Decimal part = decimal_div_small(scaled, line_span, 8);
    Decimal at = decimal_add(from_lo, part);
    Decimal offset = decimal_sub(at, c);

    // the leg out: zoom out about the centre until the target is in reach
    depth_turn = depth_from;
    if (offset.count) {
        double reach = log10(FLIGHT_IN_REACH * (width > 1 ? width : 1));
        double out = decimal_log10(offset) - reach;
        if (out > 0)
            depth_turn = fmin(depth_from - out, depth_to);
    }
    Decimal shrink = decimal_exp10(depth_turn - depth_from);
    turn_offset = decimal_mul(offset, shrink);

    double out_decades = depth_from - depth_turn;
    double in_decades = fabs(depth_to - depth_turn);
    double decades = out_decades + in_decades;
    double total = fmin(fmax(decades / FLIGHT_MIN_RATE, FLIGHT_MIN_SECONDS), FLIGHT_MAX_SECONDS);
    leg_in_seconds = total;
    leg_out_seconds = 0;
    if (out_decades > 0) {
        // the leg in gets its share, and time to glide to the centre at least
        leg_in_seconds = fmax(total * in_decades / decades, fmin(FLIGHT_MIN_SECONDS, total / 2));
        leg_out_seconds = total - leg_in_seconds;
    }
    centre_column = column;
    flown = 0;
    flying = true;

    decimal_free(shrink);
    decimal_free(offset);
    decimal_free(at);
    decimal_free(part);
    decimal_free(scaled);
    decimal_free(line_span);
    decimal_free(span);
    decimal_free(along);
    decimal_free(c);
    decimal_free(zoom);
}

bool flight_active()
{
    return flying;
}

double flight_seconds()
{
    return leg_out_seconds + leg_in_seconds;
}

double flight_decades()
{
    return (depth_from - depth_turn) + fabs(depth_to - depth_turn);
}

void flight_step(double dt, Bignum *lo, Bignum *hi)
{
    if (!flying)
        return;
    flown += dt > 0 ? dt : 0;
    Bignum new_lo, new_hi;
    Decimal c = decimal_from_int(centre_column);
    if (flown >= leg_out_seconds + leg_in_seconds) {
        new_lo = Bignum_lincomb(target_lo, target_lo, 1.0, 0.0);
        new_hi = Bignum_lincomb(target_hi, target_hi, 1.0, 0.0);
        decimal_free(c);
        flight_stop();
    } else if (flown < leg_out_seconds) {
        // out: the view left, zoomed out about the centre column
        double u = flown / leg_out_seconds;
        Decimal h = decimal_exp10((depth_turn - depth_from) * u);
        new_lo = view_end(c, from_lo, c, h);
        new_hi = view_end(c, from_hi, c, h);
        decimal_free(h);
        decimal_free(c);
    } else {
        // in: the target view zoomed out about the target's pixel, which
        // glides from where the leg out left it to the centre column
        double p = (flown - leg_out_seconds) / leg_in_seconds;
        double depth = depth_turn + (depth_to - depth_turn) * p;
        Decimal g = decimal_exp10(depth - depth_to);
        Decimal rest = decimal_from_double(1.0 - p * p * (3.0 - 2.0 * p));
        Decimal off = decimal_mul(turn_offset, rest);
        Decimal s = decimal_add(c, off);
        new_lo = view_end(s, to_lo, c, g);
        new_hi = view_end(s, to_hi, c, g);
        decimal_free(s);
        decimal_free(off);
        decimal_free(rest);
        decimal_free(g);
        decimal_free(c);
    }
    Bignum_free(*lo);
    Bignum_free(*hi);
    *lo = new_lo;
    *hi = new_hi;
}
