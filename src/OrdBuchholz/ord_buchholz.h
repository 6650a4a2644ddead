// Buchholz normal form: the operations that rest on the meaning of psi.
//
// - Ord_collapse removes the one redundancy of the term shape that arises in
//   use: psi_a(psi_a(y)) with y ending above Omega_(a+1) is a fixed point of
//   psi_a, so the outer psi goes.
// - Ord_makeimpredfn turns an ordinal that ends in Omega_a (a zero or a
//   successor) into a template: a function of one ordinal with a hole, the
//   placeholder, where that Omega_a stood. Ord_substitute fills the hole.
//   Iterating a template is how an expansion steps through a limit of
//   uncountable cofinality.
// - Ord_isnormal tells whether a value is in Buchholz's normal form, the form
//   in which Ord_cmp is the true order.
//
// A template is an Ord with exactly one placeholder term (coef 0, sub and arg
// 0) at some depth, always at the end of the chain of last terms: in the arg
// of a level's last term where that is not 0, else in its sub. The template
// owns only the arrays of that chain, one per level; every other term record
// is a copy that shares all below it with the ordinal the template was made
// from, which must outlive the template and whatever is substituted into it.
// It is released with Ord_freetemplate.
#pragma once

#include "OrdBuchholz/ord.h"
#include "support/dynarray/dynarray.h"

// t itself, or (c, a', y) when t = (c, a, [(1, a', y)]) with a' = a and the last
// term of y having a sub above a. Shares every array with t.
OrdTerm Ord_collapse(OrdTerm t);

// The template of x: x with the Omega_a at the end of its chain of last terms
// replaced by the placeholder (Omega becomes x, Omega.2 becomes Omega + x,
// psi_1(Omega) becomes psi_1(x), Omega_Omega becomes Omega_x). x must not be 0,
// and no argument along that chain may be a successor: that is a fault of the
// caller and a fatal report. Costs one array per level of that chain; iterative.
Ord Ord_makeimpredfn(Ord x);
// Frees the chain of arrays a template owns; nothing under the arena.
void Ord_freetemplate(Ord tmpl);

// The template with its placeholder replaced by the terms of p, concatenated
// with no absorption (the copied terms share their sub and arg with p; p = 0
// makes the placeholder vanish). Only the chain down to the placeholder is
// new: one array per level, each appended to `list` (a DynArray of Ord)
// except the top array, which is the caller's. Everything else is shared with
// what the template shares, never with the template's own arrays, so the
// template may be freed afterwards.
Ord Ord_substitute(Ord tmpl, Ord p, DynArray *list);

// True if x is in Buchholz normal form: every coefficient at least 1 (I only
// as the whole of the top psi_0(I)), terms strictly descending by (sub, arg),
// and every term psi_a(b) has b in C_a(b), that is: each psi_s(e) inside b,
// reached through sums and through the sub and arg of terms with s at least a,
// has e below b. The collapsible shape fails this test. Allocates nothing.
bool Ord_isnormal(Ord x);
