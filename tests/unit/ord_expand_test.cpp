// Fundamental sequences: the table of telling sequences, the cases one by one,
// the path, and the order of every member met three levels down.
#include <gtest/gtest.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "OrdBuchholz/ord_expand.h"
#include "ord_fixtures_test.h"

namespace {

class Expand : public InBothModes {
protected:
    // The texts of the first n members of x, from a fresh path.
    std::vector<std::string> members(Ord x, int32_t n)
    {
        OrdExpansion e = Ord_expandfresh(x, n);
        EXPECT_EQ(e.n, n);
        std::vector<std::string> texts;
        for (int32_t i = 0; i < e.n; i++)
            texts.push_back(text_of(e.seq[i]));
        Ord_freeexpansion(e);
        return texts;
    }
    std::vector<std::string> members(const char *x, int32_t n) { return members(pool.read(x), n); }
};

using Texts = std::vector<std::string>;

TEST_P(Expand, TellingSequences)
{
    for (const SequenceRow &row : sequence_rows()) {
        Ord x = pool.read(row.x);
        EXPECT_EQ(text_of(x), row.text) << row.x;
        EXPECT_EQ(members(x, (int32_t)row.members.size()), row.members) << row.x;
    }
}

TEST_P(Expand, SumsKeepTheHeadAndMultiplesTheRest)
{
    EXPECT_EQ(members("omega.2+omega", 1), Texts{"omega.2"});
    EXPECT_EQ(members("psi_{0}(2)+omega", 3), (Texts{"omega^{2}", "omega^{2}+1", "omega^{2}+2"}));
    EXPECT_EQ(members("omega.3", 3), (Texts{"omega.2", "omega.2+1", "omega.2+2"}));
    EXPECT_EQ(members("Omega_{2}+psi_{1}(2).2", 3),
              (Texts{"Omega_{2}+omega^{Omega+2}", "Omega_{2}+omega^{Omega+2}+omega^{Omega+1}",
                     "Omega_{2}+omega^{Omega+2}+omega^{Omega+1}.2"}));
    // I itself, below the top
    EXPECT_EQ(members(pool.read("psi_{0}(I)").terms[0].arg, 1), Texts{"1"});
}

TEST_P(Expand, OmegaTakesItsTemplateFromThePath)
{
    // with nothing around it, Omega iterates its own bare placeholder in psi_0
    EXPECT_EQ(members("Omega", 4), (Texts{"0", "1", "omega", "omega^{omega}"}));

    // below psi_0(Omega^2) the template is psi_1(x)
    Ord outer = pool.read("psi_{0}(psi_{1}(Omega))");
    DynArray_init(&ord_path, sizeof(Ord), dyn_default_capacity);
    DynArray_append(&ord_path, &outer);
    OrdExpansion e = Ord_expand(outer.terms[0].arg, 3);
    DynArray_free(&ord_path);
    EXPECT_EQ(text_of(e.seq[0]), "Omega");
    EXPECT_EQ(text_of(e.seq[1]), "omega^{Omega+epsilon_{0}}");
    EXPECT_EQ(text_of(e.seq[2]), "omega^{Omega+epsilon_{epsilon_{0}}}");
    Ord_freeexpansion(e);

    // a successor subscript iterates in psi of its predecessor
    EXPECT_EQ(members("psi_{0}(Omega_{omega+1})", 3),
              (Texts{"1", "psi_{0}(Omega_{omega})", "psi_{0}(omega^{Omega_{omega}.2})"}));
}

TEST_P(Expand, TheCallerReleasesThePath)
{
    OrdExpansion e = Ord_expandfresh(pool.read("psi_{0}(Omega_{2})"), 5);
    EXPECT_EQ(ord_path.data, nullptr);
    // each array the members need stands once, in seq or in keep
    EXPECT_GT(e.keep.count, 0u);
    Ord_freeexpansion(e);
}

// Every member met three levels down from every table row: strictly
// increasing, and below what was expanded (except the members of the top,
// which are never compared with it). All of them are in Buchholz normal form,
// where Ord_cmp is the true order: ord_random_test.cpp checks that.
TEST_P(Expand, MembersIncreaseAndStayBelow)
{
    ExpansionWalk walk;
    for (const char *row : table_ordinals())
        walk.walk(pool.read(row), 3, 4);
    ASSERT_GT(walk.steps.size(), 400u);

    for (const ExpansionWalk::Step &s : walk.steps) {
        for (int32_t i = 0; i < s.e.n; i++) {
            Ord m = s.e.seq[i];
            if (i > 0) {
                EXPECT_LT(Ord_cmp(s.e.seq[i - 1], m), 0)
                    << "members " << i - 1 << ", " << i << " of " << text_of(s.x) << ": "
                    << text_of(s.e.seq[i - 1]) << ", " << text_of(m);
            }
            if (!Ord_istop(s.x)) {
                EXPECT_LT(Ord_cmp(m, s.x), 0)
                    << "member " << i << " of " << text_of(s.x) << ": " << text_of(m);
            }
        }
    }
    walk.release();
}

INSTANTIATE_IN_BOTH_MODES(Expand);

}  // namespace
