// The reader of ordinal text: hand-written forms, refusals with their column, and
// read(print(x)) == x over the ordinals of real tick walks in every notation row.
#include <string.h>

#include <bitset>
#include <unordered_map>

#include "OrdBuchholz/ord_arith.h"
#include "PlotSegment2/tick_walk.h"
#include "notation/named_ordinals.h"
#include "ord/navigation.h"
#include "ord_fixtures_test.h"
#include "support/gl/screen.h"

namespace {

class Parse : public InBothModes {};

TEST_P(Parse, ReadsEveryFormAsItsNormalForm)
{
    // what is read and its text with all toggles on; printed forms read back in the round trip below
    const std::pair<const char *, const char *> cases[] = {
        {"0+0", "0"},                           {" omega + 1 ", "omega+1"},
        {"1+omega", "omega"},                   {"omega.2+omega.3+5+2", "omega.5+7"},
        {"3.2", "6"},                           {"psi_{0}(0)+psi_{0}(0).2", "3"},
        {"Omega_{0}", "1"},                     {"omega^{0}", "1"},
        {"omega^{omega}", "omega^{omega}"},     {"omega^2.3", "omega^{2}.3"},
        {"epsilon_0", "epsilon_{0}"},           {"omega^omega^omega", "omega^{omega^{omega}}"},
        {"varphi_{0}(omega)", "omega^{omega}"}, {"varphi_{1}(3)", "epsilon_{3}"},
        {"epsilon_{omega+1}", "epsilon_{omega+1}"},
        {"epsilon_{varphi_{2}(0)}", "varphi_{2}(0)"},
        // fixed points of omega^x and of varphi_2
        {"omega^{epsilon_{0}}", "epsilon_{0}"}, {"varphi_{2}(varphi_{3}(0))", "varphi_{3}(0)"},
        // psi terms as the notation means them
        {"psi_{0}(psi_{0}(Omega))", "epsilon_{0}"},
        {"psi_{0}(psi_{0}(Omega)+1)", "omega^{epsilon_{0}+1}"},
        {"psi_{0}(psi_{0}(psi_{1}(0)+psi_{0}(Omega)))", "omega^{omega^{epsilon_{0}.2}}"},
        {"psi_{ 0 }( I )", "psi_{0}(I)"},
        // the window's letters and script digits
        {"\xCF\x89^\xCF\x89", "omega^{omega}"},                                 // ω^ω
        {"\xCF\x89\xC2\xB2", "omega^{2}"},                                      // ω²
        {"\xCE\xB5\xE2\x82\x80", "epsilon_{0}"},                                // ε₀
        {"\xCF\x86_2(0)", "varphi_{2}(0)"},                                     // φ_2(0)
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
    const std::tuple<const char *, uint32_t, const char *> cases[] = {
        {"", 1, "the text ends"},                     {"3 4", 3, "unexpected '4'"},
        {"omega+", 7, "the text ends"},               {"omega^", 7, "expected '{', a number or a letter"},
        {"epsilon(0)", 8, "expected '_'"},            {"varphi_{2}", 11, "expected '('"},
        {"psi_{0}(1", 10, "expected '+' or ')'"},     {"psi_{0}(x)", 9, "placeholder"},
        {"I", 1, "I is read only in psi_{0}(I)"},     {"psi_{1}(I)", 1, "above psi_{0}(I)"},
        {"psi_{0}(I)+1", 11, "stands alone"},         {"1+psi_{0}(I)", 3, "stands alone"},
        {"omega+Omega", 7, "uncountable"},            {"epsilon_{Omega}", 1, "uncountable"},
        {"omega.0", 7, "at least 1"},                 {"4294967295", 1, "too large"},
        {"omega.4294967294+omega", 18, "too large"},  {"2147483648.2", 12, "too large"},
        {"\xCF\x89\xC3\xA9", 2, "byte 0xC3"},  // ωé: the column counts characters
        {"omega+psi_{0}(psi_{1}(psi_{0}(Omega_{2})))", 7, "not in normal form"},
    };
    for (const auto &[in, position, says] : cases) {
        Ord x;
        OrdParseError error;
        EXPECT_FALSE(Ord_parse(in, &x, &error)) << in;
        EXPECT_EQ(x.count, 0u) << in;
        EXPECT_EQ(error.position, position) << in << ": " << error.message;
        EXPECT_NE(strstr(error.message, says), nullptr) << in << ": " << error.message;
    }
}

// Towers of omega read to any depth within the bound, and only they are towers.
TEST_P(Parse, TowersAndTheNestingBound)
{
    auto tower = [](uint32_t n) {
        std::string s;
        for (uint32_t i = 0; i < n; i++)
            s += "omega^{";
        return s + "0" + std::string(n, '}');
    };
    EXPECT_TRUE(is_omega_tower(pool.read(tower(300).c_str())));
    for (const char *t : {"2", "omega.2", "omega+1", "Omega", "psi_{0}(omega.2)", "psi_{0}(Omega)"})
        EXPECT_FALSE(is_omega_tower(pool.read(t))) << t;
    Ord x;
    OrdParseError error;
    EXPECT_FALSE(Ord_parse(tower(ORD_PARSE_MAX_DEPTH + 1).c_str(), &x, &error));
    EXPECT_EQ(error.position, 7 * ORD_PARSE_MAX_DEPTH + 7) << error.message;
}

INSTANTIATE_IN_BOTH_MODES(Parse);

// read(print(x)) == x for the ordinals of tick walks of several views (the first one, and deep ones
// near the top, where the Veblen and Buchholz forms crowd) in all 64 rows. Most rows print an ordinal
// alike, so each distinct text is read once.
TEST(ParseRoundTrip, TickWalksInEveryRow)
{
    static std::vector<Ord> walked;
    // pixels the first view is moved left, then zooms by 10 about the centre
    const std::pair<int32_t, int32_t> views[] = {{0, 0}, {60, 2}, {360, 3}, {510, 6}, {511, 12}};
    screen_w = 1280;
    screen_h = 960;
    for (const auto &[pan, zooms] : views) {
        WalkRecord r = {};
        double min_line_length;
        view_start(&r.xlo, &r.xhi, &min_line_length);
        view_update(&r.xlo, &r.xhi, 1.0, pan);
        for (int32_t i = 0; i < zooms; i++)
            view_update(&r.xlo, &r.xhi, 10.0, 0);
        r.minsize = 8.0f;
        walk_record_screen(&r);
        tick_arrays_rebuild(r.right);
        walk_line([](WalkRecord w) { walked.push_back(Ord_clone(w.ordlo)); }, r);
        Bignum_free(r.xlo);
        Bignum_free(r.xhi);
    }
    ASSERT_GT(walked.size(), 1000u);

    std::unordered_map<std::string, Ord> read;
    for (Ord x : walked) {
        for (int bits = 0; bits < 64; bits++) {
            std::string text = text_of(x, std::bitset<NOTATION_TOGGLES>(bits).to_string().c_str());
            auto [at, is_new] = read.try_emplace(text);
            OrdParseError error;
            if (is_new) {
                ASSERT_TRUE(Ord_parse(text.c_str(), &at->second, &error)) << text << ": " << error.message;
            }
            ASSERT_EQ(Ord_cmp(at->second, x), 0) << text << " in row " << bits << "\n"
                                                 << shape_of(at->second) << "\n" << shape_of(x);
        }
        Ord_free(x);
    }
    for (auto &[text, x] : read)
        Ord_free(x);
    walked.clear();
}

}  // namespace
