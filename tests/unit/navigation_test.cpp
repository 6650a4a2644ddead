// Navigation: zoom speeds, the clamps, the depth limit keys, the minimum-zoom
// rule, Home and the view update about the centre column.
#include <gtest/gtest.h>

#include <math.h>
#include <string.h>

#include <algorithm>
#include <string>
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

void press_only(std::initializer_list<int32_t> keys)
{
    input_reset_keys();
    for (int32_t k : keys)
        key_down[k] = 1;
    input_pump_end();
}

TEST(Navigation, KeyZoomByModifiersAndItsClamp)
{
    struct Case {
        std::initializer_list<int32_t> keys;
        double frame_dt, speed, factor, step;
    };
    // the Ctrl speeds are the products 3.0 * 0.3 and 9.0 * 0.3 at their exact bits
    const Case cases[] = {
        {{}, 0.01, 3.0, 1.0, 0.03},
        {{KEY_Z}, 0.01, 3.0, exp(0.03), 0.03},
        {{KEY_UP, KEY_LSHIFT}, 0.01, 9.0, exp(0.09), 0.09},
        {{KEY_X, KEY_RCTRL}, 0.01, 0.8999999999999999, exp(-0.009), 0.009},
        {{KEY_DOWN, KEY_RSHIFT, KEY_LCTRL}, 0.01, 2.6999999999999997, exp(-0.027), 0.027},
        {{KEY_Z, KEY_X}, 0.01, 3.0, exp(-0.03) * exp(0.03), 0.03},  // both cancel
        {{KEY_Z}, 5.0, 3.0, exp(0.3), 0.3},                 // a slow frame does not jump
        {{KEY_Z}, -0.01, 3.0, exp(-0.03), -0.03},           // the clock set back runs it backward
    };
    for (const Case &c : cases) {
        press_only(c.keys);
        EXPECT_EQ(navigation_zoom_speed(), c.speed);
        double step = 0;
        EXPECT_DOUBLE_EQ(navigation_key_zoom(c.frame_dt, c.speed, &step), c.factor) << "dt " << c.frame_dt;
        EXPECT_DOUBLE_EQ(step, c.step);
    }
    input_reset_keys();
    input_pump_end();
}

TEST(Navigation, DepthLimitKeysOnEdges)
{
    input_reset_keys();
    segment_depth_limit = -1;
    struct Step {
        std::initializer_list<int32_t> keys;
        int32_t limit;
    };
    // one pump per step; a held key counts once
    const Step steps[] = {
        {{KEY_A}, -1}, {{}, -1}, {{KEY_S}, 0}, {{KEY_S}, 0}, {{}, 0},      {{KEY_S}, 1},
        {{}, 1},       {{KEY_S}, 2}, {{}, 2},  {{KEY_A, KEY_S}, 2}, {{}, 2}, {{KEY_A}, 1},
        {{}, 1},       {{KEY_A}, 0}, {{}, 0},  {{KEY_A}, -1},
    };
    for (const Step &s : steps) {
        input_pump_begin();
        memset(key_down, 0, sizeof key_down);
        for (int32_t k : s.keys)
            key_down[k] = 1;
        input_pump_end();
        navigation_depth_keys();
        EXPECT_EQ(segment_depth_limit, s.limit);
    }
    input_reset_keys();
    segment_depth_limit = -1;
}

TEST(Navigation, PanByArrowsAndDrag)
{
    screen_w = 1000;
    struct Case {
        std::initializer_list<int32_t> keys;
        double frame_dt;
        int32_t drag_dx, pan;
    };
    const Case cases[] = {
        {{}, 0.01, 0, 0},          {{KEY_RIGHT}, 0.01, 0, 10}, {{KEY_LEFT}, 0.01, 0, -10},
        {{KEY_RIGHT, KEY_LEFT}, 0.01, 0, 0},
        {{KEY_RIGHT}, 5.0, 0, 200},    // a 5-second frame pans by 0.2 of a width
        {{}, 0.01, -37, -37},
        {{KEY_RIGHT}, 0.0155, 3, 18},  // truncated after adding the drag
    };
    for (const Case &c : cases) {
        press_only(c.keys);
        EXPECT_EQ(navigation_pan_pixels(c.frame_dt, c.drag_dx), c.pan) << "dt " << c.frame_dt;
    }
    input_reset_keys();
    input_pump_end();
    screen_w = 0;
}

// From the first view, a sequence of frames, each (zoom factor, pan) held
// for a number of frames; then Home must give the first view at once, and X
// must bring the line into view within 3 s at 100 frames a second and, held,
// end exactly at the first view. The rule works on the exact ends: doubles
// of far-off ends saturate, and the line was lost for good.
TEST(Navigation, EveryViewLeadsHomeByXAndByHome)
{
    struct Hold {
        int frames;
        double factor;
        int32_t pan;
    };
    struct Case {
        const char *name;
        std::vector<Hold> holds;
    };
    const double z = exp(0.03), x = exp(-0.03);
    const Case cases[] = {
        {"the first view", {}},
        {"Z, then X to the limit, where it stands still", {{20, exp(0.05), 0}, {100, x, 0}}},
        {"Left 1.5 s, then Z 15 s", {{150, 1.0, -12}, {1500, z, 0}}},
        {"Right 1.5 s, then Z 15 s", {{150, 1.0, 12}, {1500, z, 0}}},
        {"10^130 deep and panned", {{300, exp(1.0), 0}, {100, 1.0, 5000}}},
        {"drags beyond what a weight can carry", {{1, 1e9, 0}, {1, 1e-9, 0}, {1, 1e9, 0}}},
    };
    screen_w = 1280;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        Bignum lo[2], hi[2];
        double min_length;
        for (int copy = 0; copy < 2; copy++) {
            view_start(&lo[copy], &hi[copy], &min_length);
            for (const Hold &h : c.holds)
                for (int i = 0; i < h.frames; i++)
                    view_navigate(&lo[copy], &hi[copy], h.factor, h.pan, min_length);
        }
        press_only({KEY_HOME});
        view_navigate(&lo[0], &hi[0], z, 7, min_length);
        EXPECT_EQ(ends(lo[0], hi[0]), "128.0000 1152.0000") << "Home";
        input_reset_keys();
        int frames = 0;
        while (frames < 300 && !(Bignum_ltd(lo[1], 1280.0) && Bignum_gtd(hi[1], 0.0))) {
            view_navigate(&lo[1], &hi[1], x, 0, min_length);
            frames++;
        }
        EXPECT_LT(frames, 300) << "X brings the line into view";
        for (int i = 0; i < 2000; i++)
            view_navigate(&lo[1], &hi[1], exp(-0.3), 0, min_length);
        EXPECT_EQ(ends(lo[1], hi[1]), "128.0000 1152.0000") << "X held ends at the first view";
        for (int copy = 0; copy < 2; copy++) {
            Bignum_free(lo[copy]);
            Bignum_free(hi[copy]);
        }
    }
    input_pump_end();
    screen_w = 0;
}

TEST(Navigation, ViewUpdateKeepsTheCentreColumnAndPans)
{
    screen_w = 864;
    Bignum lo = Bignum_fromdouble(100.0), hi = Bignum_fromdouble(900.0);
    // no input: rebuilt unchanged
    view_update(&lo, &hi, 1.0, 0);
    EXPECT_EQ(ends(lo, hi), "100.0000 900.0000");
    // doubling about column 432: 100 -> -232, 900 -> 1368
    view_update(&lo, &hi, 2.0, 0);
    EXPECT_EQ(ends(lo, hi), "-232.0000 1368.0000");
    // pan moves everything left
    view_update(&lo, &hi, 1.0, 50);
    EXPECT_EQ(ends(lo, hi), "-282.0000 1318.0000");
    // a factor that is not finite leaves the view as it was
    view_update(&lo, &hi, INFINITY, 10);
    view_update(&lo, &hi, NAN, 10);
    EXPECT_EQ(ends(lo, hi), "-282.0000 1318.0000");
    // with the line right of the centre, zooming in keeps its left end
    view_update(&lo, &hi, 1.0, -1000);
    view_update(&lo, &hi, 2.0, 0);
    EXPECT_EQ(ends(lo, hi), "718.0000 3918.0000");
    Bignum_free(lo);
    Bignum_free(hi);
    screen_w = 0;
}

TEST(Navigation, DeepZoomGrowsTheNumbersAndKeepsTheAnchor)
{
    screen_w = 1280;
    Bignum lo, hi;
    double min_length;
    view_start(&lo, &hi, &min_length);
    // 10^1000 of zoom in steps of e (weights quantised to 2.7183)
    for (int i = 0; i < 2303; i++)
        view_update(&lo, &hi, exp(1.0), 0);
    EXPECT_GT(hi.n, 200u);
    EXPECT_LT(Bignum_todouble(lo), 0.0);
    EXPECT_GT(Bignum_todouble(hi), 1280.0);
    Bignum_free(lo);
    Bignum_free(hi);
    screen_w = 0;
}

}  // namespace

// The wheel zooms about the pointer's column: the point under it stays put
// exactly, up and down are inverses, Shift steps by 4, a panel text or a held
// button takes the pulse, and zooming out never passes the first view.
TEST(Navigation, WheelZoomAboutThePointer)
{
    screen_w = 1280;
    struct Case {
        int32_t x, pulses;
        bool shift;
        uint32_t buttons;
        const char *after;  // the view from the first one
    };
    const Case cases[] = {
        {433, 1, false, 0, "51.7500 1331.7500"},       // 1.25 about x 433: 433 stays
        {433, -1, false, 0, "128.0000 1152.0000"},    // at the limit: home
        {200, 2, false, 0, "87.5000 1687.5000"},       // 1.5625 about 200
        {200, 1, true, 0, "-88.0000 4008.0000"},      // Shift: 4
        {200, 30, false, 0, "-74.6581 3831.5919"},     // at most six pulses a frame
        {200, 1, false, BUTTON_LEFT, "128.0000 1152.0000"},  // a drag has the wheel
    };
    for (const Case &c : cases) {
        Bignum lo, hi;
        double min_line_length;
        view_start(&lo, &hi, &min_line_length);
        press_only(c.shift ? std::initializer_list<int32_t>{KEY_LSHIFT} : std::initializer_list<int32_t>{});
        mouse_x = c.x;
        mouse_y = 300;
        mouse_buttons = c.buttons;
        wheel_pulses = c.pulses;
        wheel_zoom(&lo, &hi, min_line_length);
        EXPECT_EQ(ends(lo, hi), c.after) << "x " << c.x << ", " << c.pulses << " pulses";
        // a pulse down for each pulse up (within the six) gives the view back
        if (c.pulses > 0 && c.pulses <= WHEEL_MAX_PULSES && c.buttons == 0) {
            wheel_pulses = -c.pulses;
            wheel_zoom(&lo, &hi, min_line_length);
            EXPECT_EQ(ends(lo, hi), "128.0000 1152.0000") << "back from x " << c.x;
        }
        Bignum_free(lo);
        Bignum_free(hi);
    }
    wheel_pulses = 0;
    mouse_buttons = 0;
    input_reset_keys();
    input_pump_end();
    screen_w = 0;
}

// The go-to flight: it ends on the located view exactly, within the longest
// time, its depth moving at one rate; a target far off the window is first
// reached by zooming out.
TEST(Navigation, FlightEndsOnTheTargetAtASteadyRate)
{
    screen_w = 864;
    struct Case {
        const char *centre;
        int64_t K;
        bool zoomed_first;    // start from a view zoomed 10^3 near the left end
        double seconds_most;  // the flight's length at most
    };
    const Case cases[] = {
        {"437.264897193", 3, false, 1.0},     // epsilon_0 from the first view: 3 decades
        {"440.4730197654926779584153176035975772060047646073316774973441492363470037269405547245702424",
         82, false, FLIGHT_MAX_SECONDS},       // 82 decades: faster, 3 s
        {"700", 2, true, FLIGHT_MAX_SECONDS},  // far off: out, then in
    };
    for (const Case &c : cases) {
        Bignum lo, hi;
        double min_line_length;
        view_start(&lo, &hi, &min_line_length);
        if (c.zoomed_first)
            for (int i = 0; i < 3; i++)
                view_update(&lo, &hi, 10.0, 300);
        Bignum first_lo, first_hi;
        view_first_ends(&first_lo, &first_hi);
        Decimal line_lo = decimal_from_bignum(first_lo), line_hi = decimal_from_bignum(first_hi);
        Decimal centre;
        ASSERT_TRUE(decimal_parse(c.centre, &centre));
        flight_start(lo, hi, line_lo, line_hi, centre, c.K, 432, 864);
        double total = flight_seconds();
        EXPECT_LE(total, c.seconds_most + 1e-9) << c.centre;
        EXPECT_GE(total, FLIGHT_MIN_SECONDS);
        // frames of 1/30 s: the depth changes by the same amount each frame of a leg
        std::vector<double> depths;
        int frames = 0;
        while (flight_active() && frames < 1000) {
            flight_step(1.0 / 30, &lo, &hi);
            Bignum span = Bignum_lincomb(hi, lo, 1.0, -1.0);
            depths.push_back(Bignum_log(span) / log(10.0));
            Bignum_free(span);
            frames++;
        }
        EXPECT_FALSE(flight_active());
        EXPECT_NEAR(frames, total * 30, 1.0) << c.centre;
        if (!c.zoomed_first && depths.size() > 3) {
            EXPECT_NEAR(depths[2] - depths[1], depths[1] - depths[0], 1e-6) << c.centre;
        }
        if (c.zoomed_first) {
            EXPECT_LT(*std::min_element(depths.begin(), depths.end()), depths.front() - 0.5)
                << "zooms out first";
        }
        // the last frame is the located view itself
        Decimal zoom = decimal_exp10((double)c.K);
        Bignum want_lo, want_hi;
        locate_view_ends(line_lo, line_hi, centre, zoom, 432, &want_lo, &want_hi);
        EXPECT_EQ(ends(lo, hi), ends(want_lo, want_hi)) << c.centre;
        for (Bignum b : {lo, hi, first_lo, first_hi, want_lo, want_hi})
            Bignum_free(b);
        for (Decimal d : {line_lo, line_hi, centre, zoom})
            decimal_free(d);
    }
    screen_w = 0;
}
