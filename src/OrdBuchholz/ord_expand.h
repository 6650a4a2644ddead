// Fundamental sequences: the first n members of an increasing sequence that
// converges to a limit ordinal, the step by which the line is cut up.
//
// At a term Omega_a with a zero or successor subscript (uncountable
// cofinality) nothing can be read off the term itself; what is wanted depends
// on the terms around it. So the expansion keeps `ord_path`, the chain of
// arguments by which it reached the current term, and iterates a template
// (OrdBuchholz/ord_buchholz.h) taken from that chain.
//
// Ownership is flat. Members, the `keep` arrays and the arrays of the expanded
// ordinal share one another without any count; every term array created
// during an expansion that the members still reach stands exactly once as a
// top array, either in `seq` or in `keep` (an array that a later level copied
// from and nothing points at is released on the spot). Ord_freeexpansion
// frees those top arrays and walks down nothing, so the expanded ordinal must
// outlive its expansion.
//
// Cost. An expansion descends a chain of cases (sums, multiples, limit
// arguments and subscripts) to one that makes members itself, and rebuilds
// every member once per level on the way back: its work is about n times the
// length of that chain (plus the template's length where Omega_a is
// iterated). A long chain, one of many terms, or a lazy value is expanded on
// its rope instead: the members are lazy values that share the frames above
// the bottom and the template's frames whole, a few rope nodes each
// (ord_rope_levels, ord_rope_terms). The chain is walked with an explicit
// stack, so its length costs heap, not stack. Two limits, set by whoever runs
// the walk, refuse an expansion that would cost more: a refused expansion has
// n = 0, no members and nothing to keep, and has cost nothing. In arena mode
// the term arrays stay in the arena until the rewind; `seq` and `keep`'s block
// always come from the heap and are always freed.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"
#include "support/dynarray/dynarray.h"

struct OrdExpansion {
    Ord *seq;       // the members, ascending; a heap array of n
    int32_t n;      // their number, always the number asked for
    DynArray keep;  // of Ord: every other array the members depend on
};

// The chain of arguments of the current top-level expansion, a DynArray of
// Ord; its last element is the current argument. Each call appends one
// element and nothing is popped, since each call makes at most one nested
// call. Made empty before a top-level call and released after it.
extern DynArray ord_path;

// The first n members of the fundamental sequence of x, a limit (not 0, not a
// successor), n at least 1. Member 0 may be 0 or the left neighbour of x's
// last step. Members of the top psi_0(I) from the third on compare above it
// under Ord_cmp (see OrdBuchholz/ord.h): never compare them with the top.
//
// Calling order of a top-level expansion, which is the caller's duty (or use
// Ord_expandfresh): make ord_path empty for elements of one Ord; call
// Ord_expand; release ord_path's storage (storing null through its mirror if
// set); use the members; Ord_freeexpansion. A retry that needs more members
// frees the expansion and starts again with a new path.
// Refused (n = 0) when the work would pass ord_work_left, the chain
// ord_depth_limit or the term arrays ord_memory_limit; otherwise
// ord_work_left is lowered by the work.
OrdExpansion Ord_expand(Ord x, int32_t n);

// Work that expansions may still do, in member arrays built (about n per level
// of the chain); UINT64_MAX, the start value, is no limit.
extern uint64_t ord_work_left;
// Work of one expansion that may go past ord_work_left, once: a view at rest
// fills in a step at a time even where a single expansion costs more than a
// frame's budget. Set to 0 when used; 0, the start value, is none.
extern uint64_t ord_work_big;
// Longest chain of levels (with the template's) an expansion may walk; 0, the
// start value, is no limit.
extern uint32_t ord_depth_limit;
// Bytes of term arrays (ord_heap_bytes, or the arena's use while it is in
// force) past which expansions are refused; UINT64_MAX is no limit.
extern uint64_t ord_memory_limit;
// Chains at least this long (with the template's) are expanded on their rope
// (OrdBuchholz/ord_lazy.h), and so is every lazy value: the members are lazy
// and cost a few rope nodes each, whatever the length. 0 takes every chain
// there but the top's. Start value 64.
extern uint32_t ord_rope_levels;
// So are chains whose levels hold at least this many terms in all: every
// member would copy them, and a kept expansion on the path to a deep view
// would hold n copies of a long chain. Start value 128.
extern uint64_t ord_rope_terms;
// The work that the last refused expansion would have cost.
extern uint64_t ord_refused_cost;

// Ord_expand from a fresh ord_path, which is released again before returning.
OrdExpansion Ord_expandfresh(Ord x, int32_t n);

// Frees the top array of each member and of each keep element (nothing under
// the arena), then the member array and keep's storage.
void Ord_freeexpansion(OrdExpansion e);
