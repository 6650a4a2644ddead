// The layout of the line: segment().
#include "PlotSegment2/segment.h"

#include <math.h>
#include <sys/resource.h>

#include "OrdBuchholz/ord_expand.h"
#include "OrdBuchholz/expansion_cache.h"
#include "OrdBuchholz/ord_arith.h"
#include "PlotSegment2/tick_walk.h"
#include "support/report/report.h"
#include "support/timing/clock.h"

int32_t segment_depth_limit = -1;
int32_t segment_depth = 0;
int64_t segment_too_deep = 0;
double segment_expand_budget = 0.0;
double segment_expand_spent = 0.0;
size_t segment_stack_bytes = 0;
// The stack address at the walk's outermost interval.
static uintptr_t segment_stack_top = 0;

static size_t stack_budget()
{
    struct rlimit limit;
    // unlimited stacks still end where the next mapping starts
    if (getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
        limit.rlim_cur > SEGMENT_STACK_ROOM)
        return SEGMENT_STACK_ROOM / 2;
    return (size_t)limit.rlim_cur / 2;
}

void segment_stack_room()
{
    struct rlimit limit;
    if (getrlimit(RLIMIT_STACK, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
        limit.rlim_cur >= SEGMENT_STACK_ROOM)
        return;
    limit.rlim_cur = limit.rlim_max == RLIM_INFINITY || limit.rlim_max > SEGMENT_STACK_ROOM
        ? SEGMENT_STACK_ROOM : limit.rlim_max;
    setrlimit(RLIMIT_STACK, &limit);
}

// The next converging tick: 0.2983 of the way from p to xhi.
static Bignum converge_step(Bignum xhi, Bignum p)
{
    return Bignum_lincomb(xhi, p, CONVERGE_COMPLEMENT, CONVERGE_RATIO);
}

// How many of the first c members do not exceed ordlo; a kept count when the
// cache has one (the comparisons of deep ordinals are the costly part).
static int32_t skipped_members(const Ord *seq, uint32_t entry, int32_t c, Ord ordlo)
{
    int32_t m = 0;
    if (expansion_cache_skip(entry, ordlo, &m) && m < c)
        return m;
    m = 0;
    while (m < c && Ord_cmp(seq[m], ordlo) <= 0)
        m++;
    if (m < c)
        expansion_cache_skip_keep(entry, ordlo, m);
    return m;
}

// Frees the positions a count stepped.
static void steps_free(DynArray *steps)
{
    for (uint32_t i = 0; i < steps->count; i++)
        Bignum_free(*DynArray_at<Bignum>(steps, i));
    DynArray_free(steps);
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

// ln of the distance left to xhi shrinks by this at each converging tick:
// -ln 0.7017, the step's weight as Bignum_lincomb applies it.
constexpr double CONVERGE_LOG_STEP = 0.35424931672389404;

// Ticks stepped one by one before the rest are counted by logarithms: so many
// that the steps' rounding has long stopped mattering at the scale of the
// view (a view that needs more is right at a limit).
constexpr int32_t SEGMENT_STEPPED_TICKS = 1000;
// Limbs below which no interval is wide enough for SEGMENT_STEPPED_TICKS + 100
// ticks: 0.7017^1100 is about 10^-169.
constexpr uint32_t SEGMENT_COUNT_LIMBS = 42;

// The position j ticks on from p toward xhi without the ticks between:
// xhi - (xhi - p) * 0.7017^j, to about 1e-8 of the distance left.
static Bignum converge_jump(Bignum xhi, Bignum p, double j)
{
    Bignum d = Bignum_lincomb(xhi, p, 1.0, -1.0);
    // 0.7017^j = s * 10000^-k with s in [1, 10000): d moved down k limbs,
    // then times s in two parts of four decimals
    double l = -j * CONVERGE_LOG_STEP / 9.210340371976184;
    double k = ceil(-l);
    double s = pow(10000.0, l + k);
    Bignum v;
    if (k + 3 > d.n) {
        // what is left is small enough for a double
        v = Bignum_fromdouble(exp(Bignum_log(d) - j * CONVERGE_LOG_STEP));
    } else {
        Bignum high = Bignum_shiftdown(d, (uint32_t)k), low = Bignum_shiftdown(d, (uint32_t)k + 1);
        double a = floor(s * 10000.0) / 10000.0;
        v = Bignum_lincomb(high, low, a, (s - a) * 10000.0);
        Bignum_free(high);
        Bignum_free(low);
    }
    Bignum r = Bignum_lincomb(xhi, v, 1.0, -1.0);
    Bignum_free(v);
    Bignum_free(d);
    return r;
}

// Ticks from p on whose positions all stay at least `distance` from xhi,
// by logarithms (a few fewer, to be safe from rounding); 0 if none. The
// first form takes ld = ln(xhi - p) and ldistance = ln(distance).
static double ticks_before_logs(double ld, double ldistance)
{
    double t = floor((ld - ldistance) / CONVERGE_LOG_STEP) - 2.0;
    return t > 0 ? t : 0;
}

static double ticks_before(Bignum xhi, Bignum p, Bignum distance)
{
    Bignum d = Bignum_lincomb(xhi, p, 1.0, -1.0);
    double t = ticks_before_logs(Bignum_log(d), Bignum_log(distance));
    Bignum_free(d);
    return t;
}

// Ticks the interval needs, on numbers alone. Deliberately one tick late:
// the first two rounds both test xlo, each later one the position before
// the newest. Past SEGMENT_STEPPED_TICKS the rest is counted by logarithms,
// a few over rather than under, and so is the whole count when logarithms
// say it is far past that (*counted tells). -1 when they would be more than
// SEGMENT_MAX_TICKS.
// The distance from xhi below which the converging ticks end: the stop size,
// or the distance to the view's right edge where that is further. The caller
// frees it.
static Bignum converging_stop(WalkRecord r)
{
    Bignum right = Bignum_fromdouble(r.right);
    Bignum to_right = Bignum_lincomb(r.xhi, right, 1.0, -1.0);
    Bignum stop = Bignum_fromdouble(r.minsize);
    Bignum_free(right);
    if (Bignum_lt(stop, to_right)) {
        Bignum_free(stop);
        return to_right;
    }
    Bignum_free(to_right);
    return stop;
}

// How far the distance left to xhi, after any number of converging steps,
// strays from the first distance times 0.7017 per step, in pixels: a step
// rounds by less than 1.5 ten-thousandths of a pixel (0.5 to nearest, and one
// more where a one-limb number rounds toward zero), and the strays shrink with
// the distance, so they add up to less than 1.5 / 0.2983 of them.
constexpr double CONVERGE_DRIFT = 0.0006;

// The first converging step whose distance left to xhi is no more than the
// stop, from a position at a distance that is more (the step count from it),
// given the logarithms ld of that distance and ls of the stop, when they
// decide it: the steps just before and at the crossing lie further from it
// than the drift can reach. False where they do not, or past `most` steps.
// The steps then need not be made to be counted.
static bool first_step_within(double ld, double ls, int32_t most, int32_t *step)
{
    // a stop of under 0.1 px leaves the drift too large a share of it
    if (!(ls > -2.3 && ld > ls))
        return false;
    double j = ceil((ld - ls) / CONVERGE_LOG_STEP);
    if (j < 1.0)
        j = 1.0;
    if (j > most)
        return false;
    // the logarithms' own rounding is far below this
    constexpr double margin = 1e-9;
    double drift = CONVERGE_DRIFT * exp(-ls);
    bool before_beyond = j == 1.0 || ld - (j - 1.0) * CONVERGE_LOG_STEP - margin > ls + log1p(drift);
    bool at_within = drift < 0.5 && ld - j * CONVERGE_LOG_STEP + margin < ls + log1p(-drift);
    if (!before_beyond || !at_within)
        return false;
    *step = (int32_t)j;
    return true;
}

// ln(xhi - p) and ln of the converging stop, for the counts by logarithms.
static void converging_logs(WalkRecord r, Bignum p, double *ld, double *ls)
{
    Bignum d = Bignum_lincomb(r.xhi, p, 1.0, -1.0), stop = converging_stop(r);
    *ld = Bignum_log(d);
    *ls = Bignum_log(stop);
    Bignum_free(d);
    Bignum_free(stop);
}

// The positions stepped are appended to `steps` (the caller frees them): the
// children are laid out on the same positions where their weights agree.
// Unless `positions`, a count that logarithms decide leaves them unmade: the
// children's weights will differ, or the loop of segment makes them.
static int32_t converging_tick_count(WalkRecord r, Bignum T, bool positions, bool *counted, DynArray *steps)
{
    int32_t n = 0;
    Bignum p = r.xlo, q = {0, nullptr};
    bool stepped_out = false;
    // far more ticks than are ever stepped: counted by logarithms from the
    // start (the margin covers every rounding of the steps)
    *counted = false;
    // only an interval over about 10^165 pixels wide can need that many (the
    // stop is at least 0.0001 px): shorter positions skip the logarithms
    bool long_enough = r.xlo.n >= SEGMENT_COUNT_LIMBS || r.xhi.n >= SEGMENT_COUNT_LIMBS;
    // unless positions are wanted, a count that logarithms decide is enough
    // (the comparisons with the right edge are exact where it is not negative)
    bool by_logs = !positions && r.right >= 0.0f;
    if ((long_enough || by_logs) && Bignum_lt(p, T) && Bignum_ltd(p, r.right)) {
        double ld, ls;
        converging_logs(r, p, &ld, &ls);
        double estimate = long_enough ? ticks_before_logs(ld, ls) : 0.0;
        if (estimate > SEGMENT_STEPPED_TICKS + 100) {
            *counted = true;
            return estimate + 10 < SEGMENT_MAX_TICKS ? (int32_t)estimate + 10 : -1;
        }
        // xlo is tested twice, then each step but the last: one more tick
        // than the steps before the first one within the stop
        int32_t within;
        if (by_logs && first_step_within(ld, ls, SEGMENT_STEPPED_TICKS - 1, &within))
            return within + 1;
    }
    while (Bignum_lt(p, T) && Bignum_ltd(p, r.right)) {
        if (n > 0)
            p = q;
        q = converge_step(r.xhi, p);
        DynArray_append(steps, &q);
        if (n > SEGMENT_STEPPED_TICKS) {
            stepped_out = true;
            break;
        }
        n++;
    }
    if (stepped_out) {
        // the ticks go on until the distance left is below the stop size or
        // the view's right edge, whichever is further from xhi
        Bignum stop = converging_stop(r);
        double more = ticks_before(r.xhi, p, stop) + 5.0;
        n = n + more < SEGMENT_MAX_TICKS ? n + (int32_t)more : -1;
        Bignum_free(stop);
        *counted = true;
    }
    return n;
}

// The children after the first that the loop of segment enters where the
// first child's weights are (aw, bw): the converging steps from its right end
// that stay before T and the view's right edge, counted up to `most`. Two
// members may be skipped before the first child, and the loop tests each
// position one child late, so the children need this count plus four members.
static int32_t steps_after_first(WalkRecord r, Bignum T, double aw, double bw, int32_t most)
{
    Bignum p = Bignum_lincomb(r.xhi, r.xlo, bw, aw);
    int32_t j = 0;
    // counted by logarithms where they decide, as the loop of segment makes
    // these positions again (the comparisons with the right edge are exact
    // where it is not negative)
    if (most > 1 && r.right >= 0.0f && Bignum_lt(p, T) && Bignum_ltd(p, r.right)) {
        double ld, ls;
        converging_logs(r, p, &ld, &ls);
        // (j is left at 0 where they do not decide)
        if (first_step_within(ld, ls, most, &j)) {
            Bignum_free(p);
            return j;
        }
    }
    while (j < most && Bignum_lt(p, T) && Bignum_ltd(p, r.right)) {
        Bignum next = converge_step(r.xhi, p);
        Bignum_free(p);
        p = next;
        j++;
    }
    Bignum_free(p);
    return j;
}

// The members of an interval's sequence: kept ones, or an expansion of this
// walk's own when the cache cannot keep them (it is full, or the limit belongs
// to such an expansion).
struct SegmentMembers {
    const Ord *seq;
    uint32_t entry;      // the cache entry, or CACHE_OFF
    OrdExpansion owned;  // the walk's own expansion when entry is CACHE_OFF
};

static bool segment_members_timed(WalkRecord r, int32_t c, SegmentMembers *out);

// At least c members of r.ordhi's sequence; false if the work limits refuse
// them. The time spent getting them counts against segment_expand_budget:
// once it is spent, only what is kept can still be had.
static bool segment_members(WalkRecord r, int32_t c, SegmentMembers *out)
{
    if (segment_expand_budget <= 0)
        return segment_members_timed(r, c, out);
    double start = clock_monotonic_seconds();
    bool got = segment_members_timed(r, c, out);
    segment_expand_spent += clock_monotonic_seconds() - start;
    if (segment_expand_spent > segment_expand_budget)
        ord_work_left = 0;
    return got;
}

static bool segment_members_timed(WalkRecord r, int32_t c, SegmentMembers *out)
{
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

// Member `index` as a child's left end, with where it comes from.
static void child_ordlo(WalkRecord *child, const SegmentMembers *members, int32_t index)
{
    child->ordlo = members->seq[index];
    child->ordlo_entry = members->entry;
    child->ordlo_member = index;
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

// The interval is a "too deep" leaf after all, its members refused: what the
// layout made for it is freed.
static void members_refused(TickCallback fn, WalkRecord r, Bignum T, DynArray *steps)
{
    Bignum_free(T);
    steps_free(steps);
    too_deep_leaf(fn, r);
    segment_depth--;
}

// The members asked for again, c of them this time, and how many of them
// are skipped; false if the work limits refuse them.
static bool members_again(WalkRecord r, int32_t c, SegmentMembers *members, int32_t *m)
{
    segment_members_free(members);
    if (!segment_members(r, c, members))
        return false;
    *m = skipped_members(members->seq, members->entry, c, r.ordlo);
    return true;
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

    if (Bignum_difference_ltd(r.xhi, r.xlo, r.minsize)) {
        fn(r);
        return;
    }
    if (segment_depth_limit >= 0 && segment_depth_limit <= segment_depth) {
        fn(r);
        return;
    }
    uintptr_t stack_at = (uintptr_t)__builtin_frame_address(0);
    if (segment_depth == 0) {
        segment_stack_top = stack_at;
        if (segment_stack_bytes == 0)
            segment_stack_bytes = stack_budget();
    } else if (segment_stack_top - stack_at > segment_stack_bytes) {
        too_deep_leaf(fn, r);
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

    bool counted;
    DynArray steps;
    DynArray_init(&steps, sizeof(Bignum), 16);
    int32_t n = converging_tick_count(r, T, k == 0, &counted, &steps);
    SegmentMembers members = {nullptr, CACHE_OFF, OrdExpansion{}};
    // the sequence with just the length the tick count asks for
    int32_t c = n + 2, c_all = c;
    // a first child ending in a limit (the usual case) takes the larger
    // share, and the children after it are then fewer than the ticks counted
    // from xlo, often none: only those are asked for, as expanding deep
    // ordinals is most of a walk's cost. The first child decides the share,
    // so if it turns out otherwise all are asked for after all.
    double share = CONVERGE_RATIO * g;
    bool fewer = !counted && n > 2 && !(share == CONVERGE_RATIO && 1.0 - share == CONVERGE_COMPLEMENT);
    if (fewer)
        c = steps_after_first(r, T, share, 1.0 - share, n - 2) + 4;
    if (n < 0 || !segment_members(r, c, &members)) {
        members_refused(fn, r, T, &steps);
        return;
    }
    int32_t m = skipped_members(members.seq, members.entry, c, r.ordlo);
    if (c < c_all && (m > 2 || c <= m || Ord_issuccessor(members.seq[m]))) {
        c = c_all;
        if (!members_again(r, c, &members, &m)) {
            members_refused(fn, r, T, &steps);
            return;
        }
    }
    // the n ticks must start behind the skipped members
    while (m > 2) {
        c = n + m;
        if (!members_again(r, c, &members, &m)) {
            members_refused(fn, r, T, &steps);
            return;
        }
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
        // the share the children were counted with
        aw = share;
        bw = 1.0 - share;
    }

    Bignum p = r.xlo, q = {0, nullptr};
    // with the weights of the count's steps, its positions are the children's
    bool reuse = !counted && aw == CONVERGE_RATIO && bw == CONVERGE_COMPLEMENT;
    // where the ticks were counted, not stepped, the children before the
    // view are passed over once, by a jump
    bool skipped_ahead = false;
    for (int32_t i = 0;; i++) {
        if (!Bignum_lt(p, T) || !Bignum_ltd(p, r.right) || c <= m + i)
            break;
        WalkRecord child = r;
        child.ordhi_entry = members.entry;
        int32_t child_k;
        if (reuse) {
            if ((uint32_t)i >= steps.count) {
                Bignum next = converge_step(r.xhi, i ? q : r.xlo);
                DynArray_append(&steps, &next);
            }
            p = i ? *DynArray_at<Bignum>(&steps, (uint32_t)i - 1) : r.xlo;
            q = *DynArray_at<Bignum>(&steps, (uint32_t)i);
            if (i)
                child_ordlo(&child, &members, m + i - 1);
            child.ordhi = seq[m + i];
            child_k = i ? 0 : k + 1;
        } else if (i == 0) {
            q = Bignum_lincomb(r.xhi, p, bw, aw);
            // after some 28,000 first-child steps the weights quantise to 1
            // and 0: the first child would be the whole interval again, and
            // again below it for as long as the descent of ordinals lasts,
            // which is often longer than any walk can go. Positions cannot
            // part it: a leaf.
            if (!Bignum_lt(q, r.xhi)) {
                fn(r);
                break;
            }
            child.ordhi = seq[m];
            child_k = k + 1;
        } else {
            if (counted && !skipped_ahead) {
                skipped_ahead = true;
                // children wholly left of the view are not entered: jump to
                // the last few before it instead of stepping through them
                Bignum left = Bignum_fromdouble(r.left);
                Bignum to_left = Bignum_lincomb(r.xhi, left, 1.0, -1.0);
                double skip = ticks_before(r.xhi, q, to_left);
                if (skip >= 2 && m + i + skip < c) {
                    Bignum jumped = converge_jump(r.xhi, q, skip);
                    Bignum_free(q);
                    q = jumped;
                    i += (int32_t)skip;
                }
                Bignum_free(to_left);
                Bignum_free(left);
            }
            advance(r.xlo, r.xhi, &p, &q);
            child_ordlo(&child, &members, m + i - 1);
            child.ordhi = seq[m + i];
            child_k = 0;
        }
        child.xlo = p;
        child.xhi = q;
        segment(fn, child_k, child);
    }

    Bignum_free(T);
    if (!reuse) {
        if (p.limbs != r.xlo.limbs)
            Bignum_free(p);
        Bignum_free(q);
    }
    steps_free(&steps);
    segment_members_free(&members);
    segment_depth--;
}
