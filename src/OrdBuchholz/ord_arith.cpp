// Ordinal arithmetic: comparison, successor, predecessor and sum.
#include "OrdBuchholz/ord_arith.h"

#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_lazy.h"
#include "support/report/report.h"

// One side of a comparison: a term array, or the first level of a lazy
// value, whose last term's followed field is the rest of the rope. The rest
// is made only if the comparison gets that far.
struct CmpSide {
    const OrdTerm *terms;
    uint32_t count;
    uint8_t hole;    // ROPE_NONE for a term array
    RopeNode *rope;  // a level's rope, whose frames from `at` on are the rest
    RopeLen at;
};

// One pair under comparison, equal up to term i so far.
struct CmpFrame {
    CmpSide side[2];
    uint32_t i;      // the term being compared
    uint32_t stage;  // what comes next in term i: 0 sub, 1 arg, 2 coef
};

// The pending levels of Ord_cmp; kept between calls, grown on demand.
static CmpFrame *cmp_stack = nullptr;
static uint32_t cmp_capacity = 0;

// The result when it can be had without looking inside, else 2, or 3 when a
// lazy value must be opened first. The same array is equal to itself: values
// built by expansion share most of their parts, so most comparisons end here
// instead of walking a shared tree.
static inline int32_t cmp_shallow(Ord x, Ord y)
{
    if (x.terms == y.terms && x.count == y.count)
        return 0;
    if (x.count == 0 || y.count == 0)
        return x.count == 0 ? (y.count == 0 ? 0 : -1) : 1;
    if (Ord_islazy(x) || Ord_islazy(y))
        return 3;
    if (x.terms == y.terms)
        return x.count < y.count ? -1 : 1;
    return 2;
}

static CmpSide side_of(Ord x)
{
    return CmpSide{x.terms, x.count, ROPE_NONE, nullptr, RopeLen_small(0)};
}

// The level at frame `at` of a lazy value's rope.
static CmpSide side_at(RopeNode *r, RopeLen at)
{
    const RopeFrame *f = rope_frame_get(rope_frame_at(r, at));
    RopeLen rest;
    RopeLen_add(&rest, at, RopeLen_small(1));
    return CmpSide{f->level.terms, f->level.count, f->hole, r, rest};
}

// Field `stage` (0 sub, 1 arg) of term i of a side.
static Ord side_field(const CmpSide *s, uint32_t i, uint32_t stage)
{
    const OrdTerm *t = &s->terms[i];
    if (s->hole != ROPE_NONE && i + 1 == s->count && s->hole == (stage == 0 ? ROPE_SUB : ROPE_ARG))
        return Ord_fromrope(rope_rest(s->rope, s->at));
    return stage == 0 ? t->sub : t->arg;
}

// Levels that one comparison may still open from places in ropes one at a
// time, before it cuts the rest out and passes common prefixes by hash.
constexpr int32_t CMP_PLACE_LEVELS = 64;
static int32_t cmp_place_levels = 0;

// Opens lazy values for comparison: two ropes agree on their longest common
// prefix of frames, which is passed over by hash, and the comparison goes on
// at the first frames that differ (the same frame around two values orders
// them as the values are ordered). Returns the result, or 2 with the sides
// to compare.
static int32_t cmp_open(Ord x, Ord y, CmpSide side[2])
{
    // against a term array, or a few levels down from places in ropes (which
    // would have to be cut out as ropes of their own for their prefixes to be
    // compared): the lazy sides' own top arrays
    bool place = x.count == ORD_LAZY_PLACE || y.count == ORD_LAZY_PLACE;
    if (!Ord_islazy(x) || !Ord_islazy(y) || (place && cmp_place_levels > 0)) {
        cmp_place_levels -= place ? 1 : 0;
        side[0] = side_of(Ord_force(x));
        side[1] = side_of(Ord_force(y));
        return 2;
    }
    RopeNode *a = Ord_lazyrope(x), *b = Ord_lazyrope(y);
    RopeLen common = rope_lcp(a, b);
    int32_t ends_a = RopeLen_cmp(common, rope_length(a)) == 0;
    int32_t ends_b = RopeLen_cmp(common, rope_length(b)) == 0;
    if (ends_a || ends_b)
        return ends_b - ends_a;
    side[0] = side_at(a, common);
    side[1] = side_at(b, common);
    return 2;
}

static CmpFrame *cmp_push(uint32_t depth, const CmpSide side[2])
{
    if (depth >= cmp_capacity) {
        uint32_t capacity = cmp_capacity ? cmp_capacity * 2 : 64;
        CmpFrame *grown = (CmpFrame *)realloc(cmp_stack, (size_t)capacity * sizeof(CmpFrame));
        if (!grown)
            REPORT(REPORT_FATAL, "Out of memory for an ordinal comparison", 0);
        cmp_stack = grown;
        cmp_capacity = capacity;
    }
    cmp_stack[depth] = CmpFrame{{side[0], side[1]}, 0, 0};
    return &cmp_stack[depth];
}

// The sides of a pair that cmp_shallow could not decide (2 or 3), or the
// result when opening lazy values decides it.
static int32_t cmp_sides(int32_t r, Ord x, Ord y, CmpSide side[2])
{
    if (r == 3)
        return cmp_open(x, y, side);
    side[0] = side_of(x);
    side[1] = side_of(y);
    return 2;
}

int32_t Ord_cmp(Ord x, Ord y)
{
    cmp_place_levels = CMP_PLACE_LEVELS;
    CmpSide side[2];
    int32_t r = cmp_shallow(x, y);
    if (r >= 2)
        r = cmp_sides(r, x, y, side);
    if (r != 2)
        return r;
    // a difference anywhere decides at once, so the stack only holds levels
    // that are equal so far; a finished level hands 0 back to its parent
    uint32_t depth = 1;
    CmpFrame *f = cmp_push(0, side);
    for (;;) {
        uint32_t nx = f->side[0].count, ny = f->side[1].count;
        if (f->i >= nx || f->i >= ny) {
            // x goes on where y has ended: y is a proper prefix, and the reverse
            if (nx != ny)
                return nx < ny ? -1 : 1;
            if (--depth == 0)
                return 0;
            f = &cmp_stack[depth - 1];
            continue;
        }
        if (f->stage == 2) {
            uint32_t s = f->side[0].terms[f->i].coef, t = f->side[1].terms[f->i].coef;
            if (s != t)
                return s < t ? -1 : 1;
            f->i++;
            f->stage = 0;
            continue;
        }
        Ord a = side_field(&f->side[0], f->i, f->stage);
        Ord b = side_field(&f->side[1], f->i, f->stage);
        f->stage++;
        r = cmp_shallow(a, b);
        if (r >= 2)
            r = cmp_sides(r, a, b, side);
        if (r == 2) {
            f = cmp_push(depth++, side);
            continue;
        }
        if (r)
            return r;
    }
}

Ord Ord_succ(Ord x)
{
    x = Ord_force(x);
    if (x.count && OrdTerm_isfinite(Ord_lastterm(x))) {
        Ord r = Ord_copy(x);
        r.terms[r.count - 1].coef += 1;
        return r;
    }
    // a limit or 0: a new last term 1
    Ord r = Ord_alloc(x.count + 1);
    if (x.count)
        memcpy(r.terms, x.terms, (size_t)x.count * sizeof(OrdTerm));
    r.terms[x.count] = OrdTerm{1, Ord_zero(), Ord_zero()};
    return r;
}

Ord Ord_pred(Ord x)
{
    x = Ord_force(x);
    if (x.count == 0)
        return Ord_zero();
    const OrdTerm *last = Ord_lastterm(x);
    // a limit has no predecessor; it comes back unchanged, not as an error
    if (!OrdTerm_isfinite(last))
        return Ord_copy(x);
    if (last->coef < 2)
        return Ord_copy(Ord_slice(x, 0, x.count - 1));
    Ord r = Ord_copy(x);
    r.terms[r.count - 1].coef -= 1;
    return r;
}

Ord Ord_add(Ord x, Ord y)
{
    x = Ord_force(x);
    y = Ord_force(y);
    if (x.count == 0)
        return Ord_copy(y);
    if (y.count == 0)
        return Ord_copy(x);

    // walk x from its end while its terms are not above y's leading term t;
    // coefficients play no part, and an equal (sub, arg) merges
    const OrdTerm *t = &y.terms[0];
    uint32_t keep = 0;
    bool merge = false;
    for (uint32_t i = x.count; i-- > 0;) {
        int32_t r = Ord_cmp(x.terms[i].sub, t->sub);
        if (r == 0) {
            r = Ord_cmp(x.terms[i].arg, t->arg);
            if (r == 0)
                merge = true;
        }
        if (r > 0) {
            keep = i + 1;
            break;
        }
    }

    Ord sum = Ord_alloc(keep + y.count);
    if (keep)
        memcpy(sum.terms, x.terms, (size_t)keep * sizeof(OrdTerm));
    memcpy(sum.terms + keep, y.terms, (size_t)y.count * sizeof(OrdTerm));
    if (merge)
        sum.terms[keep].coef += x.terms[keep].coef;
    return sum;
}

bool Ord_issuccessor(Ord x)
{
    // a compressed value is a chain of two levels or more: its top level ends
    // in the term the chain goes on from, which is not a number
    if (Ord_islazy(x))
        return false;
    return x.count != 0 && OrdTerm_isfinite(Ord_lastterm(x));
}

// A level of a tower: one term (1, 0, t), t the level below.
static bool frame_leaves_tower(uint32_t id, void *)
{
    const RopeFrame *f = rope_frame_get(id);
    const OrdTerm *t = &f->level.terms[0];
    bool psi0 = f->level.count == 1 && t->coef == 1 && t->sub.count == 0;
    return !(psi0 && (f->hole == ROPE_ARG || (f->hole == ROPE_NONE && t->arg.count == 0)));
}

bool is_omega_tower(Ord x)
{
    // walk down the tower iteratively: its height is the nesting depth
    while (x.count) {
        if (Ord_islazy(x)) {
            // the rest held compressed: every frame must be a level of it;
            // the first and the last, read without a search, settle most
            RopeNode *r = Ord_lazyrope(x);
            if (frame_leaves_tower(rope_first_frame(r), nullptr) || frame_leaves_tower(rope_last_frame(r), nullptr))
                return false;
            bool found;
            rope_find_last(r, frame_leaves_tower, nullptr, &found);
            return !found;
        }
        if (x.count != 1 || x.terms[0].coef != 1 || x.terms[0].sub.count != 0)
            return false;
        x = x.terms[0].arg;
    }
    return true;
}
