// The reader of ordinal text: what it takes, what it refuses and where. The
// round trip through the notation is in ord_random_test.cpp.
#include <gtest/gtest.h>

#include <string>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_parse.h"
#include "ord_fixtures_test.h"

namespace {

class Parse : public InBothModes {};

TEST_P(Parse, ReadsThePsiFormAndSumsAsOrdinals)
{
    // what is read, and its text with all toggles on
    const std::pair<const char *, const char *> cases[] = {
        {"0", "0"},                     {"0+0", "0"},           {" omega + 1 ", "omega+1"},
        {"1+omega", "omega"},           {"omega.2+omega.3+5+2", "omega.5+7"},
        {"3.2", "6"},                   {"psi_{0}(0)+psi_{0}(0)+psi_{0}(0)", "3"},
        {"psi_{0}(0).3", "3"},          {"psi_{0}(1)", "omega"},
        {"psi_{1}(0)", "Omega"},        {"Omega_{1}", "Omega"}, {"Omega_{0}", "1"},
        {"Omega_{psi_{0}(0)+psi_{0}(0)}", "Omega_{2}"},         {"4294967294", "4294967294"},
        // fixed points are collapsed
        {"psi_{0}(psi_{0}(Omega))", "epsilon_{0}"},
        {"psi_{1}(psi_{1}(Omega_{2}))", "epsilon_{Omega+1}"},
        {"psi_{0}(I)", "psi_{0}(I)"},
    };
    for (const auto &[in, text] : cases)
        EXPECT_EQ(text_of(pool.read(in)), text) << in;
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

INSTANTIATE_IN_BOTH_MODES(Parse);

}  // namespace
