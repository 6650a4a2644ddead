// Ropes of frames: length arithmetic, random ropes against a plain vector,
// huge ropes against arithmetic, overflow and the two stores. (Their use in
// expansion is checked against the recursive reference in ord_deep_test.cpp.)
#include <gtest/gtest.h>

#include <math.h>

#include <map>
#include <random>
#include <vector>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord_rope.h"
#include "support/report/report.h"

namespace {

// Frame i is the finite level [(i + 1, 0, 0)].
OrdTerm numbers[16];

uint32_t frame_of(uint32_t i)
{
    numbers[i] = OrdTerm{i + 1, Ord_zero(), Ord_zero()};
    return rope_frame(Ord{1, &numbers[i]}, ROPE_NONE);
}

RopeNode *leaf_of(uint32_t i) { return rope_leaf(frame_of(i)); }

RopeLen pow2(int32_t e)
{
    RopeLen r = RopeLen_small(1);
    for (int32_t i = 0; i < e; i++)
        RopeLen_mulsmall(&r, r, 2);
    return r;
}

RopeLen plus(RopeLen a, int64_t b)
{
    if (b < 0)
        return RopeLen_sub(a, RopeLen_small((uint64_t)-b));
    RopeLen_add(&a, a, RopeLen_small((uint64_t)b));
    return a;
}

uint64_t small(RopeLen a)
{
    bool fits;
    uint64_t v = RopeLen_tou64(a, &fits);
    EXPECT_TRUE(fits);
    return v;
}

class Rope : public testing::Test {
protected:
    void TearDown() override
    {
        ord_arena = nullptr;
        rope_store_clear();
        rope_too_long = false;
    }
};

TEST_F(Rope, DivisionFitsOrRefuses)
{
    // a / d, and the quotient and remainder where the quotient fits 64 bits
    struct Row { RopeLen a, d; bool ok; uint64_t q; RopeLen r; };
    const Row rows[] = {
        {plus(pow2(300), 5), pow2(299), true, 2, RopeLen_small(5)},
        {plus(pow2(100), -1), pow2(36), true, UINT64_MAX, plus(pow2(36), -1)},
        {RopeLen_small(7), pow2(70), true, 0, RopeLen_small(7)},
        // quotients of 2^64 and more, and a zero divisor
        {pow2(100), pow2(36), false, 0, {}}, {pow2(200), RopeLen_small(3), false, 0, {}},
        {RopeLen_small(7), RopeLen_small(0), false, 0, {}},
    };
    for (const Row &row : rows) {
        uint64_t q = 0;
        RopeLen r = {};
        EXPECT_EQ(RopeLen_divmod_by(row.a, row.d, &q, &r), row.ok) << "row " << &row - rows;
        EXPECT_TRUE(!row.ok || (q == row.q && RopeLen_cmp(r, row.r) == 0)) << "row " << &row - rows;
    }
}

// Random concatenations, repeats and cuts against a vector of frame ids.
TEST_F(Rope, RandomRopesSpellWhatAVectorSpells)
{
    struct Built { RopeNode *n; std::vector<uint32_t> ref; };
    std::vector<Built> pool;
    for (uint32_t i = 0; i < 6; i++)
        pool.push_back({leaf_of(i), {frame_of(i)}});
    std::map<std::vector<uint32_t>, RopeNode *> first_built;
    std::mt19937 rng(16);
    for (int32_t step = 0; step < 1500; step++) {
        const Built &x = pool[rng() % pool.size()], &y = pool[rng() % pool.size()];
        uint32_t cut = (uint32_t)(rng() % (x.ref.size() + 1)), k = rng() % 5;
        Built z = {nullptr, {}};
        switch (rng() % 4) {
        case 0:
            if (x.ref.size() + y.ref.size() > 4000)
                continue;
            z = {rope_concat(x.n, y.n), x.ref};
            z.ref.insert(z.ref.end(), y.ref.begin(), y.ref.end());
            break;
        case 1:
            if (x.ref.size() * k > 4000)
                continue;
            z.n = rope_repeat(x.n, k);
            for (uint32_t i = 0; i < k; i++)
                z.ref.insert(z.ref.end(), x.ref.begin(), x.ref.end());
            break;
        case 2:
            z = {rope_take(x.n, RopeLen_small(cut)), {x.ref.begin(), x.ref.begin() + cut}};
            break;
        default:
            z = {rope_drop(x.n, RopeLen_small(cut)), {x.ref.begin() + cut, x.ref.end()}};
        }
        SCOPED_TRACE("step " + std::to_string(step));
        size_t len = z.ref.size();
        ASSERT_EQ(small(rope_length(z.n)), len);
        if (!len)
            continue;
        EXPECT_LE(rope_height(z.n), 2 * log2((double)len) + 3) << "length " << len;
        EXPECT_EQ(rope_first_frame(z.n), z.ref.front());
        EXPECT_EQ(rope_last_frame(z.n), z.ref.back());
        EXPECT_EQ(rope_frame_at(z.n, RopeLen_small(len)), 0u);
        for (int32_t i = 0; i < 4; i++) {
            size_t at = rng() % len;
            EXPECT_EQ(rope_frame_at(z.n, RopeLen_small(at)), z.ref[at]) << "at " << at;
        }
        // against a rope of the pool, itself with frame c replaced, and
        // itself cut at c and rejoined
        const Built &w = pool[rng() % pool.size()];
        size_t common = 0;
        while (common < len && common < w.ref.size() && z.ref[common] == w.ref[common])
            common++;
        EXPECT_EQ(small(rope_lcp(z.n, w.n)), common);
        EXPECT_EQ(small(rope_lcp(w.n, z.n)), common);
        RopeLen c = RopeLen_small(cut % len);
        RopeNode *changed =
            rope_concat(rope_concat(rope_take(z.n, c), leaf_of(6)), rope_drop(z.n, plus(c, 1)));
        RopeNode *rejoined = rope_concat(rope_take(z.n, c), rope_drop(z.n, c));
        EXPECT_EQ(small(rope_lcp(z.n, changed)), cut % len);
        EXPECT_EQ(small(rope_lcp(rejoined, z.n)), len);
        RopeNode *&seen = first_built[z.ref];
        seen = seen ? seen : z.n;
        EXPECT_TRUE(rope_equal(seen, z.n) && rope_equal(seen, rejoined));
        EXPECT_EQ(rope_equal(z.n, w.n), common == len && common == w.ref.size());
        pool.push_back(z);
    }
}

TEST_F(Rope, HugeRopesCompareByArithmetic)
{
    RopeNode *a = leaf_of(0), *b = leaf_of(1), *c = leaf_of(2);
    // 2^301 frames a b a b ...; the b at 2^299 + 17 replaced by c
    RopeNode *x = rope_concat(a, b);
    for (int32_t i = 0; i < 300; i++)
        x = rope_repeat(x, 2);
    RopeLen at = plus(pow2(299), 17);
    RopeNode *y = rope_concat(rope_concat(rope_take(x, at), c), rope_drop(x, plus(at, 1)));
    EXPECT_EQ(RopeLen_cmp(rope_length(y), pow2(301)), 0);
    EXPECT_EQ(RopeLen_cmp(rope_lcp(x, y), at), 0);
    EXPECT_EQ(RopeLen_cmp(rope_lcp(y, x), at), 0);
    EXPECT_EQ(rope_frame_at(y, at), c->frame);
    EXPECT_EQ(rope_frame_at(y, plus(at, 1)), a->frame);
    EXPECT_EQ(rope_frame_at(y, plus(at, -2)), b->frame);
    RopeNode *z = rope_concat(rope_take(x, at), rope_drop(x, at));
    EXPECT_EQ(RopeLen_cmp(rope_lcp(x, z), pow2(301)), 0);
    EXPECT_TRUE(rope_equal(x, z));
    EXPECT_LE(rope_height(y), 2000u);
}

TEST_F(Rope, PastFiveHundredTwelveBitsGivesNull)
{
    RopeNode *half = leaf_of(0);
    for (int32_t i = 0; i < 511; i++)
        half = rope_repeat(half, 2);  // 2^511 frames
    RopeNode *most = rope_concat(half, rope_take(half, plus(pow2(511), -1)));  // 2^512 - 1
    ASSERT_NE(most, nullptr);
    EXPECT_FALSE(rope_too_long);
    RopeNode *const results[] = {rope_concat(half, half), rope_repeat(half, 2),
                                 rope_concat(most, leaf_of(1)), rope_repeat(rope_drop(half, pow2(510)), 4)};
    for (size_t i = 0; i < std::size(results); i++)
        EXPECT_EQ(results[i], nullptr) << "row " << i;
    EXPECT_TRUE(rope_too_long);
}

TEST_F(Rope, RewindEmptiesTheTemporaryStoreAndPersistentNodesStay)
{
    uint32_t p = frame_of(0);
    RopeNode *leaf = rope_leaf(p), *rep = rope_repeat(leaf, 5);
    uint64_t bytes = rope_store_bytes();
    MemStack arena;
    memstack_init(&arena);
    ord_arena = &arena;
    uint32_t t = frame_of(1);
    EXPECT_EQ(frame_of(0), p);
    EXPECT_NE(t & ROPE_TEMPORARY_FRAME, 0u);
    EXPECT_EQ(rope_repeat(leaf, 5), rep);
    EXPECT_TRUE(rope_concat(rep, rope_leaf(t))->temporary);
    EXPECT_EQ(rope_store_bytes(), bytes);
    rope_store_rewind();
    EXPECT_EQ(rope_frame_get(t), nullptr);
    ord_arena = nullptr;
    EXPECT_EQ(rope_leaf(p), leaf);
    EXPECT_EQ(rope_repeat(leaf, 5), rep);
    EXPECT_EXIT(
        {
            report_handler = [](ReportRecord *record) { fputs(record->text, stderr); };
            ord_arena = &arena;
            RopeNode *temporary = leaf_of(2);
            ord_arena = nullptr;
            rope_concat(leaf, temporary);
        },
        testing::ExitedWithCode(1), "temporary");
    memstack_free(&arena);
}

}  // namespace
