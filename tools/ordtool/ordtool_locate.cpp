// ordtool locate: the view that shows an ordinal's tick at the centre column.
//
// There is no formula from ordinal to place: the line is cut up by the
// fundamental sequences of the intervals' right ends. So locate follows the
// very intervals the tick walk builds (segment's weights, its skip of members
// at or below the left end, its first-child shares), from the whole line down
// to the interval whose left end is the ordinal, computing the positions of
// the first view exactly; then it picks the zoom 10^K at which the ticks
// before and after it in that interval's sequence stand at least 100 pixels
// away.
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_expand.h"
#include "PlotSegment2/segment.h"
#include "tools/ordtool/ordtool.h"
#include "tools/ordtool/ordtool_view.h"

static const char locate_usage[] = "ordtool locate ORD --width W";

// Most members before the ordinal's in one sequence: the layout gives up on
// an interval that needs over 1000 ticks before the view's right edge.
constexpr int32_t LOCATE_MAX_INDEX = 900;
// Most intervals followed down.
constexpr int32_t LOCATE_MAX_DEPTH = 20000;
// Pixels wanted to the neighbouring ticks.
constexpr int32_t LOCATE_ROOM = 100;

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

// The least K at which `gap` (first-view pixels) times 10^K spans `room`
// pixels; with `print`, prints "--centre P --zoom 10^K" for the point `centre`.
static int64_t view_for(Decimal centre, Decimal gap, int32_t room, bool print)
{
    Decimal want = decimal_from_int(room);
    int64_t K = 0;
    for (;;) {
        Decimal scaled = decimal_shift(gap, K);
        bool enough = decimal_cmp(scaled, want) >= 0;
        decimal_free(scaled);
        if (enough || K >= VIEW_MAX_ZOOM_EXPONENT)
            break;
        // jump close first: each digit of the gap's exponent is a factor of ten
        int64_t e = gap.count ? decimal_exponent(gap) : 0;
        K = K < -e ? -e : K + 1;
    }
    if (print) {
        // six decimals of a pixel at that zoom
        Decimal p = decimal_floor(centre, K + 6);
        char *text = decimal_tostring(p);
        printf("--centre %s --zoom 10^%lld\n", text, (long long)K);
        free(text);
        decimal_free(p);
    }
    decimal_free(want);
    return K;
}

// The refusal for a depth past what is practical, with the view of the
// deepest interval reached: its middle, zoomed as far as it stays in the window.
static int64_t locate_too_deep(const char *why, Decimal xlo, Decimal xhi, double width, bool print)
{
    if (print)
        fprintf(stderr, "ordtool: locate stops here: %s; the deepest view reached follows\n", why);
    Decimal sum = decimal_add(xlo, xhi);
    Decimal half = decimal_from_int(5);
    Decimal halfw = decimal_shift(half, -1);
    Decimal middle = decimal_mul(sum, halfw);
    Decimal size = decimal_sub(xhi, xlo);
    // the largest zoom at which the whole interval is in the window
    int64_t K = view_for(middle, size, (int32_t)width, false);
    if (K > 0)
        K--;
    if (print) {
        Decimal p = decimal_floor(middle, K + 6);
        char *text = decimal_tostring(p);
        printf("--centre %s --zoom 10^%lld\n", text, (long long)K);
        free(text);
        decimal_free(p);
    }
    decimal_free(size);
    decimal_free(middle);
    decimal_free(halfw);
    decimal_free(half);
    decimal_free(sum);
    return K;
}

// Follows the intervals from the whole line down to the one whose left end is
// the target; returns the K of its view, and prints the view with `print`.
// Positions are rounded down to at least `min_scale` decimals on the way, and
// more where the interval is smaller. Sets *deep when it stopped short.
static int64_t locate_walk(Ord target, Ord top, double width, int64_t min_scale, bool print,
                           bool *deep)
{
    Decimal xlo, xhi;
    view_first(width, &xlo, &xhi);
    int64_t K = 0;
    *deep = false;
    Ord ordlo = Ord_zero(), ordhi = top;
    int32_t k = 0;
    // every expansion on the way stays alive: the interval's ends are members
    // of them, and members share arrays with what was expanded
    OrdExpansion *path = nullptr;
    int32_t path_count = 0;
    for (int32_t depth = 0;; depth++) {
        if (depth >= LOCATE_MAX_DEPTH) {
            K = locate_too_deep("more than 20000 intervals down", xlo, xhi, width, print);
            *deep = true;
            break;
        }
        // keep the interval's scale: ten digits below its size
        Decimal size = decimal_sub(xhi, xlo);
        int64_t scale = 10 - decimal_exponent(size);
        decimal_free(size);
        if (scale < min_scale)
            scale = min_scale;
        if (scale > (int64_t)VIEW_MAX_ZOOM_EXPONENT) {
            K = locate_too_deep("the zoom would pass 10^200000", xlo, xhi, width, print);
            *deep = true;
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
            K = locate_too_deep("the ordinal stands more than 900 ticks into a sequence, "
                                     "more than the layout draws in one interval",
                                     xlo, xhi, width, print);
            *deep = true;
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
            // neighbours are the members before and after it
            Decimal gap_before = decimal_sub(left, before);
            Decimal gap_after = decimal_sub(right, left);
            K = view_for(left, decimal_cmp(gap_before, gap_after) < 0 ? gap_before : gap_after,
                         LOCATE_ROOM, print);
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
    return K;
}

int ordtool_locate(int argc, char **argv)
{
    const char *ord_text = nullptr;
    // static: its decimals stay reachable to the end, on every way out
    static ViewSetup setup = {};
    for (int i = 2; i < argc; i++) {
        if (strcmp(argv[i], "--width") == 0) {
            int32_t taken = view_option(argc, argv, &i, &setup, false, false);
            if (taken < 0)
                return ORDTOOL_FAILED;
        } else if (argv[i][0] == '-' && argv[i][1] == '-') {
            return ordtool_fail("unknown option '%s'; usage: %s", ordtool_quote(argv[i]),
                                locate_usage);
        } else if (ord_text) {
            return ordtool_fail("too many arguments ('%s'); usage: %s", ordtool_quote(argv[i]),
                                locate_usage);
        } else {
            ord_text = argv[i];
        }
    }
    if (!ord_text || setup.width == 0)
        return ordtool_fail("missing arguments; usage: %s", locate_usage);
    Ord target;
    if (!ordtool_read_ord(ord_text, &target))
        return ORDTOOL_FAILED;

    Ord top = Ord_maketop();
    int status = 0;
    if (Ord_istop(target) || target.count == 0) {
        // the two ends of the line stand in the first view
        Decimal xlo, xhi;
        view_first(setup.width, &xlo, &xhi);
        Decimal room = decimal_from_int(LOCATE_ROOM);
        view_for(Ord_istop(target) ? xhi : xlo, room, LOCATE_ROOM, true);
        decimal_free(room);
        decimal_free(xlo);
        decimal_free(xhi);
    } else {
        // a rounding at an early interval would move everything below it, so
        // the second walk keeps every position to the final zoom's precision
        bool deep;
        int64_t K = locate_walk(target, top, setup.width, 4, false, &deep);
        locate_walk(target, top, setup.width, K + 8, true, &deep);
        status = deep ? 1 : 0;
    }
    Ord_free(top);
    Ord_free(target);
    return status;
}
