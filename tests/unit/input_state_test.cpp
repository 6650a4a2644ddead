// Input state: key indices, the pump's edges, the button bits and the wheel.
#include <gtest/gtest.h>

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
    input_key(511, true);
    EXPECT_EQ(key_down[511], 1);
    input_key(511, false);
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
        input_key('m', true);
        input_key('m', false);  // press and release in one pump never show
    });
    EXPECT_FALSE(key_edge(KEY_A)) << "held, no new edge";
    EXPECT_EQ(key_down[KEY_A], 1);
    EXPECT_EQ(key_down[KEY_M], 0);
    EXPECT_FALSE(key_edge(KEY_M));
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

    mouse_buttons = 0;
    pump([] {
        input_button(1, true);
        input_button(1, false);  // press and release in one pump: cleared, no edge
        input_button(3, true);
    });
    EXPECT_EQ(mouse_buttons, (uint32_t)BUTTON_RIGHT);
    EXPECT_EQ(mouse_buttons & ~mouse_buttons_prev, (uint32_t)BUTTON_RIGHT);
    pump([] { input_button(3, false); });
    EXPECT_EQ(mouse_buttons, 0u);
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
