// The reader of ordinal text: hand-written forms, refusals with their column,
// and the round trip read(print(x)) == x over the ordinals of real tick walks
// in every notation row.
#include <gtest/gtest.h>

#include <string>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_parse.h"
#include "PlotSegment2/tick_walk.h"
#include "notation/named_ordinals.h"
#include "ord/navigation.h"
#include "ord_fixtures_test.h"
#include "support/gl/screen.h"

namespace {

class Parse : public InBothModes {};

TEST_P(Parse, ReadsEveryFormAsItsNormalForm)
{
    // what is read, and its text with all toggles on
    const std::pair<const char *, const char *> cases[] = {
        {"0+0", "0"},                      {" omega + 1 ", "omega+1"},
        {"1+omega", "omega"},              {"omega.2+omega.3+5+2", "omega.5+7"},
        {"3.2", "6"},                      {"psi_{0}(0)+psi_{0}(0).2", "3"},
        {"psi_{0}(1)", "omega"},           {"Omega_{0}", "1"},
        {"omega^{omega}", "omega^{omega}"}, {"omega^2.3", "omega^{2}.3"},
        {"omega^{0}", "1"},                {"omega^omega^omega", "omega^{omega^{omega}}"},
        {"omega^{epsilon_{0}}", "epsilon_{0}"},  // a fixed point of omega^x
        {"omega^{epsilon_{0}+1}", "omega^{epsilon_{0}+1}"},
        {"epsilon_0", "epsilon_{0}"},      {"epsilon_{omega+1}", "epsilon_{omega+1}"},
        {"epsilon_{varphi_{2}(0)}", "varphi_{2}(0)"},
        {"varphi_{0}(omega)", "omega^{omega}"}, {"varphi_{1}(3)", "epsilon_{3}"},
        {"varphi_{2}(1)", "varphi_{2}(1)"}, {"varphi_{omega+1}(0)", "varphi_{omega+1}(0)"},
        {"varphi_{2}(varphi_{3}(0)+1)", "varphi_{2}(varphi_{3}(0)+1)"},
        {"varphi_{2}(varphi_{3}(0))", "varphi_{3}(0)"},  // a fixed point of varphi_2
        {"psi_0(Omega_2)", "psi_{0}(Omega_{2})"},
        // psi terms as the notation means them
        {"psi_{0}(psi_{0}(Omega))", "epsilon_{0}"},
        {"psi_{0}(psi_{0}(Omega)+1)", "omega^{epsilon_{0}+1}"},
        {"psi_{0}(psi_{0}(psi_{1}(0)+psi_{0}(Omega)))", "omega^{omega^{epsilon_{0}.2}}"},
        {"psi_{ 0 }( I )", "psi_{0}(I)"},
        // the window's letters and script digits
        {"\xCF\x89^\xCF\x89", "omega^{omega}"},              // ω^ω
        {"\xCF\x89\xC2\xB2", "omega^{2}"},                   // ω²
        {"\xCE\xB5\xE2\x82\x80", "epsilon_{0}"},             // ε₀
        {"\xCF\x86_2(0)", "varphi_{2}(0)"},                  // φ_2(0)
        {"\xCF\x88\xE2\x82\x80(\xCE\xA9_\xCF\x89)", "psi_{0}(Omega_{omega})"},  // ψ₀(Ω_ω)
    };
    for (const auto &[in, text] : cases)
        EXPECT_EQ(text_of(pool.read(in)), text) << in;
    // the named ordinals' texts read as what they name
    for (const NamedOrdinal &n : named_ordinals)
        EXPECT_EQ(text_of(pool.read(n.notation)), n.notation);
}

TEST_P(Parse, RefusesWithTheColumnWhereReadingFailed)
{
    struct Case {
        std::string in;
        uint32_t position;
        const char *says;
    };
    const Case cases[] = {
        {"", 1, "the text ends"},
        {"3 4", 3, "unexpected '4'"},
        {"omega+", 7, "the text ends"},
        {"omega^", 7, "expected '{', a number or a letter"},
        {"epsilon(0)", 8, "expected '_'"},
        {"varphi_{2}", 11, "expected '('"},
        {"psi_{0}(1", 10, "expected '+' or ')'"},
        {"psi_{0}(x)", 9, "placeholder"},
        {"I", 1, "I is read only in psi_{0}(I)"},
        {"psi_{0}(I)+1", 11, "stands alone"},
        {"1+psi_{0}(I)", 3, "stands alone"},
        {"psi_{1}(I)", 1, "above psi_{0}(I)"},
        {"omega+Omega", 7, "uncountable"},
        {"epsilon_{Omega}", 1, "uncountable"},
        {"omega.0", 7, "at least 1"},
        {"4294967295", 1, "too large"},
        {"omega.4294967294+omega", 18, "too large"},
        {"2147483648.2", 12, "too large"},
        {"\xCF\x89\xC3\xA9", 2, "byte 0xC3"},  // ωé: the column counts characters
        {"omega+psi_{0}(psi_{1}(psi_{0}(Omega_{2})))", 7, "not in normal form"},
    };
    for (const Case &c : cases) {
        Ord x;
        OrdParseError error;
        EXPECT_FALSE(Ord_parse(c.in.c_str(), &x, &error)) << c.in;
        EXPECT_EQ(x.count, 0u) << c.in;
        EXPECT_EQ(error.position, c.position) << c.in << ": " << error.message;
        EXPECT_NE(std::string(error.message).find(c.says), std::string::npos)
            << c.in << ": " << error.message;
    }
}

TEST_P(Parse, NestingIsBounded)
{
    auto tower = [](uint32_t n) {
        std::string s;
        for (uint32_t i = 0; i < n; i++)
            s += "omega^{";
        return s + "0" + std::string(n, '}');
    };
    EXPECT_TRUE(is_omega_tower(pool.read(tower(300).c_str())));
    Ord x;
    OrdParseError error;
    EXPECT_FALSE(Ord_parse(tower(ORD_PARSE_MAX_DEPTH + 1).c_str(), &x, &error));
    EXPECT_EQ(error.position, 7 * ORD_PARSE_MAX_DEPTH + 7) << error.message;
}

INSTANTIATE_IN_BOTH_MODES(Parse);

// Every ordinal that reaches the callback of a tick walk, copied.
std::vector<Ord> walked;
void collect(WalkRecord r)
{
    walked.push_back(Ord_clone(r.ordlo));
}

// read(print(x)) == x for the ordinals of tick walks of several views (the
// first one, and deep ones near the top, where the Veblen and Buchholz forms
// crowd) in all 64 rows.
TEST(ParseRoundTrip, TickWalksInEveryRow)
{
    struct View {
        int32_t pan;    // pixels the first view is moved left before zooming
        int32_t steps;  // zooms by 10 about the centre
    };
    const View views[] = {{0, 0}, {60, 2}, {360, 3}, {510, 6}, {511, 12}};
    screen_w = 1280;
    screen_h = 960;
    for (const View &v : views) {
        Bignum lo, hi;
        double min_line_length;
        view_start(&lo, &hi, &min_line_length);
        view_update(&lo, &hi, 1.0, v.pan);
        for (int32_t i = 0; i < v.steps; i++)
            view_update(&lo, &hi, 10.0, 0);
        WalkRecord r = {};
        r.xlo = lo;
        r.xhi = hi;
        r.minsize = 8.0f;
        walk_record_screen(&r);
        tick_arrays_rebuild(r.right);
        walk_line(collect, r);
        Bignum_free(lo);
        Bignum_free(hi);
    }
    ASSERT_GT(walked.size(), 1000u);

    size_t checked = 0;
    for (Ord x : walked) {
        for (int bits = 0; bits < 64; bits++) {
            NotationRow row;
            for (int i = 0; i < NOTATION_TOGGLES; i++)
                row.toggle[i] = (bits >> (NOTATION_TOGGLES - 1 - i)) & 1;
            char *text = Ord_tostring(x, &row);
            Ord back;
            OrdParseError error;
            ASSERT_TRUE(Ord_parse(text, &back, &error)) << text << ": " << error.message;
            ASSERT_EQ(Ord_cmp(back, x), 0) << text << " in row " << bits << "\n"
                                           << shape_of(back) << "\n" << shape_of(x);
            Ord_free(back);
            free(text);
            checked++;
        }
        Ord_free(x);
    }
    walked.clear();
    RecordProperty("round_trips", (int)checked);
}

}  // namespace
