// View history and text field: the two pieces of plain logic behind
// Backspace (back and forward through the views left) and the go-to field.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>

#include "ord/text_field.h"
#include "ord/view_history.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"

namespace {

// A view named by a number: both ends at n and n + 100.
struct View {
    Bignum lo, hi;
};
View view_of(int n)
{
    return View{Bignum_fromdouble(n), Bignum_fromdouble(n + 100)};
}
int number_of(const View &v)
{
    return (int)Bignum_todouble(v.lo);
}

// Scripts of moves on a view named by a number: "r5" records the view on
// screen and then moves to view 5 by itself, "m7" moves to 7 unrecorded,
// "b" and "f" go back and forward; each step gives the view after it.
TEST(ViewHistory, BackAndForwardAsABrowserDoes)
{
    struct Case {
        const char *script;
        std::string views;  // the view after each step
    };
    const Case cases[] = {
        {"b", "0"},                                  // nothing to go back to
        {"r1 b f f", "1 0 1 1"},                     // back, forward, no further
        {"r1 r2 b b b f f", "1 2 1 0 0 1 2"},
        {"r1 r2 b r3 f b", "1 2 1 3 3 1"},           // a new move drops the forward views
        {"r1 m5 b f", "1 5 0 5"},                    // forward returns to the moved view
        {"r1 b m4 f b", "1 0 4 1 4"},                // a small move at a past view is kept
    };
    for (const Case &c : cases) {
        view_history_clear();
        View now = view_of(0);
        std::string got;
        for (const char *p = c.script; *p;) {
            char op = *p++;
            int n = (int)strtol(p, (char **)&p, 10);
            if (op == 'r' || op == 'm') {
                if (op == 'r')
                    view_history_record(now.lo, now.hi);
                Bignum_free(now.lo);
                Bignum_free(now.hi);
                now = view_of(n);
            } else if (op == 'b') {
                view_history_back(&now.lo, &now.hi);
            } else {
                view_history_forward(&now.lo, &now.hi);
            }
            got += (got.empty() ? "" : " ") + std::to_string(number_of(now));
            while (*p == ' ')
                p++;
        }
        EXPECT_EQ(got, c.views) << "script \"" << c.script << "\"";
        Bignum_free(now.lo);
        Bignum_free(now.hi);
    }
    // the oldest views drop out past the limit; back still walks the rest
    view_history_clear();
    for (int i = 0; i < (int)VIEW_HISTORY_MAX + 10; i++) {
        View v = view_of(i);
        view_history_record(v.lo, v.hi);
        Bignum_free(v.lo);
        Bignum_free(v.hi);
    }
    EXPECT_EQ(view_history_count(), (uint32_t)VIEW_HISTORY_MAX);
    View now = view_of(-1);
    int steps = 0;
    while (view_history_back(&now.lo, &now.hi))
        steps++;
    // the live view, stored for forward at the first step back, takes a place
    EXPECT_EQ(steps, (int)VIEW_HISTORY_MAX - 1);
    EXPECT_EQ(number_of(now), 11) << "the oldest kept";
    Bignum_free(now.lo);
    Bignum_free(now.hi);
    view_history_clear();
}

// A gesture is recorded when it is long: in time, in zoom or in travel; a
// short one is not. It ends after a pause without moves.
TEST(ViewHistory, LongGesturesAreRecorded)
{
    screen_w = 1000;
    struct Case {
        int frames;         // moving frames of 1/60 s
        double zoom;        // the whole gesture's zoom
        double travel;      // and its pan, pixels
        bool recorded;
    };
    const Case cases[] = {
        {3, 1.2, 0, false},    // a tap of a key
        {40, 1.0, 0, true},    // two thirds of a second
        {3, 5.0, 0, true},     // a big zoom at once
        {3, 0.2, 0, true},     // or out
        {3, 1.0, 1200, true},  // a window width and more
        {3, 1.0, 300, false},
    };
    for (const Case &c : cases) {
        view_history_clear();
        View start = view_of(0);
        View end = {Bignum_lincomb(start.lo, start.lo, c.zoom, 0.0),
                    Bignum_lincomb(start.hi, start.hi, c.zoom, 0.0)};
        // the end view: zoomed about 0 by c.zoom, then moved by the travel
        Bignum shift = Bignum_fromdouble(-c.travel);
        View moved = {Bignum_lincomb(end.lo, shift, 1.0, 1.0), Bignum_lincomb(end.hi, shift, 1.0, 1.0)};
        for (int f = 0; f < c.frames; f++)
            gesture_step(true, 1.0 / 60, start.lo, start.hi, moved.lo, moved.hi);
        for (int f = 0; f < 30; f++)
            gesture_step(false, 1.0 / 60, moved.lo, moved.hi, moved.lo, moved.hi);
        EXPECT_EQ(view_history_count(), c.recorded ? 1u : 0u)
            << c.frames << " frames, zoom " << c.zoom << ", travel " << c.travel;
        for (Bignum b : {start.lo, start.hi, end.lo, end.hi, moved.lo, moved.hi, shift})
            Bignum_free(b);
    }
    view_history_clear();
    screen_w = 0;
}

// Editing keys and inserted text, by whole UTF-8 characters.
TEST(TextField, EditsByWholeCharacters)
{
    struct Case {
        const char *start;
        std::initializer_list<int32_t> keys;  // after the cursor went to the end
        const char *insert;                   // then inserted, may be null
        const char *text;                     // "|" marks the cursor
    };
    const Case cases[] = {
        {"omega", {KEY_LEFT, KEY_LEFT}, "^2", "ome^2|ga"},
        {"\xcf\x89+1", {KEY_LEFT, KEY_LEFT, KEY_BACKSPACE}, nullptr, "|+1"},  // omega goes whole
        {"\xce\xb5\xe2\x82\x80", {KEY_HOME, KEY_DELETE}, nullptr, "|\xe2\x82\x80"},
        {"ab", {KEY_HOME, KEY_LEFT, KEY_BACKSPACE, KEY_END, KEY_RIGHT, KEY_DELETE}, nullptr, "ab|"},
        {"", {}, "psi_{0}(\n\tOmega)", "psi_{0}(  Omega)|"},  // pasted controls become blanks
        {"x", {KEY_HOME}, "\x7f" "1", "1|x"},                   // DEL is dropped
    };
    static TextField f;
    for (const Case &c : cases) {
        text_field_set(&f, c.start);
        for (int32_t k : c.keys) {
            EXPECT_TRUE(text_field_key(&f, k));
        }
        if (c.insert) {
            EXPECT_TRUE(text_field_insert(&f, c.insert));
        }
        std::string shown = std::string(f.text, f.cursor) + "|" + (f.text + f.cursor);
        EXPECT_EQ(shown, c.text) << "from \"" << c.start << "\"";
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
