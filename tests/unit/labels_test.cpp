// The line and its texts without a display: the layout of the ticks (the
// worked start, deep walks in both memory modes, the per-column arrays, the
// kinds), the named fonts, the panel hit test, label texts and places,
// elision, and the centre read-out.
#include <gtest/gtest.h>

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "OrdBuchholz/ord_arith.h"
#include "PlotSegment2/centre_readout.h"
#include "PlotSegment2/labels.h"
#include "PlotSegment2/tick_classify.h"
#include "PlotSegment2/tick_walk.h"
#include "notation/notation_rows.h"
#include "ord/font_variants.h"
#include "ord/navigation.h"
#include "ord/panel_hits.h"
#include "ord/panel_layout.h"
#include "support/bitmapfonts/font_pack.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/markup_fit.h"
#include "support/bitmapfonts/text_boxes.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"
#include "ord_fixtures_test.h"

namespace {

char buffer[112];

// An expanded text up to its end byte.
std::string bytes(const char *text)
{
    return std::string(text, text_end(text));
}

// A window of that size after the frame's font stage.
void set_window(int32_t w, int32_t h)
{
    screen_w = w;
    screen_h = h;
    font_variants_rebuild(h, buffer, sizeof buffer);
}

void clear_fonts()
{
    while (fonts && font_list.count > 0)
        font_delete(fonts[font_list.count - 1]);
    current_font = nullptr;
}

// The program after the first frame's font stage in an 864 by 648 window:
// the root font, the named fonts and one notation row.
struct TextStages : testing::Test {
    void SetUp() override
    {
        clear_fonts();
        font_pack_measuring_root("fullsize");
        set_window(864, 648);
        notation_rows_start();
    }
    void TearDown() override
    {
        pool.release();
        notation_rows_free();
        clear_fonts();
    }
    OrdPool pool;
};

uint32_t height_of(const char *name)
{
    font_select(name);
    uint32_t h = text_height;
    font_select("normal");
    return h;
}

TEST_F(TextStages, FontsAreRemadeEachFrameWithoutPilingUp)
{
    EXPECT_STREQ(current_font->name, "normal");
    // labels make script variants between frames; they stay, the named fonts are replaced
    free(label_text(pool.read("psi_{0}(Omega_{2})"), new_row_template));
    set_window(864, 648);
    uint32_t settled = font_list.count;
    for (int i = 0; i < 20; i++) {
        free(label_text(pool.read("psi_{0}(Omega_{2})"), new_row_template));
        set_window(864, 648);
    }
    EXPECT_EQ(font_list.count, settled);
    uint32_t named = 0;
    for (uint32_t i = 0; i < font_list.count; i++)
        for (const char *name : {"normal", "bigger", "legend", "panel"})
            named += strcmp(fonts[i]->name, name) == 0;
    EXPECT_EQ(named, 4u);
    // the heights of normal (selected between texts), bigger, legend and panel: 25, 50 and
    // 15 up to a window height of 750 (600 for bigger), then a thirtieth, a twelfth and a
    // fiftieth of it; the fixed texts and the read-out no more than 25 and 50 per 640 of width
    const std::pair<std::pair<int32_t, int32_t>, std::vector<uint32_t>> sizes[] = {
        {{864, 599}, {25, 50, 15, 25}},  {{864, 648}, {25, 54, 15, 25}},  {{1000, 749}, {25, 62, 15, 25}},
        {{1440, 1080}, {36, 90, 21, 36}}, {{400, 300}, {25, 31, 15, 15}}, {{320, 1080}, {36, 25, 21, 12}}};
    for (const auto &[size, heights] : sizes) {
        set_window(size.first, size.second);
        std::vector<uint32_t> got = {text_height, height_of("bigger"), height_of("legend"),
                                     height_of("panel")};
        EXPECT_EQ(got, heights) << size.first << "x" << size.second;
    }
}

TEST(PanelClick, NewEdgeInsideTheHalfOpenBox)
{
    const struct {
        uint32_t buttons, prev;
        int32_t x, y, top;
        bool hit;
    } rows[] = {
        // box x 10..19, y 100..124 (lh 25)
        {BUTTON_LEFT, 0, 10, 100, 100, true}, {BUTTON_LEFT, 0, 19, 124, 100, true},
        {BUTTON_LEFT, 0, 20, 110, 100, false},  // x1 is outside
        {BUTTON_LEFT, 0, 15, 125, 100, false},  // y + lh belongs to the line below
        {BUTTON_LEFT, 0, 9, 110, 100, false}, {BUTTON_LEFT, 0, 15, 99, 100, false},
        {BUTTON_LEFT, BUTTON_LEFT, 15, 110, 100, false},  // held: no new edge
        {BUTTON_RIGHT | BUTTON_LEFT, BUTTON_LEFT, 15, 110, 100, true}, {WHEEL_UP, 0, 15, 110, 100, true},
        {WHEEL_UP, WHEEL_UP, 15, 110, 100, false},  // a wheel turning on hides its next pulse
        {0, BUTTON_LEFT, 15, 110, 100, false},      // a release is no click
        // a line above the window (rows past its top) is never hit from inside it
        {BUTTON_LEFT, 0, 15, 0, -30, false}, {BUTTON_LEFT, 0, 15, 0, -20, true},
    };
    for (const auto &row : rows) {
        mouse_buttons = row.buttons;
        mouse_buttons_prev = row.prev;
        mouse_x = row.x;
        mouse_y = row.y;
        EXPECT_EQ(panel_click(10, 20, row.top, 25), row.hit) << "row " << &row - rows;
    }
    mouse_buttons = 0;
}

TEST_F(TextStages, LabelTextIsExpandedAndElidedAtAWholeTerm)
{
    NotationRow row = new_row_template;
    char *text = label_text(pool.read("psi_{0}(omega)"), row);
    // omega is glyph 279, as a glyph escape; the raised omega comes after a script escape
    EXPECT_EQ(bytes(text).substr(0, 3), "\x02\x01\x17");
    EXPECT_NE(bytes(text).find('\x05'), std::string::npos);
    EXPECT_FALSE(text_has_markup(text));
    free(text);
    // with "alpha.n" off a coefficient repeats its term: 1,667 times "omega+" is past the
    // guard, and is cut after its last whole term there instead of shown raw
    row.toggle[TOGGLE_DOT] = 0;
    char *cut = label_text(pool.read("omega.1667"), row);
    const std::string shown = bytes(cut);
    EXPECT_FALSE(text_has_markup(cut));
    EXPECT_EQ(shown.substr(shown.size() - 7), "\x02\x01\x17+...");
    EXPECT_LE(shown.size(), (size_t)LABEL_TEXT_MAX);
    free(cut);
}

// The lines of every label of a label pass over a view.
struct Line {
    float x, y;
    uint32_t colour;
    std::string text;
    uint32_t height;  // text_height while the line was given
};
std::vector<Line> lines;

void collect_label(WalkRecord r)
{
    LabelLine line;
    if (!label_start(r, &line))
        return;
    while (label_next(&line))
        lines.push_back({line.tx, line.y, line.colour, bytes(line.text), text_height});
    EXPECT_EQ(text_height, 25u);  // "normal" again, or a font of its size
}

// The view of a window `width` wide as the viewer makes it: the first view,
// panned by `pan` pixels and zoomed by 10 `decades` times, with the stop size
// of labels unless another is given.
WalkRecord view(int32_t width, int32_t pan = 0, int32_t decades = 0, float minsize = 0)
{
    screen_w = width;
    WalkRecord r = {};
    double min_length;
    view_start(&r.xlo, &r.xhi, &min_length);
    if (decades > 0 || pan != 0)
        view_update(&r.xlo, &r.xhi, 1.0, pan);
    for (int32_t i = 0; i < decades; i++)
        view_update(&r.xlo, &r.xhi, 10.0, 0);
    walk_record_screen(&r);
    r.minsize = minsize > 0 ? minsize : (float)(5 * text_height);
    tick_arrays_rebuild(r.right);  // every pass records its interval sizes
    return r;
}

void free_view(WalkRecord r)
{
    Bignum_free(r.xlo);
    Bignum_free(r.xhi);
}

// Where a tick call was, the kind of its ordinal, and the ordinal's text.
using Call = std::tuple<std::string, uint32_t, std::string>;

std::vector<Call> calls;
std::vector<Ord> ordinals;  // heap clones of each call's ordlo, in walk order

void record_call(WalkRecord r)
{
    const NotationRow all_on = {{1, 1, 1, 1, 1, 1}};
    char *position = Bignum_todecimal(r.xlo), *text = Ord_tostring(r.ordlo, &all_on);
    calls.push_back({position, tick_classify(r.ordlo), text});
    free(position);
    free(text);
    MemStack *mode = ord_arena;
    ord_arena = nullptr;
    ordinals.push_back(Ord_clone(r.ordlo));
    ord_arena = mode;
    tick_record(r);
}

void clear_calls()
{
    for (Ord o : ordinals)
        Ord_free(o);
    ordinals.clear();
    calls.clear();
}

void walk(WalkRecord r, MemStack *arena)
{
    clear_calls();
    tick_classify(Ord_zero());  // constants on the heap before any arena pass
    tick_arrays_rebuild(r.right);
    ord_arena = arena;
    walk_line(record_call, r);
    ord_arena = nullptr;
    if (arena)
        memstack_rewind(arena);
}

TEST(Layout, WorkedStartDepthLimitAndTinyIntervals)
{
    WalkRecord r = view(1280, 0, 0, 125.0f);
    walk(r, nullptr);
    // derived from the step rules by hand: the tick count is one tick late,
    // first children of a limit take the larger share, then 0.2983 of the rest
    const std::vector<Call> expected = {
        {"128.0000", 1, "0"}, {"219.1185", 2, "1"}, {"283.0563", 2, "2"}, {"327.9215", 2, "3"},
        {"433.4592", 5, "omega"}, {"497.3970", 5, "omega^{omega}"}, {"542.2622", 5, "omega^{omega^{omega}}"},
        {"647.7999", 6, "epsilon_{0}"}, {"692.6651", 10, "psi_{0}(Omega_{omega})"},
        {"798.2028", 10, "psi_{0}(Omega_{Omega})"}, {"903.7405", 10, "psi_{0}(Omega_{Omega_{Omega}})"},
        {"977.7963", 10, "psi_{0}(Omega_{Omega_{Omega_{Omega}}})"},
        {"1029.7613", 10, "psi_{0}(Omega_{Omega_{Omega_{Omega_{Omega}}}})"}, {"1152.0000", 9, "psi_{0}(I)"},
    };
    EXPECT_EQ(calls, expected);

    // limit 0: the root makes one callback for the whole line, plus the end
    segment_depth_limit = 0;
    r.minsize = 1.0f;
    walk(r, nullptr);
    EXPECT_EQ(calls, (std::vector<Call>{expected[0], expected.back()}));
    segment_depth_limit = -1;
    EXPECT_EQ(segment_depth, 0);
    // a whole line narrower than minsize is one leaf, though its right end is a limit
    r.minsize = 2000.0f;
    walk(r, nullptr);
    EXPECT_EQ(calls.size(), 2u);
    free_view(r);
    clear_calls();
}

TEST(Layout, DeepWalksIncreaseAndAgreeInBothMemoryModes)
{
    static MemStack arena;
    memstack_init(&arena);
    // target, decades, minsize: the costly neighbourhood of the top is visited at shallower depths
    const std::tuple<double, int32_t, float> cases[] = {
        {700, 0, 1},   {1000, 0, 1},   {1150, 0, 1},    {700, 10, 1},   {1000, 10, 1},  {1150, 10, 4},
        {700, 100, 4}, {1000, 100, 4}, {1000, 300, 40}, {600, 1000, 40}, {640, 1000, 40}, {1100, 20, 4},
    };
    for (const auto &[target, decades, minsize] : cases) {
        SCOPED_TRACE("target " + std::to_string(target) + " at 10^" + std::to_string(decades));
        WalkRecord r = view(1280, (int32_t)(target - 640), decades, minsize);
        walk(r, nullptr);
        const std::vector<Call> heap_calls = calls;
        const std::vector<uint32_t> heap_kinds(tick_kinds, tick_kinds + tick_columns);
        const std::vector<float> heap_sizes(tick_sizes, tick_sizes + tick_columns);
        EXPECT_GT(calls.size(), 10u);
        // the ordinals come out strictly increasing (the end call of the top is
        // left out: members of its sequence are never compared with it)
        for (size_t i = 1; i + 1 < ordinals.size(); i++)
            ASSERT_LT(Ord_cmp(ordinals[i - 1], ordinals[i]), 0)
                << "call " << i << " " << std::get<2>(calls[i - 1]) << " then " << std::get<2>(calls[i]);
        EXPECT_EQ(segment_depth, 0);

        walk(r, &arena);
        EXPECT_EQ(calls, heap_calls) << "the arena walks differently";
        EXPECT_EQ(std::vector<uint32_t>(tick_kinds, tick_kinds + tick_columns), heap_kinds);
        EXPECT_EQ(std::vector<float>(tick_sizes, tick_sizes + tick_columns), heap_sizes);
        // every chain held compressed, and none: the same line
        uint32_t levels = ord_rope_levels;
        for (uint32_t held : {0u, UINT32_MAX}) {
            ord_rope_levels = held;
            walk(r, held ? nullptr : &arena);
            EXPECT_EQ(calls, heap_calls) << "ropes from " << held << " levels walk differently";
            EXPECT_EQ(std::vector<float>(tick_sizes, tick_sizes + tick_columns), heap_sizes);
        }
        ord_rope_levels = levels;
        free_view(r);
    }
    clear_calls();
    memstack_free(&arena);
}

// One tick of x over the interval [lo, hi] in a window 100 columns wide; only
// the interval's size when size_only is set.
void tick_at(double lo, double hi, Ord x, bool size_only = false)
{
    WalkRecord r = {};
    r.right = 100.0f;
    r.xlo = Bignum_fromdouble(lo);
    r.xhi = Bignum_fromdouble(hi);
    r.ordlo = x;
    (size_only ? tick_size_record : tick_record)(r);
    free_view(r);
}

TEST(Layout, ColumnsKeepTheHighestKindAndTheLargestSize)
{
    OrdPool pool;
    screen_w = 100;
    tick_arrays_rebuild(100.0f);
    tick_at(10.2, 30.0, pool.read("omega"));  // kind 5
    tick_at(10.2, 30.0, pool.read("7"));      // kind 2, later in the same column: the higher kind stays
    EXPECT_EQ(tick_kinds[10], 5u);
    EXPECT_NEAR(tick_sizes[10], 19.8001, 1e-4);  // 10.2 is taken as 10.1999
    tick_at(10.2, 12.0, pool.read("7"), true);  // a smaller interval does not shrink the size
    EXPECT_NEAR(tick_sizes[10], 19.8001, 1e-4);
    // a tick exactly at `left` has a kind and no size of its own; one at `right` has neither
    tick_at(0.0, 30.0, Ord_zero());
    EXPECT_EQ(tick_kinds[0], 1u);
    EXPECT_EQ(tick_sizes[0], 0.0f);
    tick_at(100.0, 130.0, Ord_zero());
    EXPECT_EQ(tick_kinds[99], 0u);
    pool.release();
}

TEST(Layout, ClassificationOfTellingOrdinals)
{
    const std::pair<const char *, uint32_t> cases[] = {
        // the kinds of 0, omega, epsilon_0, Omega_omega and the top stand in the worked start
        {"7", 2}, {"omega+1", 2}, {"omega.2", 3}, {"psi_{0}(2)+omega", 3}, {"psi_{0}(2)", 4},
        {"psi_{0}(omega)", 5}, {"psi_{0}(Omega.2)", 6},
        {"psi_{0}(Omega+1)", 4},                  // omega^(epsilon_0 + 1)
        {"psi_{0}(psi_{1}(Omega))", 7},           // psi_0(Omega^2)
        {"psi_{0}(psi_{1}(psi_{1}(Omega)))", 8},  // Feferman-Schutte
        {"psi_{0}(Omega_{2})", 9},                // Bachmann-Howard
    };
    OrdPool pool;
    for (const auto &[text, kind] : cases)
        EXPECT_EQ(tick_classify(pool.read(text)), kind) << text;
    pool.release();
}

// Every box of this frame holds no raw markup; those from `first` on stand
// in the window (w by h) and clear of every box placed before them.
void expect_clear(uint32_t first, float w, float h)
{
    for (uint32_t i = 0; i < text_boxes.count; i++) {
        const PlacedBox *a = DynArray_at<PlacedBox>(&text_boxes, i);
        EXPECT_FALSE(a->raw) << "box " << i;
        if (i < first)
            continue;
        EXPECT_TRUE(a->box.x0 >= 0 && a->box.y0 >= 0 && a->box.x1 <= w && a->box.y1 <= h)
            << a->box.x0 << "," << a->box.y0 << " " << a->box.x1 << "," << a->box.y1;
        for (uint32_t j = 0; j < i; j++)
            EXPECT_FALSE(text_box_overlap(a->box, DynArray_at<PlacedBox>(&text_boxes, j)->box))
                << "boxes " << i << " and " << j;
    }
}

// The label pass of a view as a frame runs it: the fixed texts' places
// first, then the labels collected and placed around them. Returns where
// the labels' boxes start.
uint32_t place_labels(WalkRecord r)
{
    text_boxes_clear();
    panels_reserve(false, buffer, sizeof buffer);
    uint32_t fixed = text_boxes.count;
    labels_begin();
    walk_line(label_collect, r);
    labels_place(r);
    return fixed;
}

// The texts of the lines kept, with their places if asked.
std::vector<std::string> kept_texts(bool places)
{
    std::vector<std::string> kept;
    for (uint32_t i = 0; i < labels_kept(); i++) {
        const PlacedLabelLine *line = label_kept(i);
        kept.push_back(bytes(line->text) +
                       (places ? " @ " + std::to_string(line->x) + "," + std::to_string(line->y) : ""));
    }
    return kept;
}

TEST_F(TextStages, LabelsOfTheFirstView)
{
    WalkRecord r = view(864);
    lines.clear();
    walk_line(collect_label, r);
    std::vector<Line> one_row = lines;
    ASSERT_GT(one_row.size(), 5u);
    EXPECT_EQ(one_row[0].text, "0");
    // "0" at x 86.4, where the line is at 64.8 + 86.4 * 0.675: 37 above the tick's top, 6 left
    EXPECT_NEAR(one_row[0].x, 86.4f - 6.0f, 1e-3f);
    EXPECT_NEAR(one_row[0].y, 64.8f + 58.32f - 32.4f - 37.0f, 0.01f);
    // the end of the line carries its name in the small grey font above the label
    const Line &name = one_row.back(), &top = one_row[one_row.size() - 2];
    EXPECT_EQ(name.text, "Extended Buchholz ordinal");
    EXPECT_EQ(name.colour, 0x808080u);
    EXPECT_EQ(name.height, 15u);
    EXPECT_EQ(top.colour, 0xffffffu);
    EXPECT_FLOAT_EQ(name.y, top.y - 22.0f);
    EXPECT_FLOAT_EQ(name.x, top.x + 6.0f - 3.0f);

    // placed, the end of the line stands for the whole line, so its name is kept,
    // moved left to end inside the window; the label its name would meet, of a
    // smaller interval, is left out
    place_labels(r);
    std::vector<std::string> kept = kept_texts(false);
    auto has = [&](const char *ordinal) {
        char *text = label_text(pool.read(ordinal), new_row_template, label_room(0));
        bool found = std::find(kept.begin(), kept.end(), bytes(text)) != kept.end();
        free(text);
        return found;
    };
    EXPECT_NE(std::find(kept.begin(), kept.end(), "Extended Buchholz ordinal"), kept.end());
    for (const char *ordinal : {"0", "1", "2", "omega", "omega^{omega}", "epsilon_{0}", "psi_{0}(I)",
                                "psi_{0}(Omega_{Omega_{Omega}})"})
        EXPECT_TRUE(has(ordinal)) << ordinal;
    EXPECT_FALSE(has("psi_{0}(Omega_{Omega_{Omega_{Omega}}})"));
    labels_discard();
    free_view(r);
}

// A label line as written afresh, for the ticks of kept members whose texts
// are kept from the walk before.
void check_kept_text(WalkRecord r)
{
    LabelLine line;
    if (!label_start(r, &line))
        return;
    while (label_next(&line)) {
        if (line.name)
            continue;
        char *fresh = label_text(r.ordlo, *notation_row(line.rows - 1), label_room(line.tx));
        EXPECT_EQ(bytes(line.text), bytes(fresh));
        free(fresh);
    }
}

TEST_F(TextStages, KeptLabelTextsFollowTheRow)
{
    WalkRecord r = view(864);
    // "omega" turns into "psi_{0}(1)", "1" into "psi_{0}(0)"
    for (int32_t toggle : {-1, (int32_t)TOGGLE_OMEGA, (int32_t)TOGGLE_N}) {
        if (toggle >= 0)
            notation_row(0)->toggle[toggle] = 0;
        walk_line(check_kept_text, r);
    }
    free_view(r);
}

TEST_F(TextStages, CentreReadoutPicksTheLeafAtTheMarkerAndStandsInTheWindow)
{
    // views at width 1280; the first runs from 128 to 1152 with 1 at 219.1185
    const std::pair<std::pair<double, double>, const char *> rows[] = {
        {{128.0 + 421, 1152.0 + 421}, "1"},
        // the end of the line is a candidate like any leaf, near or far
        {{128.0 - 512, 1152.0 - 512}, "psi_{0}(I)"},
        {{128.0 + 580, 1152.0 + 580}, "psi_{0}(I)"},
        // nothing in the column, and the end further out than any distance counts
        {{1000.0, 1e30}, nullptr},
    };
    set_window(1280, 960);
    for (const auto &[span, want] : rows) {
        SCOPED_TRACE(span.first);
        WalkRecord r = view(1280);
        free_view(r);
        r.xlo = Bignum_fromdouble(span.first);
        r.xhi = Bignum_fromdouble(span.second);
        CentreText text;
        bool shown = centre_text(640.0f, r, 960.0f, &text);
        // "normal" is selected after; "bigger" is 80 pixels high here
        EXPECT_EQ(text_height, 32u);
        EXPECT_EQ(shown, want != nullptr);
        if (want) {
            ASSERT_EQ(text.count, 1u);
            font_select("bigger");
            char *expected = label_text(pool.read(want), new_row_template);
            font_select("normal");
            EXPECT_STREQ(text.lines[0], expected);
            free(expected);
            EXPECT_FLOAT_EQ(text.x, 162.0f);
            EXPECT_FLOAT_EQ(text.y[0], 748.8f);
        }
        EXPECT_EQ(centre_ord.count, 0u);
        centre_text_free(&text);
        free_view(r);
    }
    // placed an eighth of the width in, then pulled inside the window
    screen_w = 864;
    const float places[][3] = {{432, 100, 110}, {432, 753, 110}, {432, 754, 109},
                               {432, 863, 0},   {432, 2000, 0},  {432.5f, 100, 110.5f}};  // cx, w, x
    for (const auto &place : places)
        EXPECT_FLOAT_EQ(centre_text_x(place[0], place[1]), place[2]) << place[1];
}

// A source after the Greek pass, in a buffer with the capacity rule's room.
std::vector<char> greek_source(const char *text)
{
    std::vector<char> buf(MARKUP_CAPACITY(strlen(text)), 0);
    memcpy(buf.data(), text, strlen(text) + 1);
    greek_expand(buf.data());
    return buf;
}

TEST_F(TextStages, ElisionKeepsTheLongestRunOfWholeTermsThatFits)
{
    const struct {
        const char *source;
        const char *want;  // also the room: exactly its width
        bool cut_short;    // the source was already cut at an arbitrary byte
    } rows[] = {
        {"omega+1", "omega+1", false}, {"omega^{omega}+omega^{2}+1", "omega^{omega}+...", false},
        // inside a script the ellipsis is raised with it, and the group closed
        {"omega^{omega+omega+omega^{2}}", "omega^{omega+omega+...}", false},
        {"psi_{0}(Omega_{2}+Omega)", "psi_{0}(Omega_{2}+...", false},
        {"psi_{0}(Omega_{2}+Omega)", "psi_{0}(...", false}, {"varphi_{omega}(1)", "varphi_{...}", false},
        {"omega^{omega}", "...", false},  // nothing fits but the ellipsis
        {"too deep to draw", "too deep...", false}, {"omega+omega+eps", "omega+omega+...", true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.source);
        std::vector<char> source = greek_source(row.source), want = greek_source(row.want);
        // the width of a source is that of its expansion
        std::vector<char> expanded = source;
        script_expand(expanded.data(), -1, 0, 256, expanded.size());
        EXPECT_FLOAT_EQ(markup_width(source.data()), text_width(expanded.data()));
        bool cut = markup_elide(source.data(), source.size(), markup_width(want.data()), row.cut_short);
        EXPECT_EQ(cut, strcmp(row.source, row.want) != 0);
        EXPECT_EQ(bytes(source.data()), bytes(want.data()));
    }
}

TEST_F(TextStages, ReadoutTowersStopAtTheScriptFloor)
{
    // the read-out's font, 54 pixels: scripts shrink for eight levels, then repeat
    font_select("bigger");
    int32_t floor = markup_floor_depth();
    EXPECT_EQ(floor, 8);
    std::string tower = "3";
    for (int i = 0; i < 12; i++)
        tower = "omega^{" + tower + "}";
    std::vector<char> source = greek_source((tower + "+1").c_str());
    EXPECT_TRUE(markup_elide_depth(source.data(), source.size(), floor));
    script_expand(source.data(), -1, 0, 256, source.size());
    // no glyph under 9 pixels, "..." on top, and the "+1" after the tower kept
    int32_t levels = 0;
    for (size_t i = 0; source[i];) {
        TextItem item = text_item(source.data() + i, SIZE_MAX);
        bool script = item.kind == TEXT_ITEM_CONTROL && item.control == 2;
        EXPECT_TRUE(!script || (item.arg & 0xFFFF) * 54.0 / 256 >= 9.0);
        levels += item.kind == TEXT_ITEM_GLYPH && item.code == 279;
        i += item.length;
    }
    EXPECT_EQ(levels, floor + 1);
    const std::string text = bytes(source.data());
    EXPECT_NE(text.find("..."), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 2), "+1");
    font_select("normal");
}

TEST_F(TextStages, LabelsKeptStandInTheWindowClearOfEveryOtherText)
{
    const struct {
        int32_t w, h;
        uint32_t rows;
        int32_t zooms;  // steps of exp(1.5) about the centre: 60 is a 30 s hold of Z
    } rows[] = {{864, 648, 1, 0},   {864, 648, 3, 0},  {400, 300, 1, 0},
                {1920, 1440, 2, 0}, {864, 648, 1, 60}, {864, 648, 3, 60}};
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << row.w << " wide, rows " << row.rows << " zooms " << row.zooms);
        set_window(row.w, row.h);
        while (notation_rows.count < row.rows)
            DynArray_append(&notation_rows, &new_row_template);
        WalkRecord r = view(row.w);
        for (int32_t k = 0; k < row.zooms; k++)
            view_update(&r.xlo, &r.xhi, exp(1.5), 0);
        expect_clear(place_labels(r), (float)row.w, (float)row.h);
        EXPECT_GT(labels_kept(), 0u);
        // a view that stands still keeps the same labels in the same places
        std::vector<std::string> kept = kept_texts(true);
        labels_discard();
        place_labels(r);
        EXPECT_EQ(kept_texts(true), kept);
        labels_discard();
        while (notation_rows.count > 1)
            DynArray_remove(&notation_rows, notation_rows.count - 1);
        free_view(r);
    }
}

// A label line is made from the head of its text where that is enough: it
// must read as the whole text cut to the same width, narrow or wide, in
// plain script and in a tower whose scripts shrink to the floor size.
TEST_F(TextStages, ALabelFromTheHeadOfItsTextIsTheWholeTextCut)
{
    std::string chain, tower;
    // both run past LABEL_SHORT_MAX bytes
    for (int i = 0; i < 200; i++)
        chain += "psi_{0}(Omega_{", tower += "omega^{";
    chain += "1", tower += "2";
    for (int i = 0; i < 200; i++)
        chain += "})", tower += "}";
    for (const std::string &text : {chain, tower})
        for (float width : {20.0f, 150.0f, 427.0f, 3000.0f, 40000.0f}) {
            Ord x = pool.read(text.c_str());
            size_t capacity;
            char *whole = label_source(x, new_row_template, &capacity);
            markup_elide(whole, capacity, width, false);
            char *expected = label_expand(whole, capacity), *got = label_text(x, new_row_template, width);
            EXPECT_EQ(bytes(got), bytes(expected)) << text.substr(0, 20) << " at " << width;
            free(whole), free(expected), free(got);
        }
}

TEST_F(TextStages, ReadoutKeepsToItsBand)
{
    // long texts of every kind, at two sizes, above a panel of one row and of ten
    const char *ordinals[] = {
        "1", "omega^{omega^{omega^{omega^{omega^{omega^{omega^{omega^{omega^{omega^{3}}}}}}}}}}",
        "psi_{0}(Omega_{Omega_{Omega_{Omega_{Omega_{Omega_{Omega_{Omega_{Omega}}}}}}}})",
        "omega^{omega.2+3}.5+omega^{omega+1}.4+omega^{omega}.3+omega^{7}.2+omega^{2}+omega+1"};
    for (int32_t w : {864, 400})
        for (uint32_t rows : {1u, 10u})
            for (const char *ordinal : ordinals) {
                SCOPED_TRACE(testing::Message() << w << " wide, rows " << rows << " " << ordinal);
                set_window(w, w * 3 / 4);
                WalkRecord r = view(w);
                float band_bottom = (float)(w * 3 / 4 - (int32_t)((rows + 2) * height_of("panel")));
                text_boxes_clear();
                panels_reserve(false, buffer, sizeof buffer);
                font_select("bigger");
                size_t capacity;
                char *source = label_source(pool.read(ordinal), new_row_template, &capacity);
                CentreText t;
                centre_layout(w / 2.0f, r, band_bottom, source, capacity, true, &t);
                free(source);
                ASSERT_GE(t.count, 1u);
                EXPECT_LE(t.count, 2u);
                // each line below the line's band where it ends, above the
                // panel, in the window, and clear of the legend
                uint32_t fixed = text_boxes.count;
                centre_text_reserve(&t);
                expect_clear(fixed, (float)w, band_bottom);
                float slope = (r.yright - r.yleft) / (r.right - r.left);
                for (uint32_t i = fixed; i < text_boxes.count; i++) {
                    const TextBox &b = DynArray_at<PlacedBox>(&text_boxes, i)->box;
                    EXPECT_GE(b.y0, r.yleft + slope * b.x1 + 0.25f * r.ticklen);
                }
                centre_text_free(&t);
                free_view(r);
            }
}

}  // namespace
