// Ordinal terms and the arena: block sizes, block moves, figures, the two
// memory modes of the term operations, clone and free, and the held shapes.
#include <gtest/gtest.h>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord.h"
#include "OrdBuchholz/ord_arith.h"
#include "ord_fixtures_test.h"

namespace {

// A private arena per test, so block figures start from a known state.
class Arena : public testing::Test {
protected:
    void SetUp() override { memstack_init(&stack); }
    void TearDown() override
    {
        ord_arena = nullptr;
        memstack_free(&stack);
    }
    MemStack stack;
};

TEST_F(Arena, AllocationBumpsMovesWholeAndRewindKeepsTheBlocks)
{
    char *b0 = stack.base[0];
    EXPECT_EQ(memstack_used(&stack), 0u);
    EXPECT_EQ(memstack_alloc(&stack, 400000), b0);
    EXPECT_EQ(memstack_alloc(&stack, 400000), b0 + 400000);
    // 200000 bytes are left in block 0: the next one does not split
    EXPECT_EQ(memstack_alloc(&stack, 300000), stack.base[1]);
    EXPECT_EQ(stack.current, 1);
    // the abandoned tail counts as used
    EXPECT_EQ(memstack_used(&stack), 1000000u + 300000u);
    // 2,500,000 bytes first fit block 4 (2,600,000); blocks 2 and 3 are made too
    EXPECT_EQ(memstack_alloc(&stack, 2500000), stack.base[4]);
    EXPECT_EQ(stack.current, 4);
    EXPECT_NE(stack.base[2], nullptr);
    EXPECT_NE(stack.base[3], nullptr);
    EXPECT_EQ(stack.base[5], nullptr);
    uint32_t capacity = 1000000u + 1300000u + 1700000u + 2000000u + 2600000u;
    EXPECT_EQ(memstack_capacity(&stack), capacity);

    memstack_rewind(&stack);
    EXPECT_EQ(memstack_capacity(&stack), capacity);
    EXPECT_EQ(memstack_used(&stack), 0u);
    EXPECT_EQ(memstack_alloc(&stack, 16), b0);
    // sizes keep growing by thirds (block 5 3.4 and block 6 4 million bytes)
    // until the 32-bit size wraps negative at block 34
    EXPECT_EQ(memstack_block_size(5), 3400000);
    EXPECT_EQ(memstack_block_size(6), 4000000);
    EXPECT_EQ(memstack_block_size(33), 2048000000);
    EXPECT_LT(memstack_block_size(34), 0);
}

TEST_F(Arena, TermOperationsUseTheArenaAndNeverFreeThere)
{
    ord_arena = &stack;
    Ord zero = Ord_alloc(0);
    EXPECT_EQ(zero.count, 0u);
    EXPECT_EQ(zero.terms, nullptr);
    EXPECT_EQ(stack.top, stack.base[0]);

    Ord x = Ord_alloc(3);
    EXPECT_EQ((char *)x.terms, stack.base[0]);
    EXPECT_EQ(stack.top, stack.base[0] + 3 * sizeof(OrdTerm));
    for (uint32_t i = 0; i < 3; i++)
        x.terms[i] = OrdTerm{i + 1, Ord_zero(), Ord_zero()};
    char *top = stack.top;
    Ord_freearray(x);
    Ord_free(x);
    EXPECT_EQ(stack.top, top);
    EXPECT_EQ(x.terms[2].coef, 3u);
}

// Term operations, once per memory mode.
class Terms : public InBothModes {};

TEST_P(Terms, CloneIsDeepAndFreeingItLeavesTheSourceIntact)
{
    Ord x = pool.read("psi_{0}(psi_{1}(Omega+3))+omega.2+5");
    Ord c = Ord_clone(x);
    EXPECT_EQ(Ord_cmp(c, x), 0);
    EXPECT_NE(c.terms, x.terms);
    EXPECT_NE(c.terms[0].arg.terms, x.terms[0].arg.terms);
    EXPECT_NE(c.terms[0].arg.terms[0].arg.terms, x.terms[0].arg.terms[0].arg.terms);
    Ord_free(c);
    EXPECT_EQ(text_of(x), "varphi_{2}(omega^{3})+omega.2+5");

    Ord zero = Ord_clone(Ord_zero());
    EXPECT_EQ(zero.count, 0u);
}

TEST_P(Terms, CopySharesEverythingBelowTheTopArray)
{
    Ord x = pool.read("Omega_{2}+psi_{1}(Omega)");
    Ord c = Ord_copy(x);
    EXPECT_NE(c.terms, x.terms);
    EXPECT_EQ(c.terms[0].sub.terms, x.terms[0].sub.terms);
    EXPECT_EQ(c.terms[1].arg.terms, x.terms[1].arg.terms);
    Ord_freearray(c);
}

TEST_P(Terms, FiniteAndTopShapes)
{
    EXPECT_TRUE(Ord_isfinite(Ord_zero()));
    EXPECT_TRUE(Ord_isfinite(pool.read("7")));
    EXPECT_FALSE(Ord_isfinite(pool.read("omega")));
    EXPECT_FALSE(Ord_isfinite(pool.read("omega+1")));

    Ord top = Ord_maketop();
    EXPECT_TRUE(Ord_istop(top));
    EXPECT_FALSE(Ord_istop(pool.read("psi_{0}(Omega_{Omega})")));
    Ord_free(top);
}

// The held shapes of telling values: omega is psi_0(1), Omega is psi_1(0).
TEST_P(Terms, TellingValuesHaveTheirShapes)
{
    const std::pair<const char *, const char *> cases[] = {
        {"0", "[]"},
        {"omega.3+2", "[(3, [], [(1, [], [])]), (2, [], [])]"},
        {"psi_{0}(2)", "[(1, [], [(2, [], [])])]"},
        {"psi_{1}(Omega)", "[(1, [(1, [], [])], [(1, [(1, [], [])], [])])]"},
        {"psi_{0}(Omega_{2})", "[(1, [], [(1, [(2, [], [])], [])])]"},
        {"Omega_{omega}", "[(1, [(1, [], [(1, [], [])])], [])]"},
    };
    for (const auto &[text, shape] : cases)
        EXPECT_EQ(shape_of(pool.read(text)), shape) << text;
}

INSTANTIATE_IN_BOTH_MODES(Terms);

}  // namespace
