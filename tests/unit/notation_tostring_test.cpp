// Notation: the tables of texts, coefficients, forms that must not stand in for
// each other, and the named ordinals. Placeholders print in ord_buchholz_test.cpp.
#include "OrdBuchholz/ord_arith.h"
#include "notation/named_ordinals.h"
#include "ord_fixtures_test.h"

namespace {

class Notation : public InBothModes {};

TEST_P(Notation, TablesInEveryRow)
{
    // beyond the shared table: coefficients with alpha.n on and off, and no fall-back between forms
    static const std::vector<NotationCase> more = {
        {"Omega_{2}.3+omega.2+4", "111111", "Omega_{2}.3+omega.2+4"},
        {"Omega_{2}.3+omega.2+4", "101111", "Omega_{2}+Omega_{2}+Omega_{2}+omega+omega+4"},
        {"omega.3", "101111", "omega+omega+omega"},
        {"psi_{0}(psi_{0}(2).2)", "101111", "omega^{omega^{2}+omega^{2}}"},
        // epsilon off: an epsilon number is psi, not varphi_1, even with varphi on
        {"psi_{0}(Omega.2)", "111011", "psi_{0}(Omega.2)"},
        // omega off but epsilon on: epsilon numbers stay, powers become psi
        {"psi_{0}(psi_{1}(1)+Omega)", "110111", "epsilon_{psi_{0}(1)+1}"},
        {"psi_{0}(Omega+1)", "110111", "psi_{0}(Omega+1)"},
        // the top is written alike in every row
        {"psi_{0}(I)", "000000", "psi_{0}(I)"},
    };
    for (const auto *table : {&notation_cases(), &more})
        for (const NotationCase &c : *table)
            EXPECT_EQ(text_of(pool.read(c.x), c.bits), c.text) << c.x << " in row " << c.bits;
    // a head made to any limit is the text's first bytes, and cut unless it is all of it
    for (const NotationCase &c : more) {
        NotationRow row = row_of(c.bits);
        std::string text = c.text;
        for (size_t limit = 0; limit <= text.size() + 1; limit++) {
            bool cut;
            char *head = Ord_tostring_limit(pool.read(c.x), &row, limit, &cut);
            EXPECT_EQ(head, text.substr(0, limit)) << c.x << " to " << limit;
            EXPECT_EQ(cut, limit < text.size()) << c.x << " to " << limit;
            free(head);
        }
    }
}

TEST_P(Notation, NamedOrdinalsAreFoundByTheirText)
{
    // in the order of the list
    const char *cases[][2] = {
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
        std::string text = text_of(pool.read(cases[i][0]));
        EXPECT_EQ(text, named_ordinals[i].notation) << cases[i][0];
        EXPECT_LE(strlen(text.c_str()), NAMED_TEXT_MAX);
        EXPECT_STREQ(named_ordinal_find(text.c_str()), cases[i][1]);
    }
    // the whole text must match, and smaller forms have no names
    EXPECT_EQ(named_ordinal_find("psi_{0}(omega^{omega^{Omega.2}})+1"), nullptr);
    EXPECT_EQ(named_ordinal_find("epsilon_{0}"), nullptr);
}

INSTANTIATE_IN_BOTH_MODES(Notation);

}  // namespace
