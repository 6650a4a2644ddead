// The arena: block sizes, block moves and figures.
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
    // 200000 bytes are left in block 0: the next one does not split; the tail counts as used
    EXPECT_EQ(memstack_alloc(&stack, 300000), stack.base[1]);
    EXPECT_EQ(stack.current, 1);
    EXPECT_EQ(memstack_used(&stack), 1000000u + 300000u);
    // 2,500,000 bytes first fit block 4 (2,600,000); blocks 2 and 3 are made too
    EXPECT_EQ(memstack_alloc(&stack, 2500000), stack.base[4]);
    EXPECT_EQ(stack.current, 4);
    EXPECT_TRUE(stack.base[2] && stack.base[3] && !stack.base[5]);
    uint32_t capacity = 1000000u + 1300000u + 1700000u + 2000000u + 2600000u;
    EXPECT_EQ(memstack_capacity(&stack), capacity);
    memstack_rewind(&stack);
    EXPECT_EQ(memstack_capacity(&stack), capacity);
    EXPECT_EQ(memstack_used(&stack), 0u);
    EXPECT_EQ(memstack_alloc(&stack, 16), b0);
    // sizes keep growing by thirds until the 32-bit size wraps negative at block 34
    EXPECT_EQ(memstack_block_size(5), 3400000);
    EXPECT_EQ(memstack_block_size(6), 4000000);
    EXPECT_EQ(memstack_block_size(33), 2048000000);
    EXPECT_LT(memstack_block_size(34), 0);
}

}  // namespace
