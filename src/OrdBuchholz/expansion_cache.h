// Expansions kept across frames, keyed by the identity of the ordinal expanded.
//
// The line is rebuilt every frame, but most of it is the same as the frame
// before: every interval that contains the view is cut again along the same
// fundamental sequence. The cache keeps each expansion that a walk asks for,
// keyed by the address of its limit (see OrdBuchholz/ord_identity.h), and
// hands the same members back next frame. Since those members are the limits
// of the intervals below, their expansions are found by address in turn; the
// top of the line is one value built once (expansion_cache_top), so the
// chain of identities starts at the same place every frame.
//
// Memory. Everything the cache holds is built on the heap, also while the
// arena is active, and lives until it is evicted. An entry depends on the
// entry whose member its limit is (its parent), so an entry is evicted with
// all that hangs below it, and only between walks or when it was not used in
// the current frame: members handed out stay valid until the next
// expansion_cache_frame. An entry unused for EXPANSION_CACHE_IDLE frames goes,
// and so does the least recently used once the bytes pass the budget.
//
// A request for more members than an entry holds expands again with at least
// twice as many and keeps both results: the old members stay where they are,
// so the entries below them stay valid. Member i is the same value whatever
// the length asked for, so the outputs do not depend on what was kept.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"

// Where an ordinal comes from, as a handle: CACHE_OFF, an expansion the cache
// does not hold (its own expansion cannot be kept either: the key would die
// before the entry), and the zero value, so a record made without thought is
// never kept; CACHE_ROOT, the top of the line; else the handle of an entry.
constexpr uint32_t CACHE_OFF = 0;
constexpr uint32_t CACHE_ROOT = 0xFFFFFFFFu;
// Frames an entry may go unused before it is evicted.
constexpr uint64_t EXPANSION_CACHE_IDLE = 3;

// Members of one kept expansion, borrowed until the next expansion_cache_frame.
struct CachedExpansion {
    const Ord *seq;  // at least the number asked for
    int32_t n;       // how many there are
    uint32_t entry;  // the handle of the entry: the parent of expansions of its members
};

// Bytes the cache may hold; past it, the least recently used entries go, and
// a request that still does not fit is not kept (expansion_cache_get fails
// with *full set). Start value 96 MiB, which with the rope store keeps a
// frame within 256 MB.
extern uint64_t expansion_cache_budget;
// Bytes held now (term arrays, member and keep arrays of every entry).
extern uint64_t expansion_cache_bytes;

// Bytes the rope store (OrdBuchholz/ord_lazy.h) may hold between frames;
// past it, the next frame frees what no entry uses, and drops the store and
// every entry when what they use is most of it. Past 10^900 the ropes of the
// expansions kept on the path to the view alone run to some 50 MB: less room
// than this would be collected every few hundred frames and, soon after,
// dropped and built again whole.
constexpr uint64_t ROPE_STORE_BUDGET = 128ull << 20;
// Bytes of forced arrays and places kept from one frame to the next (past
// them all go at the next frame).
constexpr uint64_t LAZY_KEEP_BYTES = 16ull << 20;

// The top of the line, psi_0(I), built on the heap on first use and never
// freed; its expansions can be kept because it is always the same value.
Ord expansion_cache_top();

// The first n (or more) members of the fundamental sequence of x, a limit,
// where x is the top (parent CACHE_ROOT) or a member of the entry `parent`.
// False when x cannot be kept: *full is then set if the cache is out of room
// or x is not what the parent says (the caller expands on its own, as if
// there were no cache), and left false if the expansion was refused by the
// work limits of OrdBuchholz/ord_expand.h.
bool expansion_cache_get(Ord x, int32_t n, uint32_t parent, CachedExpansion *out, bool *full);

// The skip of an interval: how many leading members of the entry do not
// exceed its left end ordlo, kept for the last ordlo asked about, by
// identity. Sound because a left end handed to a kept entry comes from that
// entry's parent or an ancestor, which outlive it. Only a count that stopped
// at a member above ordlo is kept: then it holds for any length.
bool expansion_cache_skip(uint32_t handle, Ord ordlo, int32_t *m);
void expansion_cache_skip_keep(uint32_t handle, Ord ordlo, int32_t m);

// A number for the life of the entry `handle`: different for every entry
// ever made, 0 for CACHE_OFF, CACHE_ROOT and a handle of no live entry. What
// is worked out from a member can be kept under it: the member is the same
// value for as long as the life goes on.
uint64_t expansion_cache_life(uint32_t handle);

// A new frame: entries unused for EXPANSION_CACHE_IDLE frames are evicted.
void expansion_cache_frame();
// Frees what the rope store holds that no entry uses; expansion_cache_frame
// calls it when the store passes its budget. Not during a walk.
void expansion_cache_collect();
