// Bignum: conversions, the linear combination and comparisons, checked
// against a plain exact reference on random operands of up to 300 limbs.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "support/bignum/bignum.h"

namespace {

Bignum make(std::vector<uint16_t> limbs)
{
    Bignum b = {(uint32_t)limbs.size(), (uint16_t *)malloc(limbs.size() * sizeof(uint16_t))};
    std::copy(limbs.begin(), limbs.end(), b.limbs);
    return b;
}

std::vector<uint16_t> limbs_of(Bignum b)
{
    return std::vector<uint16_t>(b.limbs, b.limbs + b.n);
}

std::string show(Bignum b)
{
    return testing::PrintToString(limbs_of(b));
}

// --- The reference: a signed number as base-10000 places of any sign, value
// sum d[i] * 10000^i in units of 0.0001 pixel. Slow and plain on purpose.
typedef std::vector<long long> Ref;

Ref ref_of(Bignum b)
{
    Ref d(b.limbs, b.limbs + b.n);
    d[b.n - 1] -= 5000;
    return d;
}

Ref ref_add(Ref x, const Ref &y, long long scale, size_t shift_down)
{
    // x + scale * (y without its lowest shift_down places, moved down)
    for (size_t i = shift_down; i < y.size(); i++) {
        if (x.size() <= i - shift_down)
            x.resize(i - shift_down + 1, 0);
        x[i - shift_down] += scale * y[i];
    }
    return x;
}

// Settles every place to 0..9999 with a floor carry; the top place keeps the sign.
void ref_settle(Ref &d)
{
    for (size_t i = 0; i + 1 < d.size(); i++) {
        long long c = d[i] >= 0 ? d[i] / 10000 : -((-d[i] + 9999) / 10000);
        d[i] -= c * 10000;
        d[i + 1] += c;
    }
}

// Sign and decimal digits with four places, from the places of any sign.
std::string ref_decimal(Ref d)
{
    d.push_back(0);
    d.push_back(0);
    ref_settle(d);
    bool negative = d.back() < 0;
    if (negative) {
        // the value is top * 10000^k + rest with rest >= 0: negate it plainly
        for (long long &v : d)
            v = -v;
        ref_settle(d);
    }
    std::string whole;
    for (size_t i = d.size() - 1; i >= 1; i--) {
        char buf[16];
        snprintf(buf, sizeof buf, whole.empty() ? "%lld" : "%04lld", d[i]);
        if (!(whole.empty() && d[i] == 0))
            whole += buf;
    }
    if (whole.empty())
        whole = "0";
    char frac[16];
    snprintf(frac, sizeof frac, ".%04lld", d[0]);
    bool zero = whole == "0" && d[0] == 0;
    return (negative && !zero ? "-" : "") + whole + frac;
}

std::string decimal(Bignum b)
{
    char *text = Bignum_todecimal(b);
    std::string s = text;
    free(text);
    return s;
}

int ref_sign(const Ref &d)
{
    std::string s = ref_decimal(d);
    if (s[0] == '-')
        return -1;
    return s.find_first_not_of("0.") == std::string::npos ? 0 : 1;
}

// What a*X + b*Y must be: whole weights exact, fractions exact one place
// down, and the parts below limb 0 rounded once.
Ref ref_lincomb(Bignum X, Bignum Y, double a, double b)
{
    long long ia = (long long)floor(a + 0.00005), fa = (long long)floor((a - ia) * 10000 + 0.5);
    long long ib = (long long)floor(b + 0.00005), fb = (long long)floor((b - ib) * 10000 + 0.5);
    Ref x = ref_of(X), y = ref_of(Y);
    Ref r(1, 0);
    r = ref_add(r, x, ia, 0);
    r = ref_add(r, y, ib, 0);
    r = ref_add(r, x, fa, 1);
    r = ref_add(r, y, fb, 1);
    long long low = x[0] * fa + y[0] * fb + 5000;
    r[0] += low / 10000;  // truncating toward zero
    return r;
}

bool normal_form(Bignum b)
{
    for (uint32_t i = 0; i < b.n; i++)
        if (b.limbs[i] > 9999)
            return false;
    if (b.n == 1)
        return true;
    uint16_t top = b.limbs[b.n - 1], below = b.limbs[b.n - 2];
    return !((top == 5000 && below < 5000) || (top == 4999 && below >= 5000));
}

// A random number in normal form of 1 to max_limbs limbs, either sign.
Bignum random_normal(std::mt19937 &rng, uint32_t max_limbs)
{
    std::uniform_int_distribution<uint32_t> length(1, max_limbs);
    std::uniform_int_distribution<int> digit(0, 9999);
    uint32_t n = length(rng);
    std::vector<uint16_t> l(n);
    do {
        for (uint32_t i = 0; i < n; i++)
            l[i] = (uint16_t)digit(rng);
        // tops near the excess make the sign cases and the removable forms
        if (rng() % 2)
            l[n - 1] = (uint16_t)(4990 + rng() % 20);
    } while (n > 1 && ((l[n - 1] == 5000 && l[n - 2] < 5000) || (l[n - 1] == 4999 && l[n - 2] >= 5000)));
    return make(l);
}

TEST(Bignum, FromDoubleTruncatesDownAndKeepsItsLength)
{
    const std::pair<double, std::vector<uint16_t>> cases[] = {
        {0.0, {0, 5000}},    {0.3, {3000, 5000}},  {-0.3, {6999, 4999}},   {-1.0, {0, 4999}},
        {-0.5, {5000, 4999}}, {128.0, {0, 5128}},  {1152.0, {0, 6152}},    {-4999.0, {0, 1}},
        {4999.5, {5000, 9999}}, {5000.0, {0, 10000}}, {12345.6789, {6789, 2345, 5001}},
        {-12345.0, {0, 7655, 4998}},
    };
    for (const auto &[x, limbs] : cases) {
        Bignum b = Bignum_fromdouble(x);
        EXPECT_EQ(limbs_of(b), limbs) << "x = " << x << " gave " << show(b);
        Bignum_free(b);
    }
}

TEST(Bignum, WeightsAreQuantisedToFourDecimals)
{
    // a weight acting on 1.0000 shows its quantised value directly
    const std::pair<double, const char *> cases[] = {
        {1.0, "1.0000"},      {-1.0, "-1.0000"},      {0.99996, "1.0000"}, {0.99994, "0.9999"},
        {0.701703829, "0.7017"}, {0.00005, "0.0001"}, {0.00004, "0.0000"}, {-0.25, "-0.2500"},
        {2.5, "2.5000"},      {-0.00004, "0.0000"},
    };
    Bignum one = Bignum_fromdouble(1.0), zero = Bignum_fromdouble(0.0);
    for (const auto &[weight, value] : cases) {
        Bignum r = Bignum_lincomb(one, zero, weight, 1.0);
        EXPECT_EQ(decimal(r), value) << "weight " << weight;
        Bignum_free(r);
    }
    Bignum_free(one);
    Bignum_free(zero);
}

TEST(Bignum, LincombTellingCases)
{
    // -0.5 in fromdouble form normalises to the single limb 0
    Bignum half = Bignum_fromdouble(-0.5), zero = Bignum_fromdouble(0.0);
    Bignum r = Bignum_lincomb(half, zero, 1.0, 0.0);
    EXPECT_EQ(limbs_of(r), std::vector<uint16_t>{0});
    EXPECT_TRUE(Bignum_lt(half, r)) << "the fromdouble form of -0.5 counts below every one-limb number";
    Bignum_free(r);
    Bignum_free(half);

    // a top digit reaching 5000 grows by one limb: 3 * 2000 = 6000 pixels
    Bignum two_thousand = Bignum_fromdouble(2000.0);
    r = Bignum_lincomb(two_thousand, two_thousand, 2.0, 1.0);
    EXPECT_EQ(limbs_of(r), (std::vector<uint16_t>{0, 6000, 5000}));
    Bignum_free(r);
    Bignum_free(two_thousand);
    Bignum_free(zero);
}

TEST(Bignum, LincombMatchesTheExactReference)
{
    std::mt19937 rng(20261121);
    // weights across the quantisation boundaries and both signs
    const double base_weights[] = {0.0, 1.0, -1.0, 0.5, 0.701703829, 1.3, -2.25, 0.99996, 0.99994,
                                   0.12345, 0.00005, -0.00004, 2.71828, 1.0001, 0.9999};
    std::uniform_real_distribution<double> any_weight(-3.0, 3.0);
    for (int trial = 0; trial < 4500; trial++) {
        uint32_t max_limbs = trial % 10 == 0 ? 300 : 12;
        Bignum X = random_normal(rng, max_limbs);
        // every ninth trial is X - X: zero has one normal form, the single limb 5000
        bool difference = trial % 9 == 0;
        Bignum Y = difference || rng() % 4 == 0 ? X : random_normal(rng, max_limbs);
        double a = difference ? 1.0 : trial % 2 ? any_weight(rng) : base_weights[rng() % 15];
        double b = difference ? -1.0 : trial % 3 ? any_weight(rng) : base_weights[rng() % 15];
        // a difference of numbers of any two lengths
        if (trial % 4 == 3)
            a = 1.0, b = -1.0;
        // every fourth: deep positions, X's top shared, and a point between them
        if (trial % 4 == 1 && X.n > 3) {
            std::vector<uint16_t> low = limbs_of(X);
            for (uint32_t i = 0, k = rng() % (X.n - 1); i < k; i++)
                low[i] = (uint16_t)(trial % 8 == 1 ? 9999 * (rng() % 2) : rng() % 10000);
            if (Y.limbs != X.limbs)
                Bignum_free(Y);
            // limbs 0 apart by 5000: the converging step lands on a half exactly
            if (trial % 8 == 5) {
                low[0] = (uint16_t)((X.limbs[0] + 5000) % 10000);
                a = 0.2983;
            }
            Y = make(low);
            if (trial % 3)
                b = 1.0 - a;
        }
        Bignum r = Bignum_lincomb(X, Y, a, b);
        std::string expected = ref_decimal(ref_lincomb(X, Y, a, b));
        ASSERT_EQ(decimal(r), expected) << "X = " << show(X) << "\nY = " << show(Y) << "\na = " << a
                                        << " b = " << b << "\ngot " << show(r);
        ASSERT_TRUE(normal_form(r)) << show(r);
        if (expected == "0.0000") {
            ASSERT_EQ(limbs_of(r), std::vector<uint16_t>{5000}) << show(X) << " " << show(Y);
        }
        if (Y.limbs != X.limbs)
            Bignum_free(Y);
        Bignum_free(X);
        Bignum_free(r);
    }
}

TEST(Bignum, ComparisonsMatchTheReference)
{
    std::mt19937 rng(99);
    for (int trial = 0; trial < 4000; trial++) {
        Bignum X = random_normal(rng, trial % 10 == 0 ? 300 : 4);
        Bignum Y = random_normal(rng, trial % 10 == 0 ? 300 : 4);
        Ref diff = ref_add(ref_of(X), ref_of(Y), -1, 0);
        int sign = ref_sign(diff);
        ASSERT_EQ(Bignum_lt(X, Y), sign < 0 ? 1 : 0) << show(X) << " < " << show(Y);
        ASSERT_EQ(Bignum_lt(Y, X), sign > 0 ? 1 : 0) << show(Y) << " < " << show(X);
        Bignum_free(X);
        Bignum_free(Y);
    }
    // equal values of different lengths: (3000, 5000) and the single limb 8000
    Bignum a = make({3000, 5000}), b = make({8000});
    EXPECT_FALSE(Bignum_lt(a, b));
    EXPECT_FALSE(Bignum_lt(b, a));
    EXPECT_FALSE(Bignum_lt(a, a));
    Bignum_free(a);
    Bignum_free(b);
}

TEST(Bignum, ComparisonsWithDoubles)
{
    struct Case {
        std::vector<uint16_t> limbs;
        double x;
        int lt, le, gt, ge;
    };
    const Case cases[] = {
        {{0, 5128}, 128.0, 0, 1, 0, 1},
        {{0, 5128}, 128.00005, 0, 1, 0, 1},   // the double is truncated to 128.0000
        {{1, 5128}, 128.0, 0, 0, 1, 1},
        {{9999, 5127}, 128.0, 1, 1, 0, 0},
        {{0, 4872}, -128.0, 0, 1, 0, 1},
        {{5000, 5000, 5001}, 1e4, 0, 0, 1, 1},
        {{0, 0, 4999}, -1e4, 0, 1, 0, 1},
        {{0, 5000, 4999}, -1e4, 0, 0, 1, 1},  // -5000 in the fromdouble form
        {{8000}, 0.3, 0, 1, 0, 1},
    };
    for (const Case &c : cases) {
        Bignum X = make(c.limbs);
        EXPECT_EQ((std::vector<int>{Bignum_ltd(X, c.x), Bignum_led(X, c.x), Bignum_gtd(X, c.x),
                                    Bignum_ged(X, c.x)}),
                  (std::vector<int>{c.lt, c.le, c.gt, c.ge}))
            << show(X) << " against " << c.x << ": <, <=, >, >=";
        Bignum_free(X);
    }
}

TEST(Bignum, ToDoubleAndItsCutOff)
{
    const std::pair<std::vector<uint16_t>, double> cases[] = {
        {{5000}, 0.0},          {{8000}, 0.3},     {{6999, 4999}, -0.3001},
        {{0, 5128}, 128.0},     {{1234, 5678, 5001}, 15678.1234},
        {{0, 0, 0, 0, 5001}, 1e12},
        {{0, 0, 0, 0, 0, 5000}, 1e20},   // six limbs: only the side counts
        {{9999, 9999, 9999, 9999, 9999, 4999}, -1e20},
        {{0, 0, 0, 0, 0, 0, 5003}, 1e20},
    };
    for (const auto &[limbs, value] : cases) {
        Bignum X = make(limbs);
        EXPECT_NEAR(Bignum_todouble(X), value, 1e-9 * (1 + fabs(value))) << show(X);
        EXPECT_EQ(Bignum_tofloat(X), (float)Bignum_todouble(X)) << show(X);
        Bignum_free(X);
    }
}

TEST(Bignum, RatioWithoutTheCutOff)
{
    const std::vector<uint16_t> one = {0, 5001}, big(100, 9999);
    const std::tuple<std::vector<uint16_t>, std::vector<uint16_t>, double> cases[] = {
        {{0, 5128}, one, 128.0},
        {{2000, 4999}, one, -0.8},
        {{5000}, one, 0.0},
        {{1, 0, 0, 0, 0, 0, 0, 5001}, one, 1e24},  // past the cut-off of Bignum_todouble
        {one, {0, 0, 0, 0, 0, 0, 0, 5002}, 5e-25},
        {big, one, INFINITY},
        {one, big, 0.0},
    };
    for (const auto &[x, y, ratio] : cases) {
        Bignum X = make(x), Y = make(y);
        EXPECT_DOUBLE_EQ(Bignum_ratio(X, Y), ratio) << show(X) << " / " << show(Y);
        Bignum_free(X);
        Bignum_free(Y);
    }
}

TEST(Bignum, DecimalText)
{
    const std::pair<std::vector<uint16_t>, const char *> cases[] = {
        {{5000}, "0.0000"},       {{0, 5000}, "0.0000"},  {{6999, 4999}, "-0.3001"},
        {{0, 4999}, "-1.0000"},   {{0}, "-0.5000"},       {{1200, 5128}, "128.1200"},
        {{7, 3, 5001}, "10003.0007"}, {{0, 0, 0, 4998}, "-200000000.0000"},
        {{0, 10000}, "5000.0000"},
    };
    for (const auto &[limbs, text] : cases) {
        Bignum X = make(limbs);
        EXPECT_EQ(decimal(X), text) << show(X);
        EXPECT_EQ(ref_decimal(ref_of(X)), text) << "reference, " << show(X);
        Bignum_free(X);
    }
}

}  // namespace
