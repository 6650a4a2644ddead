// Deep views: the iterative comparison, templates, substitution and expansion
// against the plain recursive forms they replace, on ordinals from tick walks;
// nesting far deeper than any C stack; many converging ticks; out of memory.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <sys/resource.h>

#include <random>
#include <string.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "OrdBuchholz/ord_expand.h"
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
    for (uint32_t i = 0; i < x.count; i++) {
        if (i >= y.count)
            return 1;
        const OrdTerm *s = &x.terms[i], *t = &y.terms[i];
        int32_t r = cmp(s->sub, t->sub);
        if (!r)
            r = cmp(s->arg, t->arg);
        if (!r && s->coef != t->coef)
            r = s->coef < t->coef ? -1 : 1;
        if (r)
            return r;
    }
    return x.count < y.count ? -1 : 0;
}

// The template as a whole deep copy; the hole at the end of the last terms.
Ord makeimpredfn(Ord x)
{
    x = Ord_force(x);
    const OrdTerm *last = Ord_lastterm(x);
    Ord t = Ord_alloc(last->coef > 1 ? x.count + 1 : x.count);
    for (uint32_t i = 0; i + 1 < x.count; i++)
        t.terms[i] = OrdTerm{x.terms[i].coef, Ord_clone(x.terms[i].sub), Ord_clone(x.terms[i].arg)};
    OrdTerm *tail = &t.terms[x.count - 1];
    if (last->coef > 1) {
        *tail = OrdTerm{last->coef - 1, Ord_clone(last->sub), Ord_clone(last->arg)};
        tail++;
    }
    if (last->arg.count)
        *tail = OrdTerm{1, Ord_clone(last->sub), makeimpredfn(last->arg)};
    else if (last->sub.count && !OrdTerm_isfinite(Ord_lastterm(Ord_force(last->sub))))
        *tail = OrdTerm{1, makeimpredfn(last->sub), Ord_zero()};
    else
        *tail = OrdTerm{0, Ord_zero(), Ord_zero()};
    return t;
}

// Every term rebuilt, every placeholder replaced by p's terms.
Ord substitute(Ord t, Ord p)
{
    t = Ord_force(t);
    p = Ord_force(p);
    uint32_t places = 0;
    for (uint32_t i = 0; i < t.count; i++)
        places += t.terms[i].coef ? 1 : p.count;
    Ord r = keep(Ord_alloc(places));
    uint32_t j = 0;
    for (uint32_t i = 0; i < t.count; i++) {
        if (t.terms[i].coef == 0) {
            for (uint32_t k = 0; k < p.count; k++)
                r.terms[j++] = p.terms[k];
            continue;
        }
        r.terms[j++] = OrdTerm{t.terms[i].coef, substitute(t.terms[i].sub, p), substitute(t.terms[i].arg, p)};
    }
    return r;
}

// Members by the recursive rules, path on a std::vector; arrays are left to
// the arena or leak into the test's heap pool (freed with the process).
std::vector<Ord> expand(Ord x, int32_t n, std::vector<Ord> &path)
{
    x = Ord_force(x);
    path.push_back(x);
    const OrdTerm *f = &x.terms[0];
    std::vector<Ord> r;
    auto wrap = [&](std::vector<Ord> m, auto make) {
        for (Ord &y : m)
            y = make(y);
        return m;
    };
    if (f->coef == ORD_COEF_I) {
        for (int32_t i = 0; i < n; i++)
            r.push_back(keep(i == 0 ? Ord_term(1, Ord_zero(), Ord_zero()) : Ord_term(1, r.back(), Ord_zero())));
        return r;
    }
    if (x.count > 1 || f->coef > 1) {
        bool sum = x.count > 1;
        Ord head = sum ? Ord_slice(x, 0, x.count - 1) : keep(Ord_term(f->coef - 1, f->sub, f->arg));
        Ord tail = sum ? Ord_slice(x, x.count - 1, 1) : keep(Ord_term(1, f->sub, f->arg));
        return wrap(expand(tail, n, path), [&](Ord m) {
            m = Ord_force(m);
            Ord c = keep(Ord_alloc(head.count + m.count));
            memcpy(c.terms, head.terms, head.count * sizeof(OrdTerm));
            if (m.count)
                memcpy(c.terms + head.count, m.terms, m.count * sizeof(OrdTerm));
            return c;
        });
    }
    Ord a = f->sub, b = f->arg;
    if (b.count && OrdTerm_isfinite(Ord_lastterm(Ord_force(b)))) {
        for (int32_t i = 0; i < n; i++)
            r.push_back(i == 0 ? Ord_zero() : keep(Ord_term((uint32_t)i, a, keep(Ord_pred(b)))));
        return r;
    }
    if (b.count)
        return wrap(expand(b, n, path), [&](Ord m) { return keep(Ord_term(1, a, m)); });
    if (a.count && !OrdTerm_isfinite(Ord_lastterm(Ord_force(a))))
        return wrap(expand(a, n, path), [&](Ord m) { return keep(Ord_term(1, m, Ord_zero())); });
    size_t from = 0;
    for (size_t k = path.size(); k-- > 0;)
        if (path[k].count == 1 && path[k].terms[0].coef == 1 && cmp(path[k].terms[0].sub, a) < 0) {
            from = k + 1;
            break;
        }
    Ord t = makeimpredfn(path[from]);
    r.push_back(Ord_zero());
    for (int32_t i = 1; i < n; i++)
        r.push_back(keep(Ord_term(1, keep(Ord_pred(a)), substitute(t, r.back()))));
    Ord_free(t);
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

// Run once as the line runs, and once with every expansion on the rope.
static void iterative_forms_agree(OrdPool &pool, uint32_t rope_levels);
TEST_P(Deep, IterativeFormsAgreeWithTheRecursiveOnes)
{
    uint32_t levels = ord_rope_levels;
    iterative_forms_agree(pool, levels);
    iterative_forms_agree(pool, 0);
    ord_rope_levels = levels;
}

static void iterative_forms_agree(OrdPool &pool, uint32_t rope_levels)
{
    ord_rope_levels = rope_levels;
    // views from the first one to 10^60 deep, near the bottom, middle and top
    walk_met.clear();
    struct View {
        double at;
        int32_t steps;
    } views[] = {{320, 0}, {180, 30}, {320, 60}, {500, 20}, {575, 12}, {600, 10}};
    for (const View &v : views) {
        screen_w = 640, screen_h = 480;
        Bignum lo = Bignum_fromdouble(64), hi = Bignum_fromdouble(576);
        for (int32_t i = 0; i < v.steps; i++) {
            Bignum c = Bignum_fromdouble(v.at);
            Bignum l2 = Bignum_lincomb(lo, c, 10.0, -9.0), h2 = Bignum_lincomb(hi, c, 10.0, -9.0);
            Bignum_free(lo), Bignum_free(hi), Bignum_free(c);
            lo = l2, hi = h2;
        }
        WalkRecord r = {};
        r.xlo = lo, r.xhi = hi, r.minsize = 8.0f;
        walk_record_screen(&r);
        tick_arrays_rebuild(r.right);
        walk_line(collect, r);
        Bignum_free(lo), Bignum_free(hi);
    }
    ASSERT_GT(walk_met.size(), 600u);

    std::mt19937 rng(11);
    std::uniform_int_distribution<size_t> pick(0, walk_met.size() - 1);
    for (int i = 0; i < 4000; i++) {
        Ord x = walk_met[pick(rng)], y = walk_met[pick(rng)];
        ASSERT_EQ(Ord_cmp(x, y), ref::cmp(x, y)) << text_of(x) << " against " << text_of(y);
        Ord xc = Ord_clone(x);
        ASSERT_EQ(Ord_cmp(xc, x), 0) << text_of(x);
        Ord_free(xc);
    }
    Ord Omega = pool.read("Omega");
    for (size_t i = 0; i < walk_met.size(); i += 7) {
        Ord x = walk_met[i];
        if (x.count == 0 || Ord_istop(x))
            continue;
        // members, from a fresh path each
        if (!Ord_issuccessor(x)) {
            OrdExpansion e = Ord_expandfresh(x, 5);
            std::vector<Ord> path;
            std::vector<Ord> want = ref::expand(x, 5, path);
            for (int32_t k = 0; k < 5; k++)
                ASSERT_EQ(ref::cmp(e.seq[k], want[k]), 0) << "member " << k << " of " << text_of(x);
            Ord_freeexpansion(e);
        }
        // a template through a sum and a psi: psi_0(x + Omega), filled with y
        Ord sum = ref::keep(Ord_add(x, Omega));
        Ord z = ref::keep(Ord_term(1, Ord_zero(), sum));
        Ord y = walk_met[pick(rng)];
        DynArray list;
        DynArray_init(&list, sizeof(Ord), 4);
        Ord t = Ord_makeimpredfn(z), s = Ord_substitute(t, y, &list);
        Ord rt = ref::makeimpredfn(z), rs = ref::substitute(rt, y);
        ASSERT_EQ(ref::cmp(t, rt), 0) << text_of(z);
        ASSERT_EQ(ref::cmp(s, rs), 0) << text_of(z) << " filled with " << text_of(y);
        Ord_freetemplate(t);
        Ord_freearray(s);
        Ord_free(rt);
        for (uint32_t k = 0; k < list.count; k++)
            Ord_freearray(*DynArray_at<Ord>(&list, k));
        DynArray_free(&list);
    }
    if (!ord_arena)
        for (Ord x : walk_met)
            Ord_free(x);
    walk_met.clear();
    ref::release();
}

// Nesting of LEVELS levels, the bottom term given: psi_0(psi_0(...(bottom)))
// or Omega_(Omega_(...)) through the subscript.
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
    Ord omega = Ord_term(1, Ord_zero(), one());
    Ord a = nested(LEVELS, omega, false), b = nested(LEVELS, Ord_term(2, Ord_zero(), one()), false);
    EXPECT_EQ(Ord_cmp(a, b), -1);
    Ord c = Ord_clone(a);
    EXPECT_EQ(Ord_cmp(a, c), 0);
    Ord_free(c);

    // the text: "psi_{0}(" and ")" a level around the bottom's text
    NotationRow psi = row_of("000000");
    char *s = Ord_tostring(a, &psi);
    EXPECT_EQ(strlen(s), LEVELS * 9 + strlen("psi_{0}(psi_{0}(0))"));
    free(s);
    bool cut;
    s = Ord_tostring_limit(a, &psi, 100, &cut);
    EXPECT_TRUE(cut);
    EXPECT_EQ(strlen(s), 100u);
    free(s);

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
    Ord t = Ord_makeimpredfn(deep_omega);
    DynArray list;
    DynArray_init(&list, sizeof(Ord), 4);
    Ord p = one();
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

// A view right at a limit needs more converging ticks than the 1000 that
// once ended the program: 10^200 pixels of omega's interval left of the view.
static int64_t tick_calls;
static void count_ticks(WalkRecord r)
{
    tick_calls++;
    tick_record(r);
}

TEST_P(Deep, ThousandsOfConvergingTicksFindTheirPlace)
{
    Ord one = Ord_term(1, Ord_zero(), Ord_zero());
    WalkRecord r = {};
    r.xlo = Bignum_fromdouble(-1e200);
    r.xhi = Bignum_fromdouble(600);
    r.minsize = 1.0f;
    r.left = 0, r.right = 640;
    r.ordlo = Ord_zero();
    r.ordhi = Ord_term(1, Ord_zero(), one);
    tick_arrays_rebuild(640);
    tick_calls = 0;
    segment(count_ticks, 0, r);
    // 0.7017^j from 10^200 down to a pixel: some 1300 ticks, of which the
    // last dozen or so lie in the view
    EXPECT_GT(tick_calls, 5);
    EXPECT_LT(tick_calls, 40);
    EXPECT_EQ(segment_too_deep, 0);
    Ord_free(r.ordhi);
    Bignum_free(r.xlo);
    Bignum_free(r.xhi);
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
