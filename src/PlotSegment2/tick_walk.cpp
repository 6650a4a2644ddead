// The tick walk: walk_line and the per-column recorders.
#include "PlotSegment2/tick_walk.h"

#include <math.h>
#include <stdlib.h>

#include "OrdBuchholz/ord_expand.h"
#include "PlotSegment2/tick_classify.h"
#include "support/gl/screen.h"
#include "support/report/report.h"

int32_t tick_columns = 0;
float *tick_sizes = nullptr;
uint32_t *tick_kinds = nullptr;
uint8_t *tick_too_deep = nullptr;

void tick_arrays_rebuild(float right)
{
    free(tick_kinds);
    free(tick_sizes);
    free(tick_too_deep);
    tick_columns = (int32_t)right;
    // at least one element, so a zero-width window still has somewhere to write
    size_t count = tick_columns > 0 ? (size_t)tick_columns : 1;
    tick_sizes = (float *)calloc(count, sizeof(float));
    tick_kinds = (uint32_t *)calloc(count, sizeof(uint32_t));
    tick_too_deep = (uint8_t *)calloc(count, 1);
    if (!tick_sizes || !tick_kinds || !tick_too_deep)
        REPORT(REPORT_FATAL, "Out of memory for the tick columns", 0);
}

// Upper bound first, then lower.
static int32_t clamp_column(double v)
{
    double c = floor(v);
    if (c > tick_columns - 1)
        c = tick_columns - 1;
    if (c < 0)
        c = 0;
    return (int32_t)c;
}

void walk_record_screen(WalkRecord *record)
{
    record->left = 0.0f;
    record->right = (float)screen_w;
    record->yleft = (float)(0.1 * screen_h);
    record->yright = (float)screen_h;
    record->ticklen = (float)(0.05 * screen_h);
}

// Seconds a pass may take before its deadline; 0 until walk_frame_start.
static double walk_pass_seconds = 0.0;
double walk_reserve_seconds = WALK_RESERVE_SECONDS;

void walk_frame_start(bool at_rest)
{
    ord_work_big = at_rest ? WALK_REST_WORK : 0;
    walk_pass_seconds = WALK_PASS_SECONDS;
    walk_reserve_seconds = fmin(walk_reserve_seconds + WALK_RESERVE_REFILL, WALK_RESERVE_SECONDS);
    expansion_cache_frame();
    ord_work_left = WALK_FRAME_WORK;
    ord_memory_limit = WALK_MEMORY_LIMIT;
}

void walk_line(TickCallback fn, WalkRecord r)
{
    // one top for every walk, so that its expansions can be kept
    Ord top = expansion_cache_top();
    segment_expand_budget = walk_pass_seconds > 0 ? walk_pass_seconds + walk_reserve_seconds : 0.0;
    segment_expand_spent = 0.0;
    r.ordlo = Ord_zero();
    r.ordhi = top;
    r.ordhi_entry = CACHE_ROOT;
    r.ordlo_entry = CACHE_OFF;
    r.ordlo_member = 0;
    r.too_deep = false;
    segment(fn, 0, r);
    if (walk_pass_seconds > 0 && segment_expand_spent > walk_pass_seconds)
        walk_reserve_seconds = fmax(0.0, walk_reserve_seconds - (segment_expand_spent - walk_pass_seconds));

    // the top ordinal gets its tick and label here
    WalkRecord end = r;
    end.xlo = r.xhi;
    end.ordlo = top;
    end.ordlo_entry = CACHE_OFF;
    fn(end);
}

// Marks the columns from xlo to xhi, as far as they are in the view.
static void mark_too_deep(WalkRecord r)
{
    double lo = Bignum_todouble(r.xlo) - r.left, hi = Bignum_todouble(r.xhi) - r.left;
    if (hi < 0 || lo >= tick_columns)
        return;
    int32_t from = clamp_column(lo), to = clamp_column(hi);
    for (int32_t c = from; c <= to; c++)
        tick_too_deep[c] = 1;
}

void tick_record(WalkRecord r)
{
    if (r.too_deep)
        mark_too_deep(r);
    // `left` in, `right` out (the size recorder takes it the other way round)
    if (Bignum_ltd(r.xlo, r.left) || Bignum_ged(r.xlo, r.right))
        return;
    tick_size_record(r);
    float x = Bignum_tofloat(r.xlo);
    double v = (double)(x - r.left) + 0.5;
    int32_t column = clamp_column(v);
    // the highest kind wins a column, a later one on a tie
    uint32_t kind = tick_classify(r.ordlo);
    if (kind >= tick_kinds[column])
        tick_kinds[column] = kind;
}

void tick_size_record(WalkRecord r)
{
    if (Bignum_led(r.xlo, r.left) || Bignum_gtd(r.xlo, r.right))
        return;
    double x = Bignum_todouble(r.xlo);
    Bignum D = Bignum_lincomb(r.xhi, r.xlo, 1.0, -1.0);
    double size = Bignum_todouble(D);
    Bignum_free(D);
    int32_t column = clamp_column((0.5 - r.left) + x);
    double largest = tick_sizes[column] > size ? tick_sizes[column] : size;
    tick_sizes[column] = (float)largest;
}
