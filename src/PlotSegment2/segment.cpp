// The layout of the line: segment().
#include "PlotSegment2/segment.h"

#include "OrdBuchholz/ord_expand.h"
#include "OrdBuchholz/expansion_cache.h"
#include "OrdBuchholz/ord_arith.h"
#include "PlotSegment2/tick_walk.h"
#include "ord/navigation.h"
#include "support/report/report.h"
#include "support/timing/clock.h"

int32_t segment_depth = 0;
int64_t segment_too_deep = 0;
double segment_deadline = 0.0;

// The next converging tick: 0.2983 of the way from p to xhi.
static Bignum converge_step(Bignum xhi, Bignum p)
{
    return Bignum_lincomb(xhi, p, CONVERGE_COMPLEMENT, CONVERGE_RATIO);
}

// How many of the first c members do not exceed ordlo.
static int32_t skipped_members(const Ord *seq, int32_t c, Ord ordlo)
{
    int32_t m = 0;
    while (m < c && Ord_cmp(seq[m], ordlo) <= 0)
        m++;
    return m;
}

// Moves p on to q (freeing the old p unless it is the borrowed xlo) and
// makes the next q.
static void advance(Bignum xlo, Bignum xhi, Bignum *p, Bignum *q)
{
    if (p->limbs != xlo.limbs)
        Bignum_free(*p);
    *p = *q;
    *q = converge_step(xhi, *p);
}

// Ticks the interval needs, on numbers alone. Deliberately one tick late:
// the first two rounds both test xlo, each later one the position before
// the newest. -1 when they would be more than SEGMENT_MAX_TICKS.
static int32_t converging_tick_count(WalkRecord r, Bignum T)
{
    int32_t n = 0;
    Bignum p = r.xlo, q = {0, nullptr};
    while (Bignum_lt(p, T) && Bignum_ltd(p, r.right)) {
        if (n == 0)
            q = converge_step(r.xhi, p);
        else
            advance(r.xlo, r.xhi, &p, &q);
        if (n >= SEGMENT_MAX_TICKS) {
            n = -1;
            break;
        }
        n++;
    }
    if (p.limbs != r.xlo.limbs)
        Bignum_free(p);
    Bignum_free(q);
    return n;
}

// The members of an interval's sequence: kept ones, or an expansion of this
// walk's own when the cache cannot keep them (it is full, or the limit belongs
// to such an expansion).
struct SegmentMembers {
    const Ord *seq;
    uint32_t entry;      // the cache entry, or CACHE_OFF
    OrdExpansion owned;  // the walk's own expansion when entry is CACHE_OFF
};

// At least c members of r.ordhi's sequence; false if the work limits refuse them.
static bool segment_members(WalkRecord r, int32_t c, SegmentMembers *out)
{
    // past the pass's time, only what is kept can still be had
    if (segment_deadline > 0 && ord_work_left && clock_monotonic_seconds() > segment_deadline)
        ord_work_left = 0;
    if (r.ordhi_entry != CACHE_OFF) {
        CachedExpansion kept;
        bool full;
        if (expansion_cache_get(r.ordhi, c, r.ordhi_entry, &kept, &full)) {
            out->seq = kept.seq;
            out->entry = kept.entry;
            return true;
        }
        if (!full)
            return false;
    }
    OrdExpansion e = Ord_expandfresh(r.ordhi, c);
    if (e.n == 0) {
        Ord_freeexpansion(e);
        return false;
    }
    out->owned = e;
    out->seq = e.seq;
    out->entry = CACHE_OFF;
    return true;
}

static void segment_members_free(SegmentMembers *members)
{
    if (members->entry == CACHE_OFF && members->owned.seq)
        Ord_freeexpansion(members->owned);
    members->owned = OrdExpansion{};
    members->seq = nullptr;
}

// A leaf that the work limits would not let the walk divide: the callback is
// told, so that the pass can mark it.
static void too_deep_leaf(TickCallback fn, WalkRecord r)
{
    segment_too_deep++;
    r.too_deep = true;
    fn(r);
}

void segment(TickCallback fn, int32_t k, WalkRecord r)
{
    // wholly left or wholly right of the view
    if (Bignum_led(r.xhi, r.left))
        return;
    if (Bignum_gtd(r.xlo, r.right))
        return;
    // before any stop test, so a divided interval still leaves its full size
    tick_size_record(r);

    Bignum D = Bignum_lincomb(r.xhi, r.xlo, 1.0, -1.0);
    bool small = Bignum_ltd(D, r.minsize);
    Bignum_free(D);
    if (small) {
        fn(r);
        return;
    }
    if (segment_depth_limit >= 0 && segment_depth_limit <= segment_depth) {
        fn(r);
        return;
    }

    segment_depth++;
    // only limits are expanded: nothing lies between an ordinal and a successor
    if (r.ordhi.count == 0 || Ord_issuccessor(r.ordhi)) {
        fn(r);
        segment_depth--;
        return;
    }

    double g = 2.0 / (k + 2);
    Bignum minsize = Bignum_fromdouble(r.minsize);
    Bignum T = Bignum_lincomb(r.xhi, minsize, 1.0, -1.0);
    Bignum_free(minsize);

    int32_t n = converging_tick_count(r, T);
    SegmentMembers members = {nullptr, CACHE_OFF, OrdExpansion{}};
    // the sequence with just the length the tick count asks for
    int32_t c = n + 2;
    if (n < 0 || !segment_members(r, c, &members)) {
        Bignum_free(T);
        too_deep_leaf(fn, r);
        segment_depth--;
        return;
    }
    int32_t m = skipped_members(members.seq, c, r.ordlo);
    // the n ticks must start behind the skipped members
    while (m > 2) {
        c = n + m;
        segment_members_free(&members);
        if (!segment_members(r, c, &members)) {
            Bignum_free(T);
            too_deep_leaf(fn, r);
            segment_depth--;
            return;
        }
        m = skipped_members(members.seq, c, r.ordlo);
        REPORT(REPORT_WARNING, "Retry loop needed in segment()", 0);
        if (n + m <= c)
            break;
    }
    const Ord *seq = members.seq;

    // a first child ending in a limit has structure of its own: a larger share
    double aw, bw;
    if (c > m && Ord_issuccessor(seq[m])) {
        aw = CONVERGE_RATIO;
        bw = CONVERGE_COMPLEMENT;
    } else {
        aw = CONVERGE_RATIO * g;
        bw = 1.0 - aw;
    }

    Bignum p = r.xlo, q = {0, nullptr};
    for (int32_t i = 0;; i++) {
        if (!Bignum_lt(p, T) || !Bignum_ltd(p, r.right) || c <= m + i)
            break;
        WalkRecord child = r;
        child.ordhi_entry = members.entry;
        int32_t child_k;
        if (i == 0) {
            q = Bignum_lincomb(r.xhi, p, bw, aw);
            child.ordhi = seq[m];
            child_k = k + 1;
        } else {
            advance(r.xlo, r.xhi, &p, &q);
            child.ordlo = seq[m + i - 1];
            child.ordhi = seq[m + i];
            child_k = 0;
        }
        child.xlo = p;
        child.xhi = q;
        segment(fn, child_k, child);
    }

    Bignum_free(T);
    if (p.limbs != r.xlo.limbs)
        Bignum_free(p);
    Bignum_free(q);
    segment_members_free(&members);
    segment_depth--;
}
