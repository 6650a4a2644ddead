// Ropes of frames: long chains of nested term arrays held compressed.
//
// Near the top of the line an ordinal is nested hundreds of thousands of
// levels deep along its chain of last terms, and the chain repeats itself
// over and over. A level of such a chain is a FRAME: its term array with the
// followed field of the last term blanked to 0, and which field was followed
// (the arg, the sub, or none at the last level). A chain is a ROPE of frames:
// a tree whose nodes are one frame (LEAF), two ropes one after the other
// (CONCAT) or a rope repeated k times (REPEAT). Every operation here costs
// about the size of the tree, never the number of frames it spells, which
// may run to 2^511.
//
// Interning. Frames are interned by content (hole, and per term the coef and
// the identity of sub and arg, see OrdBuchholz/ord_identity.h), nodes by
// their children, so equal keys give the same id or the same pointer. The
// empty rope is the null pointer.
//
// Two stores. Whatever is made while `ord_arena` is null goes to the
// persistent store; whatever is made while it is set goes to the temporary
// store, which rope_store_rewind() empties (the frame loop calls it when it
// rewinds the arena). A temporary node may point at persistent ones, never
// the reverse: handing a temporary node or frame to a constructor in heap
// mode is a fatal report. Lookups try the persistent store first. All memory,
// frame copies included, comes from the heap; the arena is never used. Out of
// memory is a fatal report.
//
// Hashes. Each node carries a polynomial hash of the frame sequence it
// spells, H(s) = sum s_i B^(n-1-i), modulo p = 2^61 - 1, under two fixed
// bases that are both primitive roots mod p, and B^n for each. A frame's
// letter s_i is a 61-bit mix of its content (not its id), drawn separately
// for the two moduli. Concatenation combines hashes in O(1), a repeat of k
// copies in O(log k) (a geometric sum). Odds: for two different sequences of
// equal length n < 2^61, one hash agrees with probability about n / 2^61 for
// a random base, both about (n / 2^61)^2; a comparison of short ropes fails
// about once in 2^100. Past 2^61 frames the hash sees positions only modulo
// p - 1, so a rope and the same rope with two letters swapped p - 1 places
// apart look equal; chains of ordinals have no reason to differ that way, but
// this is a bet, not a proof. Equal hashes are taken as equal sequences.
//
// Garbage. Nothing is freed one by one: the nodes that joins and cuts make on
// the way stay in their store until it is emptied or, for the persistent
// store, collected (see the end of this file), so heap-mode work grows the
// persistent store until then (see rope_store_bytes). A node is 144 bytes.
//
// Lifetimes. A frame shares the sub and arg of its last level with the caller:
// they must outlive the store that holds the frame (heap values for the
// persistent store; arena values are fine for the temporary one). Node
// pointers and frame records stay valid until the store that holds them is
// emptied: rope_store_rewind for temporary ones, rope_store_clear for all.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"

// ---- lengths ----

constexpr int32_t ROPELEN_LIMBS = 8;

// An unsigned number of 512 bits, little-endian limbs: limb[0] is the low 64
// bits. Operations that can pass 2^512 - 1 say so instead of wrapping.
struct RopeLen {
    uint64_t limb[ROPELEN_LIMBS];
};

// The small ones are here, inline: every step down a rope takes a few, and a
// call passes both lengths through memory.
inline RopeLen RopeLen_small(uint64_t v)
{
    RopeLen r = {};
    r.limb[0] = v;
    return r;
}

// r = a + b; false (r then holds the wrapped sum) when it passes 512 bits.
inline bool RopeLen_add(RopeLen *r, RopeLen a, RopeLen b)
{
    uint64_t carry = 0;
    for (int32_t i = 0; i < ROPELEN_LIMBS; i++) {
        uint64_t s = a.limb[i] + carry;
        carry = s < carry;
        s += b.limb[i];
        carry += s < b.limb[i];
        r->limb[i] = s;
    }
    // carry out of the top limb
    return carry == 0;
}

// a - b; a >= b is the caller's duty.
inline RopeLen RopeLen_sub(RopeLen a, RopeLen b)
{
    RopeLen r;
    uint64_t borrow = 0;
    for (int32_t i = 0; i < ROPELEN_LIMBS; i++) {
        uint64_t d = a.limb[i] - borrow;
        borrow = d > a.limb[i];
        borrow += d < b.limb[i];
        r.limb[i] = d - b.limb[i];
    }
    return r;
}

// r = a * k; false (r wrapped) when it passes 512 bits.
bool RopeLen_mulsmall(RopeLen *r, RopeLen a, uint64_t k);

// -1, 0 or 1 as a <, =, > b.
inline int32_t RopeLen_cmp(RopeLen a, RopeLen b)
{
    for (int32_t i = ROPELEN_LIMBS - 1; i >= 0; i--)
        if (a.limb[i] != b.limb[i])
            return a.limb[i] < b.limb[i] ? -1 : 1;
    return 0;
}

inline bool RopeLen_iszero(RopeLen a)
{
    for (int32_t i = 0; i < ROPELEN_LIMBS; i++)
        if (a.limb[i])
            return false;
    return true;
}
// *q = a / d and *r = a % d when d is not 0 and the quotient fits 64 bits;
// false, with nothing written, otherwise. Costs about the bit length of q.
bool RopeLen_divmod_by(RopeLen a, RopeLen d, uint64_t *q, RopeLen *r);
// a as 64 bits; *fits says whether that is all of it (else the low limb).
uint64_t RopeLen_tou64(RopeLen a, bool *fits);

// ---- frames ----

// Which field of the last term the chain follows out of a level.
enum : uint8_t {
    ROPE_NONE = 0,  // the final level: its last term is finite
    ROPE_ARG = 1,   // the last term's arg (blanked in the frame)
    ROPE_SUB = 2,   // the last term's sub; its arg is 0
};

// Ids of temporary frames carry this bit; below it they count 0, 1, 2, ...
// within the temporary store. Persistent ids count 1, 2, 3, ...; 0 is never
// a frame.
constexpr uint32_t ROPE_TEMPORARY_FRAME = 0x80000000u;

struct RopeFrame {
    Ord level;     // the store's own copy of the top array; sub and arg shared
    uint8_t hole;  // ROPE_ARG, ROPE_SUB or ROPE_NONE
};

// The id of the frame (level, hole), made if new. level has at least one
// term; for ROPE_ARG its last term's arg is 0, for ROPE_SUB and ROPE_NONE its
// last term's sub and arg are 0 (anything else is a fatal report). The top
// array is copied; two calls with the same hole and, term by term, the same
// coef and the same sub and arg arrays (by identity) give the same id. A
// persistent frame made while a temporary one of the same content exists gets
// an id of its own; the two spell the same letter in every hash, so ropes
// compare equal across them.
uint32_t rope_frame(Ord level, uint8_t hole);
// The hash chains of a frame's letters over its first terms: frames that
// share their first terms (members of one expansion, all with the same front)
// hash them once.
struct RopeTermsHash {
    uint64_t h[2];
    uint32_t count;  // terms hashed
};
RopeTermsHash rope_terms_hash(Ord terms);
// r taken on over the terms of more: the hash of the terms hashed, then those.
void rope_terms_hash_more(RopeTermsHash *r, Ord more);
// rope_frame of the level front's terms then rest's (at least one), copied
// only into a frame that is made. front_hash is rope_terms_hash(front), or
// null to have it taken here (the caller's duty: the hash of other terms
// gives a wrong letter).
uint32_t rope_frame_parts(Ord front, const RopeTermsHash *front_hash, Ord rest, uint8_t hole);
// The frame of an id, or null for 0 and for ids not (or no longer) held.
// Valid as long as the frame's store keeps it.
const RopeFrame *rope_frame_get(uint32_t id);

// ---- nodes ----

enum : uint8_t { ROPE_LEAF = 1, ROPE_CONCAT = 2, ROPE_REPEAT = 3 };

// A node; read it through the functions below, never write it. Heights: a
// leaf is 1, a concat one more than its taller child, a repeat one more than
// the repeated rope. A repeat has k >= 2 and repeats a repeat only where the
// product of the two counts would pass 64 bits (otherwise they are folded).
struct RopeNode {
    RopeLen len;       // frames spelled, at least 1
    uint64_t hash[2];  // H(sequence) under the two bases
    uint64_t power[2]; // base^len under each
    RopeNode *a;       // concat: left part; repeat: the repeated rope
    RopeNode *b;       // concat: right part; else null
    uint64_t k;        // repeat: the number of copies; else 0
    uint32_t frame;    // leaf: the frame id; else 0
    uint32_t height;
    uint32_t key_hash; // of (kind, frame or children), for interning
    uint8_t kind;      // ROPE_LEAF, ROPE_CONCAT or ROPE_REPEAT
    uint8_t temporary; // 1 in the temporary store
    // what a search may skip: ROPE_MARK_* of any frame spelled, and the least
    // finite sub among the frames that follow an arg (UINT32_MAX for none)
    uint8_t marks;
    uint8_t in_use;    // marked by the collection in progress
    uint32_t least_sub;
};

// A frame that follows a field from a last term of coefficient above 1.
constexpr uint8_t ROPE_MARK_MULTIPLE = 1;
// A frame that follows an arg from a last term whose sub is not finite.
constexpr uint8_t ROPE_MARK_INFINITE_SUB = 2;

// Set when a constructor returned null because its result would pass 2^512 - 1
// frames; only the caller clears it. Start value false.
extern bool rope_too_long;

// The one-frame rope.
RopeNode *rope_leaf(uint32_t frame);
// a then b, rebalanced by height (AVL-style join) so that the height stays
// logarithmic in the number of nodes however ropes are put together. Either
// may be null. Null with rope_too_long when the length passes 512 bits.
RopeNode *rope_concat(RopeNode *a, RopeNode *b);
// a then b under one new node, not rebalanced: its height is one more than
// the taller's. For the members of an expansion, which share a long front and
// are read and compared far more often than cut: a balanced join copies the
// front's spine for each. Both not null; null with rope_too_long when the
// length passes 512 bits.
RopeNode *rope_concat_top(RopeNode *a, RopeNode *b);
// t repeated k times: null for k = 0 or t null, t itself for k = 1; null with
// rope_too_long when the length passes 512 bits. O(log k).
RopeNode *rope_repeat(RopeNode *t, uint64_t k);
// The first len frames (all of n when len >= its length), and all but the
// first len. O(height) node visits and joins; a repeat on the cut is split
// into a repeat of the whole copies and a piece of one copy, never unrolled.
RopeNode *rope_take(RopeNode *n, RopeLen len);
RopeNode *rope_drop(RopeNode *n, RopeLen len);

// ---- reading ----

RopeLen rope_length(const RopeNode *n);  // 0 for null
uint32_t rope_height(const RopeNode *n); // 0 for null
// Frame ids at the ends and at an index from 0; 0 for null or past the end.
uint32_t rope_first_frame(const RopeNode *n);
uint32_t rope_last_frame(const RopeNode *n);
uint32_t rope_frame_at(const RopeNode *n, RopeLen index);

// The length of the longest common prefix of two ropes. Decided by hashes and
// lengths, descending a once and hashing prefixes of b on the way:
// O(height(a) * height(b)) steps of O(log k) each, times log k more at each
// repeat of a on the way down.
RopeLen rope_lcp(const RopeNode *a, const RopeNode *b);
// Whether two ropes spell the same frames (the lcp is both lengths), in O(1):
// equal lengths and equal hashes, trusted as rope_lcp trusts them.
bool rope_equal(const RopeNode *a, const RopeNode *b);

// Index of the last frame for which keep(frame, ctx) is true, searching from
// the end; *found false (and 0 returned) when there is none. A node searched
// in vain is not searched again in the same call, so keep() runs at most once
// per distinct leaf: within a repeat only the last copy is searched.
RopeLen rope_find_last(const RopeNode *n, bool (*keep)(uint32_t frame, void *ctx), void *ctx,
                       bool *found);
// The same, passing over every node for which may_hold(node, ctx) is false:
// a search that reads the marks finds what it looks for in O(height) steps.
RopeLen rope_find_last_pruned(const RopeNode *n, bool (*may_hold)(const RopeNode *n, void *ctx),
                              bool (*keep)(uint32_t frame, void *ctx), void *ctx, bool *found);

// The same, remembering across calls where the last frame kept is in each
// node searched, so that a rope made by joins and cuts of ropes searched
// before costs a visit per new node. `key` names the search: may_hold and
// keep must answer by the node or frame and what key stands for alone, and
// key must stand for the same thing as long as the frame `key_frame` is held
// (pass the frame whose content the search is about).
RopeLen rope_find_last_kept(const RopeNode *n, bool (*may_hold)(const RopeNode *n, void *ctx),
                            bool (*keep)(uint32_t frame, void *ctx), void *ctx, uint32_t key_frame,
                            bool *found);

// ---- the stores ----

// Times the temporary store and the whole store were emptied, so that what
// is kept by node elsewhere can tell that it is stale.
extern uint64_t rope_rewinds;
extern uint64_t rope_clears;
// The stamp of a memo entry made now whose nodes are temporary or not: it
// holds while that store has not been emptied since, and a temporary one
// only while the arena is on (in heap mode no temporary node may be used).
inline uint64_t rope_memo_stamp(bool temporary)
{
    return temporary ? rope_rewinds : rope_clears;
}
inline bool rope_memo_holds(uint64_t stamp, bool temporary)
{
    return stamp == rope_memo_stamp(temporary) && (ord_arena || !temporary);
}
// Empties the temporary store: its frames and nodes are gone.
void rope_store_rewind();
// Empties both stores; the caller guarantees that nothing refers to them.
void rope_store_clear();
// Heap bytes held by the persistent store: nodes, frames and tables.
uint64_t rope_store_bytes();

// ---- collection ----
//
// The persistent store keeps only what some values still in use need, rather
// than being emptied whole: start, mark every rope and every term array those
// values hold, finish. A frame is also in use when a marked term array is its
// level or a part of one (single-frame ropes hand out their level). On_frame
// hears of each frame as it is first marked, so that the caller can mark what
// its level holds; it must queue that for after the call, not mark from
// inside it. Finishing frees every persistent node and frame not marked,
// empties the temporary store, and counts as a clear (rope_clears and
// rope_rewinds move on), so that whatever is kept by node or frame elsewhere
// is dropped; nodes and frames marked stay where they are, with their ids.
void rope_collect_start();
void rope_mark(const RopeNode *n, void (*on_frame)(const RopeFrame *f, void *ctx), void *ctx);
void rope_mark_level(const OrdTerm *terms, void (*on_frame)(const RopeFrame *f, void *ctx), void *ctx);
void rope_collect_finish();
