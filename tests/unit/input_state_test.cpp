// Input state: the key array's bound, the pump's edges for keys and buttons,
// captured keys and the wheel.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "support/gl/input_state.h"

namespace {

// One pump with the given events.
template <typename Events>
void pump(Events events)
{
    input_pump_begin();
    events();
    input_pump_end();
}

// (Which key code is which key the end-to-end tests show: they press them.)
TEST(InputState, KeysPastTheArrayAreDropped)
{
    // codes past the array are dropped: a Cyrillic letter (index 937) and
    // scancode 512 (index 640); then the last index, two presses in one pump
    // (an edge each), and Alt as it stands
    input_reset_keys();
    input_key(0x3A9, true);
    input_key(0x40000200, true);
    pump([] {
        input_key(511, true);
        input_key('s', true);
        input_key(0x400000E6, true);  // right Alt
    });
    EXPECT_EQ(std::count(key_down, key_down + KEY_COUNT, 1), 3);
    EXPECT_TRUE(key_edge(511) && key_edge(KEY_S));
    EXPECT_EQ(alt_held, 1);
    pump([] {
        input_key(511, false);
        input_key(0x400000E6, false);
    });
    EXPECT_EQ(key_down[511], 0);
    EXPECT_EQ(alt_held, 0);
    input_reset_keys();
    input_pump_end();
}

// A tap (press and release within one pump) is a press of one frame: down
// and an edge after its pump, up after the next; for keys and buttons alike.
TEST(InputState, TapsLastOneFrame)
{
    // each pump's events ('p' press, 'r' release, 'R' auto-repeat), then
    // whether the key (and the button) is down and has an edge
    const std::vector<std::vector<std::tuple<const char *, bool, bool>>> cases = {
        {{"pr", true, true}, {"", false, false}},                    // a tap
        {{"p", true, true}, {"", true, false}, {"r", false, false}}, // a hold
        {{"prp", true, true}, {"r", false, false}},                  // tap, press again
        {{"pr", true, true}, {"pr", true, true}, {"", false, false}},  // two taps in a row
        {{"p", true, true}, {"rp", true, true}, {"RRr", false, false}},  // re-press; repeats change nothing
        {{"p", true, true}, {"R", true, false}},                     // a repeat is no new edge
    };
    for (size_t c = 0; c < cases.size(); c++) {
        input_reset_keys();
        mouse_buttons = 0;
        pump([] {});
        pump([] {});
        for (size_t i = 0; i < cases[c].size(); i++) {
            const auto &[events, down, edge] = cases[c][i];
            pump([&] {
                for (const char *e = events; *e; e++) {
                    input_key('z', *e != 'r', *e == 'R');
                    if (*e != 'R')
                        input_button(1, *e == 'p');
                }
            });
            SCOPED_TRACE("case " + std::to_string(c) + ", pump " + std::to_string(i));
            EXPECT_EQ(key_down[KEY_Z], down);
            EXPECT_EQ(key_edge(KEY_Z), edge);
            EXPECT_EQ((mouse_buttons & BUTTON_LEFT) != 0, down);
            EXPECT_EQ((mouse_buttons & ~mouse_buttons_prev & BUTTON_LEFT) != 0, edge);
        }
    }
    input_reset_keys();
    mouse_buttons = 0;
}

// While a text field has the keys, presses and typed text go to the event
// list in order, with their modifiers; modifiers and releases still reach
// the key array, so nothing stays down when the field closes.
TEST(InputState, CapturedKeysBecomeEvents)
{
    input_reset_keys();
    pump([] { input_key('g', true); });
    input_capture = true;
    pump([] {
        input_key('g', false);
        input_key(0x400000E1, true);  // left Shift
        input_key('a', true);
        input_text("A\xcf\x89\xe2\x82\x80");  // "A", omega, subscript 0
        input_key(8, true, true);    // an auto-repeated Backspace is an edit too
        input_key(0x400000E1, false);
        input_key(0x400000E0, true);  // left Ctrl
        input_key('v', true);
    });
    input_capture = false;
    std::vector<std::string> got;
    for (uint32_t i = 0; i < input_event_count; i++) {
        const InputEvent &e = input_events[i];
        got.push_back((e.key < 0 ? std::string("text ") + e.text : "key " + std::to_string(e.key)) +
                      (e.shift ? " shift" : "") + (e.ctrl ? " ctrl" : ""));
    }
    EXPECT_EQ(got, (std::vector<std::string>{"key 97 shift", "text A shift", "text \xcf\x89 shift",
                                              "text \xe2\x82\x80 shift", "key 8 shift",
                                              "key 118 ctrl"}));
    EXPECT_EQ(key_down[KEY_G], 0) << "released while captured";
    EXPECT_EQ(key_down[KEY_A], 0) << "captured presses never reach the array";
    EXPECT_EQ(key_down[KEY_LCTRL], 1);
    pump([] { input_text("ignored"); });
    EXPECT_EQ(input_event_count, 0u) << "text outside a field is dropped";
    input_reset_keys();
    input_pump_end();
}

// A wheel direction is a bit for one pump, an edge only when new; the
// pulses of a pump add up. Each pump: its wheel events, then the bits, the
// new bits and the pulses.
TEST(InputState, WheelBitsLastOnePumpAndMotion)
{
    const std::tuple<std::vector<int32_t>, uint32_t, uint32_t, int32_t> pumps[] = {
        {{1}, WHEEL_UP, WHEEL_UP, 1},
        {{2}, WHEEL_UP, 0, 2},
        {{0}, 0, 0, 0},
        {{-3}, WHEEL_DOWN, WHEEL_DOWN, -3},
        {{1, 2, -1}, WHEEL_UP | WHEEL_DOWN, WHEEL_UP, 2},
        {{}, 0, 0, 0},
    };
    mouse_buttons = 0;
    for (const auto &[events, bits, new_bits, pulses] : pumps) {
        pump([&] {
            for (int32_t y : events)
                input_wheel(y);
        });
        EXPECT_EQ(mouse_buttons, bits);
        EXPECT_EQ(mouse_buttons & ~mouse_buttons_prev, new_bits);
        EXPECT_EQ(wheel_pulses, pulses);
    }
    // relative motion is summed, unclamped
    input_motion(false, 100, 50, 7, 7);
    input_motion(true, 0, 0, -150, 20);
    input_motion(true, 0, 0, -5, 1);
    EXPECT_EQ(std::make_pair(mouse_x, mouse_y), std::make_pair(-55, 71));
}

}  // namespace
