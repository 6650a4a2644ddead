// Bignum: conversions, the linear combination and comparisons, checked
// against a plain exact reference on random operands of up to 300 limbs.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "support/bignum/bignum.h"

namespace {

typedef std::vector<uint16_t> Limbs;

// Every number a test makes, freed when it ends.
std::vector<Bignum> made;

Bignum keep(Bignum b)
{
    made.push_back(b);
    return b;
}

Bignum make(const Limbs &limbs)
{
    Bignum b = {(uint32_t)limbs.size(), (uint16_t *)malloc(limbs.size() * sizeof(uint16_t))};
    std::copy(limbs.begin(), limbs.end(), b.limbs);
    return keep(b);
}

Limbs limbs_of(Bignum b) { return Limbs(b.limbs, b.limbs + b.n); }

std::string show(Bignum b) { return testing::PrintToString(limbs_of(b)); }

class Bignums : public testing::Test {
    void TearDown() override
    {
        for (Bignum b : made)
            Bignum_free(b);
        made.clear();
    }
};

// --- The reference: a signed number as base-10000 places of any sign, value
// sum d[i] * 10000^i in units of 0.0001 pixel. Slow and plain on purpose.
typedef std::vector<long long> Ref;

Ref ref_of(Bignum b)
{
    Ref d(b.limbs, b.limbs + b.n);
    d[b.n - 1] -= 5000;
    return d;
}

// x + scale * (y without its lowest shift_down places, moved down)
Ref ref_add(Ref x, const Ref &y, long long scale, size_t shift_down)
{
    x.resize(std::max(x.size(), y.size()), 0);
    for (size_t i = shift_down; i < y.size(); i++)
        x[i - shift_down] += scale * y[i];
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

// -1, 0 or 1 as the value is below, at or above zero.
int ref_sign(Ref d)
{
    d.resize(d.size() + 2, 0);
    ref_settle(d);
    return d.back() < 0 ? -1 : std::any_of(d.begin(), d.end(), [](long long v) { return v != 0; });
}

// What a*X + b*Y must be: whole weights exact, fractions exact one place
// down, and the parts below limb 0 rounded once.
Ref ref_lincomb(Bignum X, Bignum Y, double a, double b)
{
    long long ia = (long long)floor(a + 0.00005), fa = (long long)floor((a - ia) * 10000 + 0.5);
    long long ib = (long long)floor(b + 0.00005), fb = (long long)floor((b - ib) * 10000 + 0.5);
    Ref x = ref_of(X), y = ref_of(Y);
    Ref r = ref_add(ref_add(ref_add(ref_add(Ref(1, 0), x, ia, 0), y, ib, 0), x, fa, 1), y, fb, 1);
    r[0] += (x[0] * fa + y[0] * fb + 5000) / 10000;  // truncating toward zero
    return r;
}

// No limb past 9999, and no top limb that could fold into the one below.
bool normal(const uint16_t *l, uint32_t n)
{
    if (std::any_of(l, l + n, [](uint16_t d) { return d > 9999; }))
        return false;
    return n == 1 || !((l[n - 1] == 5000 && l[n - 2] < 5000) || (l[n - 1] == 4999 && l[n - 2] >= 5000));
}

// A random number in normal form of 1 to max_limbs limbs, either sign.
Bignum random_normal(std::mt19937 &rng, uint32_t max_limbs)
{
    std::uniform_int_distribution<int> digit(0, 9999);
    Limbs l(std::uniform_int_distribution<uint32_t>(1, max_limbs)(rng));
    do {
        for (uint16_t &d : l)
            d = (uint16_t)digit(rng);
        // tops near the excess make the sign cases and the removable forms
        if (rng() % 2)
            l.back() = (uint16_t)(4990 + rng() % 20);
    } while (!normal(l.data(), (uint32_t)l.size()));
    return make(l);
}

TEST_F(Bignums, FromDoubleTruncatesDownAndKeepsItsLength)
{
    const std::pair<double, Limbs> cases[] = {
        {0.0, {0, 5000}},    {0.3, {3000, 5000}},  {-0.3, {6999, 4999}},   {-1.0, {0, 4999}},
        {-0.5, {5000, 4999}}, {128.0, {0, 5128}},  {1152.0, {0, 6152}},    {-4999.0, {0, 1}},
        {4999.5, {5000, 9999}}, {5000.0, {0, 10000}}, {12345.6789, {6789, 2345, 5001}},
        {-12345.0, {0, 7655, 4998}},
    };
    for (const auto &[x, limbs] : cases)
        EXPECT_EQ(limbs_of(keep(Bignum_fromdouble(x))), limbs) << "x = " << x;
}

TEST_F(Bignums, LincombTellingCases)
{
    // a*x + b*y from fromdouble forms. Weights on 1.0 show their quantised
    // value; -0.5 in fromdouble form normalises to the single limb 0; a top
    // digit reaching 5000 grows by one limb: 3 * 2000 = 6000 pixels.
    const std::tuple<double, double, double, double, Limbs> cases[] = {
        {1, 0, 1.0, 1, {0, 5001}},     {1, 0, -1.0, 1, {0, 4999}},    {1, 0, 0.99996, 1, {0, 5001}},
        {1, 0, 0.99994, 1, {9999, 5000}}, {1, 0, 0.701703829, 1, {7017, 5000}},
        {1, 0, 0.00005, 1, {5001}},    {1, 0, 0.00004, 1, {5000}},    {1, 0, -0.25, 1, {2500}},
        {1, 0, 2.5, 1, {5000, 5002}},  {1, 0, -0.00004, 1, {5000}},   {-0.5, 0, 1, 0, {0}},
        {2000, 2000, 2, 1, {0, 6000, 5000}},
    };
    for (const auto &[x, y, a, b, limbs] : cases) {
        Bignum r = keep(Bignum_lincomb(keep(Bignum_fromdouble(x)), keep(Bignum_fromdouble(y)), a, b));
        EXPECT_EQ(limbs_of(r), limbs) << a << " * " << x << " + " << b << " * " << y;
    }
    EXPECT_TRUE(Bignum_lt(make({5000, 4999}), make({0})))
        << "the fromdouble form of -0.5 counts below every one-limb number";
    // equal values of different lengths: (3000, 5000) and the single limb 8000
    Bignum a = make({3000, 5000}), b = make({8000});
    EXPECT_FALSE(Bignum_lt(a, b) || Bignum_lt(b, a) || Bignum_lt(a, a));
}

// Combinations and comparisons of the same random operands.
TEST_F(Bignums, LincombAndComparisonsMatchTheExactReference)
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
            Limbs low = limbs_of(X);
            for (uint32_t i = 0, k = rng() % (X.n - 1); i < k; i++)
                low[i] = (uint16_t)(trial % 8 == 1 ? 9999 * (rng() % 2) : rng() % 10000);
            // limbs 0 apart by 5000: the converging step lands on a half exactly
            if (trial % 8 == 5) {
                low[0] = (uint16_t)((X.limbs[0] + 5000) % 10000);
                a = 0.2983;
            }
            Y = make(low);
            if (trial % 3)
                b = 1.0 - a;
        }
        Bignum r = keep(Bignum_lincomb(X, Y, a, b));
        Ref want = ref_lincomb(X, Y, a, b);
        ASSERT_EQ(ref_sign(ref_add(ref_of(r), want, -1, 0)), 0)
            << "X = " << show(X) << "\nY = " << show(Y) << "\na, b = " << a << ", " << b << ": " << show(r);
        ASSERT_TRUE(normal(r.limbs, r.n)) << show(r);
        ASSERT_TRUE(ref_sign(want) != 0 || limbs_of(r) == Limbs{5000}) << show(X) << " " << show(Y);
        int sign = ref_sign(ref_add(ref_of(X), ref_of(Y), -1, 0));
        ASSERT_EQ(Bignum_lt(X, Y), sign < 0) << show(X) << " < " << show(Y);
        ASSERT_EQ(Bignum_lt(Y, X), sign > 0) << show(Y) << " < " << show(X);
        // the interval test of a walk, decided by the top limbs where they can
        Bignum D = keep(Bignum_lincomb(X, Y, 1.0, -1.0));
        for (double x : {1.0, 370.0, 9999.99})
            ASSERT_EQ(Bignum_difference_ltd(X, Y, x), Bignum_ltd(D, x)) << show(X) << " - " << show(Y) << " < " << x;
    }
}

TEST_F(Bignums, ComparisonsWithDoubles)
{
    // X, x, and the side of X from x truncated to four decimals
    const std::tuple<Limbs, double, int> cases[] = {
        {{0, 5128}, 128.0, 0},        {{0, 5128}, 128.00005, 0},   {{1, 5128}, 128.0, 1},
        {{9999, 5127}, 128.0, -1},    {{0, 4872}, -128.0, 0},      {{5000, 5000, 5001}, 1e4, 1},
        {{0, 0, 4999}, -1e4, 0},      {{8000}, 0.3, 0},
        {{0, 5000, 4999}, -1e4, 1},  // -5000 in the fromdouble form
    };
    for (const auto &[limbs, x, side] : cases) {
        Bignum X = make(limbs);
        EXPECT_EQ((std::vector<int>{Bignum_ltd(X, x), Bignum_led(X, x), Bignum_gtd(X, x), Bignum_ged(X, x)}),
                  (std::vector<int>{side < 0, side <= 0, side > 0, side >= 0}))
            << show(X) << " against " << x << ": <, <=, >, >=";
    }
    // X - Y < 370 where the limbs at which X and Y first differ leave it open
    const std::tuple<Limbs, Limbs, bool> gaps[] = {
        {{0, 0, 5001}, {0, 9999, 5000}, true},  // 1 px across a limb
        {{0, 9999, 4999}, {0, 0}, false},       // -1 less -5000: a top digit below the other's
        {{0, 0, 5003}, {0, 0, 5000}, false},
        {{0, 0, 4998}, {0, 0, 5000}, true},
    };
    for (const auto &[x, y, below] : gaps)
        EXPECT_EQ(Bignum_difference_ltd(make(x), make(y), 370.0), below) << show(make(x)) << " - " << show(make(y));
}

TEST_F(Bignums, ToDoubleWithItsCutOffAndDecimalText)
{
    const std::tuple<Limbs, double, const char *> cases[] = {
        {{5000}, 0.0, "0.0000"},              {{0, 5000}, 0.0, "0.0000"},
        {{8000}, 0.3, "0.3000"},              {{0}, -0.5, "-0.5000"},
        {{6999, 4999}, -0.3001, "-0.3001"},   {{0, 4999}, -1.0, "-1.0000"},
        {{0, 5128}, 128.0, "128.0000"},       {{1200, 5128}, 128.12, "128.1200"},
        {{0, 10000}, 5000.0, "5000.0000"},    {{7, 3, 5001}, 10003.0007, "10003.0007"},
        {{1234, 5678, 5001}, 15678.1234, "15678.1234"}, {{0, 0, 0, 4998}, -2e8, "-200000000.0000"},
        {{0, 0, 0, 0, 5001}, 1e12, "1000000000000.0000"},
        // six limbs and more: the double gives only the side
        {{0, 0, 0, 0, 0, 5000}, 1e20, "0.0000"},
        {{9999, 9999, 9999, 9999, 9999, 4999}, -1e20, "-0.0001"},
        {{0, 0, 0, 0, 0, 0, 5003}, 1e20, "300000000000000000000.0000"},
    };
    for (const auto &[limbs, value, text] : cases) {
        Bignum X = make(limbs);
        EXPECT_NEAR(Bignum_todouble(X), value, 1e-9 * (1 + fabs(value))) << show(X);
        EXPECT_EQ(Bignum_tofloat(X), (float)Bignum_todouble(X)) << show(X);
        char *decimal = Bignum_todecimal(X);
        EXPECT_STREQ(decimal, text) << show(X);
        free(decimal);
    }
}

}  // namespace
