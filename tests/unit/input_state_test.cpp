// Input state: key indices, the pump's edges, the button bits and the wheel.
#include <gtest/gtest.h>

#include <string>
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

// Shift, Ctrl and Alt as the last pump left them.
std::vector<int> held()
{
    return {shift_held, ctrl_held, alt_held};
}

TEST(InputState, KeyIndicesAndTheArrayBound)
{
    // SDL key codes: characters are their own code, the others 0x40000000 plus a scancode
    const std::pair<int32_t, uint32_t> cases[] = {
        {27, KEY_ESCAPE},         {'z', KEY_Z},          {0x4000004F, KEY_RIGHT},
        {0x40000052, KEY_UP},     {0x400000E0, KEY_LCTRL}, {0x400000E6, KEY_RALT},
    };
    for (const auto &[code, index] : cases)
        EXPECT_EQ(key_index(code), index) << "code 0x" << std::hex << code;

    input_reset_keys();
    uint8_t before[KEY_COUNT];
    memcpy(before, key_down, sizeof before);
    input_key(0x3A9, true);         // a Cyrillic letter's code: index 937
    input_key(0x40000200, true);    // scancode 512: index 640
    EXPECT_EQ(memcmp(before, key_down, sizeof before), 0);
    pump([] { input_key(511, true); });
    EXPECT_EQ(key_down[511], 1);
    pump([] { input_key(511, false); });
    EXPECT_EQ(key_down[511], 0);
}

TEST(InputState, EdgesAndModifiersAcrossPumps)
{
    input_reset_keys();
    pump([] {
        input_key('a', true);
        input_key('s', true);  // both in one pump: each has its own edge
        input_key(0x400000E5, true);  // right Shift
        input_key(0x400000E0, true);  // left Ctrl
    });
    EXPECT_TRUE(key_edge(KEY_A));
    EXPECT_TRUE(key_edge(KEY_S));
    EXPECT_EQ(held(), (std::vector<int>{1, 1, 0}));
    pump([] {
        input_key(0x400000E5, false);
        input_key(0x400000E0, false);
        input_key(0x400000E6, true);  // right Alt
        input_key('a', true, true);   // an auto-repeat of a held key
    });
    EXPECT_FALSE(key_edge(KEY_A)) << "held, no new edge";
    EXPECT_EQ(key_down[KEY_A], 1);
    EXPECT_EQ(held(), (std::vector<int>{0, 0, 1}));
    input_reset_keys();
    input_pump_end();
}

TEST(InputState, ButtonBits)
{
    const std::pair<uint8_t, uint32_t> cases[] = {{1, BUTTON_LEFT}, {2, BUTTON_MIDDLE},
                                                  {3, BUTTON_RIGHT}, {4, BUTTON_X1},
                                                  {5, BUTTON_OTHER}, {0, BUTTON_OTHER}};
    for (const auto &[button, bit] : cases)
        EXPECT_EQ(mouse_button_bit(button), bit) << "button " << int(button);

}

// A tap (press and release within one pump) is a press of one frame: down
// and an edge after its pump, up after the next; for keys and buttons alike.
TEST(InputState, TapsLastOneFrame)
{
    struct Step {
        const char *events;  // per pump: 'p' press, 'r' release, 'R' auto-repeat
        bool down, edge;     // the key (and the button) after that pump
    };
    const std::vector<std::vector<Step>> cases = {
        {{"pr", true, true}, {"", false, false}},                    // a tap
        {{"p", true, true}, {"", true, false}, {"r", false, false}}, // a hold
        {{"prp", true, true}, {"r", false, false}},                  // tap, press again
        {{"pr", true, true}, {"pr", true, true}, {"", false, false}},  // two taps in a row
        {{"p", true, true}, {"rp", true, true}, {"RRr", false, false}},  // re-press; repeats change nothing
    };
    for (size_t c = 0; c < cases.size(); c++) {
        input_reset_keys();
        mouse_buttons = 0;
        pump([] {});
        pump([] {});
        for (size_t i = 0; i < cases[c].size(); i++) {
            const Step &step = cases[c][i];
            pump([&] {
                for (const char *e = step.events; *e; e++) {
                    input_key('z', *e != 'r', *e == 'R');
                    if (*e != 'R')
                        input_button(1, *e == 'p');
                }
            });
            SCOPED_TRACE("case " + std::to_string(c) + ", pump " + std::to_string(i));
            EXPECT_EQ(key_down[KEY_Z], step.down);
            EXPECT_EQ(key_edge(KEY_Z), step.edge);
            EXPECT_EQ((mouse_buttons & BUTTON_LEFT) != 0, step.down);
            EXPECT_EQ((mouse_buttons & ~mouse_buttons_prev & BUTTON_LEFT) != 0, step.edge);
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

TEST(InputState, WheelIsAOneFrameEdgeUnlessRepeated)
{
    mouse_buttons = 0;
    pump([] { input_wheel(1); });
    EXPECT_EQ(mouse_buttons & ~mouse_buttons_prev, (uint32_t)WHEEL_UP);
    // the same direction in the next pump: the bit is set again, but no edge
    pump([] { input_wheel(2); });
    EXPECT_EQ(mouse_buttons, (uint32_t)WHEEL_UP);
    EXPECT_EQ(mouse_buttons & ~mouse_buttons_prev, 0u);
    // a quiet pump clears it; then a pulse down, and a zero pulse does nothing
    pump([] { input_wheel(0); });
    EXPECT_EQ(mouse_buttons, 0u);
    pump([] { input_wheel(-3); });
    EXPECT_EQ(mouse_buttons & ~mouse_buttons_prev, (uint32_t)WHEEL_DOWN);
    // the pulses of one pump add up, each way
    pump([] {
        input_wheel(1);
        input_wheel(2);
        input_wheel(-1);
    });
    EXPECT_EQ(wheel_pulses, 2);
}

TEST(InputState, MotionAbsoluteOrSummed)
{
    input_motion(false, 100, 50, 7, 7);
    EXPECT_EQ(mouse_x, 100);
    EXPECT_EQ(mouse_y, 50);
    input_motion(true, 0, 0, -150, 20);
    input_motion(true, 0, 0, -5, 1);
    EXPECT_EQ(mouse_x, -55) << "relative sums are not clamped";
    EXPECT_EQ(mouse_y, 71);
}

}  // namespace
