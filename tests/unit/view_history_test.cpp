// View history and text field: the two pieces of plain logic behind
// Backspace (back and forward through the views left) and the go-to field.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "ord/text_field.h"
#include "ord/view_history.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"

namespace {

// A view named by a number n: its ends at n and n + 100.
struct View {
    Bignum lo, hi;
};
View view_of(int n)
{
    return View{Bignum_fromdouble(n), Bignum_fromdouble(n + 100)};
}
void free_view(View v)
{
    Bignum_free(v.lo);
    Bignum_free(v.hi);
}

// Runs a script of moves from a clear history and view 0: "r5" records the
// view on screen and then moves to view 5 by itself, "m7" moves to 7
// unrecorded, "b" and "f" go back and forward. Gives the view after each step.
std::string run_script(const std::string &script)
{
    view_history_clear();
    View now = view_of(0);
    std::istringstream steps(script);
    std::string step, views;
    while (steps >> step) {
        if (step[0] == 'r')
            view_history_record(now.lo, now.hi);
        if (step[0] == 'b') {
            view_history_back(&now.lo, &now.hi);
        } else if (step[0] == 'f') {
            view_history_forward(&now.lo, &now.hi);
        } else {
            free_view(now);
            now = view_of(atoi(step.c_str() + 1));
        }
        views += (views.empty() ? "" : " ") + std::to_string((int)Bignum_todouble(now.lo));
    }
    free_view(now);
    return views;
}

TEST(ViewHistory, BackAndForwardAsABrowserDoes)
{
    const std::pair<const char *, const char *> cases[] = {
        {"b", "0"},                         // nothing to go back to
        {"r1 b f f", "1 0 1 1"},            // back, forward, no further
        {"r1 r2 b b b f f", "1 2 1 0 0 1 2"},
        {"r1 r2 b r3 f b b", "1 2 1 3 3 1 0"},  // a new move drops the forward views
        {"r1 m5 b f", "1 5 0 5"},           // forward returns to the moved view
        {"r1 b m4 f b", "1 0 4 1 4"},       // a small move at a past view is kept
    };
    for (const auto &[script, views] : cases)
        EXPECT_EQ(run_script(script), views) << "script \"" << script << "\"";
    // the oldest views drop out past the limit, and the live view, stored for
    // forward at the first step back, takes a place: back walks to view 11
    std::string script, views;
    for (int i = 1; i <= (int)VIEW_HISTORY_MAX + 10; i++) {
        script += " r" + std::to_string(i);
        views += " " + std::to_string(i);
    }
    for (int i = VIEW_HISTORY_MAX + 9; i >= 10; i--) {
        script += " b";
        views += " " + std::to_string(std::max(i, 11));
    }
    EXPECT_EQ(run_script(script), views.substr(1));
    EXPECT_EQ(view_history_count(), (uint32_t)VIEW_HISTORY_MAX);
    view_history_clear();
}

// A gesture is recorded when it is long: in time, in zoom or in travel; a
// short one is not. It ends after a pause without moves. Each case: moving
// frames of 1/60 s, the whole gesture's zoom about 0, then its pan in pixels.
TEST(ViewHistory, LongGesturesAreRecorded)
{
    const std::tuple<int, double, double, bool> cases[] = {
        {3, 1.2, 0, false},    // a tap of a key
        {40, 1.0, 0, true},    // two thirds of a second
        {3, 5.0, 0, true},     // a big zoom at once
        {3, 0.2, 0, true},     // or out
        {3, 1.0, 1200, true},  // a window width and more
        {3, 1.0, 900, false},
    };
    screen_w = 1000;
    for (const auto &[frames, zoom, travel, recorded] : cases) {
        view_history_clear();
        View start = view_of(0);
        View end = {Bignum_fromdouble(-travel), Bignum_fromdouble(100 * zoom - travel)};
        for (int f = 0; f < frames; f++)
            gesture_step(true, 1.0 / 60, start.lo, start.hi, end.lo, end.hi);
        for (int f = 0; f < 30; f++)
            gesture_step(false, 1.0 / 60, end.lo, end.hi, end.lo, end.hi);
        EXPECT_EQ(view_history_count(), recorded ? 1u : 0u)
            << frames << " frames, zoom " << zoom << ", travel " << travel;
        free_view(start);
        free_view(end);
    }
    view_history_clear();
    screen_w = 0;
}

// Editing keys and inserted text, by whole UTF-8 characters. Each case: the
// text set (the cursor at its end), the keys, the text then inserted (or
// none), and the outcome with "|" for the cursor.
TEST(TextField, EditsByWholeCharacters)
{
    const std::tuple<const char *, std::vector<int32_t>, const char *, const char *> cases[] = {
        {"omega", {KEY_LEFT, KEY_LEFT}, "^2", "ome^2|ga"},
        {"\xcf\x89+1", {KEY_LEFT, KEY_LEFT, KEY_BACKSPACE}, nullptr, "|+1"},  // omega goes whole
        {"\xce\xb5\xe2\x82\x80", {KEY_HOME, KEY_DELETE}, nullptr, "|\xe2\x82\x80"},
        {"ab", {KEY_HOME, KEY_LEFT, KEY_BACKSPACE, KEY_END, KEY_RIGHT, KEY_DELETE}, nullptr, "ab|"},
        {"", {}, "psi_{0}(\n\tOmega)", "psi_{0}(  Omega)|"},  // pasted controls become blanks
        {"x", {KEY_HOME}, "\x7f" "1", "1|x"},                   // DEL is dropped
    };
    static TextField f;
    for (const auto &[start, keys, insert, text] : cases) {
        text_field_set(&f, start);
        for (int32_t k : keys)
            EXPECT_TRUE(text_field_key(&f, k));
        EXPECT_TRUE(!insert || text_field_insert(&f, insert));
        std::string shown = std::string(f.text, f.cursor) + "|" + (f.text + f.cursor);
        EXPECT_EQ(shown, text) << "from \"" << start << "\"";
        EXPECT_EQ(f.length, strlen(f.text));
    }
    EXPECT_FALSE(text_field_key(&f, KEY_Z)) << "not an editing key";
    // a text that does not fit is refused whole
    std::string big(TEXT_FIELD_MAX, 'a');
    text_field_set(&f, big.c_str());
    EXPECT_FALSE(text_field_insert(&f, "b"));
    EXPECT_EQ(f.length, (uint32_t)TEXT_FIELD_MAX);
}

}  // namespace
