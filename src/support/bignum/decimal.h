// Exact decimal numbers: positions of the line with as many digits as a deep
// zoom needs, before they become Bignums (ordtool's views, locating an
// ordinal, the go-to flight).
//
// A Decimal is (-1)^neg * digits * 10^-scale, digits little-endian base 10 in
// a heap array that the value owns (decimal_free). Results are new values;
// no operation frees or changes its operands. Zero has no digits.
#pragma once

#include <stdint.h>

#include "support/bignum/bignum.h"

struct Decimal {
    bool neg;
    int64_t scale;    // digits after the point (negative: trailing zeros)
    uint32_t count;   // digits in use, no leading zeros
    uint8_t *digits;  // least significant first
};

// "[-]D[.D]" exactly; false for anything else (no exponent, no blanks).
bool decimal_parse(const char *text, Decimal *out);
// The exact value of a Bignum.
Decimal decimal_from_bignum(Bignum x);
// An integer.
Decimal decimal_from_int(int64_t v);
Decimal decimal_add(Decimal a, Decimal b);
Decimal decimal_sub(Decimal a, Decimal b);
Decimal decimal_mul(Decimal a, Decimal b);
// a * 10^k.
Decimal decimal_shift(Decimal a, int64_t k);
// a / b to `scale` digits after the point, rounded toward zero; b not 0 and
// of at most 17 digits (a length or a ratio, not a position).
Decimal decimal_div_small(Decimal a, Decimal b, int64_t scale);
// x (|x| below 10^15) to 17 decimals, as printf writes it.
Decimal decimal_from_double(double x);
// 10^e to 17 significant digits, for any e a double holds.
Decimal decimal_exp10(double e);
// a rounded down to `scale` digits after the point.
Decimal decimal_floor(Decimal a, int64_t scale);
// -1, 0 or 1.
int32_t decimal_cmp(Decimal a, Decimal b);
// The exponent of the leading digit: 10^e <= |a| < 10^(e+1); a not 0.
int64_t decimal_exponent(Decimal a);
// A new heap text, "-12.5", "0.0001", "3"; the caller frees it.
char *decimal_tostring(Decimal a);
// The Bignum of a, rounded down to four decimals (ten-thousandths of a pixel).
Bignum decimal_to_bignum(Decimal a);
void decimal_free(Decimal a);
