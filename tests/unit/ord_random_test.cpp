// Properties on random ordinals, the exactness check beyond the tables.
//
// The ordinals come from random walks down the line: expand the top, pick a
// member, expand that, and so on, as deep zooming does. Every value met must
// be in Buchholz normal form, where Ord_cmp is the true order; against that
// order the tests check the sum, the reader (with the ordinals met below the
// table rows as well), and the notation's conversions.
// The conversions are checked against Veblen's own characterisation of the
// order of his function, which does not share any code or reasoning with
// them: omega^E is varphi_0(E), epsilon_A is varphi_1(A), and
//   varphi_a(b) < varphi_c(d)  iff  a < c and b < varphi_c(d),
//                                or a = c and b < d,
//                                or a > c and varphi_a(b) < d.
#include <gtest/gtest.h>

#include <string.h>

#include <random>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "OrdBuchholz/ord_expand.h"
#include "ord_fixtures_test.h"

namespace {

// Random ordinals below the top, with the expansions they live in.
struct RandomLine {
    std::mt19937 rng;
    std::vector<OrdExpansion> expansions;
    std::vector<Ord> values;
    Ord top;

    explicit RandomLine(uint32_t seed) : rng(seed), top(Ord_maketop()) {}

    uint32_t below(uint32_t n) { return std::uniform_int_distribution<uint32_t>(0, n - 1)(rng); }

    // One walk: up to `depth` expansions of 1 to 7 members, one member taken
    // each time, so deep members of long sequences turn up as well.
    void descend(int depth) { descend(top, depth); }
    void descend(Ord x, int depth)
    {
        for (int d = 0; d < depth; d++) {
            if (x.count == 0 || Ord_issuccessor(x))
                return;
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

// Every term at every depth of x, as a one-term ordinal of coefficient 1.
void collect_terms(Ord x, std::vector<OrdTerm> *terms)
{
    x = Ord_force(x);
    for (uint32_t i = 0; i < x.count; i++) {
        const OrdTerm &t = x.terms[i];
        // I and the top are no classical forms and compare only as shapes
        if (t.coef == ORD_COEF_I || (t.arg.count && Ord_force(t.arg).terms[0].coef == ORD_COEF_I))
            continue;
        terms->push_back(OrdTerm{1, t.sub, t.arg});
        collect_terms(t.sub, terms);
        collect_terms(t.arg, terms);
    }
}

class Random : public InBothModes {};

// The rows that write only psi, which the reader takes: n, alpha.n and
// Omega_alpha each on or off.
std::vector<std::string> psi_rows()
{
    std::vector<std::string> rows;
    for (int bits = 0; bits < 8; bits++)
        rows.push_back(std::string(bits & 1 ? "1" : "0") + (bits & 2 ? "1" : "0") + "000" +
                       (bits & 4 ? "1" : "0"));
    return rows;
}

// Every value of the random walks, and every ordinal met three levels below
// the table rows, is normal and reads back to the same structure from the
// text of every psi row.
TEST_P(Random, ValuesAreNormalAndReadBackThroughEveryPsiRow)
{
    RandomLine line(20261121);
    for (int i = 0; i < 300; i++)
        line.descend(1 + (int)line.below(14));
    ASSERT_GT(line.values.size(), 1000u);
    ExpansionWalk walk;
    for (const char *row : table_ordinals())
        walk.walk(pool.read(row), 3, 4);
    ASSERT_GT(walk.met.size(), 2000u);
    line.values.insert(line.values.end(), walk.met.begin(), walk.met.end());

    for (Ord x : line.values) {
        ASSERT_TRUE(Ord_isnormal(x)) << text_of(x);
        for (const std::string &bits : psi_rows()) {
            std::string text = text_of(x, bits.c_str());
            Ord back;
            OrdParseError error;
            ASSERT_TRUE(Ord_parse_any(text.c_str(), &back, &error)) << text << ": " << error.message;
            EXPECT_EQ(Ord_cmp(back, x), 0) << text << "\n" << shape_of(back) << "\n" << shape_of(x);
            Ord_free(back);
        }
    }
    walk.release();
}

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

TEST_P(Random, SumsAreOrdinalSums)
{
    RandomLine line(7);
    for (int i = 0; i < 150; i++)
        line.descend(1 + (int)line.below(7));
    const std::vector<Ord> &v = line.values;
    auto pick = [&]() { return v[line.below((uint32_t)v.size())]; };

    Made made;
    for (int k = 0; k < 3000; k++) {
        Ord x = pick(), y = pick(), z = pick();
        Ord xy = made.keep(Ord_add(x, y)), yz = made.keep(Ord_add(y, z));
        Ord xz = made.keep(Ord_add(x, z));
        std::string say = text_of(x) + " ; " + text_of(y) + " ; " + text_of(z);

        ASSERT_TRUE(Ord_isnormal(xy)) << say;
        // associative, and never below either part
        EXPECT_EQ(Ord_cmp(made.keep(Ord_add(xy, z)), made.keep(Ord_add(x, yz))), 0) << say;
        EXPECT_GE(Ord_cmp(xy, x), 0) << say;
        EXPECT_GE(Ord_cmp(xy, y), 0) << say;
        // strictly increasing on the right, weakly on the left
        EXPECT_EQ(Ord_cmp(xy, xz), Ord_cmp(y, z)) << say;
        bool x_below_y = Ord_cmp(x, y) < 0;
        if (x_below_y) {
            EXPECT_LE(Ord_cmp(xz, yz), 0) << say;
        }
        // y = x + d has a solution d exactly when x <= y: pred and succ agree
        Ord s = made.keep(Ord_succ(x));
        EXPECT_EQ(Ord_cmp(made.keep(Ord_pred(s)), x), 0) << say;
        EXPECT_LT(Ord_cmp(x, s), 0) << say;
        if (x_below_y) {
            EXPECT_LE(Ord_cmp(s, y), 0) << say;
        }
    }
}

// The Buchholz normal form of an index as the notation reads it. The index
// conversions move terms to subscript 0, where psi_0(y) with y of subscript 0
// throughout is read as omega^y even when y is at least epsilon_0; Buchholz
// writes that power as psi_0(b) with b = beta + (y less one copy of its
// leading term) when that term psi_0(beta) is an epsilon number, and as
// b = h + y otherwise, h the part of beta above subscript 0. Other shapes are
// left as they are; the caller tests the result with Ord_isnormal.
Ord normal_reading(Ord x, Made *made)
{
    x = Ord_force(x);
    Ord sum = Ord_zero();
    for (uint32_t i = 0; i < x.count; i++) {
        const OrdTerm &t = x.terms[i];
        Ord sub = normal_reading(t.sub, made);
        Ord y = normal_reading(t.arg, made);
        Ord term = made->keep(Ord_term(t.coef, sub, y));
        bool omega_reading = sub.count == 0 && y.count && y.terms[0].sub.count == 0;
        if (!Ord_isnormal(term) && omega_reading) {
            const OrdTerm &lead = y.terms[0];
            Ord beta = lead.arg;
            Ord b;
            if (beta.count && Ord_lastterm(beta)->sub.count) {
                uint32_t rest = lead.coef > 1 ? y.count : y.count - 1;
                b = made->keep(Ord_alloc(beta.count + rest));
                memcpy(b.terms, beta.terms, beta.count * sizeof(OrdTerm));
                memcpy(b.terms + beta.count, y.terms + (y.count - rest), rest * sizeof(OrdTerm));
                if (lead.coef > 1)
                    b.terms[beta.count].coef -= 1;
            } else {
                uint32_t h = 0;
                while (h < beta.count && beta.terms[h].sub.count)
                    h++;
                b = made->keep(Ord_alloc(h + y.count));
                memcpy(b.terms, beta.terms, h * sizeof(OrdTerm));
                memcpy(b.terms + h, y.terms, y.count * sizeof(OrdTerm));
            }
            term.terms[0].arg = b;
        }
        sum = made->keep(Ord_add(sum, term));
    }
    return sum;
}

// A classical term read as varphi_alpha(beta): omega^E is varphi_0(E) and
// epsilon_A is varphi_1(A). The indices are in Buchholz normal form.
struct Veblen {
    OrdTerm term;
    Ord alpha;
    Ord beta;
};

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
    std::vector<OrdTerm> terms;
    for (Ord x : line.values)
        collect_terms(x, &terms);
    for (const char *t : table_ordinals())
        collect_terms(pool.read(t), &terms);

    const NotationRow all_on = row_of("111111");
    Made made;
    Ord one = pool.read("1");
    std::vector<Veblen> classical;
    size_t forms[3] = {0, 0, 0};
    size_t outside = 0;
    for (const OrdTerm &t : terms) {
        NotationForm form = notation_form(&t, &all_on);
        Ord alpha = Ord_zero(), beta;
        if (form == FORM_OMEGA) {
            beta = made.keep(notation_omega_exponent(&t));
        } else if (form == FORM_EPSILON) {
            alpha = one;
            beta = made.keep(notation_epsilon_index(&t));
        } else if (form == FORM_VARPHI) {
            notation_varphi_indices(&t, &alpha, &beta);
            made.keep(alpha);
            made.keep(beta);
        } else {
            continue;
        }
        Ord t1 = Ord{1, const_cast<OrdTerm *>(&t)};
        // the indices as Buchholz writes them; where they already are, the
        // reading must leave them alone
        Ord na = normal_reading(alpha, &made);
        Ord nb = normal_reading(beta, &made);
        if (Ord_isnormal(alpha)) {
            EXPECT_EQ(Ord_cmp(na, alpha), 0) << text_of(t1);
        }
        if (Ord_isnormal(beta)) {
            EXPECT_EQ(Ord_cmp(nb, beta), 0) << text_of(t1);
        }
        if (!Ord_isnormal(na) || !Ord_isnormal(nb)) {
            outside++;
            continue;
        }
        forms[form == FORM_OMEGA ? 0 : form == FORM_EPSILON ? 1 : 2]++;
        // each index is below the term: one that reached it would make the
        // term a fixed point, which belongs to the next form up
        EXPECT_LT(Ord_cmp(na, t1), 0) << text_of(t1);
        EXPECT_LT(Ord_cmp(nb, t1), 0) << text_of(t1);
        classical.push_back(Veblen{t, na, nb});
    }
    // all three forms must be well represented for the check to mean much
    std::string counts = std::to_string(forms[0]) + " omega, " + std::to_string(forms[1]) +
                         " epsilon, " + std::to_string(forms[2]) + " varphi, " +
                         std::to_string(outside) + " outside the normaliser";
    for (size_t n : forms)
        ASSERT_GT(n, 1000u) << counts;
    EXPECT_LT(outside * 50, classical.size()) << counts;

    std::mt19937 rng(99);
    std::uniform_int_distribution<size_t> any(0, classical.size() - 1);
    for (int k = 0; k < 200000; k++) {
        const Veblen &x = classical[any(rng)];
        const Veblen &y = classical[any(rng)];
        Ord xv = Ord{1, const_cast<OrdTerm *>(&x.term)};
        Ord yv = Ord{1, const_cast<OrdTerm *>(&y.term)};
        int32_t truth = Ord_cmp(xv, yv);
        if (truth == 0)
            continue;
        ASSERT_EQ(veblen_cmp(x, xv, y, yv), truth)
            << text_of(xv, "110001") << " = " << text_of(xv) << " against "
            << text_of(yv, "110001") << " = " << text_of(yv);
    }
}

INSTANTIATE_IN_BOTH_MODES(Random);

}  // namespace

// The seeded fuzzer of the order and the expansion: Ord_cmp is antisymmetric
// and transitive on random triples, and an expansion made in the arena has
// the same members as one made on the heap.
TEST_P(Random, ComparisonIsAnOrderAndBothMemoriesExpandAlike)
{
    RandomLine line(20261123);
    for (int i = 0; i < 200; i++)
        line.descend(1 + (int)line.below(12));
    ASSERT_GT(line.values.size(), 600u);
    size_t n = line.values.size();
    static MemStack scratch;
    static bool scratch_made = false;
    if (!scratch_made)
        memstack_init(&scratch);
    scratch_made = true;
    for (int i = 0; i < 3000; i++) {
        Ord x = line.values[line.below((uint32_t)n)], y = line.values[line.below((uint32_t)n)],
            z = line.values[line.below((uint32_t)n)];
        int32_t xy = Ord_cmp(x, y), yz = Ord_cmp(y, z);
        ASSERT_EQ(xy, -Ord_cmp(y, x)) << text_of(x) << " against " << text_of(y);
        if (xy <= 0 && yz <= 0) {
            ASSERT_LE(Ord_cmp(x, z), 0) << text_of(x) << " <= " << text_of(y) << " <= " << text_of(z);
        }
        if (x.count == 0 || Ord_issuccessor(x) || i % 10)
            continue;
        MemStack *mode = ord_arena;
        ord_arena = nullptr;
        OrdExpansion heap = Ord_expandfresh(x, 4);
        ord_arena = &scratch;
        OrdExpansion arena = Ord_expandfresh(x, 4);
        for (int32_t k = 0; k < 4; k++)
            ASSERT_EQ(Ord_cmp(heap.seq[k], arena.seq[k]), 0) << "member " << k << " of " << text_of(x);
        Ord_freeexpansion(arena);
        memstack_rewind(&scratch);
        ord_arena = nullptr;
        Ord_freeexpansion(heap);
        ord_arena = mode;
    }
}
