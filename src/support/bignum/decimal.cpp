// Exact decimal numbers: digit arrays with a sign and a scale.
#include "support/bignum/decimal.h"

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// ---- digits ----

static Decimal decimal_alloc(bool neg, int64_t scale, uint32_t count)
{
    Decimal d = {neg, scale, count, (uint8_t *)calloc(count ? count : 1, 1)};
    return d;
}

// Drops leading zeros; zero loses its sign.
static Decimal decimal_trim(Decimal d)
{
    while (d.count && d.digits[d.count - 1] == 0)
        d.count--;
    if (d.count == 0)
        d.neg = false;
    return d;
}

// The digit of |a| that weighs 10^p.
static uint8_t digit_at(Decimal a, int64_t p)
{
    int64_t i = p + a.scale;
    return i >= 0 && i < (int64_t)a.count ? a.digits[i] : 0;
}

// Compares |a| and |b|.
static int32_t magnitude_cmp(Decimal a, Decimal b)
{
    if (a.count == 0 || b.count == 0)
        return (a.count != 0) - (b.count != 0);
    // the power just above the leading digit
    int64_t top_a = (int64_t)a.count - a.scale, top_b = (int64_t)b.count - b.scale;
    if (top_a != top_b)
        return top_a < top_b ? -1 : 1;
    int64_t low = -(a.scale > b.scale ? a.scale : b.scale);
    for (int64_t p = top_a - 1; p >= low; p--) {
        uint8_t x = digit_at(a, p), y = digit_at(b, p);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return 0;
}

// |a| + |b| or |a| - |b| (|a| >= |b|), with the sign given.
static Decimal magnitude_combine(Decimal a, Decimal b, bool subtract, bool neg)
{
    int64_t scale = a.scale > b.scale ? a.scale : b.scale;
    int64_t top_a = (int64_t)a.count - a.scale, top_b = (int64_t)b.count - b.scale;
    int64_t top = (top_a > top_b ? top_a : top_b) + 1;
    Decimal r = decimal_alloc(neg, scale, (uint32_t)(top + scale));
    int32_t carry = 0;
    for (int64_t p = -scale; p < top; p++) {
        int32_t v = digit_at(a, p) + (subtract ? -digit_at(b, p) : digit_at(b, p)) + carry;
        /* carry out */
        carry = v < 0 ? -1 : v / 10;
        r.digits[p + scale] = (uint8_t)(v - carry * 10);
    }
    return decimal_trim(r);
}

// ---- the operations ----

bool decimal_parse(const char *text, Decimal *out)
{
    const char *p = text;
    bool neg = *p == '-';
    if (neg)
        p++;
    size_t whole = strspn(p, "0123456789");
    size_t frac = 0;
    if (p[whole] == '.')
        frac = strspn(p + whole + 1, "0123456789");
    if (whole + frac == 0 || p[whole + (p[whole] == '.' ? 1 + frac : 0)] != 0)
        return false;
    Decimal d = decimal_alloc(neg, (int64_t)frac, (uint32_t)(whole + frac));
    uint32_t k = 0;
    for (size_t i = whole + frac + (frac ? 1 : 0); i-- > 0;)
        if (p[i] != '.')
            d.digits[k++] = (uint8_t)(p[i] - '0');
    *out = decimal_trim(d);
    return true;
}

Decimal decimal_from_bignum(Bignum x)
{
    char *text = Bignum_todecimal(x);
    Decimal d;
    if (!decimal_parse(text, &d))
        d = decimal_from_int(0);
    free(text);
    return d;
}

Decimal decimal_from_int(int64_t v)
{
    Decimal d = decimal_alloc(v < 0, 0, 20);
    uint64_t m = v < 0 ? (uint64_t)-(v + 1) + 1 : (uint64_t)v;
    for (uint32_t i = 0; i < 20; i++, m /= 10)
        d.digits[i] = (uint8_t)(m % 10);
    return decimal_trim(d);
}

Decimal decimal_add(Decimal a, Decimal b)
{
    if (a.neg == b.neg)
        return magnitude_combine(a, b, false, a.neg);
    if (magnitude_cmp(a, b) >= 0)
        return magnitude_combine(a, b, true, a.neg);
    return magnitude_combine(b, a, true, b.neg);
}

Decimal decimal_sub(Decimal a, Decimal b)
{
    b.neg = b.count ? !b.neg : false;
    return decimal_add(a, b);
}

Decimal decimal_mul(Decimal a, Decimal b)
{
    Decimal r = decimal_alloc(a.neg != b.neg, a.scale + b.scale, a.count + b.count + 1);
    uint32_t *acc = (uint32_t *)calloc(a.count + b.count + 1, sizeof(uint32_t));
    for (uint32_t i = 0; i < a.count; i++) {
        if (a.digits[i] == 0)
            continue;
        for (uint32_t j = 0; j < b.count; j++)
            acc[i + j] += (uint32_t)a.digits[i] * b.digits[j];
        // keep the sums far from overflow
        if ((i & 0xFFFFF) == 0xFFFFF)
            for (uint32_t k = 0; k + 1 < a.count + b.count + 1; k++) {
                acc[k + 1] += acc[k] / 10;
                acc[k] %= 10;
            }
    }
    /* carry out */
    for (uint32_t k = 0; k < a.count + b.count + 1; k++) {
        if (k + 1 < a.count + b.count + 1)
            acc[k + 1] += acc[k] / 10;
        r.digits[k] = (uint8_t)(acc[k] % 10);
    }
    free(acc);
    return decimal_trim(r);
}

Decimal decimal_shift(Decimal a, int64_t k)
{
    Decimal r = decimal_alloc(a.neg, a.scale - k, a.count);
    if (a.count)
        memcpy(r.digits, a.digits, a.count);
    return r;
}

Decimal decimal_div_small(Decimal a, Decimal b, int64_t scale)
{
    // b as an integer B of its last digits: a / b = (a * 10^b.scale) / B
    int64_t B = 0;
    for (uint32_t i = b.count; i-- > 0;)
        B = B * 10 + b.digits[i];
    int64_t shift = b.scale;
    int64_t top = (int64_t)a.count - a.scale + shift;  // digits before the point of a * 10^shift
    int64_t first = top > 1 ? top : 1;
    Decimal q = decimal_alloc(a.neg != b.neg, scale, (uint32_t)(first + scale));
    /* schoolbook: one quotient digit per digit of the dividend, remainder below B */
    int64_t rem = 0;
    for (int64_t p = first - 1; p >= -scale; p--) {
        rem = rem * 10 + digit_at(a, p - shift);
        q.digits[p + scale] = (uint8_t)(rem / B);
        rem %= B;
    }
    return decimal_trim(q);
}

Decimal decimal_from_double(double x)
{
    char text[64];
    snprintf(text, sizeof text, "%.17f", x);
    Decimal d;
    if (!decimal_parse(text, &d))
        d = decimal_from_int(0);
    return d;
}

Decimal decimal_exp10(double e)
{
    // 10^floor(e) times a mantissa from 1 up to 10
    double whole = floor(e);
    Decimal m = decimal_from_double(pow(10.0, e - whole));
    Decimal r = decimal_shift(m, (int64_t)whole);
    decimal_free(m);
    return r;
}

Decimal decimal_floor(Decimal a, int64_t scale)
{
    if (a.scale <= scale)
        return decimal_shift(a, 0);
    int64_t drop = a.scale - scale;
    bool lost = false;
    for (int64_t i = 0; i < drop && i < (int64_t)a.count; i++)
        lost = lost || a.digits[i] != 0;
    uint32_t keep = drop < (int64_t)a.count ? a.count - (uint32_t)drop : 0;
    Decimal r = decimal_alloc(a.neg, scale, keep);
    if (keep)
        memcpy(r.digits, a.digits + drop, keep);
    r = decimal_trim(r);
    // toward minus infinity: a negative value that lost digits goes one down
    if (a.neg && lost) {
        Decimal unit = decimal_alloc(true, scale, 1);
        unit.digits[0] = 1;
        Decimal s = decimal_add(r, unit);
        decimal_free(unit);
        decimal_free(r);
        r = s;
    }
    return r;
}

int32_t decimal_cmp(Decimal a, Decimal b)
{
    if (a.neg != b.neg)
        return a.neg ? -1 : 1;
    int32_t m = magnitude_cmp(a, b);
    return a.neg ? -m : m;
}

int64_t decimal_exponent(Decimal a)
{
    return (int64_t)a.count - 1 - a.scale;
}

char *decimal_tostring(Decimal a)
{
    int64_t top = (int64_t)a.count - a.scale;  // digits before the point
    int64_t whole = top > 1 ? top : 1;
    int64_t frac = a.scale > 0 ? a.scale : 0;
    char *text = (char *)malloc((size_t)(whole + frac + 3));
    char *p = text;
    if (a.neg)
        *p++ = '-';
    for (int64_t e = whole - 1; e >= 0; e--)
        *p++ = (char)('0' + digit_at(a, e));
    if (frac) {
        *p++ = '.';
        for (int64_t e = -1; e >= -frac; e--)
            *p++ = (char)('0' + digit_at(a, e));
    }
    *p = 0;
    return text;
}

Bignum decimal_to_bignum(Decimal a)
{
    // U = floor(a * 10^4), an integer in limb-0 units; then U + 5000 * B^(n-1)
    // written in n limbs of B = 10^4 is the excess form of Bignum
    Decimal N = decimal_floor(a, 4);
    Decimal U = decimal_shift(N, 4);
    int64_t length = U.count ? (int64_t)U.count - U.scale : 0;  // integer digits
    uint32_t n = 2;
    while (4 * (int64_t)(n - 1) + 3 < length)
        n++;
    Decimal five = decimal_from_int(5);
    Decimal offset = decimal_shift(five, 4 * (int64_t)(n - 1) + 3);
    Decimal K = decimal_add(U, offset);
    Bignum x = {n, (uint16_t *)calloc(n, sizeof(uint16_t))};
    for (uint32_t i = 0; i < n; i++) {
        uint32_t limb = 0;
        for (int32_t d = 3; d >= 0; d--)
            limb = limb * 10 + digit_at(K, 4 * (int64_t)i + d);
        x.limbs[i] = (uint16_t)limb;
    }
    decimal_free(K);
    decimal_free(offset);
    decimal_free(five);
    decimal_free(U);
    decimal_free(N);
    return x;
}

void decimal_free(Decimal a)
{
    free(a.digits);
}
