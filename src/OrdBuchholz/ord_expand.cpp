// Fundamental sequences: Ord_expand by cases, and the release of its result.
#include "OrdBuchholz/ord_expand.h"

#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "OrdBuchholz/ord_lazy.h"
#include "support/report/report.h"

// Chain of arguments of the current top-level call; empty between calls.
DynArray ord_path;

// An expansion with room for n members and an empty keep list.
static OrdExpansion expansion_new(int32_t n)
{
    OrdExpansion e;
    e.n = n;
    e.seq = (Ord *)malloc((size_t)(n > 0 ? n : 1) * sizeof(Ord));
    if (!e.seq)
        REPORT(REPORT_FATAL, "Out of memory for the members of an expansion", 0);
    DynArray_init(&e.keep, sizeof(Ord), dyn_default_capacity);
    return e;
}

uint64_t ord_work_left = UINT64_MAX;
uint64_t ord_work_big = 0;
uint32_t ord_depth_limit = 0;
uint64_t ord_memory_limit = UINT64_MAX;
uint64_t ord_refused_cost = 0;

// True if about `arrays` more arrays of a few terms would take the term
// arrays of the memory mode in force past ord_memory_limit.
static bool memory_refuses(uint64_t arrays)
{
    uint64_t more = arrays * 2 * sizeof(OrdTerm);
    uint64_t now = ord_arena ? memstack_used(ord_arena) : ord_heap_bytes;
    return now > ord_memory_limit || more > ord_memory_limit - now;
}

// One new term array holding the terms of `head` followed by those of `m`,
// concatenated with no absorption.
static Ord concat_terms(Ord head, Ord m)
{
    Ord r = Ord_alloc(head.count + m.count);
    if (head.count)
        memcpy(r.terms, head.terms, (size_t)head.count * sizeof(OrdTerm));
    if (m.count)
        memcpy(r.terms + head.count, m.terms, (size_t)m.count * sizeof(OrdTerm));
    return r;
}

// How one level of the chain rebuilds the members of the level below.
enum ExpandStep : uint32_t {
    STEP_SUM,       // a sum: the head stays, the last term is expanded
    STEP_MULTIPLE,  // c.t: (c - 1).t stays, one t is expanded
    STEP_ARG,       // psi_a(b), b a limit: psi_a of the members of b
    STEP_SUB,       // Omega_a, a a limit: Omega of the members of a
};

struct ExpandLevel {
    ExpandStep step;
    Ord x;    // the ordinal of this level
    Ord one;  // STEP_MULTIPLE: the one term expanded, a new array for keep
};

// The levels of the current expansion, top first; kept between calls.
static DynArray expand_levels;
static bool expand_levels_ready = false;

// The index in ord_path of the ordinal whose template iterates Omega_a: the
// element after the nearest enclosing one-term psi_s(...) with s below a, or
// the first element when there is none.
static uint32_t template_source(Ord a)
{
    const Ord *path = DynArray_at<Ord>(&ord_path, 0);
    for (uint32_t k = ord_path.count; k-- > 0;) {
        Ord e = path[k];
        if (e.count == 1 && e.terms[0].coef == 1 && Ord_cmp(e.terms[0].sub, a) < 0)
            return k + 1;
    }
    return 0;
}

// Levels of the template that x would give: the chain of last terms down to
// its Omega_a, as Ord_makeimpredfn follows it.
static uint64_t template_levels(Ord x)
{
    uint64_t levels = 1;
    for (;;) {
        const OrdTerm *last = Ord_lastterm(x);
        if (last->arg.count)
            x = last->arg;
        else if (last->sub.count && !OrdTerm_isfinite(Ord_lastterm(last->sub)))
            x = last->sub;
        else
            return levels;
        if (OrdTerm_isfinite(Ord_lastterm(x)))
            return levels;
        levels++;
    }
}

// Omega_a with a zero or successor subscript: iterate the template of the
// nearest enclosing term of lower subscript, in psi_(a-1).
static OrdExpansion expand_omega(Ord a, int32_t n, uint32_t from)
{
    Ord tmpl = Ord_makeimpredfn(*DynArray_at<Ord>(&ord_path, from));
    Ord p = Ord_pred(a);

    OrdExpansion r = expansion_new(n);
    DynArray_append(&r.keep, &p);
    if (n > 0)
        r.seq[0] = Ord_zero();
    for (int32_t i = 1; i < n; i++) {
        Ord s = Ord_substitute(tmpl, r.seq[i - 1], &r.keep);
        DynArray_append(&r.keep, &s);
        r.seq[i] = Ord_term(1, p, s);
    }
    Ord_freetemplate(tmpl);
    return r;
}

// The expansion that cannot be afforded: no members.
static OrdExpansion expansion_refused(uint32_t levels)
{
    for (uint32_t k = 0; k < levels; k++)
        Ord_freearray(DynArray_at<ExpandLevel>(&expand_levels, k)->one);
    OrdExpansion r;
    r.seq = nullptr;
    r.n = 0;
    DynArray_init(&r.keep, sizeof(Ord), 1);
    return r;
}

uint32_t ord_rope_levels = 64;
uint64_t ord_rope_terms = 128;
// Work counted for one member of an expansion on the rope, in member arrays.
constexpr uint64_t ROPE_MEMBER_COST = 4;

// ---- expansion on the rope ----
//
// The same members as the walk below, built as ropes: the frames above the
// bottom of the chain are shared whole, the template's frames are a slice of
// x's rope, and member i wraps member i - 1 in it, so a member costs a few
// rope nodes however long its chain is.

// The term array of a frame's level split as a multiple is: its head terms,
// then, when the last term's coefficient c is above 1, a copy (c - 1, sub,
// arg) with `below` in the field the frame follows. The one copy left over is
// the part that is expanded. Zero when there is nothing in front of it.
static Ord split_front(const RopeFrame *f, Ord below)
{
    const OrdTerm *last = Ord_lastterm(f->level);
    uint32_t head = f->level.count - 1;
    bool multiple = last->coef > 1;
    if (head == 0 && !multiple)
        return Ord_zero();
    Ord r = Ord_alloc(head + (multiple ? 1 : 0));
    if (head)
        memcpy(r.terms, f->level.terms, (size_t)head * sizeof(OrdTerm));
    if (multiple) {
        OrdTerm t = *last;
        t.coef -= 1;
        (f->hole == ROPE_ARG ? t.arg : t.sub) = below;
        r.terms[head] = t;
    }
    return r;
}

// a + b, which stays far below 2^512 for indices into a rope that exists.
static RopeLen index_add(RopeLen a, RopeLen b)
{
    RopeLen r;
    RopeLen_add(&r, a, b);
    return r;
}

static bool may_hold_multiple(const RopeNode *n, void *)
{
    return n->marks & ROPE_MARK_MULTIPLE;
}

static bool frame_is_multiple(uint32_t id, void *)
{
    const RopeFrame *f = rope_frame_get(id);
    return f->hole != ROPE_NONE && Ord_lastterm(f->level)->coef > 1;
}

// The frames of `part`, which starts at frame `offset` of `whole`, with every
// multiple split as the expansion and the templates split it: the front part
// (OrdBuchholz/ord_buchholz.h) goes into the level's head, with the rest of
// whole's chain below it, and the one copy left over carries the chain on.
static RopeNode *split_multiples(RopeNode *part, RopeNode *whole, RopeLen offset, DynArray *keep)
{
    RopeNode *done = nullptr;
    for (;;) {
        bool found = false;
        RopeLen q = rope_find_last_pruned(part, may_hold_multiple, frame_is_multiple, nullptr, &found);
        if (!found)
            return rope_concat(part, done);
        RopeLen one = RopeLen_small(1);
        RopeLen after = index_add(index_add(offset, q), one);
        const RopeFrame *f = rope_frame_get(rope_frame_at(part, q));
        Ord front = split_front(f, Ord_fromrope(rope_drop(whole, after)));
        // the level: front terms, then one copy with the field still blank
        OrdTerm one_copy = *Ord_lastterm(f->level);
        one_copy.coef = 1;
        uint32_t id = rope_frame_parts(front, nullptr, Ord{1, &one_copy}, f->hole);
        DynArray_append(keep, &front);
        done = rope_concat(rope_leaf(id), rope_concat(rope_drop(part, index_add(q, one)), done));
        part = rope_take(part, q);
    }
}

struct SourceSearch {
    Ord a;            // the subscript of the Omega_a at the bottom
    uint32_t number;  // a when it is finite, else UINT32_MAX
};

// Whether a part of the rope can hold a psi_s with s below a: a finite s
// below a, or one that is not finite when a is not.
static bool may_hold_source(const RopeNode *n, void *ctx)
{
    const SourceSearch *search = (const SourceSearch *)ctx;
    if (search->number == UINT32_MAX)
        return n->least_sub != UINT32_MAX || (n->marks & ROPE_MARK_INFINITE_SUB);
    return n->least_sub < search->number;
}

static bool frame_is_source(uint32_t id, void *ctx)
{
    const RopeFrame *f = rope_frame_get(id);
    return f->hole == ROPE_ARG && Ord_cmp(Ord_lastterm(f->level)->sub, ((SourceSearch *)ctx)->a) < 0;
}

// The ropes of p, the predecessor of the last level z of a chain, made
// lately, by z's frame: the members of a successor expansion all end in the
// same chain, so that each of their expansions asks for the same p, often a
// long array hashed and looked up whole. An entry holds while the store of
// its rope and of z's frame has not been emptied since, as in the join memo.
struct PredMemo {
    uint32_t frame;
    RopeNode *rope;
    uint64_t emptied;  // rope_memo_stamp when it was made
    bool temporary;    // the frame or the rope is a temporary one
};
constexpr uint32_t PRED_MEMO_SLOTS = 1u << 8;
static PredMemo pred_memo[PRED_MEMO_SLOTS];

// p as a rope (null for 0), for a chain whose last frame is `frame`, of level
// z; a pred made for it goes to keep.
static RopeNode *pred_rope(uint32_t frame, Ord z, DynArray *keep)
{
    PredMemo *e = &pred_memo[(frame * 0x9E3779B1u) >> 24];
    if (e->frame == frame && rope_memo_holds(e->emptied, e->temporary))
        return e->rope;
    Ord pred = Ord_pred(z);
    DynArray_append(keep, &pred);
    RopeNode *rope = Ord_rope(pred);
    bool temporary = (frame & ROPE_TEMPORARY_FRAME) || (rope && rope->temporary);
    *e = PredMemo{frame, rope, rope_memo_stamp(temporary), temporary};
    return rope;
}

// The first n members of x's fundamental sequence, built on x's rope.
static OrdExpansion expand_rope(Ord x, int32_t n)
{
    RopeNode *R = Ord_rope(x);
    RopeLen one = RopeLen_small(1), two = RopeLen_small(2);
    RopeLen bottom_at = RopeLen_sub(rope_length(R), two);
    const RopeFrame *bottom = rope_frame_get(rope_frame_at(R, bottom_at));
    Ord z = rope_frame_get(rope_last_frame(R))->level;
    const OrdTerm *bt = Ord_lastterm(bottom->level);
    RopeNode *above = rope_take(R, bottom_at);

    rope_too_long = false;
    OrdExpansion r = expansion_new(n);
    Ord front = split_front(bottom, z);
    DynArray_append(&r.keep, &front);
    // p once per value, not per expansion: as a rope it is the same array
    // wherever it comes from, so frames holding it are the same frames
    RopeNode *p_rope = pred_rope(rope_last_frame(R), z, &r.keep);
    Ord p = p_rope ? Ord_fromrope(p_rope) : Ord_zero();
    // the members at the bottom level, its front terms in place: member i of
    // the one copy of the last term expanded, after the rest of the level
    RopeNode **heads = (RopeNode **)malloc((size_t)n * sizeof(RopeNode *));
    if (!heads)
        REPORT(REPORT_FATAL, "Out of memory for the members of an expansion", 0);
    // the front, often long, is put before every member: hashed once, its
    // terms but the last first, for member 0, which is the front alone
    RopeTermsHash front_hash = rope_terms_hash(Ord{front.count ? front.count - 1 : 0, front.terms});
    heads[0] = front.count ? Ord_rope_hashed(front, &front_hash) : nullptr;
    if (front.count)
        rope_terms_hash_more(&front_hash, Ord{1, front.terms + front.count - 1});
    if (bottom->hole == ROPE_ARG) {
        // successor argument: 0, psi_a(p), psi_a(p).2, ...; each the frame
        // of the front and psi_a(_).i, then p's rope, made once
        for (int32_t i = 1; i < n; i++) {
            if (p_rope) {
                OrdTerm t = {(uint32_t)i, bt->sub, Ord_zero()};
                uint32_t id = rope_frame_parts(front, &front_hash, Ord{1, &t}, ROPE_ARG);
                heads[i] = rope_concat(rope_leaf(id), p_rope);
                continue;
            }
            Ord t = Ord_term((uint32_t)i, bt->sub, p);
            heads[i] = rope_prepend_terms(front, &front_hash, Ord_rope(t));
            Ord_freearray(t);
        }
    } else {
        // Omega_a: iterate the template from the nearest enclosing psi_s, s
        // below a, which is always one whose argument the chain follows
        bool finite = z.count == 1 && OrdTerm_isfinite(&z.terms[0]);
        SourceSearch search = {z, finite ? z.terms[0].coef : UINT32_MAX};
        bool found = false;
        // neighbouring ordinals share most of their chains: the search
        // remembers what it found in each part, by the bottom frame
        RopeLen from = rope_find_last_kept(above, may_hold_source, frame_is_source, &search, rope_last_frame(R),
                                           &found);
        from = found ? index_add(from, one) : RopeLen_small(0);
        RopeNode *tmpl = split_multiples(rope_drop(above, from), R, from, &r.keep);
        Ord head = Ord_term(1, p, Ord_zero());
        RopeNode *psi = rope_leaf(rope_frame(head, ROPE_ARG));
        Ord_freearray(head);
        // member i is psi_p of the template around member i - 1: psi_p, then
        // i - 1 times the template and psi_p, then the template around member 0
        RopeNode *lead = rope_prepend_terms(front, &front_hash, psi);
        RopeNode *first = rope_wrap(tmpl, heads[0]);
        if (first) {
            // the same frames grouped the other way, (psi_p and the
            // template) i - 1 times, then psi_p and the template around
            // member 0: the repeat and that tail stand at about one height,
            // so each member is one node on them, where psi_p hung before
            // the repeat walked down its whole left side
            RopeNode *step = rope_concat(lead, tmpl);
            RopeNode *last = n > 1 ? rope_concat(lead, first) : nullptr;
            if (n > 1)
                heads[1] = last;
            for (int32_t i = 2; i < n; i++)
                heads[i] = rope_concat(rope_repeat(step, (uint64_t)i - 1), last);
        } else {
            RopeNode *m = nullptr;
            for (int32_t i = 1; i < n; i++) {
                m = rope_wrap(psi, rope_wrap(tmpl, rope_prepend_terms(front, &front_hash, m)));
                heads[i] = rope_prepend_terms(front, &front_hash, m);
            }
        }
    }
    RopeNode *frames = split_multiples(above, R, RopeLen_small(0), &r.keep);
    for (int32_t i = 0; i < n; i++) {
        // the members share frames: one node each on top of it
        RopeNode *m = frames && heads[i] ? rope_concat_top(frames, heads[i]) : rope_wrap(frames, heads[i]);
        // a member of one frame is a term array of the store's: the
        // expansion owns a copy, as it owns every member's top array
        r.seq[i] = m ? Ord_fromrope(m) : Ord_zero();
        if (r.seq[i].count && !Ord_islazy(r.seq[i]))
            r.seq[i] = Ord_copy(r.seq[i]);
    }
    free(heads);
    if (rope_too_long) {
        // a chain past 2^512 levels: beyond what this line can hold
        rope_too_long = false;
        Ord_freeexpansion(r);
        ord_refused_cost = UINT64_MAX;
        return expansion_refused(0);
    }
    return r;
}

// expand_rope within the work limits: a few rope nodes per member, and one
// frame per level of a chain that is not yet held compressed.
static OrdExpansion expand_rope_limited(Ord x, int32_t n, uint32_t levels)
{
    uint64_t cost = ((uint64_t)n + levels) * ROPE_MEMBER_COST;
    bool big = cost > ord_work_left && cost <= ord_work_big;
    if ((cost > ord_work_left && !big) || memory_refuses(cost)) {
        ord_refused_cost = cost;
        return expansion_refused(0);
    }
    if (big)
        ord_work_big = 0;
    else if (ord_work_left != UINT64_MAX)
        ord_work_left -= cost;
    return expand_rope(x, n);
}

OrdExpansion Ord_expand(Ord x, int32_t n)
{
    if (x.count == 0) {
        REPORT(REPORT_FATAL, "Zero ordinal given to Ord_expand", 0);
        return expansion_new(0);
    }
    if (!expand_levels_ready) {
        DynArray_init(&expand_levels, sizeof(ExpandLevel), 64);
        expand_levels_ready = true;
    }
    expand_levels.count = 0;
    if (Ord_islazy(x))
        return expand_rope_limited(x, n, 0);

    // down the chain of cases to the one that makes members itself; each
    // level above it only rebuilds them, so the work is levels times n
    enum { BOTTOM_I, BOTTOM_SUCCESSOR, BOTTOM_OMEGA, BOTTOM_LAZY } bottom;
    uint32_t from = 0;
    uint64_t cost = 0;
    uint64_t template_cost = 0;
    // term records each member copies on the way back up
    uint64_t copied = 0;
    Ord whole = x;
    for (;;) {
        DynArray_append(&ord_path, &x);
        const OrdTerm *first = &x.terms[0];
        ExpandLevel level = {STEP_SUM, x, Ord_zero()};
        Ord below;
        if (first->coef == ORD_COEF_I) {
            // I: 1, Omega, Omega_Omega, ... each the Omega of the one before
            bottom = BOTTOM_I;
            break;
        }
        if (x.count > 1) {
            // the last term stands alone in x's own array
            below = Ord_slice(x, x.count - 1, 1);
        } else if (first->coef > 1) {
            level.step = STEP_MULTIPLE;
            level.one = Ord_term(1, first->sub, first->arg);
            below = level.one;
        } else if (Ord_islazy(first->arg.count ? first->arg : first->sub)) {
            // the rest of the chain is held compressed
            bottom = BOTTOM_LAZY;
            break;
        } else if (first->arg.count && OrdTerm_isfinite(Ord_lastterm(first->arg))) {
            // successor argument: 0, psi_a(p), psi_a(p).2, ... with b = p + 1
            bottom = BOTTOM_SUCCESSOR;
            break;
        } else if (first->arg.count) {
            level.step = STEP_ARG;
            below = first->arg;
        } else if (first->sub.count && !OrdTerm_isfinite(Ord_lastterm(first->sub))) {
            level.step = STEP_SUB;
            below = first->sub;
        } else {
            bottom = BOTTOM_OMEGA;
            from = template_source(first->sub);
            template_cost = template_levels(*DynArray_at<Ord>(&ord_path, from));
            cost += template_cost * (uint64_t)n;
            break;
        }
        DynArray_append(&expand_levels, &level);
        copied += x.count;
        x = below;
    }
    uint32_t levels = expand_levels.count;
    if (bottom == BOTTOM_LAZY ||
        (bottom != BOTTOM_I && (levels + template_cost >= ord_rope_levels || copied >= ord_rope_terms))) {
        for (uint32_t k = 0; k < levels; k++)
            Ord_freearray(DynArray_at<ExpandLevel>(&expand_levels, k)->one);
        return expand_rope_limited(whole, n, levels);
    }
    cost += (uint64_t)(levels + 1) * (uint64_t)n;
    // past what is left, the one big step may still be had
    bool big = cost > ord_work_left && cost <= ord_work_big;
    if ((ord_depth_limit && cost / (uint64_t)n > ord_depth_limit) || (cost > ord_work_left && !big) ||
        memory_refuses(cost)) {
        ord_refused_cost = cost;
        return expansion_refused(levels);
    }
    if (big)
        ord_work_big = 0;
    else if (ord_work_left != UINT64_MAX)
        ord_work_left -= cost;

    OrdExpansion r;
    const OrdTerm *first = &x.terms[0];
    if (bottom == BOTTOM_I) {
        r = expansion_new(n);
        for (int32_t i = 0; i < n; i++)
            r.seq[i] = i == 0 ? Ord_term(1, Ord_zero(), Ord_zero())
                              : Ord_term(1, r.seq[i - 1], Ord_zero());
    } else if (bottom == BOTTOM_SUCCESSOR) {
        r = expansion_new(n);
        Ord p = Ord_pred(first->arg);
        DynArray_append(&r.keep, &p);
        for (int32_t i = 0; i < n; i++)
            r.seq[i] = i == 0 ? Ord_zero() : Ord_term((uint32_t)i, first->sub, p);
    } else {
        r = expand_omega(first->sub, n, from);
    }

    // back up the chain: every member is rebuilt at each level, and the
    // member it replaces moves to keep, so each array stands exactly once
    for (uint32_t k = levels; k-- > 0;) {
        const ExpandLevel *level = DynArray_at<ExpandLevel>(&expand_levels, k);
        const OrdTerm *t = &level->x.terms[0];
        if (level->step == STEP_MULTIPLE)
            DynArray_append(&r.keep, &level->one);
        for (int32_t i = 0; i < r.n; i++) {
            Ord m = r.seq[i];
            // a sum or a multiple copies m's term records, so m's own array is
            // left unreferenced and goes at once; psi_a(m) and Omega_m point at
            // it, and so do the members of I, each the Omega of the one before
            bool referenced = level->step == STEP_ARG || level->step == STEP_SUB || bottom == BOTTOM_I;
            if (referenced)
                DynArray_append(&r.keep, &m);
            switch (level->step) {
            case STEP_SUM:
                r.seq[i] = concat_terms(Ord_slice(level->x, 0, level->x.count - 1), m);
                if (!referenced)
                    Ord_freearray(m);
                break;
            case STEP_MULTIPLE: {
                r.seq[i] = Ord_alloc(m.count + 1);
                r.seq[i].terms[0] = OrdTerm{t->coef - 1, t->sub, t->arg};
                if (m.count)
                    memcpy(r.seq[i].terms + 1, m.terms, (size_t)m.count * sizeof(OrdTerm));
                if (!referenced)
                    Ord_freearray(m);
                break;
            }
            case STEP_ARG:
                r.seq[i] = Ord_term(1, t->sub, m);
                break;
            case STEP_SUB:
                r.seq[i] = Ord_term(1, m, Ord_zero());
                break;
            }
        }
    }
    return r;
}

OrdExpansion Ord_expandfresh(Ord x, int32_t n)
{
    DynArray_init(&ord_path, sizeof(Ord), dyn_default_capacity);
    OrdExpansion r = Ord_expand(x, n);
    DynArray_free(&ord_path);
    return r;
}

void Ord_freeexpansion(OrdExpansion e)
{
    for (int32_t i = 0; i < e.n; i++)
        Ord_freearray(e.seq[i]);
    free(e.seq);
    for (uint32_t i = 0; i < e.keep.count; i++)
        Ord_freearray(*DynArray_at<Ord>(&e.keep, i));
    DynArray_free(&e.keep);
}
