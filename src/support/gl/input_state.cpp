// Input state: the key array, the mouse bits and what a pump does to them.
#include "support/gl/input_state.h"

#include <string.h>

uint8_t key_down[KEY_COUNT];
uint8_t key_down_prev[KEY_COUNT];
uint8_t shift_held, ctrl_held, alt_held;
uint32_t mouse_buttons, mouse_buttons_prev;
int32_t mouse_x, mouse_y;

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
}

void input_pump_begin()
{
    memcpy(key_down_prev, key_down, sizeof key_down);
    mouse_buttons_prev = mouse_buttons;
    mouse_buttons &= 0xfffffff3u;
}

void input_key(int32_t keycode, bool down)
{
    // keys past the array (non-Latin layouts) are not ones the program reads
    uint32_t index = key_index(keycode);
    if (index < KEY_COUNT)
        key_down[index] = down ? 1 : 0;
}

void input_button(uint8_t button, bool pressed)
{
    uint32_t bit = mouse_button_bit(button);
    mouse_buttons &= ~bit;
    if (pressed)
        mouse_buttons |= bit;
}

void input_wheel(int32_t y)
{
    if (y > 0)
        mouse_buttons |= WHEEL_UP;
    else if (y < 0)
        mouse_buttons |= WHEEL_DOWN;
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
