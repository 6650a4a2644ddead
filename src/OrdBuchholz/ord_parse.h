// Reading ordinals from text: every form the notation writes, under any row
// of toggles, mixed freely, brought to Buchholz normal form.
//
// Accepted (blanks between tokens are skipped everywhere):
//   numbers                    3                 (0 to 4294967294)
//   omega, omega^{E}           omega^{omega}     omega^E
//   Omega, Omega_{a}           Omega_{2}         psi_a(0)
//   epsilon_{A}                epsilon_{0}       the A-th fixed point of omega^x
//   varphi_{A}(B)              varphi_{2}(0)     Veblen's function; varphi_0 is
//                                                omega^x and varphi_1 epsilon
//   psi_{a}(b)                 psi_{0}(Omega)    taken as written, see below
//   psi_{0}(I)                 the top of the line, only as the whole text
//   t.n                        a coefficient, n at least 1
//   t+t+...                    ordinal sums, as Ord_add computes them, so
//                              "1+omega" is omega and "omega+omega" omega.2
// Braces may be left out around a number or one letter with its own script
// (omega^2, psi_0(Omega_2), ω^ω^ω, which is ω^{ω^{ω}}). The window's letters read as their
// names: ω omega, Ω Omega, ε (and ϵ) epsilon, φ (and ϕ) varphi, ψ psi; the
// Unicode script digits stand for ^{n} and _{n} (ω², Ω₂, ψ₀(Ω), ε₀).
//
// Every form is converted to its psi term in normal form, so any text the
// notation writes of a value reads back as the same structure. A psi term is
// taken as the notation means it: psi_a(h + t), with t at or below subscript a
// and h above it, is omega^(psi_a(h) + t) (so psi_{0}(psi_{0}(Omega)) is
// epsilon_0 and psi_{0}(psi_{0}(Omega)+1) is omega^(epsilon_0 + 1)); any other
// psi term that is not in normal form is refused, since Ord_cmp and the
// notation would misplace it.
//
// Refused, with the 1-based column (in characters, not bytes) where reading
// failed: text that is no ordinal, the placeholder "x", I anywhere but in the
// lone top psi_{0}(I), nesting deeper than ORD_PARSE_MAX_DEPTH, coefficients
// past 4294967294, and (by Ord_parse, not Ord_parse_any) any value above the
// top of the line: an uncountable one, such as Omega.
//
// Memory: the reader works in an arena of its own, so nothing it builds on the
// way is left behind, and hands back a deep copy made in the caller's mode.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"

// Deepest nesting of braces and parentheses that is read; deeper text is
// refused rather than risk the stack of the recursive operations.
constexpr uint32_t ORD_PARSE_MAX_DEPTH = 1000;

struct OrdParseError {
    uint32_t position;   // 1-based column of the failure, in characters
    bool above_top;      // the text names an ordinal, but one above the line
    char message[200];   // "position N: ..." ready to print
};

// Reads an ordinal of the line (at most psi_{0}(I)). On success stores it in
// *out and returns true; the value owns all its arrays (Ord_free in heap
// mode; under the arena it lives until the rewind). On failure *out is 0,
// nothing is kept, and *error says where and why.
bool Ord_parse(const char *text, Ord *out, OrdParseError *error);

// The same, but uncountable values such as Omega_{omega} are read too: for
// tests and for tools that speak of the terms the line is built from.
bool Ord_parse_any(const char *text, Ord *out, OrdParseError *error);
