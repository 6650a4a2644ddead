// Locating an ordinal: the walk down segment's intervals to its tick.
#include "PlotSegment2/locate.h"

#include <math.h>
#include <stdlib.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_expand.h"
#include "PlotSegment2/segment.h"

// Most members before the ordinal's in one sequence: the layout gives up on
// an interval that needs over 1000 ticks before the view's right edge.
constexpr int32_t LOCATE_MAX_INDEX = 900;
// Most intervals followed down.
constexpr int32_t LOCATE_MAX_DEPTH = 20000;

// A weight as Bignum_lincomb takes it: a whole part and four decimals.
static Decimal weight_of(double w)
{
    int64_t whole = (int64_t)floor(w + 0.00005);
    int64_t frac = (int64_t)floor((w - (double)whole) * 10000 + 0.5);
    Decimal units = decimal_from_int(whole * 10000 + frac);
    Decimal d = decimal_shift(units, -4);
    decimal_free(units);
    return d;
}

// a*X + b*Y exactly, then rounded down to `scale` decimals.
static Decimal lincomb(Decimal X, Decimal Y, double a, double b, int64_t scale)
{
    Decimal wa = weight_of(a), wb = weight_of(b);
    Decimal ax = decimal_mul(X, wa), by = decimal_mul(Y, wb);
    Decimal sum = decimal_add(ax, by);
    Decimal r = decimal_floor(sum, scale);
    decimal_free(sum);
    decimal_free(by);
    decimal_free(ax);
    decimal_free(wb);
    decimal_free(wa);
    return r;
}

// Replaces *d by v.
static void decimal_set(Decimal *d, Decimal v)
{
    decimal_free(*d);
    *d = v;
}

// The least K at which `gap` (first-view pixels) times 10^K spans `room` pixels.
static int64_t zoom_for(Decimal gap, int32_t room)
{
    Decimal want = decimal_from_int(room);
    int64_t K = 0;
    for (;;) {
        Decimal scaled = decimal_shift(gap, K);
        bool enough = decimal_cmp(scaled, want) >= 0;
        decimal_free(scaled);
        if (enough || K >= LOCATE_MAX_ZOOM_EXPONENT)
            break;
        // jump close first: each digit of the gap's exponent is a factor of ten
        int64_t e = gap.count ? decimal_exponent(gap) : 0;
        K = K < -e ? -e : K + 1;
    }
    decimal_free(want);
    return K;
}

// The view of `centre` at 10^K: the point to six decimals of a pixel at that zoom.
static LocateResult view_at(Decimal centre, int64_t K, const char *note)
{
    return LocateResult{decimal_floor(centre, K + 6), K, note == nullptr, note};
}

// The deepest interval reached, for a depth past what is practical: its
// middle, zoomed as far as it stays whole in the window.
static LocateResult too_deep(const char *note, Decimal xlo, Decimal xhi, double width)
{
    Decimal sum = decimal_add(xlo, xhi);
    Decimal five = decimal_from_int(5);
    Decimal half = decimal_shift(five, -1);
    Decimal middle = decimal_mul(sum, half);
    Decimal size = decimal_sub(xhi, xlo);
    int64_t K = zoom_for(size, (int32_t)width);
    if (K > 0)
        K--;
    LocateResult r = view_at(middle, K, note);
    decimal_free(size);
    decimal_free(middle);
    decimal_free(half);
    decimal_free(five);
    decimal_free(sum);
    return r;
}

// The first tick right of the target: the interval from it (at xlo) to the
// next member (ordhi at xhi) is cut into first children, each from the
// target to the first member of its right end's sequence above the target,
// until that member is a successor, whose tick is the target's right
// neighbour; its distance from xlo. Expansions go on the path.
static Decimal right_neighbour_gap(Ord target, Ord ordhi, Decimal xlo, Decimal xhi, int64_t scale,
                                   OrdExpansion **path, int32_t *path_count)
{
    Decimal hi = decimal_shift(xhi, 0);
    // ten digits below the interval's own size, which may be far below its parent's
    Decimal size = decimal_sub(xhi, xlo);
    if (size.count && 10 - decimal_exponent(size) > scale)
        scale = 10 - decimal_exponent(size);
    decimal_free(size);
    for (int32_t k = 0; k < LOCATE_MAX_DEPTH && !Ord_issuccessor(ordhi); k++) {
        OrdExpansion e = {};
        int32_t c = 8, m = 0;
        for (;;) {
            e = Ord_expandfresh(ordhi, c);
            m = 0;
            while (m < c && Ord_cmp(e.seq[m], target) <= 0)
                m++;
            if (m < c || c > LOCATE_MAX_INDEX)
                break;
            Ord_freeexpansion(e);
            c *= 2;
        }
        *path = (OrdExpansion *)realloc(*path, (size_t)(*path_count + 1) * sizeof(OrdExpansion));
        (*path)[(*path_count)++] = e;
        if (m >= c)
            break;  // past what the layout draws: the interval's end stands
        bool successor = Ord_issuccessor(e.seq[m]);
        double aw = successor ? CONVERGE_RATIO : CONVERGE_RATIO * (2.0 / (k + 2));
        double bw = successor ? CONVERGE_COMPLEMENT : 1.0 - aw;
        // each step keeps a share of at least 0.2983: a digit more every step
        decimal_set(&hi, lincomb(hi, xlo, bw, aw, scale + k + 1));
        ordhi = e.seq[m];
    }
    Decimal gap = decimal_sub(hi, xlo);
    decimal_free(hi);
    return gap;
}

// Follows the intervals from the whole line down to the one whose left end is
// the target and returns its view. Positions are rounded down to at least
// `min_scale` decimals on the way, and more where the interval is smaller.
static LocateResult locate_walk(Ord target, Ord top, Decimal line_lo, Decimal line_hi,
                                double width, int64_t min_scale)
{
    Decimal xlo = decimal_shift(line_lo, 0), xhi = decimal_shift(line_hi, 0);
    LocateResult result = {};
    Ord ordlo = Ord_zero(), ordhi = top;
    int32_t k = 0;
    // every expansion on the way stays alive: the interval's ends are members
    // of them, and members share arrays with what was expanded
    OrdExpansion *path = nullptr;
    int32_t path_count = 0;
    for (int32_t depth = 0;; depth++) {
        if (depth >= LOCATE_MAX_DEPTH) {
            result = too_deep("more than 20000 intervals down", xlo, xhi, width);
            break;
        }
        // keep the interval's scale: ten digits below its size
        Decimal size = decimal_sub(xhi, xlo);
        int64_t scale = 10 - decimal_exponent(size);
        decimal_free(size);
        if (scale < min_scale)
            scale = min_scale;
        if (scale > LOCATE_MAX_ZOOM_EXPONENT) {
            result = too_deep("the zoom would pass 10^200000", xlo, xhi, width);
            break;
        }

        // enough members to pass the target; m of them at or below the left end
        OrdExpansion e = {};
        int32_t c = 8, m = 0, j = 0;
        for (;;) {
            e = Ord_expandfresh(ordhi, c);
            m = 0;
            while (m < c && Ord_cmp(e.seq[m], ordlo) <= 0)
                m++;
            j = m;
            while (j < c && Ord_cmp(e.seq[j], target) <= 0)
                j++;
            if (j < c || c > LOCATE_MAX_INDEX + m)
                break;
            Ord_freeexpansion(e);
            c *= 2;
        }
        path = (OrdExpansion *)realloc(path, (size_t)(path_count + 1) * sizeof(OrdExpansion));
        path[path_count++] = e;
        if (j >= c || j - m > LOCATE_MAX_INDEX) {
            result = too_deep("the ordinal stands more than 900 ticks into a sequence, "
                              "more than the layout draws in one interval",
                              xlo, xhi, width);
            break;
        }

        // the first child's share, as segment gives it
        bool successor = Ord_issuccessor(e.seq[m]);
        double aw = successor ? CONVERGE_RATIO : CONVERGE_RATIO * (2.0 / (k + 2));
        double bw = successor ? CONVERGE_COMPLEMENT : 1.0 - aw;
        Decimal q0 = lincomb(xhi, xlo, bw, aw, scale);
        int32_t child = j - m;
        if (child == 0) {
            // below the first member above the left end: the first child
            decimal_set(&xhi, q0);
            ordhi = e.seq[m];
            k++;
            continue;
        }
        // child i runs from member m + i - 1 at q_(i-1) to member m + i at q_i
        Decimal before = decimal_shift(xlo, 0), left = q0;
        Decimal right = lincomb(xhi, left, CONVERGE_COMPLEMENT, CONVERGE_RATIO, scale);
        for (int32_t i = 2; i <= child; i++) {
            decimal_set(&before, left);
            left = right;
            // each child is 0.7017 of the one before: keep the digits it needs
            right = lincomb(xhi, left, CONVERGE_COMPLEMENT, CONVERGE_RATIO, scale + i / 6 + 1);
        }
        if (Ord_cmp(e.seq[j - 1], target) == 0) {
            // found: the target's tick is this child's left end; its
            // neighbours are the member before it and the first tick after it
            Decimal gap_before = decimal_sub(left, before);
            Decimal gap_after = right_neighbour_gap(target, e.seq[j], left, right, scale, &path,
                                                    &path_count);
            int64_t K = zoom_for(decimal_cmp(gap_before, gap_after) < 0 ? gap_before : gap_after,
                                 LOCATE_ROOM);
            result = view_at(left, K, nullptr);
            decimal_free(gap_before);
            decimal_free(gap_after);
            decimal_free(before);
            decimal_free(left);
            decimal_free(right);
            break;
        }
        decimal_free(before);
        decimal_set(&xlo, left);
        decimal_set(&xhi, right);
        ordlo = e.seq[j - 1];
        ordhi = e.seq[j];
        k = 0;
    }
    for (int32_t i = path_count; i-- > 0;)
        Ord_freeexpansion(path[i]);
    free(path);
    decimal_free(xlo);
    decimal_free(xhi);
    return result;
}

static LocateResult locate_walk(Ord target, Decimal line_lo, Decimal line_hi, double width)
{
    if (Ord_istop(target) || target.count == 0) {
        // the two ends of the line stand in the first view
        Decimal room = decimal_from_int(LOCATE_ROOM);
        LocateResult r = view_at(Ord_istop(target) ? line_hi : line_lo, zoom_for(room, LOCATE_ROOM),
                                 nullptr);
        decimal_free(room);
        return r;
    }
    // a rounding at an early interval would move everything below it, so
    // the second walk keeps every position to the final zoom's precision
    Ord top = Ord_maketop();
    LocateResult first = locate_walk(target, top, line_lo, line_hi, width, 4);
    decimal_free(first.centre);
    LocateResult r = locate_walk(target, top, line_lo, line_hi, width, first.zoom_exponent + 8);
    Ord_free(top);
    return r;
}

// column + (p - centre) * zoom, rounded down to four decimals.
static Bignum view_place(Decimal p, Decimal centre, Decimal zoom, int32_t column)
{
    Decimal d = decimal_sub(p, centre);
    Decimal m = decimal_mul(d, zoom);
    Decimal c = decimal_from_int(column);
    Decimal x = decimal_add(m, c);
    Bignum b = decimal_to_bignum(x);
    decimal_free(x);
    decimal_free(c);
    decimal_free(m);
    decimal_free(d);
    return b;
}

void locate_view_ends(Decimal line_lo, Decimal line_hi, Decimal centre, Decimal zoom,
                      int32_t column, Bignum *lo, Bignum *hi)
{
    *lo = view_place(line_lo, centre, zoom, column);
    *hi = view_place(line_hi, centre, zoom, column);
}

LocateResult locate_ordinal(Ord target, Decimal line_lo, Decimal line_hi, double width)
{
    // the frame's work and memory limits are for drawing; locate's own walk
    // is bounded by its depth and index limits, and must see every member
    uint64_t work = ord_work_left, big = ord_work_big, memory = ord_memory_limit;
    ord_work_left = UINT64_MAX;
    ord_work_big = 0;
    ord_memory_limit = UINT64_MAX;
    LocateResult r = locate_walk(target, line_lo, line_hi, width);
    ord_work_left = work;
    ord_work_big = big;
    ord_memory_limit = memory;
    return r;
}
