// Fundamental sequences: telling rows, each case of the rules, and the order of members.
#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "ord_fixtures_test.h"

namespace {

class Expand : public InBothModes {};

using Texts = std::vector<std::string>;

// The texts of the members of an expansion, which is then released.
Texts texts_of(OrdExpansion e)
{
    Texts texts;
    for (int32_t i = 0; i < e.n; i++)
        texts.push_back(text_of(e.seq[i]));
    Ord_freeexpansion(e);
    return texts;
}

TEST_P(Expand, TellingSequencesAndEachCaseOfTheRules)
{
    // beyond the shared table, which holds one row for each way a term ends
    static const std::vector<SequenceRow> cases = {
        // sums keep the head, multiples repeat the rest
        {"psi_{0}(2)+omega", "omega^{2}+omega", {"omega^{2}", "omega^{2}+1", "omega^{2}+2"}},
        {"omega.3", "omega.3", {"omega.2", "omega.2+1", "omega.2+2"}},
        {"Omega_{2}+psi_{1}(2).2", "Omega_{2}+omega^{Omega+2}.2",
         {"Omega_{2}+omega^{Omega+2}", "Omega_{2}+omega^{Omega+2}+omega^{Omega+1}",
          "Omega_{2}+omega^{Omega+2}+omega^{Omega+1}.2"}},
        // with nothing around it, Omega iterates its own bare placeholder in psi_0
        {"Omega", "Omega", {"0", "1", "omega", "omega^{omega}"}},
        // a successor subscript iterates in psi of its predecessor
        {"psi_{0}(Omega_{omega+1})", "psi_{0}(Omega_{omega+1})",
         {"1", "psi_{0}(Omega_{omega})", "psi_{0}(omega^{Omega_{omega}.2})"}},
    };
    for (const auto *table : {&sequence_rows(), &cases})
        for (const SequenceRow &row : *table) {
            Ord x = pool.read(row.x);
            EXPECT_EQ(text_of(x), row.text) << row.x;
            EXPECT_EQ(texts_of(Ord_expandfresh(x, (int32_t)row.members.size())), row.members) << row.x;
        }
    // I itself, below the top
    EXPECT_EQ(texts_of(Ord_expandfresh(pool.read("psi_{0}(I)").terms[0].arg, 1)), Texts{"1"});
    // below psi_0(Omega^2) Omega takes the template psi_1(x) from the path
    Ord outer = pool.read("psi_{0}(psi_{1}(Omega))");
    DynArray_init(&ord_path, sizeof(Ord), dyn_default_capacity);
    DynArray_append(&ord_path, &outer);
    OrdExpansion e = Ord_expand(outer.terms[0].arg, 3);
    DynArray_free(&ord_path);
    EXPECT_EQ(texts_of(e),
              (Texts{"Omega", "omega^{Omega+epsilon_{0}}", "omega^{Omega+epsilon_{epsilon_{0}}}"}));
}

// Members met three levels down from every table row rise and stay below what was expanded (the top
// excepted). They are in normal form, where Ord_cmp is the true order: ord_random_test.cpp checks that.
TEST_P(Expand, MembersIncreaseAndStayBelow)
{
    ExpansionWalk walk;
    for (const char *row : table_ordinals())
        walk.walk(pool.read(row), 3, 4);
    ASSERT_GT(walk.steps.size(), 400u);
    for (const ExpansionWalk::Step &s : walk.steps)
        for (int32_t i = 0; i < s.e.n; i++) {
            Ord m = s.e.seq[i];
            EXPECT_TRUE((i == 0 || Ord_cmp(s.e.seq[i - 1], m) < 0) && (Ord_istop(s.x) || Ord_cmp(m, s.x) < 0))
                << "member " << i << " of " << text_of(s.x) << ": " << text_of(m);
        }
    walk.release();
}

INSTANTIATE_IN_BOTH_MODES(Expand);

}  // namespace
