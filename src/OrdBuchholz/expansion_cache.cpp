// The expansion cache: entries, their tree of dependence, and eviction.
#include "OrdBuchholz/expansion_cache.h"

#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_expand.h"
#include "OrdBuchholz/ord_identity.h"
#include "OrdBuchholz/ord_lazy.h"
#include "support/dynarray/dynarray.h"
#include "support/report/report.h"

// One kept expansion of one limit.
struct CacheEntry {
    Ord key;               // the limit, by identity
    Ord *seq;              // the members, a heap array of n
    int32_t n;
    DynArray parts;        // of OrdExpansion: every expansion the members come from
    uint64_t bytes;        // what the parts hold
    uint64_t plain_parts;  // bit j: part j is plain (see cache_plain)
    uint64_t told_parts;   // bit j: whether part j is plain has been found
    uint64_t last_frame;   // the frame of the last request
    uint64_t refused_cost; // work per member of the last refused expansion, or 0
    Ord skip_key;          // the left end last asked about (by identity), and
    int32_t skip;          // how many leading members do not exceed it; -1 none
    uint32_t parent;       // index of the entry whose member key is, or CACHE_NONE
    uint32_t first_child;  // entries whose keys are members of this one
    uint32_t next_sibling;
    uint32_t prev_sibling;
    bool live;
    uint64_t life;         // see expansion_cache_life
};

uint64_t expansion_cache_budget = (uint64_t)96 << 20;
uint64_t expansion_cache_bytes = 0;

static DynArray cache_entries;  // of CacheEntry
// No entry: the parent index of a root, the end of a list.
constexpr uint32_t CACHE_NONE = 0xFFFFFFFFu;

static uint32_t cache_free_list = CACHE_NONE;  // dead entries, linked by next_sibling
static OrdMap cache_index;      // key -> entry index + 1
static bool cache_ready = false;
static uint64_t cache_frame = 1;
static uint64_t cache_lives = 0;  // entries made so far
static Ord cache_top = {0, nullptr};
// Plain term arrays: neither lazy nor of the rope store, and every field 0 or
// again plain. They are the arrays of the top and of the plain parts, and
// live as long as those do. A collection has nothing to find in them, and
// stops there: the entries along the path to a deep view hold hundreds of
// thousands of them, which it would otherwise go through every time.
static OrdMap cache_plain;

static void cache_start()
{
    if (cache_ready)
        return;
    DynArray_init(&cache_entries, sizeof(CacheEntry), 64);
    OrdMap_init(&cache_index, 64);
    OrdMap_init(&cache_plain, 1024);
    cache_ready = true;
}

static CacheEntry *entry_at(uint32_t i)
{
    return DynArray_at<CacheEntry>(&cache_entries, i);
}

Ord expansion_cache_top()
{
    if (cache_top.count == 0) {
        cache_start();
        MemStack *arena = ord_arena;
        ord_arena = nullptr;
        cache_top = Ord_maketop();
        ord_arena = arena;
        // the top is made of term arrays alone
        DynArray todo;
        DynArray_init(&todo, sizeof(Ord), 8);
        DynArray_append(&todo, &cache_top);
        while (todo.count) {
            Ord y = *DynArray_at<Ord>(&todo, --todo.count);
            bool added;
            if (y.count == 0 || (OrdMap_insert(&cache_plain, y, &added), !added))
                continue;
            for (uint32_t i = 0; i < y.count; i++) {
                DynArray_append(&todo, &y.terms[i].sub);
                DynArray_append(&todo, &y.terms[i].arg);
            }
        }
        DynArray_free(&todo);
    }
    return cache_top;
}

// The top arrays of an expansion: its members, then its keep arrays.
static Ord part_array(const OrdExpansion *part, uint32_t i)
{
    return i < (uint32_t)part->n ? part->seq[i] : *DynArray_at<Ord>(&part->keep, i - (uint32_t)part->n);
}

static uint32_t part_arrays(const OrdExpansion *part)
{
    return (uint32_t)part->n + part->keep.count;
}

static void plain_remove(const OrdExpansion *part, uint32_t count)
{
    for (uint32_t i = 0; i < count; i++)
        if (part_array(part, i).count)
            OrdMap_remove(&cache_plain, part_array(part, i));
}

// Whether the expansion is plain: its top arrays are not lazy, and every field
// of theirs is 0, one of them, or plain already (what they were built from,
// the expanded value, is when the expansion it came from was). Its arrays
// then join cache_plain.
static bool plain_add(const OrdExpansion *part)
{
    uint32_t count = part_arrays(part);
    for (uint32_t i = 0; i < count; i++)
        if (Ord_islazy(part_array(part, i)))
            return false;
    for (uint32_t i = 0; i < count; i++) {
        Ord y = part_array(part, i);
        bool added = true;
        if (y.count)
            OrdMap_insert(&cache_plain, y, &added);
        if (!added) {
            // an array held twice is not what this expects: no claim then
            plain_remove(part, i);
            return false;
        }
    }
    for (uint32_t i = 0; i < count; i++) {
        Ord y = part_array(part, i);
        for (uint32_t t = 0; t < y.count; t++) {
            Ord f[2] = {y.terms[t].sub, y.terms[t].arg};
            for (Ord g : f)
                if (g.count && (Ord_islazy(g) || !OrdMap_find(&cache_plain, g))) {
                    plain_remove(part, count);
                    return false;
                }
        }
    }
    return true;
}

// Bytes that an expansion holds on the heap.
static uint64_t expansion_bytes(const OrdExpansion *e)
{
    uint64_t bytes = (uint64_t)e->n * sizeof(Ord) + (uint64_t)e->keep.capacity * sizeof(Ord);
    // lazy members are counted with the rope store, not here
    for (int32_t i = 0; i < e->n; i++)
        if (!Ord_islazy(e->seq[i]))
            bytes += (uint64_t)e->seq[i].count * sizeof(OrdTerm);
    for (uint32_t i = 0; i < e->keep.count; i++)
        if (!Ord_islazy(*DynArray_at<Ord>(&e->keep, i)))
            bytes += (uint64_t)DynArray_at<Ord>(&e->keep, i)->count * sizeof(OrdTerm);
    return bytes;
}

static void unlink_child(CacheEntry *e)
{
    if (e->prev_sibling != CACHE_NONE)
        entry_at(e->prev_sibling)->next_sibling = e->next_sibling;
    else if (e->parent != CACHE_NONE)
        entry_at(e->parent)->first_child = e->next_sibling;
    if (e->next_sibling != CACHE_NONE)
        entry_at(e->next_sibling)->prev_sibling = e->prev_sibling;
}

// Frees one entry that has no children left.
static void entry_release(uint32_t index)
{
    CacheEntry *e = entry_at(index);
    unlink_child(e);
    OrdMap_remove(&cache_index, e->key);
    // kept expansions are heap values whatever the mode of the moment
    MemStack *arena = ord_arena;
    ord_arena = nullptr;
    for (uint32_t i = 0; i < e->parts.count; i++) {
        const OrdExpansion *part = DynArray_at<OrdExpansion>(&e->parts, i);
        if (e->plain_parts >> i & 1)
            plain_remove(part, part_arrays(part));
        Ord_freeexpansion(*part);
    }
    ord_arena = arena;
    DynArray_free(&e->parts);
    free(e->seq);
    expansion_cache_bytes -= e->bytes;
    e->live = false;
    e->next_sibling = cache_free_list;
    cache_free_list = index;
}

// Evicts an entry and everything below it, deepest first, without recursion.
static void entry_evict(uint32_t index)
{
    uint32_t at = index;
    for (;;) {
        CacheEntry *e = entry_at(at);
        if (e->first_child != CACHE_NONE) {
            at = e->first_child;
            continue;
        }
        uint32_t parent = e->parent;
        entry_release(at);
        if (at == index)
            return;
        at = parent;
    }
}

// Orders entry indices by the frame of their last use, oldest first.
static int older_first(const void *a, const void *b)
{
    uint64_t x = entry_at(*(const uint32_t *)a)->last_frame;
    uint64_t y = entry_at(*(const uint32_t *)b)->last_frame;
    return x < y ? -1 : x > y;
}

// Evicts the entries not used since `before`, oldest first, until the bytes
// are down to `target`; an entry goes with all below it.
static void cache_shrink(uint64_t before, uint64_t target)
{
    if (expansion_cache_bytes <= target)
        return;
    DynArray order;
    DynArray_init(&order, sizeof(uint32_t), 64);
    for (uint32_t i = 0; i < cache_entries.count; i++)
        if (entry_at(i)->live && entry_at(i)->last_frame < before)
            DynArray_append(&order, &i);
    qsort(order.data, order.count, sizeof(uint32_t), older_first);
    for (uint32_t k = 0; k < order.count && expansion_cache_bytes > target; k++) {
        uint32_t i = *DynArray_at<uint32_t>(&order, k);
        // an entry may have gone already, below an older one
        if (entry_at(i)->live)
            entry_evict(i);
    }
    DynArray_free(&order);
}

// Expands x on the heap, on its rope if `on_rope`; false if the work limits
// refuse it.
static bool heap_expand(Ord x, int32_t n, bool on_rope, OrdExpansion *out)
{
    MemStack *arena = ord_arena;
    ord_arena = nullptr;
    uint32_t levels = ord_rope_levels;
    if (on_rope)
        ord_rope_levels = 0;
    *out = Ord_expandfresh(x, n);
    ord_rope_levels = levels;
    ord_arena = arena;
    if (out->n > 0)
        return true;
    Ord_freeexpansion(*out);
    return false;
}

static uint32_t entry_new(Ord x, uint32_t parent)
{
    uint32_t index;
    if (cache_free_list != CACHE_NONE) {
        index = cache_free_list;
        cache_free_list = entry_at(index)->next_sibling;
    } else {
        CacheEntry blank = {};
        index = DynArray_append(&cache_entries, &blank);
    }
    CacheEntry *e = entry_at(index);
    *e = CacheEntry{x, nullptr, 0, {}, 0, 0, 0, cache_frame, 0, Ord_zero(), -1,
                    parent, CACHE_NONE, CACHE_NONE, CACHE_NONE, true, ++cache_lives};
    DynArray_init(&e->parts, sizeof(OrdExpansion), 2);
    if (parent != CACHE_NONE) {
        CacheEntry *p = entry_at(parent);
        e->next_sibling = p->first_child;
        if (p->first_child != CACHE_NONE)
            entry_at(p->first_child)->prev_sibling = index;
        p->first_child = index;
    }
    bool added;
    OrdMap_insert(&cache_index, x, &added)->value = (void *)(uintptr_t)(index + 1);
    return index;
}

// Bytes of an entry from which a longer sequence is made on the rope.
constexpr uint64_t LENGTHEN_ON_ROPE_BYTES = 16 << 10;

// Clears of the rope store seen: members held across one are stale.
static uint64_t cache_rope_clears = 0;

// Evicts every entry.
static void cache_evict_all()
{
    for (uint32_t i = 0; i < cache_entries.count; i++)
        if (entry_at(i)->live && entry_at(i)->parent == CACHE_NONE)
            entry_evict(i);
}

// Evicts everything when the rope store was emptied behind the cache's back
// (tests do; the frame loop empties it only through expansion_cache_frame).
static void cache_check_ropes()
{
    if (cache_rope_clears != rope_clears)
        cache_evict_all();
    cache_rope_clears = rope_clears;
}

bool expansion_cache_get(Ord x, int32_t n, uint32_t parent_handle, CachedExpansion *out, bool *full)
{
    cache_start();
    cache_check_ropes();
    *full = false;
    // only the top is a root: any other ordinal could be freed under its key
    if (parent_handle == CACHE_OFF || (parent_handle == CACHE_ROOT && x.terms != cache_top.terms)) {
        *full = true;
        return false;
    }
    uint32_t parent = parent_handle == CACHE_ROOT ? CACHE_NONE : parent_handle - 1;
    OrdMapSlot *slot = OrdMap_find(&cache_index, x);
    uint32_t index = slot ? (uint32_t)(uintptr_t)slot->value - 1 : CACHE_NONE;
    if (index != CACHE_NONE && entry_at(index)->n >= n) {
        CacheEntry *e = entry_at(index);
        e->last_frame = cache_frame;
        *out = CachedExpansion{e->seq, e->n, index + 1};
        return true;
    }

    // nothing left to spend: refuse at once, without walking the chain
    if (ord_work_left == 0 && ord_work_big == 0)
        return false;
    // a longer sequence than kept: at least twice as long, so that a zoom
    // that needs one more member each frame expands only now and then
    int32_t have = index != CACHE_NONE ? entry_at(index)->n : 0;
    int32_t want = n;
    if (have > 0 && want < 2 * have)
        want = have > INT32_MAX / 2 ? INT32_MAX : 2 * have;
    // refused before, and the work left is still too little: refuse at once,
    // without walking the chain again
    if (index != CACHE_NONE) {
        CacheEntry *e = entry_at(index);
        e->last_frame = cache_frame;
        uint64_t most = ord_work_left > ord_work_big ? ord_work_left : ord_work_big;
        if (e->refused_cost && e->refused_cost > most / (uint64_t)want)
            return false;
    }
    // a longer sequence of a large entry is made on the rope: copied term
    // by term it would hold all the members kept already once more, twice
    // as many as they, and the entries on the path to a deep view, asked
    // for more members as the view narrows, would fill the cache with such
    // copies. Small ones are copied: their members are quicker to read.
    bool on_rope = index != CACHE_NONE && entry_at(index)->bytes >= LENGTHEN_ON_ROPE_BYTES;
    OrdExpansion fresh;
    if (!heap_expand(x, want, on_rope, &fresh)) {
        // remember the price, so that later frames can refuse it cheaply
        if (index == CACHE_NONE && OrdMap_find(&cache_index, x) == nullptr)
            index = entry_new(x, parent);
        entry_at(index)->refused_cost = ord_refused_cost / (uint64_t)want + 1;
        return false;
    }
    uint64_t bytes = expansion_bytes(&fresh);
    if (expansion_cache_bytes + bytes > expansion_cache_budget)
        cache_shrink(cache_frame, expansion_cache_budget > bytes ? expansion_cache_budget - bytes : 0);
    if (expansion_cache_bytes + bytes > expansion_cache_budget) {
        MemStack *arena = ord_arena;
        ord_arena = nullptr;
        Ord_freeexpansion(fresh);
        ord_arena = arena;
        *full = true;
        return false;
    }
    // the lookup slot is stale after the shrink: the entry may have gone too
    slot = OrdMap_find(&cache_index, x);
    index = slot ? (uint32_t)(uintptr_t)slot->value - 1 : CACHE_NONE;
    if (index == CACHE_NONE) {
        index = entry_new(x, parent);
        have = 0;
    }
    CacheEntry *e = entry_at(index);
    Ord *seq = (Ord *)realloc(e->seq, (size_t)fresh.n * sizeof(Ord));
    if (!seq)
        REPORT(REPORT_FATAL, "Out of memory for a kept expansion", 0);
    // members already handed out stay; only the new tail comes from fresh
    memcpy(seq + have, fresh.seq + have, (size_t)(fresh.n - have) * sizeof(Ord));
    e->seq = seq;
    e->n = fresh.n;
    e->refused_cost = 0;
    DynArray_append(&e->parts, &fresh);
    e->bytes += bytes;
    e->last_frame = cache_frame;
    expansion_cache_bytes += bytes;
    *out = CachedExpansion{e->seq, e->n, index + 1};
    return true;
}

bool expansion_cache_skip(uint32_t handle, Ord ordlo, int32_t *m)
{
    if (handle == CACHE_OFF || handle == CACHE_ROOT)
        return false;
    const CacheEntry *e = entry_at(handle - 1);
    if (e->skip < 0 || e->skip_key.terms != ordlo.terms || e->skip_key.count != ordlo.count)
        return false;
    *m = e->skip;
    return true;
}

void expansion_cache_skip_keep(uint32_t handle, Ord ordlo, int32_t m)
{
    if (handle == CACHE_OFF || handle == CACHE_ROOT)
        return;
    CacheEntry *e = entry_at(handle - 1);
    e->skip_key = ordlo;
    e->skip = m;
}

uint64_t expansion_cache_life(uint32_t handle)
{
    if (handle == CACHE_OFF || handle == CACHE_ROOT || handle > cache_entries.count)
        return 0;
    const CacheEntry *e = entry_at(handle - 1);
    return e->live ? e->life : 0;
}

// Finds which parts made since the last collection are plain, parents
// before children (a child's arrays are built from its parent's). Only what
// lives until a collection is asked: most expansions of a moving view are
// gone a few frames after they were made, and finding out costs about as much
// as making them.
static void plain_parts_find()
{
    DynArray todo;
    DynArray_init(&todo, sizeof(uint32_t), 64);
    for (uint32_t i = 0; i < cache_entries.count; i++)
        if (entry_at(i)->live && entry_at(i)->parent == CACHE_NONE)
            DynArray_append(&todo, &i);
    while (todo.count) {
        uint32_t i = *DynArray_at<uint32_t>(&todo, --todo.count);
        CacheEntry *e = entry_at(i);
        for (uint32_t j = 0; j < e->parts.count && j < 64; j++) {
            if (e->told_parts >> j & 1)
                continue;
            e->told_parts |= 1ull << j;
            if (plain_add(DynArray_at<OrdExpansion>(&e->parts, j)))
                e->plain_parts |= 1ull << j;
        }
        for (uint32_t c = e->first_child; c != CACHE_NONE; c = entry_at(c)->next_sibling)
            DynArray_append(&todo, &c);
    }
    DynArray_free(&todo);
}

void expansion_cache_collect()
{
    cache_start();
    cache_check_ropes();
    plain_parts_find();
    ord_lazy_collect_start(&cache_plain);
    ord_lazy_keep(cache_top);
    for (uint32_t i = 0; i < cache_entries.count; i++) {
        const CacheEntry *e = entry_at(i);
        if (!e->live)
            continue;
        ord_lazy_keep(e->key);
        // the members handed out reach all that is read again; the rest of
        // the parts (the members a longer expansion made again, and the
        // arrays members were built from) is only ever freed, top array by
        // top array, and what it alone reaches may go
        for (int32_t k = 0; k < e->n; k++)
            ord_lazy_keep(e->seq[k]);
    }
    ord_lazy_collect_finish();
    // the entries' ropes stayed where they were
    cache_rope_clears = rope_clears;
}

void expansion_cache_frame()
{
    cache_start();
    cache_frame++;
    // idle entries first, then the least recently used down to the budget
    for (uint32_t i = 0; i < cache_entries.count; i++) {
        CacheEntry *e = entry_at(i);
        if (e->live && e->parent == CACHE_NONE && e->last_frame + EXPANSION_CACHE_IDLE < cache_frame)
            entry_evict(i);
    }
    for (uint32_t i = 0; i < cache_entries.count; i++) {
        CacheEntry *e = entry_at(i);
        if (e->live && e->last_frame + EXPANSION_CACHE_IDLE < cache_frame)
            entry_evict(i);
    }
    cache_shrink(cache_frame, expansion_cache_budget);
    // what was forced is kept for the frames after, which read mostly the
    // same values, up to a budget of its own
    if (ord_lazy_bytes > LAZY_KEEP_BYTES)
        ord_lazy_trim();
    // past its budget the rope store keeps only what the entries use; when
    // that is still over three quarters of it, collecting again would soon
    // cost more than starting afresh: the store is dropped whole and
    // everything kept goes with it, to be built again
    cache_check_ropes();
    if (rope_store_bytes() + ord_lazy_bytes > ROPE_STORE_BUDGET) {
        expansion_cache_collect();
        if (rope_store_bytes() + ord_lazy_bytes > ROPE_STORE_BUDGET * 3 / 4) {
            cache_evict_all();
            ord_lazy_clear();
            cache_rope_clears = rope_clears;
        }
    }
}
