// Input state: keys and mouse as plain globals that a frame reads by index.
//
// The event pump (LOOP) drains the platform's queue into these through the
// input_* functions below, so everything here can be driven without a display.
// A key's index comes from its key code (not its scancode): codes below
// 0x40000000 are their own index, others go to 128 plus the scancode.
#pragma once

#include <stdint.h>

enum : uint32_t { KEY_COUNT = 512 };

// Indices of the keys the program reads.
enum KeyIndex : int32_t {
    KEY_ESCAPE = 27,
    KEY_A = 97,
    KEY_M = 109,
    KEY_Q = 113,
    KEY_S = 115,
    KEY_X = 120,
    KEY_Z = 122,
    KEY_HOME = 202,
    KEY_RIGHT = 207,
    KEY_LEFT = 208,
    KEY_DOWN = 209,
    KEY_UP = 210,
    KEY_LCTRL = 352,
    KEY_LSHIFT = 353,
    KEY_LALT = 354,
    KEY_RCTRL = 356,
    KEY_RSHIFT = 357,
    KEY_RALT = 358,
};

// Bits of mouse_buttons: one per button and one per wheel direction.
enum MouseBit : uint32_t {
    BUTTON_LEFT = 1,
    BUTTON_RIGHT = 2,
    WHEEL_UP = 4,     // cleared at the start of the next pump
    WHEEL_DOWN = 8,   // cleared at the start of the next pump
    BUTTON_MIDDLE = 16,
    BUTTON_X1 = 32,
    BUTTON_OTHER = 64,
};

// 1 while the key of that index is down.
extern uint8_t key_down[KEY_COUNT];
// key_down as it stood when the last pump began.
extern uint8_t key_down_prev[KEY_COUNT];
// Either Shift, either Ctrl, either Alt down (as of the end of the last pump).
extern uint8_t shift_held, ctrl_held, alt_held;
// Bit set of MouseBit, and as it stood when the last pump began.
extern uint32_t mouse_buttons, mouse_buttons_prev;
// Pointer in window pixels; in relative mode a running sum of the motion.
extern int32_t mouse_x, mouse_y;

// The key_down index of a key code (may be 512 or more).
uint32_t key_index(int32_t keycode);
// The mouse_buttons bit of a platform button number (1 left, 2 middle, 3 right, 4 X1).
uint32_t mouse_button_bit(uint8_t button);

// Zeroes both key arrays (at window creation).
void input_reset_keys();
// Start of a pump: remember the state, clear the wheel bits.
void input_pump_begin();
// A key went down or up. Keys whose index is 512 or more are ignored.
void input_key(int32_t keycode, bool down);
// A button changed; pressed is the event's state.
void input_button(uint8_t button, bool pressed);
// A wheel pulse; y above 0 is up, below 0 down, 0 nothing.
void input_wheel(int32_t y);
// Pointer motion: absolute position, or relative travel summed in relative mode.
void input_motion(bool relative, int32_t x, int32_t y, int32_t xrel, int32_t yrel);
// End of a pump: the modifier bytes from the key array.
void input_pump_end();

// A key that is down now and was not down at the start of the last pump.
inline bool key_edge(int32_t index)
{
    return key_down[index] && !key_down_prev[index];
}
