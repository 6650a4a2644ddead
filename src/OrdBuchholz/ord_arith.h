// Ordinal arithmetic and comparison on normal forms.
//
// These operations never look at what a term means: they walk the normal form
// (see OrdBuchholz/ord.h). There is no multiplication or exponentiation as
// such; multiples are coefficients, powers are read off by the notation, and
// everything larger is reached by expansion.
//
// Ownership: every result is a new top array from Ord_alloc (so in the arena
// when that is active) whose term records are copies of the inputs' records:
// sub and arg stay shared with the inputs. Release a result with
// Ord_freearray, and keep the inputs' arrays alive as long as the result.
// No operation modifies an input. Coefficient overflow is not tested.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"

// -1, 0 or 1 as x is below, equal to or above y. Lexicographic: at the first
// term that differs, sub decides, then arg, then coef; a proper prefix is
// below its extension. Right for normal forms only. Allocates nothing.
int32_t Ord_cmp(Ord x, Ord y);

// x + 1.
Ord Ord_succ(Ord x);
// The predecessor of a successor; an unchanged copy of a limit; 0 for 0.
Ord Ord_pred(Ord x);
// The ordinal sum x + y: terms of x below y's leading term are absorbed and an
// equal one merges (1 + omega is omega). Always a new array, even when x or y
// is 0, so the result can be released alone.
Ord Ord_add(Ord x, Ord y);

// True if x is not 0 and its last term is a number.
bool Ord_issuccessor(Ord x);
// True for 0 and for one term (1, 0, t) with t again such: 0, 1, omega,
// omega^omega, ...
bool is_omega_tower(Ord x);
