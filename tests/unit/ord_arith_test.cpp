// Ordinal arithmetic: comparison, successor, predecessor, sum and the towers.
#include <gtest/gtest.h>

#include "OrdBuchholz/ord_arith.h"
#include "ord_fixtures_test.h"

namespace {

class Arith : public InBothModes {
protected:
    // The text of a result whose top array is new, released after reading.
    std::string take(Ord x)
    {
        std::string s = text_of(x);
        Ord_freearray(x);
        return s;
    }
};

TEST_P(Arith, CompareFollowsTheOrder)
{
    // each row lies strictly below the next: at the first term that differs a
    // proper prefix is smaller, and coefficients decide before later terms
    const char *ascending[] = {
        "0", "1", "2", "omega", "omega+1", "omega+3", "omega.2", "omega.2+1", "psi_{0}(2)",
        "psi_{0}(omega)", "psi_{0}(Omega)", "psi_{0}(Omega)+1", "psi_{0}(Omega.2)",
        "psi_{0}(psi_{1}(Omega))", "psi_{0}(Omega_{2})", "psi_{0}(Omega_{omega})", "Omega",
        "Omega+omega", "Omega.2", "psi_{1}(Omega)", "Omega_{2}", "Omega_{omega}",
    };
    const size_t n = sizeof ascending / sizeof ascending[0];
    std::vector<Ord> v;
    for (const char *t : ascending)
        v.push_back(pool.read(t));
    for (size_t i = 0; i < n; i++)
        for (size_t j = 0; j < n; j++) {
            int32_t want = i < j ? -1 : i > j ? 1 : 0;
            EXPECT_EQ(Ord_cmp(v[i], v[j]), want) << ascending[i] << " vs " << ascending[j];
        }
}

TEST_P(Arith, SuccessorAndPredecessor)
{
    struct Case {
        const char *x, *succ, *pred;
    };
    const Case cases[] = {
        {"0", "1", "0"},         {"1", "2", "0"},                 {"5", "6", "4"},
        {"omega", "omega+1", "omega"}, {"omega+1", "omega+2", "omega"},
        {"omega.2+7", "omega.2+8", "omega.2+6"}, {"Omega", "Omega+1", "Omega"},
    };
    for (const Case &c : cases) {
        Ord x = pool.read(c.x);
        EXPECT_EQ(take(Ord_succ(x)), c.succ) << c.x;
        EXPECT_EQ(take(Ord_pred(x)), c.pred) << c.x;
    }
}

TEST_P(Arith, SumAbsorbsAndMerges)
{
    struct Case {
        const char *x, *y, *sum;
    };
    const Case cases[] = {
        {"1", "omega", "omega"},       {"omega", "1", "omega+1"},  {"omega.2", "omega.3", "omega.5"},
        {"omega+5", "omega", "omega.2"}, {"Omega", "3", "Omega+3"}, {"3", "Omega", "Omega"},
        {"Omega+omega", "psi_{0}(Omega)", "Omega+epsilon_{0}"},
        {"psi_{0}(2)+omega", "psi_{0}(2).2+1", "omega^{2}.3+1"},
        {"Omega_{2}+Omega", "Omega.2+omega", "Omega_{2}+Omega.3+omega"},
        {"0", "omega", "omega"},       {"omega", "0", "omega"},
    };
    for (const Case &c : cases) {
        Ord x = pool.read(c.x);
        Ord y = pool.read(c.y);
        Ord s = Ord_add(x, y);
        // always a new array, so it can be released alone
        EXPECT_NE(s.terms, x.terms);
        EXPECT_NE(s.terms, y.terms);
        EXPECT_EQ(take(s), c.sum) << c.x << " + " << c.y;
    }
}

TEST_P(Arith, SuccessorTestAndTowers)
{
    EXPECT_FALSE(Ord_issuccessor(Ord_zero()));
    EXPECT_TRUE(Ord_issuccessor(pool.read("3")));
    EXPECT_TRUE(Ord_issuccessor(pool.read("Omega+1")));
    EXPECT_FALSE(Ord_issuccessor(pool.read("omega")));

    for (const char *t : {"0", "1", "omega", "psi_{0}(omega)", "psi_{0}(psi_{0}(omega))"})
        EXPECT_TRUE(is_omega_tower(pool.read(t))) << t;
    for (const char *t : {"2", "omega.2", "omega+1", "Omega", "psi_{0}(omega.2)", "psi_{0}(Omega)"})
        EXPECT_FALSE(is_omega_tower(pool.read(t))) << t;
}

INSTANTIATE_IN_BOTH_MODES(Arith);

}  // namespace
