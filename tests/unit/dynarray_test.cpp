// DynArray: the growth sequence, the shrink rule and the mirrored pointer.
#include <gtest/gtest.h>

#include <vector>

#include "ord/dynarray.h"

namespace {

DynArray make_array(void **mirror = nullptr)
{
    DynArray a;
    DynArray_init(&a, sizeof(uint32_t), dyn_default_capacity);
    a.mirror = mirror;
    if (mirror)
        *mirror = a.data;
    return a;
}

TEST(DynArray, GrowsByTheLoadFigure)
{
    DynArray a = make_array();
    std::vector<uint32_t> capacities = {a.capacity};
    for (uint32_t i = 0; i < 100; i++) {
        DynArray_append(&a, &i);
        if (a.capacity != capacities.back())
            capacities.push_back(a.capacity);
    }
    // a full array of n grows to trunc((n + 1) / 0.8)
    std::vector<uint32_t> expected = {1, 2, 3, 5, 7, 10, 13, 17, 22, 28, 36, 46, 58, 73, 92, 116};
    EXPECT_EQ(capacities, expected);
    for (uint32_t i = 100; i < 116; i++)
        DynArray_append(&a, &i);
    // 116 full: the next append grows to 146
    EXPECT_EQ(a.capacity, 116u);
    uint32_t v = 0;
    DynArray_append(&a, &v);
    EXPECT_EQ(a.capacity, 146u);
    DynArray_free(&a);

    // the step quoted for a hundred elements
    DynArray b;
    DynArray_init(&b, sizeof(uint32_t), 100);
    for (uint32_t i = 0; i <= 100; i++)
        DynArray_append(&b, &i);
    EXPECT_EQ(b.capacity, 126u);
    for (uint32_t i = 0; i <= 100; i++)
        EXPECT_EQ(*DynArray_at<uint32_t>(&b, i), i) << "element " << i;
    DynArray_free(&b);
}

TEST(DynArray, AppendReturnsIndexAndStoresInPlace)
{
    DynArray a = make_array();
    void *before = a.data;
    uint32_t v = 7;
    EXPECT_EQ(DynArray_append(&a, &v), 0u);
    EXPECT_EQ(a.data, before) << "capacity 1, count 0: no allocation";
    v = 8;
    EXPECT_EQ(DynArray_append(&a, &v), 1u);
    EXPECT_EQ(*DynArray_at<uint32_t>(&a, 0), 7u);
    EXPECT_EQ(*DynArray_at<uint32_t>(&a, 1), 8u);
    DynArray_free(&a);
}

TEST(DynArray, RemoveMovesLastIntoPlaceAndIgnoresPastEnd)
{
    DynArray a = make_array();
    for (uint32_t i = 0; i < 5; i++)
        DynArray_append(&a, &i);
    DynArray_remove(&a, 9);
    EXPECT_EQ(a.count, 5u);
    DynArray_remove(&a, 1);
    EXPECT_EQ(a.count, 4u);
    std::vector<uint32_t> got(DynArray_at<uint32_t>(&a, 0), DynArray_at<uint32_t>(&a, 4));
    EXPECT_EQ(got, (std::vector<uint32_t>{0, 4, 2, 3}));
    DynArray_free(&a);
}

TEST(DynArray, ShrinksBelowSixtyPerCent)
{
    struct Case {
        uint32_t count, capacity;      // before the remove
        uint32_t expected_capacity;    // after it
    };
    // count-1 over capacity below 0.6 shrinks to max(min, trunc((count-1) / 0.8))
    const Case cases[] = {
        {5, 5, 5},     // 4/5 = 0.8: stays
        {4, 5, 5},     // 3/5 = 0.6: not below, stays
        {3, 5, 2},     // 2/5 = 0.4: shrinks to trunc(2.5)
        {1, 2, 1},     // 0/2: shrinks to the floor of 1
        {60, 100, 73}, // 59/100: shrinks to trunc(73.75)
        {61, 100, 100},// 60/100: stays
    };
    for (const Case &c : cases) {
        DynArray a = make_array();
        for (uint32_t i = 0; i < c.capacity; i++)
            DynArray_append(&a, &i);
        // rebuild to exactly the case's capacity and count
        DynArray_free(&a);
        DynArray_init(&a, sizeof(uint32_t), c.capacity);
        a.min_capacity = 1;
        for (uint32_t i = 0; i < c.count; i++)
            DynArray_append(&a, &i);
        ASSERT_EQ(a.capacity, c.capacity);
        DynArray_remove(&a, c.count - 1);
        EXPECT_EQ(a.capacity, c.expected_capacity)
            << "count " << c.count << " capacity " << c.capacity;
        EXPECT_EQ(a.count, c.count - 1);
        for (uint32_t i = 0; i + 1 < c.count; i++)
            ASSERT_EQ(*DynArray_at<uint32_t>(&a, i), i);
        DynArray_free(&a);
    }
}

TEST(DynArray, NeverShrinksBelowMinCapacity)
{
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
    DynArray a = make_array((void **)&view);
    int moves = 0;
    for (uint32_t i = 0; i < 50; i++) {
        void *before = a.data;
        view = reinterpret_cast<uint32_t *>(0x1);  // a mark the array must overwrite on a move
        DynArray_append(&a, &i);
        if (a.data != before) {
            moves++;
            EXPECT_EQ(view, a.data) << "append " << i;
        } else {
            EXPECT_EQ(view, reinterpret_cast<uint32_t *>(0x1)) << "rewritten without a move, append " << i;
        }
    }
    EXPECT_GT(moves, 5);
    for (int i = 0; i < 50; i++) {
        void *before = a.data;
        view = reinterpret_cast<uint32_t *>(0x1);
        DynArray_remove(&a, 0);
        if (a.data != before)
            EXPECT_EQ(view, a.data);
        else
            EXPECT_EQ(view, reinterpret_cast<uint32_t *>(0x1));
    }
    EXPECT_EQ(a.capacity, 1u);
    DynArray_free(&a);
    EXPECT_EQ(view, nullptr);
}

}  // namespace
