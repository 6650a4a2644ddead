// Input state: keys and mouse as plain globals that a frame reads by index.
//
// The event pump (LOOP) drains the platform's queue into these through the
// input_* functions below, so everything here can be driven without a display.
//
// No tap is lost: a key or button pressed and released within one pump stays
// down for the frame after it, as a press of one frame, and goes up at the
// start of the next pump (modifiers excepted: they go up at once). A fresh
// press clears the key's (or button's) bit in the "as the last pump began"
// state, so it is an edge even when a tap held it down a frame before. While a text field has the keys (input_capture),
// presses other than the modifiers go to input_events instead of key_down,
// with the typed text, in the order they came.
// A key's index comes from its key code (not its scancode): codes below
// 0x40000000 are their own index, others go to 128 plus the scancode.
#pragma once

#include <stdint.h>

enum : uint32_t { KEY_COUNT = 512 };

// Indices of the keys the program reads.
enum KeyIndex : int32_t {
    KEY_BACKSPACE = 8,
    KEY_TAB = 9,
    KEY_RETURN = 13,
    KEY_ESCAPE = 27,
    KEY_MINUS = 45,
    KEY_SLASH = 47,
    KEY_EQUALS = 61,  // "+" with Shift on most layouts
    KEY_A = 97,
    KEY_C = 99,
    KEY_G = 103,
    KEY_H = 104,
    KEY_M = 109,
    KEY_P = 112,
    KEY_Q = 113,
    KEY_S = 115,
    KEY_V = 118,
    KEY_X = 120,
    KEY_Z = 122,
    KEY_DELETE = 127,
    KEY_F1 = 186,
    KEY_F12 = 197,
    KEY_PRINT = 198,
    KEY_HOME = 202,
    KEY_END = 205,
    KEY_RIGHT = 207,
    KEY_LEFT = 208,
    KEY_DOWN = 209,
    KEY_UP = 210,
    KEY_KP_MINUS = 214,
    KEY_KP_PLUS = 215,
    KEY_KP_ENTER = 216,
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
// Wheel pulses of the last pump, up counted positive and down negative.
extern int32_t wheel_pulses;

// Most events one pump keeps for a text field; later ones are dropped.
enum : uint32_t { INPUT_EVENTS_MAX = 256 };
// A key press (auto-repeats included) or a piece of typed text.
struct InputEvent {
    int32_t key;          // key_down index of a press; -1 for typed text
    uint8_t shift, ctrl;  // either Shift, either Ctrl down at the press
    char text[8];         // typed text, UTF-8, whole characters, closed by 0
};
// True while a text field takes the keys; start false. The caller sets it.
extern bool input_capture;
// The events of the last pump while input_capture was set.
extern InputEvent input_events[INPUT_EVENTS_MAX];
extern uint32_t input_event_count;

// The key_down index of a key code (may be 512 or more).
uint32_t key_index(int32_t keycode);
// The mouse_buttons bit of a platform button number (1 left, 2 middle, 3 right, 4 X1).
uint32_t mouse_button_bit(uint8_t button);

// Zeroes both key arrays (at window creation).
void input_reset_keys();
// Start of a pump: remember the state, clear the wheel bits and the events,
// and let up the taps of the last pump.
void input_pump_begin();
// A key went down or up; repeat marks the platform's auto-repeat of a held
// key. Keys whose index is 512 or more are ignored.
void input_key(int32_t keycode, bool down, bool repeat = false);
// Typed text (UTF-8); kept only while input_capture is set.
void input_text(const char *utf8);
// A button changed; pressed is the event's state.
void input_button(uint8_t button, bool pressed);
// A wheel event of y pulses; y above 0 is up, below 0 down, 0 nothing. The
// pulses add to wheel_pulses.
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
