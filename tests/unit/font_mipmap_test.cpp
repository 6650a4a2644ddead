// The software mipmap filter: the box average, row padding, and when the chain stops.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>
#include <utility>
#include <vector>

#include "support/gl/mipmap.h"

namespace {

using Levels = std::vector<std::pair<int, int>>;

void record_level(void *context, int32_t level, int32_t w, int32_t h, const uint8_t *)
{
    Levels *levels = (Levels *)context;
    EXPECT_EQ(level, (int32_t)levels->size() + 1);
    levels->push_back({w, h});
}

Levels chain(int w, int h, uint32_t c = 4)
{
    uint8_t *pixels = (uint8_t *)calloc(mip_buffer_bytes(c, w, h), 1);
    Levels levels;
    int32_t made = mip_chain_levels(c, w, h, pixels, record_level, &levels);
    EXPECT_EQ(made, (int32_t)levels.size());
    free(pixels);
    return levels;
}

TEST(FontMipmap, ChainStopsAfterTheLevelOfSidesBelowFour)
{
    const std::pair<std::pair<int, int>, Levels> cases[] = {
        {{1, 1}, {}},
        {{2, 2}, {{1, 1}}},
        {{3, 3}, {{1, 1}}},
        {{4, 4}, {{2, 2}, {1, 1}}},
        {{8, 2}, {{4, 1}, {2, 1}, {1, 1}}},
        {{1, 8}, {{1, 4}, {1, 2}, {1, 1}}},  // thin levels read past their edge, inside the slack
        {{16, 1}, {{8, 1}, {4, 1}, {2, 1}, {1, 1}}},
    };
    for (const auto &[size, expected] : cases)
        EXPECT_EQ(chain(size.first, size.second), expected) << size.first << " by " << size.second;
    Levels font = chain(2048, 1024);
    ASSERT_EQ(font.size(), 11u);
    EXPECT_EQ(font[0], std::make_pair(1024, 512));
    EXPECT_EQ(font[9], std::make_pair(2, 1));
    EXPECT_EQ(font[10], std::make_pair(1, 1));
}

TEST(FontMipmap, BoxFilterRoundsAndKeepsRowPadding)
{
    // one component, 3 wide: rows of 4 bytes, the last a pad; the odd column is dropped
    std::vector<uint8_t> p(mip_buffer_bytes(1, 3, 2), 0);
    uint8_t rows[8] = {10, 11, 250, 99, 12, 14, 250, 99};
    std::copy(rows, rows + 8, p.begin());
    mip_halve(1, 3, 2, p.data());
    EXPECT_EQ(p[0], (10 + 11 + 12 + 14 + 2) >> 2);

    // four components, 4 by 4 to 2 by 2: each component on its own
    std::vector<uint8_t> q(mip_buffer_bytes(4, 4, 4), 0);
    for (int y = 0; y < 4; y++)
        for (int x = 0; x < 4; x++)
            for (int k = 0; k < 4; k++)
                q[(y * 4 + x) * 4 + k] = (uint8_t)(x * 10 + y * 50 + k);
    mip_halve(4, 4, 4, q.data());
    for (int y = 0; y < 2; y++)
        for (int x = 0; x < 2; x++)
            for (int k = 0; k < 4; k++) {
                int sum = 0;
                for (int dy = 0; dy < 2; dy++)
                    for (int dx = 0; dx < 2; dx++)
                        sum += (2 * x + dx) * 10 + (2 * y + dy) * 50 + k;
                EXPECT_EQ(q[(y * 2 + x) * 4 + k], (sum + 2) >> 2) << x << "," << y << "," << k;
            }
    EXPECT_EQ(mip_row_bytes(3, 5), 16u);
    EXPECT_EQ(mip_row_bytes(1, 1), 4u);
}

}  // namespace
