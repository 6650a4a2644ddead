// DynArray: the growth sequence, the shrink rule and the mirrored pointer.
#include <gtest/gtest.h>

#include <numeric>
#include <tuple>
#include <vector>

#include "support/dynarray/dynarray.h"

namespace {

std::vector<uint32_t> elements(const DynArray &a)
{
    return std::vector<uint32_t>(DynArray_at<uint32_t>(&a, 0), DynArray_at<uint32_t>(&a, a.count));
}

// Appends, then removes from the front until empty: the capacities passed
// on the way up, the initial capacity as the floor on the way down, and the
// mirror set exactly when the block moves.
TEST(DynArray, GrowsShrinksToTheFloorAndMirrorsTheBlock)
{
    // the initial capacity, the appends and the capacities on the way up: a
    // full array of n grows to trunc((n + 1) / 0.8)
    const std::tuple<uint32_t, uint32_t, std::vector<uint32_t>> cases[] = {
        {dyn_default_capacity, 117, {1, 2, 3, 5, 7, 10, 13, 17, 22, 28, 36, 46, 58, 73, 92, 116, 146}},
        {100, 101, {100, 126}},
        {10, 50, {10, 13, 17, 22, 28, 36, 46, 58}},
    };
    uint32_t *const mark = reinterpret_cast<uint32_t *>(0x1);  // the array must overwrite it on a move
    for (const auto &[initial, appends, want_capacities] : cases) {
        uint32_t *view = nullptr;
        DynArray a;
        DynArray_init(&a, sizeof(uint32_t), initial);
        a.mirror = (void **)&view;
        std::vector<uint32_t> capacities = {a.capacity}, expected;
        for (uint32_t i = 0; i < 2 * appends; i++) {
            void *before = a.data;
            view = mark;
            if (i < appends) {
                EXPECT_EQ(DynArray_append(&a, &i), i);
                expected.push_back(i);
                if (a.capacity != capacities.back())
                    capacities.push_back(a.capacity);
            } else {
                DynArray_remove(&a, 0);
            }
            EXPECT_EQ(view, a.data != before ? (uint32_t *)a.data : mark) << "step " << i;
            EXPECT_TRUE(i > 0 || view == mark) << "room for one, count 0: no allocation";
            if (i + 1 == appends) {
                EXPECT_EQ(elements(a), expected);
            }
        }
        EXPECT_EQ(capacities, want_capacities);
        EXPECT_EQ(a.capacity, initial) << "the floor";
        DynArray_free(&a);
        EXPECT_EQ(view, nullptr);
    }
}

// A remove moves the last element into the gap, as a std::vector model does
// here, and shrinks when count-1 over capacity falls below 0.6, to
// max(min, trunc((count-1) / 0.8)).
TEST(DynArray, RemoveFillsTheGapAndShrinksDownToItsMinimum)
{
    // count and capacity before, the index removed, the capacity after
    const std::tuple<uint32_t, uint32_t, uint32_t, uint32_t> cases[] = {
        {5, 5, 1, 5},       // 4/5 = 0.8: stays; the last moves into place
        {5, 5, 9, 5},       // past the end: nothing
        {4, 5, 3, 5},       // 3/5 = 0.6: not below, stays
        {3, 5, 2, 2},       // 2/5 = 0.4: shrinks to trunc(2.5)
        {1, 2, 0, 1},       // 0/2: shrinks to the floor of 1
        {60, 100, 59, 73},  // 59/100: shrinks to trunc(73.75)
        {61, 100, 60, 100}, // 60/100: stays
    };
    for (const auto &[count, capacity, index, capacity_after] : cases) {
        DynArray a;
        DynArray_init(&a, sizeof(uint32_t), capacity);
        a.min_capacity = 1;
        std::vector<uint32_t> model(count);
        std::iota(model.begin(), model.end(), 0u);
        for (uint32_t v : model)
            DynArray_append(&a, &v);
        ASSERT_EQ(a.capacity, capacity);
        DynArray_remove(&a, index);
        if (index < model.size()) {
            model[index] = model.back();
            model.pop_back();
        }
        EXPECT_EQ(a.capacity, capacity_after) << "count " << count << " capacity " << capacity;
        EXPECT_EQ(elements(a), model) << "remove at " << index;
        DynArray_free(&a);
    }
}

}  // namespace
