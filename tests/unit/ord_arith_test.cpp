// Ordinal arithmetic: comparison, successor, predecessor and sum.
#include "OrdBuchholz/ord_arith.h"
#include "ord_fixtures_test.h"

namespace {

class Arith : public InBothModes {};

// The text of a result whose top array is new, released after reading.
std::string take(Ord x)
{
    std::string s = text_of(x);
    Ord_freearray(x);
    return s;
}

TEST_P(Arith, CompareFollowsTheOrder)
{
    // strictly ascending: a proper prefix is smaller, and coefficients decide before later terms
    const char *ascending[] = {
        "0", "1", "2", "omega", "omega+1", "omega+3", "omega.2", "omega.2+1", "psi_{0}(2)",
        "psi_{0}(omega)", "psi_{0}(Omega)", "psi_{0}(Omega)+1", "psi_{0}(Omega.2)",
        "psi_{0}(psi_{1}(Omega))", "psi_{0}(Omega_{2})", "psi_{0}(Omega_{omega})", "Omega",
        "Omega+omega", "Omega.2", "psi_{1}(Omega)", "Omega_{2}", "Omega_{omega}",
    };
    std::vector<Ord> v;
    for (const char *t : ascending)
        v.push_back(pool.read(t));
    for (size_t i = 0; i < v.size(); i++)
        for (size_t j = 0; j < v.size(); j++)
            EXPECT_EQ(Ord_cmp(v[i], v[j]), i < j ? -1 : i > j) << ascending[i] << " vs " << ascending[j];
}

TEST_P(Arith, SuccessorAndPredecessor)
{
    // x, x+1, the predecessor (a limit is its own), whether x is a successor
    const std::tuple<const char *, const char *, const char *, bool> cases[] = {
        {"0", "1", "0", false},                {"1", "2", "0", true},
        {"omega", "omega+1", "omega", false},  {"omega.2+7", "omega.2+8", "omega.2+6", true},
        {"Omega", "Omega+1", "Omega", false},  {"Omega+1", "Omega+2", "Omega", true},
    };
    for (const auto &[text, succ, pred, successor] : cases) {
        Ord x = pool.read(text);
        EXPECT_EQ(take(Ord_succ(x)), succ) << text;
        EXPECT_EQ(take(Ord_pred(x)), pred) << text;
        EXPECT_EQ(Ord_issuccessor(x), successor) << text;
    }
}

TEST_P(Arith, SumAbsorbsAndMerges)
{
    const char *cases[][3] = {
        {"1", "omega", "omega"},         {"omega", "1", "omega+1"},  {"omega.2", "omega.3", "omega.5"},
        {"omega+5", "omega", "omega.2"}, {"Omega", "3", "Omega+3"},  {"3", "Omega", "Omega"},
        {"0", "omega", "omega"},         {"omega", "0", "omega"},
        {"Omega+omega", "psi_{0}(Omega)", "Omega+epsilon_{0}"},
        {"psi_{0}(2)+omega", "psi_{0}(2).2+1", "omega^{2}.3+1"},
        {"Omega_{2}+Omega", "Omega.2+omega", "Omega_{2}+Omega.3+omega"},
    };
    for (const auto &[a, b, sum] : cases) {
        Ord x = pool.read(a), y = pool.read(b);
        Ord s = Ord_add(x, y);
        // always a new array, so it can be released alone
        EXPECT_TRUE(s.terms != x.terms && s.terms != y.terms) << a << " + " << b;
        EXPECT_EQ(take(s), sum) << a << " + " << b;
    }
}

INSTANTIATE_IN_BOTH_MODES(Arith);

}  // namespace
