// Ordinal terms: what an ordinal is in memory, and who owns that memory.
//
// An ordinal is a finite sum of terms, largest first; a term is `coef` times
// Buchholz's psi_sub(arg), where sub and arg are ordinals of the same kind. So
// psi_0(0) is 1, psi_a(0) is Omega_a for a not 0, psi_0(1) is omega, and the
// values reach up to the extended Buchholz ordinal psi_0(I), the top of the line.
//
// Memory. Term arrays come from the heap, or from the arena `ord_arena` when
// that is set; the switch is this one global pointer and the same code runs in
// both modes. Every release of a term array goes through Ord_freearray or
// Ord_free, which do nothing under the arena: never call free() on `terms`.
//
// Sharing. Values are immutable once built and share sub-ordinals without any
// count: a `sub` or `arg` may point into an array that belongs to another
// value. Whoever allocated a top array frees it (Ord_freearray); Ord_free walks
// down and is only for values that own everything below them (Ord_clone,
// Ord_parse results, the top built by Ord_maketop).
//
// Compressed values. Near the top of the line the nesting runs far past what
// any memory holds, so such values are lazy (OrdBuchholz/ord_lazy.h): a rope
// of the levels of their chain of last terms, whose terms are read through
// Ord_force. Free and clone pass them by; the rope store owns them.
//
// Depth. Values held as term arrays still nest hundreds of thousands of
// levels deep, so no operation here or in the arithmetic, the templates, the
// expansion or the notation recurses once per level: they keep explicit
// stacks on the heap. Out of memory is a fatal report, never a null
// dereference.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/memstack.h"

// The coefficient that marks I, the limit of 1, Omega, Omega_Omega, ...
constexpr uint32_t ORD_COEF_I = 0xFFFFFFFFu;
// The counts that mark a lazy value: its `terms` is a rope of the chain, or a
// place in one (OrdBuchholz/ord_lazy.h), and its terms are read through
// Ord_force.
constexpr uint32_t ORD_LAZY = 0xFFFFFFFFu;
constexpr uint32_t ORD_LAZY_PLACE = 0xFFFFFFFEu;

struct OrdTerm;

// An ordinal, passed and returned by value.
//
// Normal form, which every value on the line satisfies and Ord_cmp relies on:
// terms strictly descending by (sub, arg) with equal pairs merged into one
// coefficient; all coefficients at least 1; sub and arg normal themselves; no
// collapsible term (see Ord_collapse). Equal ordinals are equal structures.
//
// Special coefficients:
// - 0 marks the placeholder of a template (its sub and arg are 0); templates
//   live only inside the Buchholz operations and the expansion.
// - ORD_COEF_I in the first term marks I, which exists in exactly one shape:
//   [(ORD_COEF_I, [(ORD_COEF_I, 0, 0)], 0)], and only as the arg of the top
//   psi_0(I). Ord_cmp sees its sub as a finite number, so I must never be
//   compared with values that have an infinite subscript.
struct Ord {
    uint32_t count;   // number of terms; 0 is the ordinal 0
    OrdTerm *terms;   // largest first; null when count is 0
};

// True for a value held compressed, whose terms must be read via Ord_force.
inline bool Ord_islazy(Ord x)
{
    return x.count >= ORD_LAZY_PLACE;
}
// x itself, or for a lazy x its top array (made once, kept with the rope):
// whoever reads `count` or `terms` of a value that may be lazy forces it first.
// Zero and the tests of count against 0 need no forcing: a lazy value is never 0.
Ord Ord_force(Ord x);

// One term: coef * psi_sub(arg). A term with sub and arg both 0 is the number coef.
struct OrdTerm {
    uint32_t coef;    // at least 1, or one of the special values above
    Ord sub;          // subscript of psi
    Ord arg;          // argument of psi
};

// The active arena, or null: the heap is used and every free really frees.
// Only the frame loop (and tools or tests that mimic it) set it.
extern MemStack *ord_arena;
// Bytes of term arrays on the heap now: allocations less releases, so that
// the expansion can refuse work before the machine runs out of memory.
extern uint64_t ord_heap_bytes;

// ---- allocation and release ----

// An ordinal of n uninitialised terms; n = 0 gives 0 with no allocation.
Ord Ord_alloc(uint32_t n);
// An ordinal of one uninitialised term.
Ord Ord_alloc1();
// The one-term ordinal (coef, sub, arg) in a new top array (Ord_alloc1, so in
// the arena while it is active); sub and arg are shared, not copied.
Ord Ord_term(uint32_t coef, Ord sub, Ord arg);
// Frees only the top array; nothing under the arena or for 0.
void Ord_freearray(Ord x);
// Frees every array at every depth, each once however often it is reached;
// nothing under the arena or for 0. Only for values that own everything below
// them. Iterative: any depth costs heap, not stack.
void Ord_free(Ord x);

// ---- copies ----

// A new top array with the term records copied; sub and arg stay shared.
Ord Ord_copy(Ord x);
// A copy in which every array at every depth is new; the caller owns it all
// (Ord_free). An array that x reaches by several ways is copied once and
// shared the same way in the copy, so the copy is as small as x. Iterative.
Ord Ord_clone(Ord x);

// ---- small values and tests ----

// The ordinal 0: count 0, null terms.
Ord Ord_zero();
// True for 0 and for a single term with sub and arg both 0.
bool Ord_isfinite(Ord x);
// True if the term stands for a number: sub and arg both 0.
inline bool OrdTerm_isfinite(const OrdTerm *t)
{
    return t->sub.count == 0 && t->arg.count == 0;
}
// The last (smallest) term; x must not be 0.
inline const OrdTerm *Ord_lastterm(Ord x)
{
    return &x.terms[x.count - 1];
}
// True for the ordinal 1: one term (1, 0, 0).
inline bool Ord_isone(Ord x)
{
    return x.count == 1 && x.terms[0].coef == 1 && OrdTerm_isfinite(&x.terms[0]);
}
// A view of terms [from, from + n) of x: no allocation, shares x's array.
inline Ord Ord_slice(Ord x, uint32_t from, uint32_t n)
{
    return Ord{n, n ? x.terms + from : nullptr};
}

// ---- the top of the line ----

// Builds psi_0(I) with three one-term allocations (inner number, I, the top
// term). The caller owns all of it: Ord_free in heap mode.
Ord Ord_maketop();
// True if x has the shape that Ord_maketop builds.
bool Ord_istop(Ord x);
