// Bignum: conversion from doubles, the linear combination, comparisons.
#include "support/bignum/bignum.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "support/report/report.h"

// Deep in a zoom every frame makes tens of thousands of combinations of
// positions hundreds of limbs long. The limb loops run several limbs at a
// time where the processor has the wide integer instructions: a second copy
// of the two hot functions is built for them and picked at load time. The
// arithmetic is the same integer arithmetic either way.
#if defined(__x86_64__) && !defined(__SANITIZE_ADDRESS__)
#define BIGNUM_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define BIGNUM_CLONES
#endif

static Bignum bignum_alloc(uint32_t n)
{
    Bignum r;
    r.n = n;
    r.limbs = (uint16_t *)malloc(n * sizeof(uint16_t));
    if (!r.limbs)
        REPORT(REPORT_FATAL, "Out of memory for a position", 0);
    return r;
}

// A true floor of a / 10000, also for negative a.
static int32_t floor_div_base(int32_t a)
{
    int32_t q = a / (int32_t)BIGNUM_BASE;
    if (a % (int32_t)BIGNUM_BASE < 0)
        q--;
    return q;
}

// Limbs Bignum_fromdouble(x) has: two, and one more for each factor 10000.
static uint32_t fromdouble_limbs(double x)
{
    double magnitude = fabs(x + x);
    // screen-sized numbers, met at every interval of a walk: ln 9999 / ln 10000 < 1
    if (magnitude < 9999.0)
        return 2;
    // how many limbs above the pixel limb; 1 / ln 10000
    return (uint32_t)floor(log(magnitude) * 0.10857362047581294) + 2;
}

// Writes the n limbs of Bignum_fromdouble(x) into limbs.
static void fromdouble_fill(double x, uint16_t *limbs, uint32_t n)
{
    int32_t k = (int32_t)n - 2;
    // x in units of the top limb, with the excess; -ln 10000 (exp(0) is 1)
    double v = (k ? exp(k * -9.210340371976184) * x : x) + 5000.0;
    for (int32_t i = k + 1; i >= 0; i--) {
        // truncate toward minus infinity, never round
        double d = floor(v);
        limbs[i] = (uint16_t)d;
        v = (v - d) * 10000.0;
    }
}

Bignum Bignum_fromdouble(double x)
{
    Bignum r = bignum_alloc(fromdouble_limbs(x));
    fromdouble_fill(x, r.limbs, r.n);
    return r;
}

// A weight as a whole part and four decimals: the quantisation of every
// interpolation and zoom factor.
static void quantise_weight(double w, int32_t *whole, int32_t *frac)
{
    *whole = (int32_t)floor(w + 0.00005);
    *frac = (int32_t)floor((w - *whole) * 10000 + 0.5);
}

// The top limb can fold into the limb below it without changing the value.
static bool top_removable(const int32_t *limbs, uint32_t len)
{
    int32_t top = limbs[len - 1], below = limbs[len - 2];
    return (top == 5000 && below < 5000) || (top == 4999 && below >= 5000);
}

// Sums at a limb stay within this either way, for weights up to
// LINCOMB_FAST_WEIGHT: the bound of the carry's shortcut below.
constexpr int32_t LINCOMB_FAST_WEIGHT = 10000;
constexpr uint32_t CARRY_OFFSET = 1000000000u;  // a multiple of the base

typedef uint32_t LimbBlock __attribute__((vector_size(32)));
typedef int32_t SignedLimbBlock __attribute__((vector_size(32)));

// Every limb but the top one keeps its remainder by the base and passes its
// quotient up, all from the sums as they were (floor division as unsigned,
// the offset keeping it positive). Eight limbs at a time, the quotients
// moved up one place between registers: through memory, a load that
// straddles two stores just made waits for both to land.
BIGNUM_CLONES static void own_carries(int32_t *acc, uint32_t m)
{
    SignedLimbBlock up = {};
    uint32_t i = 0;
    for (; i + 8 < m; i += 8) {
        LimbBlock v;
        memcpy(&v, acc + i, sizeof v);
        v += CARRY_OFFSET;
        LimbBlock q = v / 10000u;
        SignedLimbBlock own = (SignedLimbBlock)q - (int32_t)(CARRY_OFFSET / 10000u);
        SignedLimbBlock r = (SignedLimbBlock)(v - q * 10000u);
        r += __builtin_shufflevector(up, own, 7, 8, 9, 10, 11, 12, 13, 14);
        memcpy(acc + i, &r, sizeof r);
        up = own;
    }
    int32_t carry = up[7];
    for (; i + 1 < m; i++) {
        uint32_t v = (uint32_t)acc[i] + CARRY_OFFSET;
        uint32_t q = v / 10000u;
        acc[i] = (int32_t)(v - q * 10000u) + carry;
        carry = (int32_t)(q - CARRY_OFFSET / 10000u);
    }
    acc[m - 1] += carry;
}

// Carries acc[0..m-1] out (signed sums at each limb, the top without its
// excess; acc has room for m + 1) and returns the number in normal form.
// `bounded`: every sum lies within +-CARRY_OFFSET.
BIGNUM_CLONES static Bignum lincomb_finish(int32_t *acc, uint32_t m, bool bounded)
{
    if (bounded && m > 1) {
        // each limb's own carry, at every limb at once (no limb waits for
        // the one below), twice: what is left to ripple is then at most 1
        // and mostly nothing
        for (int32_t round = 0; round < 2; round++)
            own_carries(acc, m);
    }
    /* carry out */
    for (uint32_t i = 0; i + 1 < m;) {
        // runs of limbs that are digits already, nearly all of them after
        // the rounds above, pass a block at a time: a limb-by-limb test is
        // most of the work on long positions
        if (i + 8 < m) {
            LimbBlock v;
            memcpy(&v, acc + i, sizeof v);
            LimbBlock outside = v >= 10000u;
            uint64_t lanes[4];
            memcpy(lanes, &outside, sizeof lanes);
            if (!(lanes[0] | lanes[1] | lanes[2] | lanes[3])) {
                i += 8;
                continue;
            }
        }
        if ((uint32_t)acc[i] >= 10000u) {
            int32_t c = floor_div_base(acc[i]);
            acc[i] -= c * 10000;
            acc[i + 1] += c;
        }
        i++;
    }

    uint32_t len = m;
    int32_t t = acc[m - 1];
    if ((uint32_t)(t + 5000) > 9999u) {
        /* grow by one limb */
        int32_t c = floor_div_base(t);
        acc[m - 1] = t - c * 10000;
        acc[m] = c + 5000;
        len = m + 1;
    } else {
        /* normal form: fold removable top limbs down */
        acc[m - 1] = t + 5000;
        while (len > 1 && top_removable(acc, len)) {
            acc[len - 2] += acc[len - 1] == 5000 ? 5000 : -5000;
            len--;
        }
    }

    Bignum r = bignum_alloc(len);
    for (uint32_t i = 0; i < len; i++)
        r.limbs[i] = (uint16_t)acc[i];
    return r;
}

// The most limbs the shortcuts below work on; longer differences take the
// general way.
constexpr uint32_t LOW_LIMBS = 64;

// Y plus the signed sums low[0..touched-1] at its lowest limbs (low has room
// for LOW_LIMBS), when Y is in normal form and the carry stops below Y's top
// two limbs: the result then keeps Y's top, and with it the normal form.
// False otherwise.
static bool add_low(Bignum Y, int32_t *low, uint32_t touched, Bignum *out)
{
    uint32_t n = Y.n;
    if (touched + 2 > n)
        return false;
    if ((Y.limbs[n - 1] == 5000 && Y.limbs[n - 2] < 5000) || (Y.limbs[n - 1] == 4999 && Y.limbs[n - 2] >= 5000))
        return false;
    int32_t carry = 0;
    uint32_t u = 0;
    for (; u < touched || (carry != 0 && u + 2 < n); u++) {
        if (u == LOW_LIMBS)
            return false;
        int32_t d = (int32_t)Y.limbs[u] + (u < touched ? low[u] : 0) + carry;
        carry = floor_div_base(d);
        low[u] = d - carry * 10000;
    }
    if (carry != 0)
        return false;
    Bignum r = bignum_alloc(n);
    memcpy(r.limbs, Y.limbs, (size_t)n * sizeof(uint16_t));
    for (uint32_t i = 0; i < u; i++)
        r.limbs[i] = (uint16_t)low[i];
    *out = r;
    return true;
}

// Deep in a zoom, positions run to hundreds of limbs, and a frame's
// combinations change only the lowest few: the difference of two positions
// that share their top, a point between two such (weights adding up to 1:
// Y + a (X - Y)), and a short number taken off a long one. These are computed
// on the low limbs alone. The result is the number the general way gives,
// since a value has one normal form. False when no shortcut applies.
static bool lincomb_shortcut(Bignum X, Bignum Y, int32_t ia, int32_t fa, int32_t ib, int32_t fb,
                             Bignum *out)
{
    bool difference = ia == 1 && fa == 0 && ib == -1 && fb == 0;
    bool between = (ia + ib) * 10000 + fa + fb == 10000;
    int32_t low[LOW_LIMBS];
    if (difference && X.n > Y.n && Y.n <= LOW_LIMBS) {
        // minus Y, its top's excess taken out
        for (uint32_t u = 0; u < Y.n; u++)
            low[u] = -(int32_t)Y.limbs[u];
        low[Y.n - 1] += 5000;
        return add_low(X, low, Y.n, out);
    }
    if (X.n != Y.n || (!difference && !between))
        return false;
    // the limbs above the highest that differs are equal, the top's excess too
    int32_t k = (int32_t)X.n - 1;
    while (k >= 0 && X.limbs[k] == Y.limbs[k])
        k--;
    uint32_t touched = k < 0 ? 1 : (uint32_t)k + 1;
    if (touched + 1 > LOW_LIMBS)
        return false;
    for (uint32_t i = 0; i < touched; i++)
        low[i] = (int32_t)i <= k ? (int32_t)X.limbs[i] - (int32_t)Y.limbs[i] : 0;
    if (difference) {
        *out = lincomb_finish(low, touched, false);
        return true;
    }
    // a (X - Y): whole parts at each limb, fractions one lower, and the one
    // rounding, half up as the general way's is while limb 0 is a plain digit
    if (X.n < 2)
        return false;
    int32_t z[LOW_LIMBS];
    memcpy(z, low, touched * sizeof(int32_t));
    for (uint32_t u = 0; u + 1 < touched; u++)
        low[u] = ia * z[u] + fa * z[u + 1];
    low[touched - 1] = ia * z[touched - 1];
    low[0] += floor_div_base(fa * z[0] + 5000);
    return add_low(Y, low, touched, out);
}

BIGNUM_CLONES Bignum Bignum_lincomb(Bignum X, Bignum Y, double a, double b)
{
    int32_t ia, fa, ib, fb;
    quantise_weight(a, &ia, &fa);
    quantise_weight(b, &ib, &fb);
    Bignum shortcut;
    if (lincomb_shortcut(X, Y, ia, fa, ib, fb, &shortcut))
        return shortcut;
    uint32_t m = X.n > Y.n ? X.n : Y.n;
    // one spare place for the growth in lincomb_finish; on the stack for
    // the lengths of every view short of the deepest
    int32_t local[512];
    int32_t *acc = m + 1 <= 512 ? local : (int32_t *)malloc((m + 1) * sizeof(int32_t));
    if (!acc)
        REPORT(REPORT_FATAL, "Out of memory for a position", 0);

    // whole parts at each limb, fractions one limb lower; excess included.
    // Each operand in a loop of its own without tests, which the compiler
    // can run several limbs at a time: positions run to hundreds of limbs.
    for (uint32_t u = X.n; u < m; u++)
        acc[u] = 0;
    for (uint32_t u = 0; u + 1 < X.n; u++)
        acc[u] = ia * X.limbs[u] + fa * X.limbs[u + 1];
    acc[X.n - 1] = ia * X.limbs[X.n - 1];
    for (uint32_t u = 0; u + 1 < Y.n; u++)
        acc[u] += ib * Y.limbs[u] + fb * Y.limbs[u + 1];
    acc[Y.n - 1] += ib * Y.limbs[Y.n - 1];

    // the fractions of limb 0 fall below the point: the one rounding
    int32_t x0 = X.limbs[0] - (X.n == 1 ? 5000 : 0);
    int32_t y0 = Y.limbs[0] - (Y.n == 1 ? 5000 : 0);
    acc[0] += (x0 * fa + y0 * fb + 5000) / 10000;

    // take the excess of the operands' top limbs out again
    acc[X.n - 1] += -5000 * ia;
    if (X.n > 1) acc[X.n - 2] += -5000 * fa;
    acc[Y.n - 1] += -5000 * ib;
    if (Y.n > 1) acc[Y.n - 2] += -5000 * fb;

    bool bounded = abs(ia) <= LINCOMB_FAST_WEIGHT && abs(ib) <= LINCOMB_FAST_WEIGHT;
    Bignum r = lincomb_finish(acc, m, bounded);
    if (acc != local)
        free(acc);
    return r;
}

// -1, 0 or 1; top limb down, the shorter number's excess met on the other side.
static int bignum_cmp(Bignum X, Bignum Y)
{
    uint32_t m = X.n > Y.n ? X.n : Y.n;
    for (int32_t i = (int32_t)m - 1; i >= 0; i--) {
        uint32_t u = (uint32_t)i;
        uint16_t dx = u < X.n ? X.limbs[u] : 0;
        uint16_t dy = u < Y.n ? Y.limbs[u] : 0;
        if (X.n != Y.n) {
            if (u == X.n - 1) dy = (uint16_t)(dy + 5000);
            if (u == Y.n - 1) dx = (uint16_t)(dx + 5000);
        }
        if (dx != dy)
            return dx < dy ? -1 : 1;
    }
    return 0;
}

static int bignum_cmpd(Bignum X, double x)
{
    // three limbs or more put X at least 4999.5 from 0 (normal form, or
    // Bignum_fromdouble of that much): beyond a screen-sized x, on X's side
    if (X.n >= 3 && fabs(x) < 4999.0)
        return X.limbs[X.n - 1] >= 5000 ? 1 : -1;
    // screen-sized numbers on the stack: these run at every interval of a walk
    uint16_t local[16];
    Bignum Y = {fromdouble_limbs(x), local};
    if (Y.n > 16)
        Y = bignum_alloc(Y.n);
    fromdouble_fill(x, Y.limbs, Y.n);
    int c = bignum_cmp(X, Y);
    if (Y.limbs != local)
        Bignum_free(Y);
    return c;
}

int Bignum_lt(Bignum X, Bignum Y) { return bignum_cmp(X, Y) < 0; }
int Bignum_ltd(Bignum X, double x) { return bignum_cmpd(X, x) < 0; }
int Bignum_led(Bignum X, double x) { return bignum_cmpd(X, x) <= 0; }
int Bignum_gtd(Bignum X, double x) { return bignum_cmpd(X, x) > 0; }
int Bignum_ged(Bignum X, double x) { return bignum_cmpd(X, x) >= 0; }

// Limb i of X as a signed digit: plain below the top, the top without its
// excess, 0 above.
static int32_t signed_limb(Bignum X, uint32_t i)
{
    if (i + 1 < X.n)
        return X.limbs[i];
    return i + 1 == X.n ? (int32_t)X.limbs[i] - 5000 : 0;
}

int Bignum_difference_ltd(Bignum X, Bignum Y, double x)
{
    // X - Y is the sum of d_i * 10000^(i-1), d_i the differences of the
    // signed digits. Below the highest i = k where they differ, the digits add
    // up to less than 1.5 * 10000^(k-1) either way (one of them may be a top
    // digit), so d_k >= 3 puts X - Y above 1.5 * 10000^(k-1), at least 15000
    // for k >= 2, and d_k <= -2 puts it below 0.
    uint32_t m = X.n > Y.n ? X.n : Y.n;
    if (x > 0.0 && x < 10000.0) {
        for (uint32_t k = m - 1; k >= 2; k--) {
            int32_t d = signed_limb(X, k) - signed_limb(Y, k);
            if (d >= 3)
                return 0;
            if (d <= -2)
                return 1;
            if (d != 0)
                break;
        }
    }
    Bignum D = Bignum_lincomb(X, Y, 1.0, -1.0);
    int below = Bignum_ltd(D, x);
    Bignum_free(D);
    return below;
}

double Bignum_todouble(Bignum X)
{
    // six limbs or more lie far outside every screen: only the side matters
    if (X.n > 5)
        return X.limbs[X.n - 1] > 4999 ? 1e20 : -1e20;
    double w = 0.0001, s = 0.0;
    for (uint32_t i = 0; i + 1 < X.n; i++) {
        s += X.limbs[i] * w;
        w *= 10000.0;
    }
    return ((int32_t)X.limbs[X.n - 1] - 5000) * w + s;
}

float Bignum_tofloat(Bignum X)
{
    if (X.n > 5)
        return X.limbs[X.n - 1] > 4999 ? (float)1e20 : (float)-1e20;
    return (float)Bignum_todouble(X);
}

// X as m * 10000^e, m from the top four limbs (sixteen digits, all a double
// holds), the excess taken out.
static double bignum_scaled(Bignum X, int32_t *e)
{
    uint32_t low = X.n > 4 ? X.n - 4 : 0;
    double m = 0.0;
    for (uint32_t i = X.n; i-- > low;)
        m = m * 10000.0 + ((int32_t)X.limbs[i] - (i + 1 == X.n ? 5000 : 0));
    // limb i weighs 10000^(i-1)
    *e = (int32_t)low - 1;
    return m;
}

double Bignum_ratio(Bignum X, Bignum Y)
{
    int32_t ex, ey;
    double mx = bignum_scaled(X, &ex), my = bignum_scaled(Y, &ey);
    if (mx == 0.0)
        return 0.0;
    // the quotient first, so a large exponent difference alone over- or underflows
    return mx / my * pow(10000.0, ex - ey);
}

double Bignum_log(Bignum X)
{
    int32_t e;
    double m = bignum_scaled(X, &e);
    if (m <= 0.0)
        return -INFINITY;
    // ln 10000 per limb
    return log(m) + e * 9.210340371976184;
}

Bignum Bignum_shiftdown(Bignum X, uint32_t k)
{
    if (k + 2 > X.n)
        return Bignum_fromdouble(0.0);
    // the top limb keeps its excess; the limbs below it only move down
    Bignum r = bignum_alloc(X.n - k);
    memcpy(r.limbs, X.limbs + k, (size_t)r.n * sizeof(uint16_t));
    return r;
}

void Bignum_free(Bignum X)
{
    free(X.limbs);
}

char *Bignum_todecimal(Bignum X)
{
    // signed digits in units of 0.0001, then to sign and magnitude
    uint32_t n = X.n;
    int32_t *d = (int32_t *)malloc((n + 1) * sizeof(int32_t));
    if (!d)
        REPORT(REPORT_FATAL, "Out of memory for a position", 0);
    for (uint32_t i = 0; i < n; i++)
        d[i] = X.limbs[i] - (i + 1 == n ? 5000 : 0);
    d[n] = 0;
    bool negative = false;
    for (int32_t i = (int32_t)n - 1; i >= 0; i--) {
        if (d[i] != 0) {
            negative = d[i] < 0;
            break;
        }
    }
    if (negative)
        for (uint32_t i = 0; i < n; i++)
            d[i] = -d[i];
    /* carry out, so every place is a digit 0..9999 */
    for (uint32_t i = 0; i < n; i++) {
        int32_t c = floor_div_base(d[i]);
        d[i] -= c * 10000;
        d[i + 1] += c;
    }
    uint32_t top = n;
    while (top > 1 && d[top] == 0)
        top--;

    char *text = (char *)malloc(4 * (n + 1) + 8);
    if (!text)
        REPORT(REPORT_FATAL, "Out of memory for a position", 0);
    char *p = text;
    if (negative)
        *p++ = '-';
    p += sprintf(p, "%d", d[top]);
    for (int32_t i = (int32_t)top - 1; i >= 1; i--)
        p += sprintf(p, "%04d", d[i]);
    sprintf(p, ".%04d", d[0]);
    free(d);
    return text;
}
