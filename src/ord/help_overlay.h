// The help overlay: F1 or H shows every key and mouse action over the line,
// in the program's own text, and hides it again.
//
// Its table is the README's "Keys and mouse" table, turned into help_keys at
// build time (src/ord/CMakeLists.txt), so the two never disagree. The text
// is laid out anew each frame for the window: the largest size (from that of
// the panels down to a small but readable one) at which the table fits, in
// one column or, in a wide short window, two; the actions wrap at words.
// Where even the smallest size does not fit, the table goes on pages, and
// each press of F1 or H shows the next, until the last hides it.
#pragma once

#include <stdint.h>

// One row of the table: the keys or mouse action, and what it does.
struct HelpKey {
    const char *input;
    const char *action;
};
// The rows, in the README's order.
extern const HelpKey help_keys[];
extern const uint32_t help_key_count;

// Smallest text size tried, in pixels of line height.
constexpr double HELP_MIN_SIZE = 10.0;

// On a new press of F1 or H: shows the table, or its next page, or hides it
// after the last.
void help_overlay_keys();
// Whether it is shown.
bool help_overlay_shown();
// Draws it, when shown, over everything else; selects "normal" at the end.
void help_overlay_draw();
