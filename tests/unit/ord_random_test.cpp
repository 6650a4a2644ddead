// Properties on random ordinals, the exactness check beyond the tables.
//
// The ordinals come from random walks down the line, as deep zooming makes
// them: expand, pick a member, expand that. Every value met must be in
// Buchholz normal form, where Ord_cmp is the true order; against it we check
// the sum, the reader, and the notation's conversions. Those are checked by
// Veblen's own characterisation of his order, which shares no code or
// reasoning with them: omega^E is varphi_0(E), epsilon_A is varphi_1(A), and
//   varphi_a(b) < varphi_c(d)  iff  a < c and b < varphi_c(d),
//                                or a = c and b < d,
//                                or a > c and varphi_a(b) < d.
#include <gtest/gtest.h>

#include <random>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "ord_fixtures_test.h"

namespace {

// Random ordinals below the top, with the expansions they live in.
struct RandomLine {
    std::mt19937 rng;
    std::vector<OrdExpansion> expansions;
    std::vector<Ord> values;
    Ord top;

    explicit RandomLine(uint32_t seed) : rng(seed), top(Ord_maketop()) {}

    uint32_t below(size_t n) { return std::uniform_int_distribution<uint32_t>(0, (uint32_t)n - 1)(rng); }

    // One walk: up to `depth` expansions of 1 to 7 members, one member taken
    // each time, so deep members of long sequences turn up as well.
    void descend(Ord x, int depth)
    {
        for (int d = 0; d < depth && x.count && !Ord_issuccessor(x); d++) {
            OrdExpansion e = Ord_expandfresh(x, (int32_t)(1 + below(7)));
            expansions.push_back(e);
            x = e.seq[below((uint32_t)e.n)];
            values.push_back(x);
        }
    }
    ~RandomLine()
    {
        for (size_t i = expansions.size(); i-- > 0;)
            Ord_freeexpansion(expansions[i]);
        Ord_free(top);
    }
};

// Arrays made by the test itself, released together in heap mode.
struct Made {
    std::vector<Ord> arrays;
    Ord keep(Ord x)
    {
        arrays.push_back(x);
        return x;
    }
    ~Made()
    {
        for (Ord x : arrays)
            Ord_freearray(x);
    }
};

class Random : public InBothModes {};
INSTANTIATE_IN_BOTH_MODES(Random);

// Every value of the random walks, and every ordinal met three levels below
// the table rows, is normal and reads back to the same structure from the
// text of every row that writes only psi (n, alpha.n and Omega_alpha each on
// or off), which the reader takes.
TEST_P(Random, ValuesAreNormalAndReadBackThroughEveryPsiRow)
{
    RandomLine line(20261121);
    for (int i = 0; i < 300; i++)
        line.descend(line.top, 1 + (int)line.below(14));
    ASSERT_GT(line.values.size(), 1000u);
    ExpansionWalk walk;
    for (const char *row : table_ordinals())
        walk.walk(pool.read(row), 3, 4);
    ASSERT_GT(walk.met.size(), 2000u);
    line.values.insert(line.values.end(), walk.met.begin(), walk.met.end());

    for (Ord x : line.values) {
        ASSERT_TRUE(Ord_isnormal(x)) << text_of(x);
        for (int bits = 0; bits < 8; bits++) {
            std::string row = std::to_string(bits & 1) + std::to_string(bits >> 1 & 1) + "000";
            std::string text = text_of(x, (row + std::to_string(bits >> 2)).c_str());
            Ord back;
            OrdParseError error;
            ASSERT_TRUE(Ord_parse_any(text.c_str(), &back, &error)) << text << ": " << error.message;
            EXPECT_EQ(Ord_cmp(back, x), 0) << text << "\n" << shape_of(back) << "\n" << shape_of(x);
            Ord_free(back);
        }
    }
    walk.release();
}

// Random triples from a shallow and a deep sample: Ord_cmp is an order and
// the sum is the ordinal sum. (That expansions in the arena equal those on
// the heap follows from ord_deep_test.cpp, which checks both against one
// reference.)
TEST_P(Random, OrderAndSumsOnTriples)
{
    for (auto [seed, walks, depth] : {std::tuple(7u, 150, 7u), std::tuple(20261123u, 200, 12u)}) {
        RandomLine line(seed);
        for (int i = 0; i < walks; i++)
            line.descend(line.top, 1 + (int)line.below(depth));
        const std::vector<Ord> &v = line.values;
        ASSERT_GT(v.size(), 300u);
        Made made;
        for (int k = 0; k < 3000; k++) {
            Ord x = v[line.below(v.size())], y = v[line.below(v.size())], z = v[line.below(v.size())];
            auto say = [&] { return text_of(x) + " ; " + text_of(y) + " ; " + text_of(z); };
            int32_t xy = Ord_cmp(x, y), yz = Ord_cmp(y, z);
            ASSERT_EQ(xy, -Ord_cmp(y, x)) << say();
            ASSERT_TRUE(xy > 0 || yz > 0 || Ord_cmp(x, z) <= 0) << say();

            Ord sxy = made.keep(Ord_add(x, y)), syz = made.keep(Ord_add(y, z));
            Ord sxz = made.keep(Ord_add(x, z)), s = made.keep(Ord_succ(x));
            ASSERT_TRUE(Ord_isnormal(sxy)) << say();
            // associative, never below either part, strictly increasing on
            // the right and weakly on the left
            EXPECT_EQ(Ord_cmp(made.keep(Ord_add(sxy, z)), made.keep(Ord_add(x, syz))), 0) << say();
            EXPECT_TRUE(Ord_cmp(sxy, x) >= 0 && Ord_cmp(sxy, y) >= 0) << say();
            EXPECT_EQ(Ord_cmp(sxy, sxz), yz) << say();
            // y = x + d has a solution d exactly when x <= y: pred and succ agree
            EXPECT_TRUE(Ord_cmp(made.keep(Ord_pred(s)), x) == 0 && Ord_cmp(x, s) < 0) << say();
            EXPECT_TRUE(xy >= 0 || (Ord_cmp(sxz, syz) <= 0 && Ord_cmp(s, y) <= 0)) << say();
        }
    }
}

// A classical term read as varphi_alpha(beta): omega^E is varphi_0(E) and
// epsilon_A is varphi_1(A); form counts from 0 for omega.
struct Veblen {
    OrdTerm term;
    Ord alpha, beta;
    int form;
};

// Every classical term at every depth of x whose indices are in Buchholz
// normal form, where Ord_cmp is the true order: all but about one in a
// hundred, the powers omega^y with y at least epsilon_0 that the index
// conversions write at subscript 0.
void collect_classical(Ord x, std::vector<Veblen> *out, Made *made, Ord one)
{
    const NotationRow all_on = row_of("111111");
    x = Ord_force(x);
    for (uint32_t i = 0; i < x.count; i++) {
        const OrdTerm &t = x.terms[i];
        // I and the top are no classical forms and compare only as shapes
        if (t.coef == ORD_COEF_I || (t.arg.count && Ord_force(t.arg).terms[0].coef == ORD_COEF_I))
            continue;
        collect_classical(t.sub, out, made, one);
        collect_classical(t.arg, out, made, one);
        OrdTerm u = {1, t.sub, t.arg};
        Veblen v = {u, Ord_zero(), Ord_zero(), notation_form(&u, &all_on)};
        if (v.form == FORM_VARPHI)
            notation_varphi_indices(&u, &v.alpha, &v.beta);
        else if (v.form == FORM_OMEGA || v.form == FORM_EPSILON)
            v.beta = v.form == FORM_OMEGA ? notation_omega_exponent(&u) : notation_epsilon_index(&u);
        else
            continue;
        made->keep(v.alpha);
        made->keep(v.beta);
        v.alpha = v.form == FORM_EPSILON ? one : v.alpha;
        v.form -= FORM_OMEGA;
        if (Ord_isnormal(v.alpha) && Ord_isnormal(v.beta))
            out->push_back(v);
    }
}

// Order of two classical terms by Veblen's rule.
int32_t veblen_cmp(const Veblen &x, Ord xv, const Veblen &y, Ord yv)
{
    int32_t a = Ord_cmp(x.alpha, y.alpha);
    if (a == 0)
        return Ord_cmp(x.beta, y.beta);
    if (a < 0)
        return Ord_cmp(x.beta, yv) < 0 ? -1 : 1;
    return Ord_cmp(xv, y.beta) < 0 ? -1 : 1;
}

TEST_P(Random, ConversionsFollowVeblensOrder)
{
    RandomLine line(314159);
    // from the top, and more often from the Veblen region, where varphi
    // forms are dense
    Ord starts[] = {line.top, pool.read("psi_{0}(Omega_{2})"),
                    pool.read("psi_{0}(psi_{1}(psi_{1}(psi_{1}(Omega))))"),
                    pool.read("psi_{0}(psi_{1}(psi_{1}(Omega)))"),
                    pool.read("psi_{0}(psi_{1}(psi_{1}(1)+Omega.2))")};
    for (int i = 0; i < 1500; i++)
        line.descend(starts[line.below(5)], 1 + (int)line.below(14));
    for (const char *t : table_ordinals())
        line.values.push_back(pool.read(t));
    Made made;
    Ord one = pool.read("1");
    std::vector<Veblen> classical;
    for (Ord x : line.values)
        collect_classical(x, &classical, &made, one);
    size_t forms[3] = {0, 0, 0};
    for (const Veblen &v : classical) {
        forms[v.form]++;
        // each index is below the term: one that reached it would make the
        // term a fixed point, which belongs to the next form up
        Ord t = Ord{1, const_cast<OrdTerm *>(&v.term)};
        EXPECT_TRUE(Ord_cmp(v.alpha, t) < 0 && Ord_cmp(v.beta, t) < 0) << text_of(t);
    }
    // all three forms must be well represented for the check to mean much
    for (size_t n : forms)
        ASSERT_GT(n, 1000u) << forms[0] << " omega, " << forms[1] << " epsilon, " << forms[2] << " varphi";

    std::mt19937 rng(99);
    std::uniform_int_distribution<size_t> any(0, classical.size() - 1);
    for (int k = 0; k < 200000; k++) {
        const Veblen &x = classical[any(rng)], &y = classical[any(rng)];
        Ord xv = Ord{1, const_cast<OrdTerm *>(&x.term)}, yv = Ord{1, const_cast<OrdTerm *>(&y.term)};
        int32_t truth = Ord_cmp(xv, yv);
        ASSERT_TRUE(truth == 0 || veblen_cmp(x, xv, y, yv) == truth)
            << text_of(xv, "110001") << " = " << text_of(xv) << " against " << text_of(yv, "110001")
            << " = " << text_of(yv);
    }
}

}  // namespace
