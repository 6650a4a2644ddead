// The layout of the line: recursive cutting of an interval along the
// fundamental sequence of its right-hand ordinal.
//
// There is no stored layout. An interval between two known positions is cut
// into sub-intervals whose left ends are the members of the right end's
// fundamental sequence, each spanning 0.2983 of what is left to the right end,
// so the ticks converge geometrically on the limit. Only intervals that meet
// the view are entered, and recursion stops below `minsize` pixels, so the
// work depends on what is on screen, not on how deep the zoom is.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "OrdBuchholz/expansion_cache.h"
#include "OrdBuchholz/ord.h"
#include "support/bignum/bignum.h"

// One interval of the line, passed by value. xlo, xhi, ordlo and ordhi are
// borrowed: a callback must neither free nor keep them (it copies what it
// wants after it returns).
struct WalkRecord {
    Bignum xlo;     // pixel position of the left end
    Bignum xhi;     // pixel position of the right end
    float minsize;  // pixels; a narrower interval is not divided
    float left;     // pixels; left limit of the view to cover
    float right;    // pixels; right limit of that view
    Ord ordlo;      // ordinal at xlo: the one a callback is about
    Ord ordhi;      // ordinal at xhi
    float yleft;    // screen y of the line at `left` (callbacks only)
    float yright;   // screen y of the line at `right` (callbacks only)
    float ticklen;  // tick stroke length in pixels (callbacks only)
    // where ordhi comes from: the handle of the expansion cache entry whose
    // member it is, CACHE_ROOT for the top, CACHE_OFF (0) when it cannot be kept
    uint32_t ordhi_entry;
    // where ordlo comes from, likewise: the entry and the index of ordlo among
    // its members, so that what is worked out from ordlo can be kept for as
    // long as the entry lives (expansion_cache_life)
    uint32_t ordlo_entry;
    int32_t ordlo_member;
    // set for a leaf that was not divided because the work limits of the
    // expansion refused it: the line is "too deep" here this frame
    bool too_deep;
};

// What a pass does at each interval where the recursion stops.
typedef void (*TickCallback)(WalkRecord r);

// The distance left to xhi shrinks by this factor at each tick; with the
// weight rounding of Bignum_lincomb the pair acts as 0.7017 and 0.2983.
constexpr double CONVERGE_RATIO = 0.701703829;
constexpr double CONVERGE_COMPLEMENT = 0.29829617100000005;

// How many levels segment may nest; -1, the start value, means no limit. The
// viewer's A and S keys change it between frames.
extern int32_t segment_depth_limit;
// segment calls past the depth test at present; 0 between walks.
extern int32_t segment_depth;
// Leaves made "too deep" since the start value 0; passes read its growth.
extern int64_t segment_too_deep;
// Seconds a walk may spend getting members (kept ones cost next to nothing)
// before it takes only kept expansions and makes every other interval a "too
// deep" leaf; 0, the start value, is no limit. walk_line sets the spent
// seconds to 0.
extern double segment_expand_budget;
extern double segment_expand_spent;

// Bytes of stack one walk's nested intervals may take. A first child gets
// all but 1.4/(k + 2) of its parent after k first-child steps, so where a long
// descent of ordinals keeps the left end, the walk nests ten thousand levels
// deep and more: past this budget an interval is a "too deep" leaf instead of
// a stack overflow. 0, the start value, means half the stack the process may
// grow to; the first walk sets it so.
extern size_t segment_stack_bytes;
// The stack segment_stack_room asks for: some 50,000 levels of walk.
constexpr size_t SEGMENT_STACK_ROOM = (size_t)64 << 20;

// Raises the process's stack limit to SEGMENT_STACK_ROOM where its hard limit
// allows; programs call it first thing, before the stack has grown.
void segment_stack_room();

// Most converging ticks one interval may have; a view that needs more of them
// (over 2,800 decades of zoom onto one limit) is a "too deep" leaf.
constexpr int32_t SEGMENT_MAX_TICKS = 1000000;

// Lays out the interval r and calls fn at every interval where it stops; k
// counts the first-child steps that led here (0 from the walker). The members
// of each interval's sequence come from the expansion cache
// (OrdBuchholz/expansion_cache.h) when it can keep them, and from an
// expansion of the walk's own, freed on the way back, when it cannot. Where
// the expansion's work limits refuse an interval it becomes a leaf with
// too_deep set.
void segment(TickCallback fn, int32_t k, WalkRecord r);
