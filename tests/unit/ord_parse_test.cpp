// The reader of ordinal text: what it takes, what it refuses and where, and
// the round trip of every ordinal met below the table rows through the psi rows.
#include <gtest/gtest.h>

#include <string>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_parse.h"
#include "ord_fixtures_test.h"

namespace {

class Parse : public InBothModes {};

TEST_P(Parse, ReadsThePsiFormAndSumsAsOrdinals)
{
    struct Case {
        const char *in;
        const char *text;  // all toggles on
    };
    const Case cases[] = {
        {"0", "0"},
        {"0+0", "0"},
        {" omega + 1 ", "omega+1"},
        {"1+omega", "omega"},
        {"omega+omega", "omega.2"},
        {"omega.2+omega.3+5+2", "omega.5+7"},
        {"3.2", "6"},
        {"psi_{0}(0)+psi_{0}(0)+psi_{0}(0)", "3"},
        {"psi_{0}(0).3", "3"},
        {"psi_{0}(psi_{0}(0))", "omega"},
        {"psi_{0}(1)", "omega"},
        {"psi_{1}(0)", "Omega"},
        {"Omega_{1}", "Omega"},
        {"Omega_{0}", "1"},
        {"Omega_{psi_{0}(0)+psi_{0}(0)}", "Omega_{2}"},
        {"Omega+Omega", "Omega.2"},
        {"4294967294", "4294967294"},
        // fixed points are collapsed
        {"psi_{0}(psi_{0}(Omega))", "epsilon_{0}"},
        {"psi_{1}(psi_{1}(Omega_{2}))", "epsilon_{Omega+1}"},
        {"psi_{0}(I)", "psi_{0}(I)"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(text_of(pool.read(c.in)), c.text) << c.in;
}

TEST_P(Parse, RefusesWithThePositionOfTheFirstBadCharacter)
{
    struct Case {
        std::string in;
        uint32_t position;
        const char *says;
    };
    const Case cases[] = {
        {"", 1, "the text ends"},
        {"omega^{2}", 6, "omega^{...} is not read"},
        {"epsilon_{0}", 1, "epsilon and varphi are not read"},
        {"3 4", 3, "unexpected '4'"},
        {"omega+", 7, "the text ends"},
        {"psi_{0}(1", 10, "expected '+' or ')'"},
        {"psi_{0}1)", 8, "expected '('"},
        {"Omega_2", 7, "expected '{'"},
        {"psi_{0}(x)", 9, "placeholder"},
        {"psi_{1}(I)", 9, "I is read only in psi_{0}(I)"},
        {"I", 1, "I is read only in psi_{0}(I)"},
        {"psi_{0}(I)+1", 11, "stands alone"},
        {"omega.0", 7, "at least 1"},
        {"omega.", 7, "expected a coefficient"},
        {"4294967295", 1, "too large"},
        {"omega.4294967294+omega", 18, "too large"},
        {"2147483648.2", 12, "too large"},
        {"omega\xc3\xa9", 6, "byte 0xC3"},
        // not in normal form: psi_0(epsilon_0 + 1) is epsilon_0, not omega^(epsilon_0+1)
        {"omega+psi_{0}(psi_{0}(Omega)+1)", 7, "not in normal form"},
        {"psi_{0}(Omega+psi_{0}(Omega.2))", 1, "not in normal form"},
        {"psi_{0}(psi_{0}(psi_{1}(Omega)).3)", 1, "not in normal form"},
        {"psi_{0}(I", 9, "I is read only in psi_{0}(I)"},
    };
    for (const Case &c : cases) {
        Ord x;
        OrdParseError error;
        EXPECT_FALSE(Ord_parse(c.in.c_str(), &x, &error)) << c.in;
        EXPECT_EQ(x.count, 0u) << c.in;
        EXPECT_EQ(error.position, c.position) << c.in << ": " << error.message;
        EXPECT_NE(std::string(error.message).find(c.says), std::string::npos)
            << c.in << ": " << error.message;
        EXPECT_EQ(std::string(error.message).find("position " + std::to_string(c.position)), 0u)
            << error.message;
    }
}

TEST_P(Parse, NestingIsBounded)
{
    std::string deep;
    for (uint32_t i = 0; i < ORD_PARSE_MAX_DEPTH; i++)
        deep += "psi_{0}(";
    deep += "0" + std::string(ORD_PARSE_MAX_DEPTH, ')');
    EXPECT_TRUE(is_omega_tower(pool.read(deep.c_str())));

    std::string deeper = "psi_{0}(" + deep + ")";
    Ord x;
    OrdParseError error;
    EXPECT_FALSE(Ord_parse(deeper.c_str(), &x, &error));
    EXPECT_EQ(error.position, 1u + 8u * ORD_PARSE_MAX_DEPTH) << error.message;
}

// The rows that write only psi: n, alpha.n and Omega_alpha each on or off.
std::vector<std::string> psi_rows()
{
    std::vector<std::string> rows;
    for (int bits = 0; bits < 8; bits++) {
        std::string row = "000000";
        row[0] = bits & 1 ? '1' : '0';
        row[1] = bits & 2 ? '1' : '0';
        row[5] = bits & 4 ? '1' : '0';
        rows.push_back(row);
    }
    return rows;
}

TEST_P(Parse, EveryOrdinalMetReadsBackThroughEveryPsiRow)
{
    ExpansionWalk walk;
    for (const char *row : table_ordinals())
        walk.walk(pool.read(row), 3, 4);

    size_t checked = 0;
    for (Ord x : walk.met)
        for (const std::string &bits : psi_rows()) {
            std::string text = text_of(x, bits.c_str());
            Ord back;
            OrdParseError error;
            ASSERT_TRUE(Ord_parse(text.c_str(), &back, &error))
                << text << " (row " << bits << "): " << error.message;
            EXPECT_EQ(Ord_cmp(back, x), 0) << text << " (row " << bits << ")";
            EXPECT_EQ(shape_of(back), shape_of(x)) << text << " (row " << bits << ")";
            Ord_free(back);
            checked++;
        }
    EXPECT_GT(checked, 8u * 2000u);
    walk.release();
}

INSTANTIATE_TEST_SUITE_P(Modes, Parse, testing::Values(MemoryMode::Heap, MemoryMode::Arena),
                         memory_mode_name);

}  // namespace
