// Ropes of frames: interning in two stores, balanced joins, cuts, hashed
// comparison and the search from the end.
#include "OrdBuchholz/ord_rope.h"
#include "OrdBuchholz/rope_table.h"

#include <stdlib.h>
#include <string.h>

#include "support/dynarray/dynarray.h"
#include "support/report/report.h"

// ---- constants ----

// The modulus of both hashes, 2^61 - 1: a product of two residues fits 128
// bits and reduces with a shift and an add.
constexpr uint64_t HASH_P = (1ull << 61) - 1;
// The two bases, primitive roots mod HASH_P picked at random once, so base^n
// runs through all of p - 1 values before it repeats.
constexpr uint64_t HASH_BASE[2] = {0x1a13c1924d52bc61ull, 0x1e742d0e2456de76ull};
// Seeds of the two letter mixes, independent of each other.
constexpr uint64_t LETTER_SEED[2] = {0x243f6a8885a308d3ull, 0x13198a2e03707344ull};
// Nodes per block of a store: blocks are never moved, so nodes stay put.
constexpr uint32_t NODES_PER_BLOCK = 512;

// ---- types ----

// A frame as a store holds it: the record, its letters, then its terms in the
// same heap block.
struct RopeFrameRec {
    RopeFrame frame;     // level.terms points just past this record
    uint64_t letter[2];  // the frame's value in each hash, 1 .. p - 1
    uint32_t id;
    uint8_t in_use;      // marked by the collection in progress
};

struct RopeStore {
    RopeTable frames_by_content;  // of RopeFrameRec*
    RopeTable nodes_by_key;       // of RopeNode*
    DynArray frames;              // of RopeFrameRec*, by id without the store bit
    DynArray blocks;              // of RopeNode*, NODES_PER_BLOCK nodes each
    uint32_t block_used;          // nodes handed out of the last block
    RopeNode *free_nodes;         // collected, linked by a; handed out first
    DynArray free_ids;            // of uint32_t: frame ids collected, used again first
    uint64_t bytes;               // heap bytes held
    bool ready;                   // the arrays are initialised
    bool temporary;               // this is the temporary store
};

// Search state of one rope_find_last: a node, where it starts, and whether
// its children are done.
struct RopeVisit {
    const RopeNode *node;
    RopeLen offset;
    bool children_done;
};

// the header promises this size to whoever budgets the store
static_assert(sizeof(RopeNode) == 144, "RopeNode changed size");

// ---- globals ----

bool rope_too_long = false;

// The store of heap mode; starts empty.
static RopeStore rope_heap = {{nullptr, 0, 0}, {nullptr, 0, 0}, {}, {}, 0, nullptr, {}, 0, false, false};
// The store of arena mode; starts empty and is emptied at every rewind.
static RopeStore rope_temp = {{nullptr, 0, 0}, {nullptr, 0, 0}, {}, {}, 0, nullptr, {}, 0, false, true};
// Scratch of the joins and cuts (RopeNode*), kept between calls to spare the
// heap; no call here is re-entered, so one of each is enough.
static DynArray rope_spine;
static DynArray rope_pieces;
static bool rope_scratch_ready = false;

// ---- lengths inside a rope ----

// a + b where the caller knows it cannot pass 512 bits (a part of a rope).
static RopeLen len_add(RopeLen a, RopeLen b)
{
    RopeLen r;
    if (!RopeLen_add(&r, a, b))
        REPORT(REPORT_FATAL, "A rope length overflowed inside a rope", 0);
    return r;
}

// a * k under the same promise.
static RopeLen len_mul(RopeLen a, uint64_t k)
{
    RopeLen r;
    if (!RopeLen_mulsmall(&r, a, k))
        REPORT(REPORT_FATAL, "A rope length overflowed inside a rope", 0);
    return r;
}

// ---- hash arithmetic mod 2^61 - 1 ----

static uint64_t mod_reduce(unsigned __int128 z)
{
    // 2^61 = 1 mod p: fold the high bits onto the low ones
    uint64_t r = (uint64_t)(z & HASH_P) + (uint64_t)(z >> 61);
    r = (r & HASH_P) + (r >> 61);
    return r >= HASH_P ? r - HASH_P : r;
}

static uint64_t mod_mul(uint64_t a, uint64_t b)
{
    return mod_reduce((unsigned __int128)a * b);
}

static uint64_t mod_add(uint64_t a, uint64_t b)
{
    uint64_t s = a + b;  // both below 2^61: no wrap
    return s >= HASH_P ? s - HASH_P : s;
}

// x^k and 1 + x + ... + x^(k-1), by the bits of k from the top:
// doubling m gives S(2m) = S(m)(1 + x^m), adding one gives S(m+1) = S(m)x + 1.
static void mod_geometric(uint64_t x, uint64_t k, uint64_t *power, uint64_t *sum)
{
    uint64_t pw = 1, s = 0;
    // the bits above k's highest leave s = 0 and pw = 1: start at it
    for (int32_t bit = k ? 63 - __builtin_clzll(k) : -1; bit >= 0; bit--) {
        s = mod_mul(s, mod_add(1, pw));
        pw = mod_mul(pw, pw);
        if ((k >> bit) & 1) {
            s = mod_add(mod_mul(s, x), 1);
            pw = mod_mul(pw, x);
        }
    }
    *power = pw;
    *sum = s;
}

// One 64-bit word mixed into a running hash (the finaliser of splitmix64).
static uint64_t mix(uint64_t h, uint64_t word)
{
    h ^= word + 0x9E3779B97F4A7C15ull;
    h ^= h >> 30;
    h *= 0xBF58476D1CE4E5B9ull;
    h ^= h >> 27;
    h *= 0x94D049BB133111EBull;
    return h ^ (h >> 31);
}

// ---- tables ----

static void *checked_malloc(size_t bytes, const char *what)
{
    void *p = malloc(bytes);
    if (!p)
        REPORT(REPORT_FATAL, what, 0);
    return p;
}

static bool same_pointer(const void *entry, const void *key)
{
    return entry == key;
}

// ---- stores ----

static void scratch_ready()
{
    if (rope_scratch_ready)
        return;
    DynArray_init(&rope_spine, sizeof(RopeNode *), 64);
    DynArray_init(&rope_pieces, sizeof(RopeNode *), 64);
    rope_scratch_ready = true;
}

static void store_ready(RopeStore *s)
{
    if (s->ready)
        return;
    DynArray_init(&s->frames, sizeof(RopeFrameRec *), 64);
    DynArray_init(&s->blocks, sizeof(RopeNode *), 16);
    DynArray_init(&s->free_ids, sizeof(uint32_t), 16);
    s->block_used = NODES_PER_BLOCK;
    s->free_nodes = nullptr;
    s->bytes = 0;
    // persistent ids start at 1: 0 is never a frame
    if (!s->temporary) {
        RopeFrameRec *none = nullptr;
        DynArray_append(&s->frames, &none);
    }
    s->ready = true;
}

static void store_empty(RopeStore *s)
{
    if (!s->ready)
        return;
    for (uint32_t i = 0; i < s->frames.count; i++)
        free(*DynArray_at<RopeFrameRec *>(&s->frames, i));
    for (uint32_t i = 0; i < s->blocks.count; i++)
        free(*DynArray_at<RopeNode *>(&s->blocks, i));
    DynArray_free(&s->frames);
    DynArray_free(&s->blocks);
    DynArray_free(&s->free_ids);
    s->free_nodes = nullptr;
    RopeTable_free(&s->frames_by_content);
    RopeTable_free(&s->nodes_by_key);
    s->bytes = 0;
    s->ready = false;
}

// The store that new things go to in the current memory mode.
static RopeStore *store_now()
{
    RopeStore *s = ord_arena ? &rope_temp : &rope_heap;
    store_ready(s);
    return s;
}

static RopeNode *store_node(RopeStore *s)
{
    if (s->free_nodes) {
        RopeNode *n = s->free_nodes;
        s->free_nodes = n->a;
        s->bytes += sizeof(RopeNode);
        memset(n, 0, sizeof *n);
        return n;
    }
    if (s->block_used == NODES_PER_BLOCK) {
        size_t bytes = NODES_PER_BLOCK * sizeof(RopeNode);
        RopeNode *block = (RopeNode *)checked_malloc(bytes, "Out of memory for rope nodes");
        DynArray_append(&s->blocks, &block);
        s->bytes += bytes;
        s->block_used = 0;
    }
    RopeNode *block = *DynArray_at<RopeNode *>(&s->blocks, s->blocks.count - 1);
    RopeNode *n = &block[s->block_used++];
    memset(n, 0, sizeof *n);
    return n;
}

uint64_t rope_rewinds = 0;
uint64_t rope_clears = 0;

void rope_store_rewind()
{
    store_empty(&rope_temp);
    rope_rewinds++;
}

void rope_store_clear()
{
    store_empty(&rope_temp);
    store_empty(&rope_heap);
    rope_rewinds++;
    rope_clears++;
    if (rope_scratch_ready) {
        DynArray_free(&rope_spine);
        DynArray_free(&rope_pieces);
        rope_scratch_ready = false;
    }
}

uint64_t rope_store_bytes()
{
    return rope_heap.bytes;
}

// ---- frames ----

static uint64_t frame_hash_of(const void *entry)
{
    return ((const RopeFrameRec *)entry)->letter[0];
}

// A frame looked for: its level in two parts, front then rest, so that a
// caller that puts one long front before many last terms copies it only into
// the frames it makes.
struct FrameKey {
    Ord front, rest;
    uint8_t hole;
    uint64_t letter[2];
};

static bool terms_same(const OrdTerm *x, const OrdTerm *y, uint32_t n)
{
    for (uint32_t i = 0; i < n; i++) {
        const OrdTerm *s = &x[i], *t = &y[i];
        if (s->coef != t->coef || s->sub.terms != t->sub.terms || s->sub.count != t->sub.count ||
            s->arg.terms != t->arg.terms || s->arg.count != t->arg.count)
            return false;
    }
    return true;
}

// Same hole and, term by term, the same coef and the same sub and arg arrays.
static bool frame_same(const void *entry, const void *key)
{
    const RopeFrameRec *x = (const RopeFrameRec *)entry;
    const FrameKey *y = (const FrameKey *)key;
    if (x->letter[0] != y->letter[0] || x->letter[1] != y->letter[1] || x->frame.hole != y->hole ||
        x->frame.level.count != y->front.count + y->rest.count)
        return false;
    return terms_same(x->frame.level.terms, y->front.terms, y->front.count) &&
           terms_same(x->frame.level.terms + y->front.count, y->rest.terms, y->rest.count);
}

static RopeFrameRec *frame_record(uint32_t id)
{
    RopeStore *s = (id & ROPE_TEMPORARY_FRAME) ? &rope_temp : &rope_heap;
    uint32_t index = id & ~ROPE_TEMPORARY_FRAME;
    if (id == 0 || !s->ready || index >= s->frames.count)
        return nullptr;
    return *DynArray_at<RopeFrameRec *>(&s->frames, index);
}

// The letters' chains of hashes taken on over n more terms.
// Both chains in one loop: each is a chain of dependent multiplications, and
// side by side the processor runs them at once.
static void terms_hash_on(RopeTermsHash *r, const OrdTerm *terms, uint32_t n)
{
    uint64_t h0 = r->h[0], h1 = r->h[1];
    for (uint32_t i = 0; i < n; i++) {
        const OrdTerm *t = &terms[i];
        uint64_t sub = (uint64_t)(uintptr_t)t->sub.terms ^ (uint64_t)t->sub.count << 48;
        uint64_t arg = (uint64_t)(uintptr_t)t->arg.terms ^ (uint64_t)t->arg.count << 48;
        h0 = mix(h0, t->coef);
        h1 = mix(h1, t->coef);
        h0 = mix(h0, sub);
        h1 = mix(h1, sub);
        h0 = mix(h0, arg);
        h1 = mix(h1, arg);
    }
    r->h[0] = h0;
    r->h[1] = h1;
    r->count += n;
}

RopeTermsHash rope_terms_hash(Ord terms)
{
    RopeTermsHash r = {{LETTER_SEED[0], LETTER_SEED[1]}, 0};
    terms_hash_on(&r, terms.terms, terms.count);
    return r;
}

void rope_terms_hash_more(RopeTermsHash *r, Ord more)
{
    terms_hash_on(r, more.terms, more.count);
}

uint32_t rope_frame(Ord level, uint8_t hole)
{
    return rope_frame_parts(Ord_zero(), nullptr, level, hole);
}

uint32_t rope_frame_parts(Ord front, const RopeTermsHash *front_hash, Ord rest, uint8_t hole)
{
    bool shape = rest.count >= 1 && hole <= ROPE_SUB && (!front_hash || front_hash->count == front.count);
    if (shape) {
        const OrdTerm *last = Ord_lastterm(rest);
        shape = hole == ROPE_ARG ? last->arg.count == 0 : OrdTerm_isfinite(last);
    }
    if (!shape)
        REPORT(REPORT_FATAL, "A rope frame whose followed field is not blank", 0);

    // the letters mix the content, so equal content spells equal letters in
    // either store: the terms in order, then the hole and the count
    RopeTermsHash chains = front_hash ? *front_hash : rope_terms_hash(front);
    terms_hash_on(&chains, rest.terms, rest.count);
    uint32_t count = front.count + rest.count;
    FrameKey key = {front, rest, hole, {0, 0}};
    for (int32_t m = 0; m < 2; m++) {
        uint64_t letter = mod_reduce(mix(chains.h[m], (uint64_t)hole << 32 | count));
        key.letter[m] = letter ? letter : 1;
    }

    RopeStore *stores[2] = {&rope_heap, &rope_temp};
    for (int32_t i = 0; i < (ord_arena ? 2 : 1); i++) {
        RopeFrameRec *found = stores[i]->ready
            ? (RopeFrameRec *)RopeTable_find(&stores[i]->frames_by_content, key.letter[0], frame_same, &key)
            : nullptr;
        if (found)
            return found->id;
    }

    RopeStore *s = store_now();
    size_t bytes = sizeof(RopeFrameRec) + (size_t)count * sizeof(OrdTerm);
    RopeFrameRec *rec = (RopeFrameRec *)checked_malloc(bytes, "Out of memory for rope frames");
    OrdTerm *terms = (OrdTerm *)(rec + 1);
    *rec = RopeFrameRec{RopeFrame{Ord{count, terms}, hole}, {key.letter[0], key.letter[1]}, 0, 0};
    if (front.count)
        memcpy(terms, front.terms, (size_t)front.count * sizeof(OrdTerm));
    memcpy(terms + front.count, rest.terms, (size_t)rest.count * sizeof(OrdTerm));
    if (s->free_ids.count) {
        rec->id = *DynArray_at<uint32_t>(&s->free_ids, --s->free_ids.count);
        *DynArray_at<RopeFrameRec *>(&s->frames, rec->id) = rec;
        s->bytes += bytes;
    } else {
        rec->id = s->frames.count | (s->temporary ? ROPE_TEMPORARY_FRAME : 0);
        DynArray_append(&s->frames, &rec);
        s->bytes += bytes + sizeof(RopeFrameRec *);
    }
    RopeTable_add(&s->frames_by_content, rec, rec->letter[0], frame_hash_of, &s->bytes);
    return rec->id;
}

const RopeFrame *rope_frame_get(uint32_t id)
{
    RopeFrameRec *rec = frame_record(id);
    return rec ? &rec->frame : nullptr;
}

// ---- node interning ----

static uint64_t node_hash_of(const void *entry)
{
    return ((const RopeNode *)entry)->key_hash;
}

static bool node_same(const void *entry, const void *key)
{
    const RopeNode *x = (const RopeNode *)entry, *y = (const RopeNode *)key;
    return x->kind == y->kind && x->frame == y->frame && x->a == y->a && x->b == y->b && x->k == y->k;
}

// The marks of a leaf, read off its frame.
static void leaf_marks(RopeNode *n, const RopeFrame *f)
{
    const OrdTerm *last = &f->level.terms[f->level.count - 1];
    n->marks = 0;
    n->least_sub = UINT32_MAX;
    if (f->hole != ROPE_NONE && last->coef > 1)
        n->marks |= ROPE_MARK_MULTIPLE;
    if (f->hole != ROPE_ARG)
        return;
    Ord sub = last->sub;
    if (sub.count == 0)
        n->least_sub = 0;
    else if (sub.count == 1 && OrdTerm_isfinite(&sub.terms[0]))
        n->least_sub = sub.terms[0].coef;
    else
        n->marks |= ROPE_MARK_INFINITE_SUB;
}

// The node of key's kind and children, found in a store or made: the derived
// fields are computed only for a new node.
static RopeNode *node_intern(RopeNode *key)
{
    bool temporary_parts = (key->a && key->a->temporary) || (key->b && key->b->temporary) ||
                           (key->frame & ROPE_TEMPORARY_FRAME);
    if (!ord_arena && temporary_parts)
        REPORT(REPORT_FATAL, "A persistent rope node would point at a temporary one", 0);
    uint64_t h = mix(mix(mix(key->kind, key->frame), (uint64_t)(uintptr_t)key->a),
                     (uint64_t)(uintptr_t)key->b ^ key->k);
    key->key_hash = (uint32_t)h;

    RopeStore *stores[2] = {&rope_heap, &rope_temp};
    // a node with temporary parts can only be a temporary one
    for (int32_t i = temporary_parts ? 1 : 0; i < (ord_arena ? 2 : 1); i++) {
        RopeNode *found = stores[i]->ready
            ? (RopeNode *)RopeTable_find(&stores[i]->nodes_by_key, key->key_hash, node_same, key)
            : nullptr;
        if (found)
            return found;
    }

    RopeStore *s = store_now();
    RopeNode *n = store_node(s);
    *n = *key;
    n->temporary = s->temporary;
    if (n->kind == ROPE_LEAF) {
        RopeFrameRec *rec = frame_record(n->frame);
        if (!rec)
            REPORT(REPORT_FATAL, "A rope leaf of a frame that is not held", 0);
        n->len = RopeLen_small(1);
        n->height = 1;
        for (int32_t m = 0; m < 2; m++) {
            n->hash[m] = rec->letter[m];
            n->power[m] = HASH_BASE[m];
        }
        leaf_marks(n, &rec->frame);
    } else if (n->kind == ROPE_CONCAT) {
        n->len = len_add(n->a->len, n->b->len);
        n->height = 1 + (n->a->height > n->b->height ? n->a->height : n->b->height);
        n->marks = n->a->marks | n->b->marks;
        n->least_sub = n->a->least_sub < n->b->least_sub ? n->a->least_sub : n->b->least_sub;
        for (int32_t m = 0; m < 2; m++) {
            n->hash[m] = mod_add(mod_mul(n->a->hash[m], n->b->power[m]), n->b->hash[m]);
            n->power[m] = mod_mul(n->a->power[m], n->b->power[m]);
        }
    } else {
        n->len = len_mul(n->a->len, n->k);
        n->height = 1 + n->a->height;
        n->marks = n->a->marks;
        n->least_sub = n->a->least_sub;
        for (int32_t m = 0; m < 2; m++) {
            uint64_t sum;
            mod_geometric(n->a->power[m], n->k, &n->power[m], &sum);
            n->hash[m] = mod_mul(n->a->hash[m], sum);
        }
    }
    RopeTable_add(&s->nodes_by_key, n, n->key_hash, node_hash_of, &s->bytes);
    return n;
}

static RopeNode *make_concat(RopeNode *a, RopeNode *b)
{
    RopeNode key = {};
    key.kind = ROPE_CONCAT;
    key.a = a;
    key.b = b;
    return node_intern(&key);
}

// t^k with k >= 1; a repeat of a repeat folds into one while the count fits.
static RopeNode *make_repeat(RopeNode *t, uint64_t k)
{
    if (k == 1)
        return t;
    uint64_t folded;
    if (t->kind == ROPE_REPEAT && !__builtin_mul_overflow(t->k, k, &folded)) {
        k = folded;
        t = t->a;
    }
    RopeNode key = {};
    key.kind = ROPE_REPEAT;
    key.a = t;
    key.k = k;
    return node_intern(&key);
}

// ---- balanced joins ----

static uint32_t height(const RopeNode *n)
{
    return n ? n->height : 0;
}

// The two parts of a concat or repeat. A repeat is cut into one copy and the
// rest, the copy on the side `copy_right` says: that side is one level lower.
static void expose(RopeNode *n, bool copy_right, RopeNode **l, RopeNode **r)
{
    if (n->kind == ROPE_CONCAT) {
        *l = n->a;
        *r = n->b;
    } else if (copy_right) {
        *l = make_repeat(n->a, n->k - 1);
        *r = n->a;
    } else {
        *l = n->a;
        *r = make_repeat(n->a, n->k - 1);
    }
}

static void spine_push(RopeNode *n)
{
    DynArray_append(&rope_spine, &n);
}

static RopeNode *spine_pop()
{
    return *DynArray_at<RopeNode *>(&rope_spine, --rope_spine.count);
}

// l then t, where t came back from the right spine of a taller rope and may
// stand two levels above l: the AVL rotations.
static RopeNode *attach_right(RopeNode *l, RopeNode *t)
{
    if (t->height <= l->height + 1)
        return make_concat(l, t);
    RopeNode *tl = t->a, *tr = t->b;  // t is a concat: joins only make those
    if (tl->height <= tr->height)
        return make_concat(make_concat(l, tl), tr);
    RopeNode *x, *y;
    expose(tl, true, &x, &y);
    return make_concat(make_concat(l, x), make_concat(y, tr));
}

// The mirror image: t came back from the left spine and r stands right of it.
static RopeNode *attach_left(RopeNode *t, RopeNode *r)
{
    if (t->height <= r->height + 1)
        return make_concat(t, r);
    RopeNode *tl = t->a, *tr = t->b;
    if (tr->height <= tl->height)
        return make_concat(tl, make_concat(tr, r));
    RopeNode *x, *y;
    expose(tr, false, &x, &y);
    return make_concat(make_concat(tl, x), make_concat(y, r));
}

static RopeNode *join_balanced(RopeNode *a, RopeNode *b);

// Joins made lately, by their two parts: the expansions of neighbouring
// ordinals join the same long rope with the same short ones again and again,
// and a join walks the height of the taller. An entry holds while the store
// of its youngest node has not been emptied since.
struct JoinMemo {
    RopeNode *a, *b, *joined;
    uint64_t emptied;  // rope_memo_stamp when it was made
    bool temporary;    // one of the three nodes is a temporary one
};
constexpr uint32_t JOIN_MEMO_SLOTS = 1u << 14;
static JoinMemo join_memo[JOIN_MEMO_SLOTS];

// a then b, balanced (see join_balanced).
static RopeNode *join(RopeNode *a, RopeNode *b)
{
    if (!a)
        return b;
    if (!b)
        return a;
    JoinMemo *e = &join_memo[mix((uint64_t)(uintptr_t)a, (uint64_t)(uintptr_t)b) & (JOIN_MEMO_SLOTS - 1)];
    if (e->a == a && e->b == b && rope_memo_holds(e->emptied, e->temporary))
        return e->joined;
    RopeNode *joined = join_balanced(a, b);
    bool temporary = a->temporary || b->temporary || joined->temporary;
    *e = JoinMemo{a, b, joined, rope_memo_stamp(temporary), temporary};
    return joined;
}

// a then b, balanced: the shorter rope is hung into the taller one's spine at
// its own height and the rotations repair the way back up. Lengths are the
// caller's care. O(height difference) nodes.
static RopeNode *join_balanced(RopeNode *a, RopeNode *b)
{
    scratch_ready();
    uint32_t base = rope_spine.count;
    if (a->height > b->height + 1) {
        RopeNode *n = a, *l, *c;
        while (n->height > b->height + 1) {
            expose(n, true, &l, &c);
            spine_push(l);
            n = c;
        }
        RopeNode *t = make_concat(n, b);
        while (rope_spine.count > base)
            t = attach_right(spine_pop(), t);
        return t;
    }
    if (b->height > a->height + 1) {
        RopeNode *n = b, *c, *r;
        while (n->height > a->height + 1) {
            expose(n, false, &c, &r);
            spine_push(r);
            n = c;
        }
        RopeNode *t = make_concat(a, n);
        while (rope_spine.count > base)
            t = attach_left(t, spine_pop());
        return t;
    }
    return make_concat(a, b);
}

// ---- constructors ----

RopeNode *rope_leaf(uint32_t frame)
{
    RopeNode key = {};
    key.kind = ROPE_LEAF;
    key.frame = frame;
    return node_intern(&key);
}

// Fatal when heap mode is handed a temporary node (checked at the entry, so
// that nothing is built before the fault).
static void check_mode(const RopeNode *n)
{
    if (!ord_arena && n && n->temporary)
        REPORT(REPORT_FATAL, "A temporary rope was handed to a rope operation in heap mode", 0);
}

// Whether a then b stays within 512 bits of frames; sets rope_too_long if not.
static bool concat_fits(const RopeNode *a, const RopeNode *b)
{
    RopeLen len;
    if (RopeLen_add(&len, a->len, b->len))
        return true;
    rope_too_long = true;
    return false;
}

RopeNode *rope_concat(RopeNode *a, RopeNode *b)
{
    check_mode(a);
    check_mode(b);
    if (!a || !b)
        return a ? a : b;
    return concat_fits(a, b) ? join(a, b) : nullptr;
}

RopeNode *rope_concat_top(RopeNode *a, RopeNode *b)
{
    check_mode(a);
    check_mode(b);
    return concat_fits(a, b) ? make_concat(a, b) : nullptr;
}

RopeNode *rope_repeat(RopeNode *t, uint64_t k)
{
    check_mode(t);
    if (!t || k == 0)
        return nullptr;
    RopeLen len;
    if (!RopeLen_mulsmall(&len, t->len, k)) {
        rope_too_long = true;
        return nullptr;
    }
    return make_repeat(t, k);
}

static void piece_push(RopeNode *n)
{
    DynArray_append(&rope_pieces, &n);
}

// Takes made lately, by rope and length: the members of one expansion are
// each expanded in turn, and their chains are cut at the same places of the
// ropes they share. An entry holds as a join memo's does.
struct TakeMemo {
    RopeNode *n, *taken;
    RopeLen len;
    uint64_t emptied;  // rope_memo_stamp when it was made
    bool temporary;    // n or the take is a temporary node
};
constexpr uint32_t TAKE_MEMO_SLOTS = 1u << 12;
static TakeMemo take_memo[TAKE_MEMO_SLOTS];

static RopeNode *take_cut(RopeNode *n, RopeLen len);

RopeNode *rope_take(RopeNode *n, RopeLen len)
{
    check_mode(n);
    if (!n || RopeLen_iszero(len))
        return nullptr;
    if (RopeLen_cmp(len, n->len) >= 0)
        return n;
    TakeMemo *e = &take_memo[mix((uint64_t)(uintptr_t)n, len.limb[0]) & (TAKE_MEMO_SLOTS - 1)];
    if (e->n == n && RopeLen_cmp(e->len, len) == 0 && rope_memo_holds(e->emptied, e->temporary))
        return e->taken;
    RopeNode *taken = take_cut(n, len);
    bool temporary = n->temporary || (taken && taken->temporary);
    *e = TakeMemo{n, taken, len, rope_memo_stamp(temporary), temporary};
    return taken;
}

// rope_take of a cut inside n.
static RopeNode *take_cut(RopeNode *n, RopeLen len)
{
    scratch_ready();
    uint32_t base = rope_pieces.count;
    // the whole parts left of the cut, outermost first, then what the cut
    // leaves of the innermost node
    RopeNode *last = nullptr;
    while (!RopeLen_iszero(len)) {
        if (RopeLen_cmp(len, n->len) == 0) {
            last = n;
            break;
        }
        if (n->kind == ROPE_CONCAT) {
            if (RopeLen_cmp(len, n->a->len) <= 0) {
                n = n->a;
            } else {
                piece_push(n->a);
                len = RopeLen_sub(len, n->a->len);
                n = n->b;
            }
        } else {
            /* a repeat: whole copies, then a piece of the next one */
            uint64_t q;
            RopeLen_divmod_by(len, n->a->len, &q, &len);  // q < k: it fits
            if (q)
                piece_push(make_repeat(n->a, q));
            n = n->a;
        }
    }
    // joined from the small end, so that each join costs the height step
    RopeNode *t = last;
    while (rope_pieces.count > base)
        t = join(*DynArray_at<RopeNode *>(&rope_pieces, --rope_pieces.count), t);
    return t;
}

RopeNode *rope_drop(RopeNode *n, RopeLen len)
{
    check_mode(n);
    if (!n || RopeLen_cmp(len, n->len) >= 0)
        return nullptr;
    if (RopeLen_iszero(len))
        return n;
    scratch_ready();
    uint32_t base = rope_pieces.count;
    // the whole parts right of the cut, outermost first; n ends as what the
    // cut leaves of the innermost node (null when the cut is at its end)
    while (n && !RopeLen_iszero(len)) {
        if (RopeLen_cmp(len, n->len) == 0) {
            n = nullptr;
        } else if (n->kind == ROPE_CONCAT) {
            if (RopeLen_cmp(len, n->a->len) < 0) {
                piece_push(n->b);
                n = n->a;
            } else {
                len = RopeLen_sub(len, n->a->len);
                n = n->b;
            }
        } else {
            uint64_t q;
            RopeLen_divmod_by(len, n->a->len, &q, &len);
            if (RopeLen_iszero(len)) {
                n = make_repeat(n->a, n->k - q);
            } else {
                if (n->k - q - 1)
                    piece_push(make_repeat(n->a, n->k - q - 1));
                n = n->a;
            }
        }
    }
    RopeNode *t = n;
    while (rope_pieces.count > base)
        t = join(t, *DynArray_at<RopeNode *>(&rope_pieces, --rope_pieces.count));
    return t;
}

// ---- reading ----

RopeLen rope_length(const RopeNode *n)
{
    return n ? n->len : RopeLen_small(0);
}

uint32_t rope_height(const RopeNode *n)
{
    return height(n);
}

uint32_t rope_first_frame(const RopeNode *n)
{
    while (n && n->kind != ROPE_LEAF)
        n = n->a;
    return n ? n->frame : 0;
}

uint32_t rope_last_frame(const RopeNode *n)
{
    while (n && n->kind != ROPE_LEAF)
        n = n->kind == ROPE_CONCAT ? n->b : n->a;
    return n ? n->frame : 0;
}

// The path of the last lookup, root first, with the index in the root of each
// node's first frame: reading a chain level after level asks for the frames
// one after the other, and each is then a step or two from the last, not the
// height of the rope away.
constexpr uint32_t FRAME_PATH_DEPTH = 128;
struct FramePath {
    const RopeNode *root;
    uint64_t rewinds;  // rope_rewinds when it was made (a clear counts too)
    uint32_t depth;    // 0: none
    const RopeNode *node[FRAME_PATH_DEPTH];
    RopeLen first[FRAME_PATH_DEPTH];
};
// A few, by root: a comparison reads two chains side by side.
constexpr uint32_t FRAME_PATHS = 4;
static FramePath frame_paths[FRAME_PATHS];
static uint32_t frame_path_next = 0;

uint32_t rope_frame_at(const RopeNode *n, RopeLen index)
{
    if (!n || RopeLen_cmp(index, n->len) >= 0)
        return 0;
    FramePath *p = nullptr;
    for (uint32_t i = 0; i < FRAME_PATHS && !p; i++)
        if (frame_paths[i].root == n && frame_paths[i].rewinds == rope_rewinds && frame_paths[i].depth > 0)
            p = &frame_paths[i];
    bool reuse = p != nullptr;
    if (!p) {
        p = &frame_paths[frame_path_next];
        frame_path_next = (frame_path_next + 1) % FRAME_PATHS;
    }
    uint32_t d = 0;
    RopeLen first = RopeLen_small(0);
    if (reuse) {
        // up from the last leaf to the lowest node that holds index
        d = p->depth - 1;
        while (d > 0 && (RopeLen_cmp(index, p->first[d]) < 0 ||
                         RopeLen_cmp(RopeLen_sub(index, p->first[d]), p->node[d]->len) >= 0))
            d--;
        n = p->node[d];
        first = p->first[d];
    }
    RopeLen rel = RopeLen_sub(index, first);
    bool recorded = true;
    for (;;) {
        if (d < FRAME_PATH_DEPTH) {
            p->node[d] = n;
            p->first[d] = first;
            d++;
        } else {
            recorded = false;
        }
        if (n->kind == ROPE_LEAF)
            break;
        if (n->kind == ROPE_REPEAT) {
            uint64_t q;
            RopeLen_divmod_by(rel, n->a->len, &q, &rel);
            first = RopeLen_sub(index, rel);
            n = n->a;
        } else if (RopeLen_cmp(rel, n->a->len) < 0) {
            n = n->a;
        } else {
            rel = RopeLen_sub(rel, n->a->len);
            RopeLen_add(&first, first, n->a->len);
            n = n->b;
        }
    }
    p->root = p->node[0];
    p->rewinds = rope_rewinds;
    p->depth = recorded ? d : 0;
    return n->frame;
}

// The hashes of the first m frames of n (m at most its length): whole parts
// left of the end are folded in by their stored hashes, whole copies of a
// repeat by a geometric sum.
static void prefix_hash(const RopeNode *n, RopeLen m, uint64_t out[2])
{
    out[0] = out[1] = 0;
    while (!RopeLen_iszero(m)) {
        if (RopeLen_cmp(m, n->len) == 0) {
            for (int32_t i = 0; i < 2; i++)
                out[i] = mod_add(mod_mul(out[i], n->power[i]), n->hash[i]);
            return;
        }
        if (n->kind == ROPE_CONCAT) {
            if (RopeLen_cmp(m, n->a->len) > 0) {
                for (int32_t i = 0; i < 2; i++)
                    out[i] = mod_add(mod_mul(out[i], n->a->power[i]), n->a->hash[i]);
                m = RopeLen_sub(m, n->a->len);
                n = n->b;
            } else {
                n = n->a;
            }
        } else {
            uint64_t q;
            RopeLen_divmod_by(m, n->a->len, &q, &m);
            for (int32_t i = 0; i < 2; i++) {
                uint64_t power, sum;
                mod_geometric(n->a->power[i], q, &power, &sum);
                out[i] = mod_add(mod_mul(out[i], power), mod_mul(n->a->hash[i], sum));
            }
            n = n->a;
        }
    }
}

// Whether b's frames [s, s + |x| * copies) are x repeated `copies` times,
// given that hs holds the hashes of b's first s frames (which a shares); on
// a match hs moves on to the end of the stretch.
static bool stretch_matches(const RopeNode *b, RopeLen s, uint64_t hs[2], const RopeNode *x,
                            uint64_t copies)
{
    RopeLen end;
    if (!RopeLen_mulsmall(&end, x->len, copies) || !RopeLen_add(&end, end, s) ||
        RopeLen_cmp(end, b->len) > 0)
        return false;
    uint64_t want[2], got[2];
    for (int32_t i = 0; i < 2; i++) {
        uint64_t power, sum;
        mod_geometric(x->power[i], copies, &power, &sum);
        want[i] = mod_add(mod_mul(hs[i], power), mod_mul(x->hash[i], sum));
    }
    prefix_hash(b, end, got);
    if (want[0] != got[0] || want[1] != got[1])
        return false;
    hs[0] = want[0];
    hs[1] = want[1];
    return true;
}

RopeLen rope_lcp(const RopeNode *a, const RopeNode *b)
{
    if (!a || !b)
        return RopeLen_small(0);
    if (a == b)
        return a->len;
    // a[0, s) equals b[0, s), and n, the part of a from s on, does not match
    // b whole there: descend n to the first frame that differs
    RopeLen s = RopeLen_small(0);
    uint64_t hs[2] = {0, 0};
    if (stretch_matches(b, s, hs, a, 1))
        return a->len;
    const RopeNode *n = a;
    while (n->kind != ROPE_LEAF) {
        if (n->kind == ROPE_CONCAT) {
            if (stretch_matches(b, s, hs, n->a, 1)) {
                s = len_add(s, n->a->len);
                n = n->b;
            } else {
                n = n->a;
            }
            continue;
        }
        // a repeat: the most whole copies that match, by bisection (a
        // prefix of matching copies only grows), then into the next copy
        uint64_t lo = 0, hi = n->k - 1;
        while (lo < hi) {
            uint64_t mid = lo + (hi - lo + 1) / 2;
            uint64_t trial[2] = {hs[0], hs[1]};
            if (stretch_matches(b, s, trial, n->a, mid))
                lo = mid;
            else
                hi = mid - 1;
        }
        if (lo) {
            stretch_matches(b, s, hs, n->a, lo);
            s = len_add(s, len_mul(n->a->len, lo));
        }
        n = n->a;
    }
    return s;
}

bool rope_equal(const RopeNode *a, const RopeNode *b)
{
    if (a == b)
        return true;
    return a && b && RopeLen_cmp(a->len, b->len) == 0 && a->hash[0] == b->hash[0] && a->hash[1] == b->hash[1];
}

static uint64_t pointer_hash_of(const void *entry)
{
    return mix(0, (uint64_t)(uintptr_t)entry);
}

static void visit_push(DynArray *stack, const RopeNode *n, RopeLen offset, bool children_done)
{
    RopeVisit v = {n, offset, children_done};
    DynArray_append(stack, &v);
}

// What searches of one kind found in a node: a cache of fixed size, one entry
// per slot, a newer entry taking the slot of an older one.
struct SearchMemo {
    const RopeNode *node;
    uint64_t tag;      // the search: its key frame and its keep function
    uint64_t clears;   // rope_clears when made
    uint64_t rewinds;  // rope_rewinds when made, where a temporary node or key is in it; else 0
    uint64_t offset;   // where the last frame kept is, from the node's start
    uint8_t state;     // SEARCH_NONE or SEARCH_AT
};

enum : uint8_t { SEARCH_EMPTY = 0, SEARCH_NONE = 1, SEARCH_AT = 2 };
constexpr uint32_t SEARCH_MEMO_SLOTS = 1u << 16;
static SearchMemo *search_memo = nullptr;

struct SearchKey {
    uint64_t tag;
    bool temporary;  // the key frame is temporary
};

static SearchMemo *memo_slot(SearchKey key, const RopeNode *n)
{
    if (!search_memo) {
        search_memo = (SearchMemo *)calloc(SEARCH_MEMO_SLOTS, sizeof(SearchMemo));
        if (!search_memo)
            REPORT(REPORT_FATAL, "Out of memory for the rope search memo", 0);
    }
    return &search_memo[mix(key.tag, (uint64_t)(uintptr_t)n) & (SEARCH_MEMO_SLOTS - 1)];
}

// The entry of n for this search, or null when none is held.
static const SearchMemo *memo_find(SearchKey key, const RopeNode *n)
{
    SearchMemo *m = memo_slot(key, n);
    if (m->state == SEARCH_EMPTY || m->node != n || m->tag != key.tag || m->clears != rope_clears)
        return nullptr;
    if ((n->temporary || key.temporary) && m->rewinds != rope_rewinds)
        return nullptr;
    return m;
}

static void memo_keep(SearchKey key, const RopeNode *n, uint8_t state, RopeLen offset)
{
    bool fits = true;
    uint64_t at = RopeLen_tou64(offset, &fits);
    if (!fits)
        return;
    SearchMemo *m = memo_slot(key, n);
    *m = SearchMemo{n, key.tag, rope_clears, (n->temporary || key.temporary) ? rope_rewinds : 0, at, state};
}

// The search, with a memo when key is given.
static RopeLen find_last(const RopeNode *n, bool (*may_hold)(const RopeNode *n, void *ctx),
                         bool (*keep)(uint32_t frame, void *ctx), void *ctx, const SearchKey *key, bool *found)
{
    *found = false;
    RopeLen result = RopeLen_small(0);
    if (!n)
        return result;
    // nodes searched in vain: every other occurrence of them is skipped
    RopeTable failed = {nullptr, 0, 0};
    uint64_t table_bytes = 0;
    DynArray stack;
    DynArray_init(&stack, sizeof(RopeVisit), 64);
    visit_push(&stack, n, result, false);
    while (stack.count) {
        RopeVisit v = *DynArray_at<RopeVisit>(&stack, --stack.count);
        void *key_node = (void *)v.node;
        if (v.children_done) {
            RopeTable_add(&failed, key_node, pointer_hash_of(key_node), pointer_hash_of, &table_bytes);
            if (key)
                memo_keep(*key, v.node, SEARCH_NONE, RopeLen_small(0));
            continue;
        }
        if (RopeTable_find(&failed, pointer_hash_of(key_node), same_pointer, key_node))
            continue;
        if (may_hold && !may_hold(v.node, ctx))
            continue;
        const SearchMemo *m = key ? memo_find(*key, v.node) : nullptr;
        if (m && m->state == SEARCH_NONE)
            continue;
        if (m || (v.node->kind == ROPE_LEAF && keep(v.node->frame, ctx))) {
            *found = true;
            result = m ? len_add(v.offset, RopeLen_small(m->offset)) : v.offset;
            break;
        }
        if (v.node->kind == ROPE_LEAF) {
            RopeTable_add(&failed, key_node, pointer_hash_of(key_node), pointer_hash_of, &table_bytes);
        } else if (v.node->kind == ROPE_CONCAT) {
            // pushed left first, so the right part is searched first
            visit_push(&stack, v.node, v.offset, true);
            visit_push(&stack, v.node->a, v.offset, false);
            visit_push(&stack, v.node->b, len_add(v.offset, v.node->a->len), false);
        } else {
            /* all copies are equal: only the last one is searched */
            visit_push(&stack, v.node, v.offset, true);
            visit_push(&stack, v.node->a, len_add(v.offset, len_mul(v.node->a->len, v.node->k - 1)), false);
        }
    }
    // the nodes still open on the stack are the ones the frame found lies in
    for (uint32_t i = 0; key && *found && i < stack.count; i++) {
        const RopeVisit *v = DynArray_at<RopeVisit>(&stack, i);
        if (v->children_done)
            memo_keep(*key, v->node, SEARCH_AT, RopeLen_sub(result, v->offset));
    }
    DynArray_free(&stack);
    RopeTable_free(&failed);
    return result;
}

RopeLen rope_find_last(const RopeNode *n, bool (*keep)(uint32_t frame, void *ctx), void *ctx, bool *found)
{
    return find_last(n, nullptr, keep, ctx, nullptr, found);
}

RopeLen rope_find_last_pruned(const RopeNode *n, bool (*may_hold)(const RopeNode *n, void *ctx),
                              bool (*keep)(uint32_t frame, void *ctx), void *ctx, bool *found)
{
    return find_last(n, may_hold, keep, ctx, nullptr, found);
}

RopeLen rope_find_last_kept(const RopeNode *n, bool (*may_hold)(const RopeNode *n, void *ctx),
                            bool (*keep)(uint32_t frame, void *ctx), void *ctx, uint32_t key_frame,
                            bool *found)
{
    SearchKey key = {mix(key_frame, (uint64_t)(uintptr_t)keep), (key_frame & ROPE_TEMPORARY_FRAME) != 0};
    return find_last(n, may_hold, keep, ctx, &key, found);
}

// ---- collection ----

// The level of a persistent frame as an address range, for the collection in
// progress: a term array marked may lie inside one.
struct LevelSpan {
    const OrdTerm *start, *end;
    RopeFrameRec *rec;
};
static DynArray collect_spans;  // of LevelSpan, by start
static DynArray collect_stack;  // of RopeNode*: nodes still to mark
static bool collect_ready = false;
static uint32_t collect_nodes;  // persistent nodes marked

static int span_order(const void *a, const void *b)
{
    const OrdTerm *x = ((const LevelSpan *)a)->start, *y = ((const LevelSpan *)b)->start;
    return x < y ? -1 : x > y;
}

void rope_collect_start()
{
    if (!collect_ready) {
        DynArray_init(&collect_spans, sizeof(LevelSpan), 64);
        DynArray_init(&collect_stack, sizeof(RopeNode *), 64);
        collect_ready = true;
    }
    collect_spans.count = 0;
    collect_nodes = 0;
    store_ready(&rope_heap);
    for (uint32_t i = 1; i < rope_heap.frames.count; i++) {
        RopeFrameRec *rec = *DynArray_at<RopeFrameRec *>(&rope_heap.frames, i);
        if (!rec)
            continue;
        LevelSpan span = {rec->frame.level.terms, rec->frame.level.terms + rec->frame.level.count, rec};
        DynArray_append(&collect_spans, &span);
    }
    qsort(collect_spans.data, collect_spans.count, sizeof(LevelSpan), span_order);
}

static void mark_frame(RopeFrameRec *rec, void (*on_frame)(const RopeFrame *f, void *ctx), void *ctx)
{
    if (rec->in_use)
        return;
    rec->in_use = 1;
    on_frame(&rec->frame, ctx);
}

void rope_mark(const RopeNode *n, void (*on_frame)(const RopeFrame *f, void *ctx), void *ctx)
{
    if (!n)
        return;
    DynArray_append(&collect_stack, &n);
    while (collect_stack.count) {
        RopeNode *x = *DynArray_at<RopeNode *>(&collect_stack, --collect_stack.count);
        // a temporary node goes with its store whatever holds it
        if (x->temporary || x->in_use)
            continue;
        x->in_use = 1;
        collect_nodes++;
        if (x->kind == ROPE_LEAF) {
            mark_frame(frame_record(x->frame), on_frame, ctx);
            continue;
        }
        DynArray_append(&collect_stack, &x->a);
        if (x->b)
            DynArray_append(&collect_stack, &x->b);
    }
}

void rope_mark_level(const OrdTerm *terms, void (*on_frame)(const RopeFrame *f, void *ctx), void *ctx)
{
    // the last span that starts at or before terms
    uint32_t lo = 0, hi = collect_spans.count;
    while (lo < hi) {
        uint32_t mid = lo + (hi - lo) / 2;
        if (DynArray_at<LevelSpan>(&collect_spans, mid)->start <= terms)
            lo = mid + 1;
        else
            hi = mid;
    }
    if (lo == 0)
        return;
    LevelSpan *span = DynArray_at<LevelSpan>(&collect_spans, lo - 1);
    if (terms < span->end)
        mark_frame(span->rec, on_frame, ctx);
}

void rope_collect_finish()
{
    RopeStore *s = &rope_heap;
    uint32_t kept = 0;
    for (uint32_t i = 1; i < s->frames.count; i++) {
        RopeFrameRec **slot = DynArray_at<RopeFrameRec *>(&s->frames, i);
        RopeFrameRec *rec = *slot;
        if (!rec)
            continue;
        if (rec->in_use) {
            kept++;
            continue;
        }
        s->bytes -= sizeof(RopeFrameRec) + (uint64_t)rec->frame.level.count * sizeof(OrdTerm);
        free(rec);
        *slot = nullptr;
        DynArray_append(&s->free_ids, &i);
    }
    RopeTable_reset(&s->frames_by_content, kept, &s->bytes);
    for (uint32_t i = 1; i < s->frames.count; i++) {
        RopeFrameRec *rec = *DynArray_at<RopeFrameRec *>(&s->frames, i);
        if (rec) {
            rec->in_use = 0;
            RopeTable_add(&s->frames_by_content, rec, rec->letter[0], frame_hash_of, &s->bytes);
        }
    }

    RopeTable_reset(&s->nodes_by_key, collect_nodes, &s->bytes);
    for (uint32_t b = 0; b < s->blocks.count; b++) {
        RopeNode *block = *DynArray_at<RopeNode *>(&s->blocks, b);
        uint32_t used = b + 1 == s->blocks.count ? s->block_used : NODES_PER_BLOCK;
        for (uint32_t j = 0; j < used; j++) {
            RopeNode *n = &block[j];
            if (n->kind == 0)
                continue;  // free already
            if (n->in_use) {
                n->in_use = 0;
                RopeTable_add(&s->nodes_by_key, n, n->key_hash, node_hash_of, &s->bytes);
                continue;
            }
            n->kind = 0;
            n->a = s->free_nodes;
            s->free_nodes = n;
            s->bytes -= sizeof(RopeNode);
        }
    }
    // whatever is kept by node or frame elsewhere is stale now
    rope_store_rewind();
    rope_clears++;
}
