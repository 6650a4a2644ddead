// Deep views: the iterative comparison and expansion against the plain
// recursive forms they replace, on ordinals from tick walks; nesting far
// deeper than any C stack; out of memory. (Tens of thousands of converging
// ticks are in ordtool_tables.sh.)
#include <gtest/gtest.h>

#include <string.h>
#include <sys/resource.h>

#include <random>
#include <string>

#include "OrdBuchholz/expansion_cache.h"
#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "OrdBuchholz/ord_expand.h"
#include "OrdBuchholz/ord_rope.h"
#include "PlotSegment2/tick_walk.h"
#include "ord_fixtures_test.h"
#include "support/bignum/bignum.h"
#include "support/dynarray/dynarray.h"
#include "support/gl/screen.h"
#include "support/report/report.h"

// ---- the recursive originals, the reference ----
namespace ref {

// Arrays the reference makes, released together (heap mode).
std::vector<Ord> made;
Ord keep(Ord x)
{
    made.push_back(x);
    return x;
}
void release()
{
    for (Ord x : made)
        Ord_freearray(x);
    made.clear();
}

int32_t cmp(Ord x, Ord y)
{
    x = Ord_force(x);
    y = Ord_force(y);
    for (uint32_t i = 0; i < x.count && i < y.count; i++) {
        const OrdTerm *s = &x.terms[i], *t = &y.terms[i];
        int32_t r = cmp(s->sub, t->sub);
        r = r ? r : cmp(s->arg, t->arg);
        r = r ? r : s->coef < t->coef ? -1 : s->coef > t->coef;
        if (r)
            return r;
    }
    return x.count < y.count ? -1 : x.count > y.count;
}

// Members by the recursive rules, path on a std::vector; templates and their
// filling are the library's own, which ord_buchholz_test.cpp checks.
std::vector<Ord> expand(Ord x, int32_t n, std::vector<Ord> &path)
{
    x = Ord_force(x);
    path.push_back(x);
    const OrdTerm *f = &x.terms[0];
    Ord a = f->sub, b = f->arg;
    std::vector<Ord> r;
    // the members of y, each made into a member of x
    auto each = [&](Ord y, auto make) {
        for (Ord m : expand(y, n, path))
            r.push_back(make(m));
        return r;
    };
    if (f->coef == ORD_COEF_I) {
        for (int32_t i = 0; i < n; i++)
            r.push_back(keep(Ord_term(1, i ? r.back() : Ord_zero(), Ord_zero())));
        return r;
    }
    if (x.count > 1 || f->coef > 1) {
        bool sum = x.count > 1;
        Ord head = sum ? Ord_slice(x, 0, x.count - 1) : keep(Ord_term(f->coef - 1, a, b));
        return each(sum ? Ord_slice(x, x.count - 1, 1) : keep(Ord_term(1, a, b)), [&](Ord m) {
            m = Ord_force(m);
            Ord c = keep(Ord_alloc(head.count + m.count));
            memcpy(c.terms, head.terms, head.count * sizeof(OrdTerm));
            if (m.count)
                memcpy(c.terms + head.count, m.terms, m.count * sizeof(OrdTerm));
            return c;
        });
    }
    if (b.count && OrdTerm_isfinite(Ord_lastterm(Ord_force(b)))) {
        for (int32_t i = 0; i < n; i++)
            r.push_back(i == 0 ? Ord_zero() : keep(Ord_term((uint32_t)i, a, keep(Ord_pred(b)))));
        return r;
    }
    if (b.count)
        return each(b, [&](Ord m) { return keep(Ord_term(1, a, m)); });
    if (a.count && !OrdTerm_isfinite(Ord_lastterm(Ord_force(a))))
        return each(a, [&](Ord m) { return keep(Ord_term(1, m, Ord_zero())); });
    size_t from = 0;
    for (size_t k = path.size(); k-- > 0 && !from;)
        if (path[k].count == 1 && path[k].terms[0].coef == 1 && cmp(path[k].terms[0].sub, a) < 0)
            from = k + 1;
    Ord t = Ord_makeimpredfn(path[from]);
    DynArray list;
    DynArray_init(&list, sizeof(Ord), 4);
    r.push_back(Ord_zero());
    for (int32_t i = 1; i < n; i++)
        r.push_back(keep(Ord_term(1, keep(Ord_pred(a)), keep(Ord_substitute(t, r.back(), &list)))));
    for (uint32_t k = 0; k < list.count; k++)
        keep(*DynArray_at<Ord>(&list, k));
    DynArray_free(&list);
    Ord_freetemplate(t);
    return r;
}

}  // namespace ref

class Deep : public InBothModes {};
INSTANTIATE_IN_BOTH_MODES(Deep);

// Every ordinal a tick walk meets, copied out of the walk.
static std::vector<Ord> walk_met;
static void collect(WalkRecord r)
{
    walk_met.push_back(Ord_clone(r.ordlo));
    walk_met.push_back(Ord_clone(r.ordhi));
    tick_record(r);
}

// Walks the 640 x 480 view zoomed `steps` times tenfold about column `at`.
static void walk_view(double at, int32_t steps, TickCallback fn)
{
    screen_w = 640, screen_h = 480;
    WalkRecord r = {};
    r.xlo = Bignum_fromdouble(64), r.xhi = Bignum_fromdouble(576), r.minsize = 8.0f;
    for (int32_t i = 0; i < steps; i++) {
        Bignum c = Bignum_fromdouble(at);
        Bignum lo = Bignum_lincomb(r.xlo, c, 10.0, -9.0), hi = Bignum_lincomb(r.xhi, c, 10.0, -9.0);
        Bignum_free(r.xlo), Bignum_free(r.xhi), Bignum_free(c);
        r.xlo = lo, r.xhi = hi;
    }
    walk_record_screen(&r);
    tick_arrays_rebuild(r.right);
    walk_line(fn, r);
    Bignum_free(r.xlo), Bignum_free(r.xhi);
}

TEST_P(Deep, IterativeFormsAgreeWithTheRecursiveOnes)
{
    uint32_t levels = ord_rope_levels;
    // views from the first one to 10^60 deep, near the bottom, middle and top
    const std::pair<double, int32_t> views[] = {{320, 0},  {180, 30}, {320, 60},
                                                {500, 20}, {575, 12}, {600, 10}};
    auto agree = [&](uint32_t rope_levels) {
        ord_rope_levels = rope_levels;
        for (auto [at, steps] : views)
            walk_view(at, steps, collect);
        ASSERT_GT(walk_met.size(), 600u);

        std::mt19937 rng(11);
        std::uniform_int_distribution<size_t> pick(0, walk_met.size() - 1);
        for (int i = 0; i < 4000; i++) {
            Ord x = walk_met[pick(rng)], y = walk_met[pick(rng)], xc = Ord_clone(x);
            ASSERT_EQ(Ord_cmp(x, y), ref::cmp(x, y)) << text_of(x) << " against " << text_of(y);
            ASSERT_EQ(Ord_cmp(xc, x), 0) << text_of(x);
            Ord_free(xc);
        }
        for (size_t i = 0; i < walk_met.size(); i += 7) {
            Ord x = walk_met[i];
            if (x.count == 0 || Ord_istop(x) || Ord_issuccessor(x))
                continue;
            // members, from a fresh path each; they pass through templates
            // and their substitution
            OrdExpansion e = Ord_expandfresh(x, 5);
            std::vector<Ord> path;
            std::vector<Ord> want = ref::expand(x, 5, path);
            for (int32_t k = 0; k < 5; k++)
                ASSERT_EQ(ref::cmp(e.seq[k], want[k]), 0) << "member " << k << " of " << text_of(x);
            Ord_freeexpansion(e);
        }
        for (Ord x : walk_met)
            Ord_free(x);
        walk_met.clear();
        ref::release();
    };
    // once as the line runs, and once with every expansion on the rope
    agree(levels);
    agree(0);
    ord_rope_levels = levels;
}

// The ends of every interval a walk meets, as text.
static std::vector<std::string> walk_texts;
static void write_down(WalkRecord r)
{
    NotationRow row = row_of("111111");
    bool cut;
    for (Ord x : {r.ordlo, r.ordhi}) {
        char *s = Ord_tostring_limit(x, &row, 400, &cut);
        walk_texts.push_back(s);
        free(s);
    }
    tick_record(r);
}

static std::vector<std::string> texts_of_view(double at, int32_t steps)
{
    walk_texts.clear();
    walk_view(at, steps, write_down);
    return walk_texts;
}

// A collection of the rope store keeps what the kept expansions use, and
// ropes built afterwards in the room it freed spell what they spelled before;
// both with every expansion on the rope and as the line runs, where the
// expansions near the top are term arrays alone, which it does not go into.
TEST(DeepCollect, KeptExpansionsSurviveAndFreedRoomIsUsedAgain)
{
    uint32_t levels = ord_rope_levels;
    for (uint32_t rope_levels : {0u, levels}) {
        ord_rope_levels = rope_levels;
        expansion_cache_frame();
        std::vector<std::string> first = texts_of_view(575, 12);
        // its entries idle out; its ropes stay in the store until collected
        for (uint64_t i = 0; i <= EXPANSION_CACHE_IDLE; i++)
            expansion_cache_frame();
        std::vector<std::string> kept = texts_of_view(500, 20);
        uint64_t bytes = rope_store_bytes();
        expansion_cache_collect();
        if (rope_levels == 0) {
            EXPECT_LT(rope_store_bytes(), bytes);
        }
        // new ropes in the room freed
        EXPECT_FALSE(texts_of_view(320, 60).empty());
        EXPECT_EQ(texts_of_view(575, 12), first);
        EXPECT_EQ(texts_of_view(500, 20), kept);
    }
    ord_rope_levels = levels;
}

// A chain of one level but many terms: copied into every member it would fill
// the kept expansions on the way to a deep view, so its members share it on
// the rope, and they are the members the copying expansion makes.
TEST(DeepTerms, ManyTermsAreSharedNotCopied)
{
    std::string text;
    for (int i = 200; i > 0; i--)
        text += "omega^{omega+" + std::to_string(i) + "}+";
    OrdPool pool;
    Ord x = pool.read((text + "omega^{omega}").c_str());
    OrdExpansion shared = Ord_expandfresh(x, 20);
    uint64_t terms = ord_rope_terms;
    ord_rope_terms = UINT64_MAX;
    OrdExpansion copied = Ord_expandfresh(x, 20);
    ord_rope_terms = terms;
    for (int32_t k = 1; k < 20; k++) {
        EXPECT_TRUE(Ord_islazy(shared.seq[k])) << "member " << k;
        EXPECT_FALSE(Ord_islazy(copied.seq[k])) << "member " << k;
        EXPECT_EQ(Ord_cmp(shared.seq[k], copied.seq[k]), 0) << "member " << k;
    }
    Ord_freeexpansion(shared);
    Ord_freeexpansion(copied);
    pool.release();
}

// Nesting of LEVELS levels, the bottom term given: psi_0(psi_0(...(bottom)))
// or Omega_(Omega_(...)) through the subscript.
// Past its stack budget a walk ends in "too deep" leaves and returns: where
// a long descent of ordinals keeps the left end it nests ten thousand deep.
TEST(DeepWalk, PastTheStackBudgetIsTooDeepNotAnOverflow)
{
    size_t kept = segment_stack_bytes;
    int64_t before = segment_too_deep;
    walk_view(540, 20, tick_record);
    EXPECT_EQ(segment_too_deep, before);
    segment_stack_bytes = 8 << 10;
    walk_view(540, 20, tick_record);
    segment_stack_bytes = kept;
    EXPECT_GT(segment_too_deep, before);
}

// Deep in a first-child chain the first child's weight quantises to the
// whole interval: omega^2 above 0 would go on through omega, 1, 2, ... with
// the same ends. It is one leaf instead.
static int32_t stall_calls;
static WalkRecord stall_leaf;
static void count_stall(WalkRecord r)
{
    stall_calls++;
    stall_leaf = r;
}

TEST(DeepWalk, AFirstChildAsWideAsItsParentEndsTheChain)
{
    OrdPool pool;
    WalkRecord r = {};
    r.xlo = Bignum_fromdouble(0), r.xhi = Bignum_fromdouble(100);
    r.minsize = 1.0f, r.left = 0.0f, r.right = 640.0f;
    r.ordlo = Ord_zero(), r.ordhi = pool.read("omega^2");
    tick_arrays_rebuild(r.right);
    stall_calls = 0;
    int64_t before = segment_too_deep;
    segment(count_stall, 30000, r);
    EXPECT_EQ(stall_calls, 1);
    EXPECT_EQ(segment_too_deep, before);
    EXPECT_TRUE(!Bignum_lt(stall_leaf.xhi, r.xhi) && !Bignum_lt(r.xhi, stall_leaf.xhi));
    // a chain that has not gone so far still divides it
    stall_calls = 0;
    segment(count_stall, 100, r);
    EXPECT_GT(stall_calls, 5);
    Bignum_free(r.xlo), Bignum_free(r.xhi);
    pool.release();
}

static Ord nested(uint32_t levels, Ord bottom, bool through_sub)
{
    Ord x = bottom;
    for (uint32_t i = 0; i < levels; i++)
        x = through_sub ? Ord_term(1, x, Ord_zero()) : Ord_term(1, Ord_zero(), x);
    return x;
}

// Each of these recursed once per level and overflowed the stack at about
// 47,000 levels.
TEST_P(Deep, NestingCostsHeapNotStack)
{
    const uint32_t LEVELS = 300000;
    auto one = [] { return Ord_term(1, Ord_zero(), Ord_zero()); };
    Ord a = nested(LEVELS, Ord_term(1, Ord_zero(), one()), false);
    Ord b = nested(LEVELS, Ord_term(2, Ord_zero(), one()), false), c = Ord_clone(a);
    EXPECT_EQ(Ord_cmp(a, b), -1);
    EXPECT_EQ(Ord_cmp(a, c), 0);
    Ord_free(c);

    // the text: "psi_{0}(" and ")" a level around the bottom's text; cut at
    // 100 bytes, and at 96, where twelve levels end right at the limit
    NotationRow psi = row_of("000000");
    char *s = Ord_tostring(a, &psi);
    EXPECT_EQ(strlen(s), LEVELS * 9 + strlen("psi_{0}(psi_{0}(0))"));
    free(s);
    for (size_t limit : {100u, 96u}) {
        bool cut = false;
        char *head = Ord_tostring_limit(a, &psi, limit, &cut);
        EXPECT_TRUE(cut && strlen(head) == limit) << limit;
        free(head);
    }

    // expansion down a chain of limit arguments, and a template through
    // limit subscripts: Omega_(Omega_(...(Omega_2)))
    OrdExpansion e = Ord_expandfresh(a, 3);
    Ord two_deep = nested(LEVELS, Ord_term(2, Ord_zero(), Ord_zero()), false);
    EXPECT_EQ(Ord_cmp(e.seq[2], two_deep), 0);
    Ord_free(two_deep);
    Ord_freeexpansion(e);
    Ord_free(a);
    Ord_free(b);
    Ord deep_omega = Ord_term(1, Ord_zero(), nested(LEVELS, Ord_term(2, Ord_zero(), Ord_zero()), true));
    Ord t = Ord_makeimpredfn(deep_omega), p = one();
    DynArray list;
    DynArray_init(&list, sizeof(Ord), 4);
    Ord filled = Ord_substitute(t, p, &list);
    EXPECT_EQ(list.count, LEVELS);
    Ord_freetemplate(t);
    Ord_freearray(filled);
    for (uint32_t k = 0; k < list.count; k++)
        Ord_freearray(*DynArray_at<Ord>(&list, k));
    DynArray_free(&list);
    Ord_free(p);
    Ord_free(deep_omega);
}

// Out of memory is one clear line and status 1, never a null pointer used.
TEST(DeepDeathTest, OutOfMemoryIsReported)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the address sanitizer needs more address space than the test allows";
#endif
    auto starve = [] {
        // the console handler writes to standard output; the test reads errors
        report_handler = [](ReportRecord *record) { fputs(record->text, stderr); };
        struct rlimit limit = {(rlim_t)64 << 20, (rlim_t)64 << 20};
        setrlimit(RLIMIT_AS, &limit);
        static char block[1 << 20];
        DynArray a;
        DynArray_init(&a, sizeof block, 1);
        for (;;)
            DynArray_append(&a, block);
    };
    EXPECT_EXIT(starve(), testing::ExitedWithCode(1), "Out of memory");
}
