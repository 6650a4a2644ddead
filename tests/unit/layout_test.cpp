// The layout of the line: the worked start, the order of ordinals along
// walks at deep zoom, heap against arena, and the per-column arrays.
#include <gtest/gtest.h>

#include <math.h>

#include <string>
#include <tuple>
#include <vector>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_expand.h"
#include "OrdBuchholz/ord_parse.h"
#include "PlotSegment2/tick_classify.h"
#include "PlotSegment2/tick_walk.h"
#include "notation/notation.h"
#include "ord/navigation.h"
#include "support/gl/screen.h"

namespace {

const NotationRow all_on = {{1, 1, 1, 1, 1, 1}};

// Where a tick call was, the kind of its ordinal, and the ordinal's text.
using Call = std::tuple<std::string, uint32_t, std::string>;

std::vector<Call> calls;
std::vector<Ord> ordinals;  // heap clones of each call's ordlo, in walk order

void record_call(WalkRecord r)
{
    char *position = Bignum_todecimal(r.xlo);
    char *text = Ord_tostring(r.ordlo, &all_on);
    calls.push_back({position, tick_classify(r.ordlo), text});
    free(position);
    free(text);
    MemStack *mode = ord_arena;
    ord_arena = nullptr;
    ordinals.push_back(Ord_clone(r.ordlo));
    ord_arena = mode;
    tick_record(r);
}

void clear_calls()
{
    for (Ord o : ordinals)
        Ord_free(o);
    ordinals.clear();
    calls.clear();
}

// The record of a view of a window `width` wide, panned to `target` and
// zoomed by 10 `decades` times, as the viewer's own update does it.
WalkRecord view(int32_t width, double target, int32_t decades, float minsize)
{
    screen_w = width;
    Bignum lo, hi;
    double min_length;
    view_start(&lo, &hi, &min_length);
    if (decades > 0 || target != width / 2) {
        view_update(&lo, &hi, 1.0, (int32_t)(target - width / 2));
        for (int32_t i = 0; i < decades; i++)
            view_update(&lo, &hi, 10.0, 0);
    }
    WalkRecord r = {};
    r.xlo = lo;
    r.xhi = hi;
    r.minsize = minsize;
    r.right = (float)width;
    return r;
}

void walk(WalkRecord r, MemStack *arena)
{
    clear_calls();
    tick_classify(Ord_zero());  // constants on the heap before any arena pass
    tick_arrays_rebuild(r.right);
    ord_arena = arena;
    walk_line(record_call, r);
    ord_arena = nullptr;
    if (arena)
        memstack_rewind(arena);
}

TEST(Layout, WorkedStart)
{
    WalkRecord r = view(1280, 640, 0, 125.0f);
    walk(r, nullptr);
    // derived from the step rules by hand: the tick count is one tick late,
    // first children of a limit take the larger share, then 0.2983 of the rest
    const std::vector<Call> expected = {
        {"128.0000", 1, "0"},     {"219.1185", 2, "1"},
        {"283.0563", 2, "2"},     {"327.9215", 2, "3"},
        {"433.4592", 5, "omega"}, {"497.3970", 5, "omega^{omega}"},
        {"542.2622", 5, "omega^{omega^{omega}}"}, {"647.7999", 6, "epsilon_{0}"},
        {"692.6651", 10, "psi_{0}(Omega_{omega})"},
        {"798.2028", 10, "psi_{0}(Omega_{Omega})"},
        {"903.7405", 10, "psi_{0}(Omega_{Omega_{Omega}})"},
        {"977.7963", 10, "psi_{0}(Omega_{Omega_{Omega_{Omega}}})"},
        {"1029.7613", 10, "psi_{0}(Omega_{Omega_{Omega_{Omega_{Omega}}}})"},
        {"1152.0000", 9, "psi_{0}(I)"},
    };
    ASSERT_EQ(calls.size(), expected.size());
    for (size_t i = 0; i < expected.size(); i++)
        EXPECT_EQ(calls[i], expected[i]) << "call " << i;
    Bignum_free(r.xlo);
    Bignum_free(r.xhi);
    clear_calls();
}

TEST(Layout, DepthLimitAndTinyIntervals)
{
    // limit 0: the root makes one callback for the whole line, plus the end
    segment_depth_limit = 0;
    WalkRecord r = view(1280, 640, 0, 1.0f);
    walk(r, nullptr);
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0], (Call{"128.0000", 1, "0"}));
    EXPECT_EQ(calls[1], (Call{"1152.0000", 9, "psi_{0}(I)"}));
    segment_depth_limit = -1;
    EXPECT_EQ(segment_depth, 0);

    // a whole line narrower than minsize is one leaf, though its right end is a limit
    r.minsize = 2000.0f;
    walk(r, nullptr);
    EXPECT_EQ(calls.size(), 2u);
    Bignum_free(r.xlo);
    Bignum_free(r.xhi);
    clear_calls();
}

// Along every walk the ordinals come out strictly increasing (the end call
// of the top is left out: members of its sequence are never compared with it).
void expect_increasing(const char *what)
{
    for (size_t i = 1; i + 1 < ordinals.size(); i++)
        ASSERT_LT(Ord_cmp(ordinals[i - 1], ordinals[i]), 0)
            << what << ": call " << i << " " << std::get<2>(calls[i - 1]) << " then "
            << std::get<2>(calls[i]);
}

TEST(Layout, DeepWalksIncreaseAndAgreeInBothMemoryModes)
{
    static MemStack arena;
    memstack_init(&arena);
    struct Case {
        double target;
        int32_t decades;
        float minsize;
    };
    // the costly neighbourhood of the top is visited at shallower depths
    const Case cases[] = {
        {700, 0, 1}, {1000, 0, 1}, {1150, 0, 1}, {700, 10, 1}, {1000, 10, 1}, {1150, 10, 4},
        {700, 100, 4}, {1000, 100, 4}, {1000, 300, 40}, {600, 1000, 40}, {640, 1000, 40},
        {1100, 20, 4},
    };
    for (const Case &c : cases) {
        std::string what = "target " + std::to_string(c.target) + " at 10^" + std::to_string(c.decades);
        WalkRecord r = view(1280, c.target, c.decades, c.minsize);
        walk(r, nullptr);
        std::vector<Call> heap_calls = calls;
        std::vector<uint32_t> heap_kinds(tick_kinds, tick_kinds + tick_columns);
        std::vector<float> heap_sizes(tick_sizes, tick_sizes + tick_columns);
        EXPECT_GT(calls.size(), 10u) << what;
        expect_increasing(what.c_str());
        EXPECT_EQ(segment_depth, 0) << what;

        walk(r, &arena);
        EXPECT_EQ(calls, heap_calls) << what << ": the arena walks differently";
        EXPECT_EQ(std::vector<uint32_t>(tick_kinds, tick_kinds + tick_columns), heap_kinds) << what;
        EXPECT_EQ(std::vector<float>(tick_sizes, tick_sizes + tick_columns), heap_sizes) << what;
        // every chain held compressed, and none: the same line
        uint32_t levels = ord_rope_levels;
        for (uint32_t held : {0u, UINT32_MAX}) {
            ord_rope_levels = held;
            walk(r, held ? nullptr : &arena);
            EXPECT_EQ(calls, heap_calls) << what << ": ropes from " << held << " levels walk differently";
            EXPECT_EQ(std::vector<float>(tick_sizes, tick_sizes + tick_columns), heap_sizes) << what;
        }
        ord_rope_levels = levels;
        Bignum_free(r.xlo);
        Bignum_free(r.xhi);
    }
    clear_calls();
    memstack_free(&arena);
}

// One tick of x over the interval [lo, hi] in a window 100 columns wide; only
// the interval's size when size_only is set.
void tick_at(double lo, double hi, const char *x, bool size_only = false)
{
    WalkRecord r = {};
    r.right = 100.0f;
    r.xlo = Bignum_fromdouble(lo);
    r.xhi = Bignum_fromdouble(hi);
    OrdParseError error;
    ASSERT_TRUE(Ord_parse(x, &r.ordlo, &error)) << error.message;
    if (size_only)
        tick_size_record(r);
    else
        tick_record(r);
    Ord_free(r.ordlo);
    Bignum_free(r.xlo);
    Bignum_free(r.xhi);
}

TEST(Layout, ColumnsKeepTheHighestKindAndTheLargestSize)
{
    screen_w = 100;
    tick_arrays_rebuild(100.0f);
    tick_at(10.2, 30.0, "omega");  // kind 5
    tick_at(10.2, 30.0, "7");      // kind 2, later in the same column: the higher kind stays
    EXPECT_EQ(tick_kinds[10], 5u);
    EXPECT_NEAR(tick_sizes[10], 19.8001, 1e-4);  // 10.2 is taken as 10.1999
    tick_at(10.2, 12.0, "7", true);  // a smaller interval does not shrink the size
    EXPECT_NEAR(tick_sizes[10], 19.8001, 1e-4);

    // a tick exactly at `left` has a kind and no size of its own; one at `right` has neither
    tick_at(0.0, 30.0, "0");
    EXPECT_EQ(tick_kinds[0], 1u);
    EXPECT_EQ(tick_sizes[0], 0.0f);
    tick_at(100.0, 130.0, "0");
    EXPECT_EQ(tick_kinds[99], 0u);
}

TEST(Layout, ClassificationOfTellingOrdinals)
{
    const std::pair<const char *, uint32_t> cases[] = {
        {"0", 1},  {"7", 2},  {"omega+1", 2},  {"omega.2", 3},  {"psi_{0}(2)+omega", 3},
        {"psi_{0}(2)", 4},  {"omega", 5},  {"psi_{0}(omega)", 5},  {"psi_{0}(Omega)", 6},
        {"psi_{0}(Omega.2)", 6},
        {"psi_{0}(Omega+1)", 4},                    // omega^(epsilon_0 + 1)
        {"psi_{0}(psi_{1}(Omega))", 7},             // psi_0(Omega^2)
        {"psi_{0}(psi_{1}(psi_{1}(Omega)))", 8},    // Feferman-Schutte
        {"psi_{0}(Omega_{2})", 9},                  // Bachmann-Howard
        {"psi_{0}(Omega_{omega})", 10},             // Buchholz
        {"psi_{0}(I)", 9},                          // the top of the line
    };
    for (const auto &[text, kind] : cases) {
        Ord x;
        OrdParseError error;
        ASSERT_TRUE(Ord_parse(text, &x, &error)) << text << ": " << error.message;
        EXPECT_EQ(tick_classify(x), kind) << text;
        Ord_free(x);
    }
}

}  // namespace
