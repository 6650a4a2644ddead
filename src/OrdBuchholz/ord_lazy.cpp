// Lazy values: their ropes, their forcing, and the rope algebra of expansion.
#include "OrdBuchholz/ord_lazy.h"

#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_identity.h"
#include "OrdBuchholz/rope_table.h"
#include "support/dynarray/dynarray.h"
#include "support/report/report.h"

uint64_t ord_lazy_bytes = 0;

// Forced arrays and places are made by the hundred thousand in a frame
// crowded with deep ordinals and all let go at once at the next: one heap
// block each made the letting go cost more than the frame (and the heap's
// free lists went over 400 MB). They are bumped from blocks of their own,
// let go a block at a time.
struct BumpBlock {
    BumpBlock *next;
    size_t used, size;
    alignas(16) unsigned char data[];
};
struct Bump {
    BumpBlock *blocks;  // the newest first
};
constexpr size_t BUMP_BLOCK_BYTES = (size_t)1 << 20;

static void *bump_alloc(Bump *b, size_t bytes)
{
    bytes = (bytes + 15) & ~(size_t)15;
    BumpBlock *top = b->blocks;
    if (!top || top->size - top->used < bytes) {
        size_t size = bytes > BUMP_BLOCK_BYTES ? bytes : BUMP_BLOCK_BYTES;
        top = (BumpBlock *)malloc(sizeof(BumpBlock) + size);
        if (!top)
            REPORT(REPORT_FATAL, "Out of memory for the values of compressed ordinals", 0);
        *top = BumpBlock{b->blocks, 0, size};
        b->blocks = top;
    }
    void *at = top->data + top->used;
    top->used += bytes;
    return at;
}

// Lets go of everything; one block of the usual size stays for the next frame.
static void bump_reset(Bump *b)
{
    BumpBlock *spare = nullptr;
    for (BumpBlock *k = b->blocks, *next; k; k = next) {
        next = k->next;
        if (!spare && k->size == BUMP_BLOCK_BYTES) {
            spare = k;
            continue;
        }
        free(k);
    }
    if (spare)
        *spare = BumpBlock{nullptr, 0, BUMP_BLOCK_BYTES};
    b->blocks = spare;
}

// Forced arrays by rope: those of persistent ropes, and those of temporary
// ones, each valid while the store has not been emptied since; each memo's
// arrays in a bump of its own, with their bytes.
struct ForcedMemo {
    OrdMap map;
    Bump mem;
    uint64_t bytes;
};
static ForcedMemo forced_kept, forced_temporary;
static bool forced_ready = false;
static uint64_t forced_clears = 0, forced_rewinds = 0;

static void forced_drop(ForcedMemo *memo);

// Drops what a store emptied since the last look has made stale.
static void forced_check()
{
    if (!forced_ready) {
        OrdMap_init(&forced_kept.map, 1024);
        OrdMap_init(&forced_temporary.map, 1024);
        forced_ready = true;
    }
    if (forced_clears != rope_clears)
        forced_drop(&forced_kept);
    if (forced_rewinds != rope_rewinds)
        forced_drop(&forced_temporary);
    forced_clears = rope_clears;
    forced_rewinds = rope_rewinds;
}

// A forced top array, with its length for the release.
struct ForcedArray {
    uint32_t count;
    OrdTerm terms[];
};

// A place in a rope: the value spelled by its frames from `at` on. Places
// are made once per rope and index, so that a place has one identity.
struct LazyPlace {
    RopeNode *rope;
    RopeLen at;
    RopeNode *rest;  // the rope from `at` on, once something asked for it
};

// Places by rope and index: a table for each store, emptied with its store.
struct PlaceTable {
    RopeTable table;  // of LazyPlace*
    Bump mem;         // the places themselves
};
struct PlaceTables {
    PlaceTable kept, temporary;
    uint64_t clears, rewinds;  // the rope store's, when last looked at
    bool counted;              // held in ord_lazy_bytes
};
// The places handed out as lazy values, let go by ord_lazy_trim; and those
// whose rests rope_rest has cut, which comparisons and printing ask for again
// and again (a cut costs the height of the rope in joins), kept as long as
// their store.
static PlaceTables places = {{{nullptr, 0, 0}, {nullptr}}, {{nullptr, 0, 0}, {nullptr}}, 0, 0, true};
static PlaceTables rests = {{{nullptr, 0, 0}, {nullptr}}, {{nullptr, 0, 0}, {nullptr}}, 0, 0, false};

static void places_empty(PlaceTable *t, bool counted)
{
    if (counted)
        ord_lazy_bytes -= (uint64_t)t->table.count * sizeof(LazyPlace);
    bump_reset(&t->mem);
    RopeTable_free(&t->table);
}

// The table picks the slot by the low bits: the product's high bits are
// folded down, as the low bits of rope addresses are all alike.
static uint64_t place_hash(const RopeNode *r, RopeLen at)
{
    uint64_t h = ((uint64_t)(uintptr_t)r ^ (at.limb[0] * 0x9E3779B97F4A7C15ull)) * 0xBF58476D1CE4E5B9ull;
    return h ^ (h >> 32);
}

static uint64_t place_hash_of(const void *entry)
{
    const LazyPlace *p = (const LazyPlace *)entry;
    return place_hash(p->rope, p->at);
}

static bool place_same(const void *entry, const void *key)
{
    const LazyPlace *x = (const LazyPlace *)entry, *y = (const LazyPlace *)key;
    return x->rope == y->rope && RopeLen_cmp(x->at, y->at) == 0;
}

// The place of frame `at` of r in ts, made with no rest if it is new.
static LazyPlace *place_record(PlaceTables *ts, RopeNode *r, RopeLen at)
{
    if (ts->clears != rope_clears)
        places_empty(&ts->kept, ts->counted);
    if (ts->rewinds != rope_rewinds)
        places_empty(&ts->temporary, ts->counted);
    ts->clears = rope_clears;
    ts->rewinds = rope_rewinds;
    PlaceTable *t = r->temporary ? &ts->temporary : &ts->kept;
    LazyPlace key = {r, at, nullptr};
    uint64_t h = place_hash(r, at);
    LazyPlace *p = (LazyPlace *)RopeTable_find(&t->table, h, place_same, &key);
    if (p)
        return p;
    p = (LazyPlace *)bump_alloc(&t->mem, sizeof(LazyPlace));
    *p = key;
    uint64_t slot_bytes = 0;  // the places are counted, not their slots
    RopeTable_add(&t->table, p, h, place_hash_of, &slot_bytes);
    if (ts->counted)
        ord_lazy_bytes += sizeof(LazyPlace);
    return p;
}

// The place of frame `at` of r, at least 1 and below r's length minus 1.
static Ord place_of(RopeNode *r, RopeLen at)
{
    return Ord{ORD_LAZY_PLACE, (OrdTerm *)(void *)place_record(&places, r, at)};
}

RopeNode *Ord_lazyrope(Ord x)
{
    if (x.count == ORD_LAZY)
        return (RopeNode *)(void *)x.terms;
    LazyPlace *p = (LazyPlace *)(void *)x.terms;
    if (!p->rest)
        p->rest = rope_rest(p->rope, p->at);
    return p->rest;
}

Ord Ord_fromrope(RopeNode *r)
{
    // a single frame follows nothing: it is a term array ending in a number
    if (RopeLen_cmp(rope_length(r), RopeLen_small(1)) == 0)
        return rope_frame_get(rope_first_frame(r))->level;
    return Ord{ORD_LAZY, (OrdTerm *)(void *)r};
}

// The frame of the term array x (at least one term) that follows `hole`,
// with that field blanked.
// `first`, when not null, is the rope_terms_hash of the terms but the last.
static uint32_t frame_of(const OrdTerm *terms, uint32_t n, uint8_t hole, const RopeTermsHash *first)
{
    OrdTerm last = terms[n - 1];
    if (hole == ROPE_ARG)
        last.arg = Ord_zero();
    else if (hole == ROPE_SUB)
        last.sub = Ord_zero();
    return rope_frame_parts(Ord{n - 1, (OrdTerm *)terms}, first, Ord{1, &last}, hole);
}

// The field a term array's chain follows: ROPE_ARG, ROPE_SUB or ROPE_NONE.
static uint8_t followed(const OrdTerm *last)
{
    return last->arg.count ? ROPE_ARG : last->sub.count ? ROPE_SUB : ROPE_NONE;
}

// A rope of the frame ids ids[lo, hi), balanced.
static RopeNode *rope_of_ids(const uint32_t *ids, uint32_t lo, uint32_t hi)
{
    if (hi - lo == 1)
        return rope_leaf(ids[lo]);
    uint32_t mid = lo + (hi - lo) / 2;
    return rope_concat(rope_of_ids(ids, lo, mid), rope_of_ids(ids, mid, hi));
}

RopeNode *Ord_rope(Ord x)
{
    if (x.count == 0)
        return nullptr;
    if (Ord_islazy(x))
        return Ord_lazyrope(x);
    return Ord_rope_hashed(x, nullptr);
}

RopeNode *Ord_rope_hashed(Ord x, const RopeTermsHash *first)
{
    static DynArray ids;
    static bool ids_ready = false;
    if (!ids_ready) {
        DynArray_init(&ids, sizeof(uint32_t), 64);
        ids_ready = true;
    }
    ids.count = 0;
    RopeNode *tail = nullptr;
    for (;;) {
        const OrdTerm *last = Ord_lastterm(x);
        uint8_t hole = followed(last);
        uint32_t id = frame_of(x.terms, x.count, hole, first);
        first = nullptr;  // for the top array only
        DynArray_append(&ids, &id);
        if (hole == ROPE_NONE)
            break;
        x = hole == ROPE_ARG ? last->arg : last->sub;
        if (Ord_islazy(x)) {
            tail = Ord_lazyrope(x);
            break;
        }
    }
    return rope_concat(rope_of_ids(DynArray_at<uint32_t>(&ids, 0), 0, ids.count), tail);
}

RopeNode *rope_rest(RopeNode *r, RopeLen at)
{
    LazyPlace *p = place_record(&rests, r, at);
    if (p->rest)
        return p->rest;
    // made in the store that holds r, so that it lives exactly as long (the
    // store goes by ord_arena being set or not)
    MemStack *arena = ord_arena;
    static MemStack temporary_mark;
    ord_arena = r->temporary ? (arena ? arena : &temporary_mark) : nullptr;
    p->rest = rope_drop(r, at);
    ord_arena = arena;
    return p->rest;
}

Ord Ord_force(Ord x)
{
    if (!Ord_islazy(x))
        return x;
    forced_check();
    // the rope and the index of the value's first frame
    RopeNode *r;
    RopeLen at;
    if (x.count == ORD_LAZY) {
        r = (RopeNode *)(void *)x.terms;
        at = RopeLen_small(0);
    } else {
        const LazyPlace *place = (const LazyPlace *)(void *)x.terms;
        r = place->rope;
        at = place->at;
    }
    // forced before: no descent of the rope
    ForcedMemo *memo = r->temporary ? &forced_temporary : &forced_kept;
    OrdMapSlot *slot = OrdMap_find(&memo->map, x);
    if (slot) {
        ForcedArray *kept = (ForcedArray *)slot->value;
        return Ord{kept->count, kept->terms};
    }
    const RopeFrame *f = rope_frame_get(rope_frame_at(r, at));

    // the frame's terms, with the rest of the chain in the field it follows
    size_t bytes = (size_t)f->level.count * sizeof(OrdTerm);
    ForcedArray *forced = (ForcedArray *)bump_alloc(&memo->mem, sizeof(ForcedArray) + bytes);
    forced->count = f->level.count;
    OrdTerm *terms = forced->terms;
    memcpy(terms, f->level.terms, bytes);
    if (f->hole != ROPE_NONE) {
        // the rest is the place of the next frame; the last frame alone is
        // the store's term array
        RopeLen next;
        RopeLen_add(&next, at, RopeLen_small(1));
        RopeLen final = RopeLen_sub(rope_length(r), RopeLen_small(1));
        Ord rest = RopeLen_cmp(next, final) == 0 ? rope_frame_get(rope_last_frame(r))->level : place_of(r, next);
        OrdTerm *last = &terms[f->level.count - 1];
        (f->hole == ROPE_ARG ? last->arg : last->sub) = rest;
    }
    ord_lazy_bytes += sizeof(ForcedArray) + bytes;
    memo->bytes += sizeof(ForcedArray) + bytes;
    bool added;
    OrdMap_insert(&memo->map, x, &added)->value = forced;
    return Ord{f->level.count, terms};
}

RopeNode *rope_prepend_terms(Ord head, const RopeTermsHash *head_hash, RopeNode *y)
{
    if (head.count == 0)
        return y;
    if (!y)
        return Ord_rope(head);
    // y's first level takes head's terms in front of its own
    const RopeFrame *f = rope_frame_get(rope_first_frame(y));
    uint32_t id = rope_frame_parts(head, head_hash, f->level, f->hole);
    return rope_concat(rope_leaf(id), rope_drop(y, RopeLen_small(1)));
}

RopeNode *rope_wrap(RopeNode *above, RopeNode *y)
{
    if (y || !above)
        return rope_concat(above, y);
    // nothing below: the last frame's level, with its field still 0, is a
    // term array whose chain goes on by what else that frame holds
    RopeLen n = rope_length(above);
    RopeLen one = RopeLen_small(1);
    const RopeFrame *f = rope_frame_get(rope_last_frame(above));
    return rope_concat(rope_take(above, RopeLen_sub(n, one)), Ord_rope(f->level));
}

// Lets go of the arrays a memo holds and empties it; the ropes they were
// forced from may be gone already.
static void forced_drop(ForcedMemo *memo)
{
    ord_lazy_bytes -= memo->bytes;
    memo->bytes = 0;
    bump_reset(&memo->mem);
    OrdMap_free(&memo->map);
    OrdMap_init(&memo->map, 1024);
}

void ord_lazy_trim()
{
    forced_check();
    forced_drop(&forced_kept);
    forced_drop(&forced_temporary);
    places_empty(&places.kept, places.counted);
    places_empty(&places.temporary, places.counted);
}

void ord_lazy_rewind()
{
    rope_store_rewind();
    forced_check();
}

void ord_lazy_clear()
{
    rope_store_clear();
    forced_check();
}

// ---- collection ----

static DynArray collect_work;  // of Ord: values still to mark
static OrdMap collect_seen;    // term arrays marked, by identity
static bool collect_ready = false;
// Arrays the last collection marked: the next map starts at that size
// instead of growing to it again.
static uint32_t collect_seen_last = 1024;
// The arrays marked last, by a hash of their address: the members of an
// expansion are arrays of their own whose terms mostly hold the same few
// arrays, met again and again; this catches them without a look into the map.
constexpr uint32_t COLLECT_RECENT_SLOTS = 4096;
static Ord collect_recent[COLLECT_RECENT_SLOTS];

// Arrays that reach nothing of the store (see ord_lazy_collect_start).
static const OrdMap *collect_plain = nullptr;

static Ord *recent_slot(Ord y)
{
    uint64_t h = (uint64_t)(uintptr_t)y.terms * 0x9E3779B97F4A7C15ull;
    return &collect_recent[h >> 52];
}

// A field worth queueing: not 0 (most fields are) and not an array just
// marked. The members of one expansion share their long fronts, so most
// fields of the frames a collection meets are arrays it has met already.
static bool field_to_queue(Ord y)
{
    if (y.count == 0)
        return false;
    const Ord *recent = recent_slot(y);
    return recent->terms != y.terms || recent->count != y.count;
}

// The sub and arg of every term of y, queued to be marked.
static void queue_fields(Ord y)
{
    for (uint32_t i = 0; i < y.count; i++) {
        if (field_to_queue(y.terms[i].sub))
            DynArray_append(&collect_work, &y.terms[i].sub);
        if (field_to_queue(y.terms[i].arg))
            DynArray_append(&collect_work, &y.terms[i].arg);
    }
}

// What a frame's level holds is in use.
static void keep_level(const RopeFrame *f, void *)
{
    queue_fields(f->level);
}

void ord_lazy_collect_start(const OrdMap *plain)
{
    collect_plain = plain;
    if (!collect_ready) {
        DynArray_init(&collect_work, sizeof(Ord), 64);
        collect_ready = true;
    }
    OrdMap_init(&collect_seen, collect_seen_last);
    memset(collect_recent, 0, sizeof collect_recent);
    // places and forced arrays go: what they point at may go too
    ord_lazy_trim();
    rope_collect_start();
}

void ord_lazy_keep(Ord x)
{
    DynArray_append(&collect_work, &x);
    while (collect_work.count) {
        Ord y = *DynArray_at<Ord>(&collect_work, --collect_work.count);
        if (y.count == 0)
            continue;
        if (y.count == ORD_LAZY) {
            rope_mark((RopeNode *)(void *)y.terms, keep_level, nullptr);
            continue;
        }
        // places go at every trim: nothing that lasts holds one
        if (y.count == ORD_LAZY_PLACE)
            continue;
        Ord *recent = recent_slot(y);
        if (recent->terms == y.terms && recent->count == y.count)
            continue;
        *recent = y;
        if (collect_plain && OrdMap_find(collect_plain, y))
            continue;
        bool added;
        OrdMap_insert(&collect_seen, y, &added);
        if (!added)
            continue;
        // a single-frame rope hands out its frame's level: that frame stays
        rope_mark_level(y.terms, keep_level, nullptr);
        queue_fields(y);
    }
}

void ord_lazy_collect_finish()
{
    collect_seen_last = collect_seen.count;
    OrdMap_free(&collect_seen);
    rope_collect_finish();
    forced_check();
}
