// Notation: the tables of texts, the top in every row, coefficients and the
// named ordinals. Placeholders print in ord_buchholz_test.cpp.
#include <gtest/gtest.h>

#include "OrdBuchholz/ord_arith.h"
#include "notation/named_ordinals.h"
#include "notation/notation.h"
#include "ord_fixtures_test.h"

namespace {

class Notation : public InBothModes {};

TEST_P(Notation, TablesInEveryRow)
{
    for (const auto *table : {&notation_all_on(), &notation_other_rows()})
        for (const NotationCase &c : *table)
            EXPECT_EQ(text_of(pool.read(c.x), c.bits), c.text) << c.x << " in row " << c.bits;
}

TEST_P(Notation, TheTopIsTheSameInEveryRow)
{
    Ord top = pool.read("psi_{0}(I)");
    for (int bits = 0; bits < 64; bits++) {
        std::string row;
        for (int i = 0; i < NOTATION_TOGGLES; i++)
            row += bits >> i & 1 ? '1' : '0';
        EXPECT_EQ(text_of(top, row.c_str()), "psi_{0}(I)") << row;
    }
}

TEST_P(Notation, CoefficientsOnEveryForm)
{
    struct Case {
        const char *x, *dot, *repeated;
    };
    const Case cases[] = {
        {"psi_{0}(Omega).2", "epsilon_{0}.2", "epsilon_{0}+epsilon_{0}"},
        {"Omega_{2}.3+omega.2+4", "Omega_{2}.3+omega.2+4",
         "Omega_{2}+Omega_{2}+Omega_{2}+omega+omega+4"},
        {"psi_{0}(psi_{1}(Omega)).2", "varphi_{2}(0).2", "varphi_{2}(0)+varphi_{2}(0)"},
        {"psi_{0}(Omega_{2}).2+1", "psi_{0}(Omega_{2}).2+1", "psi_{0}(Omega_{2})+psi_{0}(Omega_{2})+1"},
        {"psi_{0}(psi_{0}(2).2)", "omega^{omega^{2}.2}", "omega^{omega^{2}+omega^{2}}"},
    };
    for (const Case &c : cases) {
        Ord x = pool.read(c.x);
        EXPECT_EQ(text_of(x, "111111"), c.dot) << c.x;
        EXPECT_EQ(text_of(x, "101111"), c.repeated) << c.x;
    }
}

TEST_P(Notation, NoFallBackBetweenClassicalForms)
{
    // epsilon off: an epsilon number is psi, not varphi_1, even with varphi on
    EXPECT_EQ(text_of(pool.read("psi_{0}(Omega.2)"), "111011"), "psi_{0}(Omega.2)");
    // omega off but epsilon on: epsilon numbers stay, powers become psi
    EXPECT_EQ(text_of(pool.read("psi_{0}(psi_{1}(1)+Omega)"), "110111"),
              "epsilon_{psi_{0}(1)+1}");
    EXPECT_EQ(text_of(pool.read("psi_{0}(Omega+1)"), "110111"), "psi_{0}(Omega+1)");
}

TEST_P(Notation, NamedOrdinalsAreFoundByTheirText)
{
    struct Case {
        const char *x, *name;
    };
    const Case cases[] = {
        {"psi_{0}(psi_{1}(psi_{1}(Omega)))", "Feferman-Schutte ordinal"},
        {"psi_{0}(psi_{1}(psi_{1}(Omega.2)))", "Ackermann ordinal"},
        {"psi_{0}(psi_{1}(psi_{1}(psi_{1}(1))))", "Small Veblen ordinal"},
        {"psi_{0}(psi_{1}(psi_{1}(psi_{1}(Omega))))", "Large Veblen ordinal"},
        {"psi_{0}(Omega_{2})", "Bachmann-Howard ordinal"},
        {"psi_{0}(Omega_{omega})", "Buchholz's ordinal"},
        {"psi_{0}(Omega_{omega+1})", "Takeuti-Feferman-Buchholz ordinal"},
        {"psi_{0}(I)", "Extended Buchholz ordinal"},
    };
    for (int i = 0; i < NAMED_ORDINALS; i++) {
        std::string text = text_of(pool.read(cases[i].x));
        EXPECT_EQ(text, named_ordinals[i].notation) << cases[i].x;
        EXPECT_STREQ(named_ordinals[i].name, cases[i].name);
        EXPECT_LE(strlen(named_ordinals[i].notation), NAMED_TEXT_MAX);
        const char *found = named_ordinal_find(text.c_str());
        EXPECT_STREQ(found ? found : "(none)", cases[i].name);
    }
    // the whole text must match, and smaller forms have no names
    EXPECT_EQ(named_ordinal_find(text_of(pool.read("psi_{0}(psi_{1}(psi_{1}(Omega)))+1")).c_str()),
              nullptr);
    EXPECT_EQ(named_ordinal_find("epsilon_{0}"), nullptr);
}

INSTANTIATE_IN_BOTH_MODES(Notation);

}  // namespace
