// Navigation: zoom speeds, the clamps, the depth limit keys, the minimum-zoom
// rule, Home, the view update about the centre column, the wheel and the flight.
#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "PlotSegment2/locate.h"
#include "PlotSegment2/segment.h"
#include "ord/navigation.h"
#include "ord/view_flight.h"
#include "ord/wheel_zoom.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"

namespace {

// Both ends of a view as exact decimals.
std::string ends(Bignum lo, Bignum hi)
{
    char *a = Bignum_todecimal(lo), *b = Bignum_todecimal(hi);
    std::string s = std::string(a) + " " + b;
    free(a);
    free(b);
    return s;
}

using Keys = std::vector<int32_t>;

void press_only(const Keys &keys)
{
    input_reset_keys();
    for (int32_t k : keys)
        key_down[k] = 1;
    input_pump_end();
}

// Puts back the globals a test set, for the tests after it.
void reset_globals()
{
    press_only({});
    mouse_buttons = 0;
    wheel_pulses = 0;
    screen_w = 0;
}

// One frame of held keys: the zoom speed by the modifiers, the factor and its
// step (a slow frame does not jump), and the pan from the arrows and a drag.
TEST(Navigation, KeysGiveZoomAndPan)
{
    // keys, frame_dt, speed, factor, step, drag_dx, pan; the Ctrl speeds are
    // the products 3.0 * 0.3 and 9.0 * 0.3 at their exact bits
    const std::tuple<Keys, double, double, double, double, int32_t, int32_t> cases[] = {
        {{}, 0.01, 3.0, 1.0, 0.03, 0, 0},
        {{KEY_Z}, 0.01, 3.0, exp(0.03), 0.03, 0, 0},
        {{KEY_UP, KEY_LSHIFT, KEY_RIGHT}, 0.01, 9.0, exp(0.09), 0.09, 0, 10},
        {{KEY_X, KEY_RCTRL, KEY_LEFT}, 0.01, 0.8999999999999999, exp(-0.009), 0.009, 0, -10},
        {{KEY_DOWN, KEY_RSHIFT, KEY_LCTRL}, 0.01, 2.6999999999999997, exp(-0.027), 0.027, 0, 0},
        {{KEY_Z, KEY_X}, 0.01, 3.0, exp(-0.03) * exp(0.03), 0.03, -37, -37},  // both cancel
        {{KEY_Z, KEY_RIGHT}, 5.0, 3.0, exp(0.3), 0.3, 0, 200},  // 0.3 of zoom, 0.2 of a width
        {{KEY_Z}, -0.01, 3.0, exp(-0.03), -0.03, 0, 0},         // the clock set back runs it backward
        {{KEY_RIGHT, KEY_LEFT}, 0.01, 3.0, 1.0, 0.03, 0, 0},
        {{KEY_RIGHT}, 0.0155, 3.0, 1.0, 0.0465, -20, -4},  // truncated after adding the drag
    };
    screen_w = 1000;
    for (const auto &[keys, frame_dt, speed, factor, step, drag_dx, pan] : cases) {
        press_only(keys);
        SCOPED_TRACE(testing::Message() << "dt " << frame_dt << ", " << keys.size() << " keys");
        EXPECT_EQ(navigation_zoom_speed(), speed);
        double got_step = 0;
        EXPECT_DOUBLE_EQ(navigation_key_zoom(frame_dt, speed, &got_step), factor);
        EXPECT_DOUBLE_EQ(got_step, step);
        EXPECT_EQ(navigation_pan_pixels(frame_dt, drag_dx), pan);
    }
    // at 4096 frames a second an arrow still moves a width a second
    press_only({KEY_LEFT});
    int32_t moved = 0;
    for (int32_t i = 0; i < 4096; i++)
        moved += navigation_pan_pixels(1.0 / 4096, 0);
    EXPECT_EQ(moved, -1000);
    reset_globals();
}

// One pump a step, the keys held in it; a held key counts once.
TEST(Navigation, DepthLimitKeysOnEdges)
{
    const char *steps[] = {"a", "", "s", "s", "", "s", "", "s", "", "as", "", "a", "", "a", "", "a"};
    const int32_t limits[] = {-1, -1, 0, 0, 0, 1, 1, 2, 2, 2, 2, 1, 1, 0, 0, -1};
    input_reset_keys();
    segment_depth_limit = -1;
    for (int i = 0; i < 16; i++) {
        input_pump_begin();
        memset(key_down, 0, sizeof key_down);
        for (const char *k = steps[i]; *k; k++)
            key_down[key_index(*k)] = 1;
        input_pump_end();
        navigation_depth_keys();
        EXPECT_EQ(segment_depth_limit, limits[i]) << "step " << i;
    }
    reset_globals();
    segment_depth_limit = -1;
}

// From the first view, a sequence of frames, each (zoom factor, pan) held
// for a number of frames; then X must bring the line into view within 3 s at
// 100 frames a second and, held, end exactly at the first view, and Home
// give it at once. The rule works on the exact ends: doubles of far-off ends
// saturate, and the line was lost for good.
TEST(Navigation, EveryViewLeadsHomeByXAndByHome)
{
    const double z = exp(0.03), x = exp(-0.03);
    // each hold: frames, zoom factor, pan
    const std::pair<const char *, std::vector<std::tuple<int, double, int32_t>>> cases[] = {
        {"the first view", {}},
        {"Z, then X to the limit, where it stands still", {{20, exp(0.05), 0}, {100, x, 0}}},
        {"Left 1.5 s, then Z 15 s", {{150, 1.0, -12}, {1500, z, 0}}},
        {"Right 1.5 s, then Z 15 s", {{150, 1.0, 12}, {1500, z, 0}}},
        {"10^130 deep and panned", {{300, exp(1.0), 0}, {100, 1.0, 5000}}},
        {"drags beyond what a weight can carry", {{1, 1e9, 0}, {1, 1e-9, 0}, {1, 1e9, 0}}},
    };
    screen_w = 1280;
    for (const auto &[name, holds] : cases) {
        SCOPED_TRACE(name);
        Bignum lo, hi;
        double min_length;
        view_start(&lo, &hi, &min_length);
        for (const auto &[frames, factor, pan] : holds)
            for (int i = 0; i < frames; i++)
                view_navigate(&lo, &hi, factor, pan, min_length);
        int frames = 0;
        for (; frames < 300 && !(Bignum_ltd(lo, 1280.0) && Bignum_gtd(hi, 0.0)); frames++)
            view_navigate(&lo, &hi, x, 0, min_length);
        EXPECT_LT(frames, 300) << "X brings the line into view";
        for (int i = 0; i < 2000; i++)
            view_navigate(&lo, &hi, exp(-0.3), 0, min_length);
        EXPECT_EQ(ends(lo, hi), "128.0000 1152.0000") << "X held ends at the first view";
        view_update(&lo, &hi, 10.0, 300);
        press_only({KEY_HOME});
        view_navigate(&lo, &hi, z, 7, min_length);
        EXPECT_EQ(ends(lo, hi), "128.0000 1152.0000") << "Home";
        press_only({});
        Bignum_free(lo);
        Bignum_free(hi);
    }
    reset_globals();
}

// The zoom is about the centre column (432), or about the line's nearer end
// when the line is off it; a factor that is not finite changes nothing; and
// deep zoom only makes the numbers longer.
TEST(Navigation, ViewUpdateKeepsTheCentreColumnAndPans)
{
    const std::tuple<double, int32_t, const char *> steps[] = {
        {1.0, 0, "100.0000 900.0000"},
        {2.0, 0, "-232.0000 1368.0000"},
        {1.0, 50, "-282.0000 1318.0000"},
        {INFINITY, 10, "-282.0000 1318.0000"},
        {NAN, 10, "-282.0000 1318.0000"},
        {1.0, -1000, "718.0000 2318.0000"},
        {2.0, 0, "718.0000 3918.0000"},
    };
    screen_w = 864;
    Bignum lo = Bignum_fromdouble(100.0), hi = Bignum_fromdouble(900.0);
    for (const auto &[factor, pan, after] : steps) {
        view_update(&lo, &hi, factor, pan);
        EXPECT_EQ(ends(lo, hi), after) << "zoom " << factor << ", pan " << pan;
    }
    Bignum_free(lo);
    Bignum_free(hi);
    // 10^1000 of zoom in steps of e (weights quantised to 2.7183)
    screen_w = 1280;
    double min_length;
    view_start(&lo, &hi, &min_length);
    for (int i = 0; i < 2303; i++)
        view_update(&lo, &hi, exp(1.0), 0);
    EXPECT_GT(hi.n, 200u);
    EXPECT_LT(Bignum_todouble(lo), 0.0);
    EXPECT_GT(Bignum_todouble(hi), 1280.0);
    Bignum_free(lo);
    Bignum_free(hi);
    reset_globals();
}

// The wheel zooms about the pointer's column: the point under it stays put
// exactly, up and down are inverses, Shift steps by 4, a held button takes
// the pulse, and zooming out never passes the first view.
TEST(Navigation, WheelZoomAboutThePointer)
{
    // x, pulses, keys, buttons, the view after them from the first one
    const std::tuple<int32_t, int32_t, Keys, uint32_t, const char *> cases[] = {
        {433, 1, {}, 0, "51.7500 1331.7500"},                // 1.25 about x 433: 433 stays
        {433, -1, {}, 0, "128.0000 1152.0000"},              // at the limit: home
        {200, 2, {}, 0, "87.5000 1687.5000"},                // 1.5625 about 200
        {200, 1, {KEY_LSHIFT}, 0, "-88.0000 4008.0000"},     // Shift: 4
        {200, 30, {}, 0, "-74.6581 3831.5919"},              // at most six pulses a frame
        {200, 1, {}, BUTTON_LEFT, "128.0000 1152.0000"},     // a drag has the wheel
    };
    screen_w = 1280;
    for (const auto &[x, pulses, keys, buttons, after] : cases) {
        Bignum lo, hi;
        double min_line_length;
        view_start(&lo, &hi, &min_line_length);
        press_only(keys);
        mouse_x = x;
        mouse_y = 300;
        mouse_buttons = buttons;
        wheel_pulses = pulses;
        wheel_zoom(&lo, &hi, min_line_length);
        EXPECT_EQ(ends(lo, hi), after) << "x " << x << ", " << pulses << " pulses";
        // a pulse down for each pulse up (within the six) gives the view back
        if (pulses > 0 && pulses <= WHEEL_MAX_PULSES && buttons == 0) {
            wheel_pulses = -pulses;
            wheel_zoom(&lo, &hi, min_line_length);
            EXPECT_EQ(ends(lo, hi), "128.0000 1152.0000") << "back from x " << x;
        }
        Bignum_free(lo);
        Bignum_free(hi);
    }
    reset_globals();
}

// The go-to flight: it ends on the located view exactly, within the longest
// time, its depth moving at one rate; a target far off the window is first
// reached by zooming out.
TEST(Navigation, FlightEndsOnTheTargetAtASteadyRate)
{
    // the target's centre and zoom 10^K, whether the flight starts from a view
    // zoomed 10^3 near the left end, and its length at most
    const std::tuple<const char *, int64_t, bool, double> cases[] = {
        {"437.264897193", 3, false, 1.0},  // epsilon_0 from the first view: 3 decades
        {"440.4730197654926779584153176035975772060047646073316774973441492363470037269405547245702424",
         82, false, FLIGHT_MAX_SECONDS},       // 82 decades: faster, 3 s
        {"700", 2, true, FLIGHT_MAX_SECONDS},  // far off: out, then in
    };
    screen_w = 864;
    for (const auto &[target, K, zoomed_first, seconds_most] : cases) {
        SCOPED_TRACE(target);
        Bignum lo, hi, first_lo, first_hi, want_lo, want_hi;
        double min_line_length;
        view_start(&lo, &hi, &min_line_length);
        for (int i = 0; zoomed_first && i < 3; i++)
            view_update(&lo, &hi, 10.0, 300);
        view_first_ends(&first_lo, &first_hi);
        Decimal line_lo = decimal_from_bignum(first_lo), line_hi = decimal_from_bignum(first_hi);
        Decimal centre, zoom = decimal_exp10((double)K);
        ASSERT_TRUE(decimal_parse(target, &centre));
        flight_start(lo, hi, line_lo, line_hi, centre, K, 432, 864);
        double total = flight_seconds();
        EXPECT_LE(total, seconds_most + 1e-9);
        EXPECT_GE(total, FLIGHT_MIN_SECONDS);
        // frames of 1/30 s: the depth changes by the same amount each frame of a leg
        std::vector<double> depths;
        while (flight_active() && depths.size() < 1000) {
            flight_step(1.0 / 30, &lo, &hi);
            Bignum span = Bignum_lincomb(hi, lo, 1.0, -1.0);
            depths.push_back(Bignum_log(span) / log(10.0));
            Bignum_free(span);
        }
        EXPECT_FALSE(flight_active());
        EXPECT_NEAR(depths.size(), total * 30, 1.0);
        if (zoomed_first) {
            EXPECT_LT(*std::min_element(depths.begin(), depths.end()), depths.front() - 0.5) << "out first";
        } else if (depths.size() > 3) {
            EXPECT_NEAR(depths[2] - depths[1], depths[1] - depths[0], 1e-6);
        }
        // the last frame is the located view itself
        locate_view_ends(line_lo, line_hi, centre, zoom, 432, &want_lo, &want_hi);
        EXPECT_EQ(ends(lo, hi), ends(want_lo, want_hi));
        for (Bignum b : {lo, hi, first_lo, first_hi, want_lo, want_hi})
            Bignum_free(b);
        for (Decimal d : {line_lo, line_hi, centre, zoom})
            decimal_free(d);
    }
    reset_globals();
}

}  // namespace
