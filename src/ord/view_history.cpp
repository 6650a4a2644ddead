// View history: the list of views left behind, and the gestures that count.
#include "ord/view_history.h"

#include <math.h>

#include "support/gl/screen.h"

struct SavedView {
    Bignum lo, hi;
};

// The views kept, oldest first; `history_count` in use. Start empty.
static SavedView history[VIEW_HISTORY_MAX];
static uint32_t history_count = 0;
// The place in the list: the index of the view on screen, or history_count
// when that is the live view, not in the list. Start 0.
static uint32_t history_place = 0;

// The gesture in progress: its start view, how long it has acted, how long
// since it last acted. Start: none.
static bool gesture_on = false;
static SavedView gesture_start;
static double gesture_active = 0, gesture_idle = 0;

// A copy that the history owns.
static SavedView saved_copy(Bignum lo, Bignum hi)
{
    return SavedView{Bignum_lincomb(lo, lo, 1.0, 0.0), Bignum_lincomb(hi, hi, 1.0, 0.0)};
}

static void saved_free(SavedView v)
{
    Bignum_free(v.lo);
    Bignum_free(v.hi);
}

// Drops the views from index `from` on.
static void history_truncate(uint32_t from)
{
    while (history_count > from)
        saved_free(history[--history_count]);
}

// Appends, dropping the oldest when full; the place follows the views.
static void history_append(SavedView v)
{
    if (history_count == VIEW_HISTORY_MAX) {
        saved_free(history[0]);
        for (uint32_t i = 1; i < VIEW_HISTORY_MAX; i++)
            history[i - 1] = history[i];
        history_count--;
        if (history_place > 0)
            history_place--;
    }
    history[history_count++] = v;
}

// Hands the view at `place` to the caller, freeing the caller's old one.
static void take_view(uint32_t place, Bignum *lo, Bignum *hi)
{
    SavedView v = saved_copy(history[place].lo, history[place].hi);
    Bignum_free(*lo);
    Bignum_free(*hi);
    *lo = v.lo;
    *hi = v.hi;
    history_place = place;
}

// Stores the live view at the place before leaving it.
static void store_live(Bignum lo, Bignum hi)
{
    if (history_place >= history_count) {
        history_append(saved_copy(lo, hi));
        history_place = history_count - 1;
    } else {
        saved_free(history[history_place]);
        history[history_place] = saved_copy(lo, hi);
    }
}

void view_history_record(Bignum lo, Bignum hi)
{
    history_truncate(history_place);
    history_append(saved_copy(lo, hi));
    history_place = history_count;
}

bool view_history_back(Bignum *lo, Bignum *hi)
{
    gesture_end(*lo, *hi);
    uint32_t place = history_place < history_count ? history_place : history_count;
    if (place == 0)
        return false;
    store_live(*lo, *hi);
    take_view(history_place - 1, lo, hi);
    return true;
}

bool view_history_forward(Bignum *lo, Bignum *hi)
{
    gesture_end(*lo, *hi);
    if (history_place + 1 >= history_count)
        return false;
    store_live(*lo, *hi);
    take_view(history_place + 1, lo, hi);
    return true;
}

uint32_t view_history_count()
{
    return history_count;
}

uint32_t view_history_place()
{
    return history_place;
}

void view_history_clear()
{
    history_truncate(0);
    history_place = 0;
    if (gesture_on)
        saved_free(gesture_start);
    gesture_on = false;
}

// Whether the gesture from its start view to (lo, hi) went far: a zoom by
// GESTURE_LONG_ZOOM either way, or the centre moved a window width.
static bool gesture_went_far(Bignum lo, Bignum hi)
{
    Bignum span = Bignum_lincomb(hi, lo, 1.0, -1.0);
    Bignum start_span = Bignum_lincomb(gesture_start.hi, gesture_start.lo, 1.0, -1.0);
    double r = Bignum_ratio(start_span, span);
    bool far = !(r > 1.0 / GESTURE_LONG_ZOOM && r < GESTURE_LONG_ZOOM);
    if (!far) {
        // the point at the centre column now, in the start view's pixels
        Bignum centre = Bignum_fromdouble(screen_w / 2);
        Bignum from_lo = Bignum_lincomb(centre, lo, 1.0, -1.0);
        Bignum then = Bignum_lincomb(gesture_start.lo, from_lo, 1.0, r);
        far = fabs(Bignum_todouble(then) - screen_w / 2) >= screen_w;
        Bignum_free(then);
        Bignum_free(from_lo);
        Bignum_free(centre);
    }
    Bignum_free(start_span);
    Bignum_free(span);
    return far;
}

void gesture_end(Bignum now_lo, Bignum now_hi)
{
    if (!gesture_on)
        return;
    gesture_on = false;
    if (gesture_active >= GESTURE_LONG_SECONDS || gesture_went_far(now_lo, now_hi))
        view_history_record(gesture_start.lo, gesture_start.hi);
    saved_free(gesture_start);
}

void gesture_step(bool moved, double frame_dt, Bignum lo, Bignum hi, Bignum now_lo,
                  Bignum now_hi)
{
    if (moved) {
        if (!gesture_on) {
            gesture_on = true;
            gesture_start = saved_copy(lo, hi);
            gesture_active = 0;
        }
        gesture_active += frame_dt;
        gesture_idle = 0;
        return;
    }
    if (!gesture_on)
        return;
    gesture_idle += frame_dt;
    if (gesture_idle >= GESTURE_PAUSE)
        gesture_end(now_lo, now_hi);
}
