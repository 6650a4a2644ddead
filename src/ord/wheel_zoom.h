// Wheel zoom: each wheel pulse over the line zooms by a fixed step about the
// pointer's column, so that the ordinal under the pointer stays where it is.
//
// Up zooms in. A pulse over a panel text is that text's click instead (the
// panel reads the wheel bits), and the wheel does nothing while a button
// drags. The zoom-out limit is the one of the keys: the line never gets
// shorter than at home, and a pulse that would pass it puts the view home.
#pragma once

#include <stdint.h>

#include "support/bignum/bignum.h"

// The zoom of one pulse, and of one pulse with Shift.
constexpr double WHEEL_STEP = 1.25;
constexpr double WHEEL_STEP_SHIFT = 4.0;
// Most pulses one frame acts on, each way: 4^6 is about what view_update
// takes in one step.
constexpr int32_t WHEEL_MAX_PULSES = 6;

// Zooms the view by `factor` about pixel column x, exactly (the point at x
// stays at x), then holds it to the zoom-out limit: a line shorter than
// min_line_length becomes the home view. Frees the old ends.
void view_zoom_about(Bignum *view_lo, Bignum *view_hi, double factor, int32_t x,
                     double min_line_length);

// This frame's wheel pulses (wheel_pulses, shift_held) at the pointer, when
// the pointer is on no panel text and no button is held: each pulse one step
// about mouse_x. Returns whether the view changed.
bool wheel_zoom(Bignum *view_lo, Bignum *view_hi, double min_line_length);
