// Reading ordinals from text: the psi form that Ord_tostring writes with only
// the toggles "n", "alpha.n" and "Omega_alpha" on or off.
//
// Accepted:
//   decimal numbers            3            (0 to 4294967294)
//   omega                      psi_0(1)
//   Omega, Omega_{a}           psi_1(0), psi_a(0)
//   psi_{a}(b)
//   sums  t+t+...              ordinal sums as Ord_add computes them, so
//                              "1+omega" is omega and "omega+omega" omega.2
//   coefficients  t.n          n at least 1
//   psi_{0}(I)                 the top of the line, only as the whole text
// Blanks between tokens are skipped. Each psi term is brought to normal form
// with Ord_collapse (psi_{0}(psi_{0}(Omega)) is read as psi_{0}(Omega)); a term
// that is still not in Buchholz normal form is refused, since Ord_cmp and the
// notation would misplace it. So is everything else, with the position of the
// first bad character. The placeholder "x" is never read.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"

// Deepest nesting of psi and Omega_ that is read; deeper text is refused
// rather than risk the stack of the recursive operations.
constexpr uint32_t ORD_PARSE_MAX_DEPTH = 200;

struct OrdParseError {
    uint32_t position;   // 1-based byte position of the first bad character
    char message[200];   // "position N: ..." ready to print
};

// Reads `text`. On success stores the ordinal in *out and returns true; the
// value owns all its arrays (Ord_free in heap mode; under the arena it lives
// until the rewind). On failure *out is 0, nothing is kept, and *error says
// where and why.
bool Ord_parse(const char *text, Ord *out, OrdParseError *error);
