// Input state: the key array, the mouse bits and what a pump does to them.
#include "support/gl/input_state.h"

#include <string.h>

uint8_t key_down[KEY_COUNT];
uint8_t key_down_prev[KEY_COUNT];
uint8_t shift_held, ctrl_held, alt_held;
uint32_t mouse_buttons, mouse_buttons_prev;
int32_t mouse_x, mouse_y;
int32_t wheel_pulses;
bool input_capture = false;
InputEvent input_events[INPUT_EVENTS_MAX];
uint32_t input_event_count;

// Keys pressed in this pump, and keys released in it after such a press:
// they stay down for one frame and go up when the next pump begins.
static uint8_t key_pressed_now[KEY_COUNT];
static uint8_t key_release_due[KEY_COUNT];
// The same for the mouse buttons, as bits of MouseBit.
static uint32_t buttons_pressed_now, buttons_release_due;

// Shift, Ctrl, Alt and the system keys, left and right: a text field reads
// them as they are, so they are never captured.
static bool is_modifier(uint32_t index)
{
    return index >= (uint32_t)KEY_LCTRL && index <= (uint32_t)KEY_LCTRL + 7;
}

// Appends an event for the text field, if there is room.
static InputEvent *event_slot()
{
    if (input_event_count >= INPUT_EVENTS_MAX)
        return nullptr;
    InputEvent *e = &input_events[input_event_count++];
    *e = InputEvent{};
    e->shift = key_down[KEY_LSHIFT] | key_down[KEY_RSHIFT];
    e->ctrl = key_down[KEY_LCTRL] | key_down[KEY_RCTRL];
    return e;
}

uint32_t key_index(int32_t keycode)
{
    uint32_t code = (uint32_t)keycode;
    return code < 0x40000000u ? code : code - 0x40000000u + 0x80u;
}

uint32_t mouse_button_bit(uint8_t button)
{
    static const uint32_t bits[4] = {BUTTON_LEFT, BUTTON_MIDDLE, BUTTON_RIGHT, BUTTON_X1};
    uint8_t slot = (uint8_t)(button - 1);
    return slot > 3 ? BUTTON_OTHER : bits[slot];
}

void input_reset_keys()
{
    memset(key_down, 0, sizeof key_down);
    memset(key_down_prev, 0, sizeof key_down_prev);
    memset(key_pressed_now, 0, sizeof key_pressed_now);
    memset(key_release_due, 0, sizeof key_release_due);
}

void input_pump_begin()
{
    // the last frame saw the taps down; they go up now
    memcpy(key_down_prev, key_down, sizeof key_down);
    for (uint32_t i = 0; i < KEY_COUNT; i++)
        if (key_release_due[i])
            key_down[i] = 0;
    memset(key_release_due, 0, sizeof key_release_due);
    memset(key_pressed_now, 0, sizeof key_pressed_now);
    mouse_buttons_prev = mouse_buttons;
    mouse_buttons &= ~(WHEEL_UP | WHEEL_DOWN | buttons_release_due);
    buttons_release_due = 0;
    buttons_pressed_now = 0;
    wheel_pulses = 0;
    input_event_count = 0;
}

void input_key(int32_t keycode, bool down, bool repeat)
{
    // keys past the array (non-Latin layouts) are not ones the program reads
    uint32_t index = key_index(keycode);
    if (index >= KEY_COUNT)
        return;
    if (down && input_capture && !is_modifier(index)) {
        InputEvent *e = event_slot();
        if (e)
            e->key = (int32_t)index;
        return;
    }
    if (down) {
        // a repeat of a held key changes nothing
        if (repeat)
            return;
        key_down[index] = 1;
        key_pressed_now[index] = 1;
        key_release_due[index] = 0;
        // a fresh press is an edge even right after a tap
        key_down_prev[index] = 0;
    } else if (key_pressed_now[index] && !is_modifier(index)) {
        // modifiers go up at once: they act only with other keys, as they stand
        key_release_due[index] = 1;
    } else {
        key_down[index] = 0;
    }
}

void input_text(const char *utf8)
{
    if (!input_capture)
        return;
    // one character an event; a sequence too long for one is cut
    const unsigned char *p = (const unsigned char *)utf8;
    while (*p) {
        InputEvent *e = event_slot();
        if (!e)
            return;
        e->key = -1;
        size_t n = 0;
        e->text[n++] = (char)*p++;
        for (; (*p & 0xC0) == 0x80; p++)
            if (n < sizeof e->text - 1)
                e->text[n++] = (char)*p;
    }
}

void input_button(uint8_t button, bool pressed)
{
    uint32_t bit = mouse_button_bit(button);
    if (pressed) {
        mouse_buttons |= bit;
        buttons_pressed_now |= bit;
        buttons_release_due &= ~bit;
        mouse_buttons_prev &= ~bit;
    } else if (buttons_pressed_now & bit) {
        buttons_release_due |= bit;
    } else {
        mouse_buttons &= ~bit;
    }
}

void input_wheel(int32_t y)
{
    if (y > 0)
        mouse_buttons |= WHEEL_UP;
    else if (y < 0)
        mouse_buttons |= WHEEL_DOWN;
    wheel_pulses += y;
}

void input_motion(bool relative, int32_t x, int32_t y, int32_t xrel, int32_t yrel)
{
    if (relative) {
        mouse_x += xrel;
        mouse_y += yrel;
    } else {
        mouse_x = x;
        mouse_y = y;
    }
}

void input_pump_end()
{
    ctrl_held = key_down[KEY_LCTRL] | key_down[KEY_RCTRL];
    shift_held = key_down[KEY_LSHIFT] | key_down[KEY_RSHIFT];
    alt_held = key_down[KEY_LALT] | key_down[KEY_RALT];
}
