// Bignum: positions on the line, signed fixed-point pixels of unlimited length.
//
// Representation: `n` limbs of base 10000, limb 0 first. Limb i weighs
// 10000^(i-1) pixels, so limb 0 is ten-thousandths of a pixel, limb 1 whole
// pixels, limb 2 ten-thousands of pixels. The top limb (index n-1) holds its
// digit plus an excess of 5000, which carries the sign; all lower limbs are
// plain digits 0..9999 that add to it:
//
//   value = sum_{i < n-1} limbs[i] * 10000^(i-1) + (limbs[n-1] - 5000) * 10000^(n-2)
//
// Zero in normal form is the single limb 5000. Normal form (what
// Bignum_lincomb returns) has no removable top limb: a top limb of 5000 over a
// limb below 5000, or a top of 4999 over a limb of 5000 or more, could be
// folded into the limb below. Bignum_fromdouble does not normalise.
//
// Ownership: every `limbs` array is a separate heap block made by the
// operation that returned the number; the caller frees it with Bignum_free
// (plain free). Nothing shares limb arrays, and no operation frees its operands.
#pragma once

#include <stdint.h>

enum : uint32_t {
    BIGNUM_BASE = 10000,
    BIGNUM_EXCESS = 5000,
};

struct Bignum {
    uint32_t n;        // number of limbs, at least 1
    uint16_t *limbs;   // n limbs, least significant first; top limb with excess
};

// x truncated toward minus infinity to four decimals; at least two limbs, not
// normalised (so -0.3 is (6999, 4999), that is -0.3001).
Bignum Bignum_fromdouble(double x);

// a*X + b*Y in normal form. Both weights are first quantised to a whole part
// and four decimals (0.99996 counts as 1.0, 0.99994 as 0.9999); the one
// rounding is of the parts that fall below limb 0. X and Y may be in any form
// and may be the same number.
Bignum Bignum_lincomb(Bignum X, Bignum Y, double a, double b);

// Comparisons; exact for normal forms and for non-negative results of
// Bignum_fromdouble. The double variants compare with x truncated to four
// decimals.
int Bignum_lt(Bignum X, Bignum Y);
int Bignum_ltd(Bignum X, double x);
int Bignum_led(Bignum X, double x);
int Bignum_gtd(Bignum X, double x);
int Bignum_ged(Bignum X, double x);

// Bignum_ltd(X - Y, x) without making X - Y where the limbs at which X and Y
// first differ decide it: a walk asks this of every interval, and outside the
// view the two ends are hundreds of limbs long.
int Bignum_difference_ltd(Bignum X, Bignum Y, double x);

// The value as a double; a number of six limbs or more gives only its sign,
// as +1e20 or -1e20 (it lies far outside every screen).
double Bignum_todouble(Bignum X);
// The same in float, with the float nearest to +-1e20 as the cut-off values.
float Bignum_tofloat(Bignum X);
// X / Y as a double, for normal forms of any length (to double precision;
// without the cut-off of Bignum_todouble); 0 or infinite where the quotient
// leaves the range of doubles.
double Bignum_ratio(Bignum X, Bignum Y);
// ln X to double precision for a positive normal form of any length; minus
// infinity for 0 and below.
double Bignum_log(Bignum X);
// X / 10000^k truncated, for X not negative: the limbs moved down k places
// (0 when X has fewer than k + 2 limbs).
Bignum Bignum_shiftdown(Bignum X, uint32_t k);

// Frees the limb array.
void Bignum_free(Bignum X);

// The exact value in decimal with four places, e.g. "-0.3001" or
// "128.0000"; a new heap string that the caller frees.
char *Bignum_todecimal(Bignum X);
