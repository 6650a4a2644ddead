// DynArray: the growth sequence, the shrink rule and the mirrored pointer.
#include <gtest/gtest.h>

#include <vector>

#include "support/dynarray/dynarray.h"

namespace {

std::vector<uint32_t> elements(const DynArray &a)
{
    return std::vector<uint32_t>(DynArray_at<uint32_t>(&a, 0), DynArray_at<uint32_t>(&a, a.count));
}

TEST(DynArray, GrowsByTheLoadFigureAndKeepsItsElements)
{
    DynArray a;
    DynArray_init(&a, sizeof(uint32_t), dyn_default_capacity);
    void *first = a.data;
    std::vector<uint32_t> capacities = {a.capacity}, expected;
    for (uint32_t i = 0; i < 117; i++) {
        EXPECT_EQ(DynArray_append(&a, &i), i);
        EXPECT_TRUE(i > 0 || a.data == first) << "capacity 1, count 0: no allocation";
        if (a.capacity != capacities.back())
            capacities.push_back(a.capacity);
        expected.push_back(i);
    }
    // a full array of n grows to trunc((n + 1) / 0.8)
    EXPECT_EQ(capacities, (std::vector<uint32_t>{1, 2, 3, 5, 7, 10, 13, 17, 22, 28, 36, 46, 58, 73,
                                                 92, 116, 146}));
    EXPECT_EQ(elements(a), expected);
    DynArray_free(&a);

    // the step quoted for a hundred elements
    DynArray_init(&a, sizeof(uint32_t), 100);
    for (uint32_t i = 0; i <= 100; i++)
        DynArray_append(&a, &i);
    EXPECT_EQ(a.capacity, 126u);
    DynArray_free(&a);
}

TEST(DynArray, RemoveMovesLastIntoPlaceAndIgnoresPastEnd)
{
    DynArray a;
    DynArray_init(&a, sizeof(uint32_t), 8);
    for (uint32_t i = 0; i < 5; i++)
        DynArray_append(&a, &i);
    DynArray_remove(&a, 9);
    EXPECT_EQ(a.count, 5u);
    DynArray_remove(&a, 1);
    EXPECT_EQ(elements(a), (std::vector<uint32_t>{0, 4, 2, 3}));
    DynArray_free(&a);
}

TEST(DynArray, ShrinksBelowSixtyPerCentDownToItsMinimum)
{
    struct Case {
        uint32_t count, capacity;      // before the remove
        uint32_t expected_capacity;    // after it
    };
    // count-1 over capacity below 0.6 shrinks to max(min, trunc((count-1) / 0.8))
    const Case cases[] = {
        {5, 5, 5},       // 4/5 = 0.8: stays
        {4, 5, 5},       // 3/5 = 0.6: not below, stays
        {3, 5, 2},       // 2/5 = 0.4: shrinks to trunc(2.5)
        {1, 2, 1},       // 0/2: shrinks to the floor of 1
        {60, 100, 73},   // 59/100: shrinks to trunc(73.75)
        {61, 100, 100},  // 60/100: stays
    };
    for (const Case &c : cases) {
        DynArray a;
        DynArray_init(&a, sizeof(uint32_t), c.capacity);
        a.min_capacity = 1;
        for (uint32_t i = 0; i < c.count; i++)
            DynArray_append(&a, &i);
        ASSERT_EQ(a.capacity, c.capacity);
        DynArray_remove(&a, c.count - 1);
        EXPECT_EQ(a.capacity, c.expected_capacity) << "count " << c.count << " capacity " << c.capacity;
        std::vector<uint32_t> kept(c.count - 1);
        for (uint32_t i = 0; i + 1 < c.count; i++)
            kept[i] = i;
        EXPECT_EQ(elements(a), kept);
        DynArray_free(&a);
    }

    // the initial capacity is the floor
    DynArray a;
    DynArray_init(&a, sizeof(uint32_t), 10);
    for (uint32_t i = 0; i < 12; i++)
        DynArray_append(&a, &i);
    while (a.count > 0)
        DynArray_remove(&a, a.count - 1);
    EXPECT_EQ(a.capacity, 10u);
    DynArray_free(&a);
}

TEST(DynArray, MirrorFollowsTheBlockExactlyWhenItMoves)
{
    uint32_t *view = nullptr;
    DynArray a;
    DynArray_init(&a, sizeof(uint32_t), dyn_default_capacity);
    a.mirror = (void **)&view;
    uint32_t *const mark = reinterpret_cast<uint32_t *>(0x1);  // the array must overwrite it on a move
    int moves = 0;
    for (uint32_t i = 0; i < 100; i++) {
        void *before = a.data;
        view = mark;
        if (i < 50)
            DynArray_append(&a, &i);
        else
            DynArray_remove(&a, 0);
        bool moved = a.data != before;
        moves += moved;
        EXPECT_EQ(view, moved ? (uint32_t *)a.data : mark) << "step " << i;
    }
    EXPECT_GT(moves, 10);
    EXPECT_EQ(a.capacity, 1u);
    DynArray_free(&a);
    EXPECT_EQ(view, nullptr);
}

}  // namespace
