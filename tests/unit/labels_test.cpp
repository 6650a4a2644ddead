// The text stages of a frame without a display: the named fonts, the panel
// hit test, label texts and places, and the centre read-out.
#include <gtest/gtest.h>

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord_parse.h"
#include "PlotSegment2/centre_readout.h"
#include "PlotSegment2/labels.h"
#include "PlotSegment2/tick_walk.h"
#include "notation/notation_rows.h"
#include "ord/font_variants.h"
#include "ord/navigation.h"
#include "ord/panel_hits.h"
#include "ord/panel_layout.h"
#include "support/bitmapfonts/font_pack.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/markup_fit.h"
#include "support/bitmapfonts/text_boxes.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"
#include "ord_fixtures_test.h"

namespace {

char buffer[112];

// The state of the program after the first frame's font stage, for a window
// of the given size: the root font, the three named fonts and one row.
class TextStages : public ::testing::Test {
protected:
    void SetUp() override
    {
        clear_fonts();
        font_pack_measuring_root("fullsize");
        set_window(864, 648);
        notation_rows_start();
    }
    OrdPool pool;
    void TearDown() override
    {
        pool.release();
        notation_rows_free();
        clear_fonts();
    }
    static void clear_fonts()
    {
        while (fonts && font_list.count > 0)
            font_delete(fonts[font_list.count - 1]);
        current_font = nullptr;
    }
    static void set_window(int32_t w, int32_t h)
    {
        screen_w = w;
        screen_h = h;
        font_variants_rebuild(h, buffer, sizeof buffer);
    }
};

uint32_t height_of(const char *name)
{
    font_select(name);
    uint32_t h = text_height;
    font_select("normal");
    return h;
}

TEST(FontVariants, ScalesFollowTheHeightAboveTheirThresholds)
{
    struct Row {
        int32_t width, height;
        double normal, bigger, legend, panel;
    };
    // the fixed texts and the read-out are held to 25 and 50 pixels per 640 of
    // width, the labels are not
    const Row rows[] = {
        {864, 200, 25, 50, 15, 25},        {864, 599, 25, 50, 15, 25},
        {864, 600, 25, 50, 15, 25},        {864, 648, 25, 54, 15, 25},
        {864, 749, 25, 62.4166, 15, 25},   {1000, 750, 25, 62.5, 15, 25},
        {1200, 900, 30, 75, 18, 30},       {1440, 1080, 36, 90, 21.6, 36},
        {640, 480, 25, 50, 15, 25},        {400, 300, 25, 31.25, 15, 15.625},
        {320, 1080, 36, 25, 21.6, 12.5},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message() << row.width << "x" << row.height);
        EXPECT_NEAR(font_variant_scale(FONT_NORMAL, row.width, row.height), row.normal, 1e-3);
        EXPECT_NEAR(font_variant_scale(FONT_BIGGER, row.width, row.height), row.bigger, 1e-3);
        EXPECT_NEAR(font_variant_scale(FONT_LEGEND, row.width, row.height), row.legend, 1e-3);
        EXPECT_NEAR(font_variant_scale(FONT_PANEL, row.width, row.height), row.panel, 1e-3);
    }
}

TEST_F(TextStages, FontsAreRemadeEachFrameWithoutPilingUp)
{
    EXPECT_EQ(text_height, 25u);
    EXPECT_STREQ(current_font->name, "normal");
    EXPECT_EQ(height_of("bigger"), 54u);
    EXPECT_EQ(height_of("legend"), 15u);
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
        named += strcmp(fonts[i]->name, "normal") == 0 || strcmp(fonts[i]->name, "bigger") == 0 ||
                 strcmp(fonts[i]->name, "legend") == 0 || strcmp(fonts[i]->name, "panel") == 0;
    EXPECT_EQ(named, 4u);

    set_window(1440, 1080);
    EXPECT_EQ(text_height, 36u);
    EXPECT_EQ(height_of("bigger"), 90u);
    set_window(400, 300);
    EXPECT_EQ(text_height, 25u);
    EXPECT_EQ(height_of("legend"), 15u);
    EXPECT_EQ(height_of("panel"), 15u);
}

TEST(PanelClick, NewEdgeInsideTheHalfOpenBox)
{
    struct Row {
        uint32_t buttons, prev;
        int32_t x, y;
        bool hit;
    };
    // box x 10..19, y 100..124 (lh 25)
    const Row rows[] = {
        {BUTTON_LEFT, 0, 10, 100, true},
        {BUTTON_LEFT, 0, 19, 124, true},
        {BUTTON_LEFT, 0, 20, 110, false},   // x1 is outside
        {BUTTON_LEFT, 0, 15, 125, false},   // y + lh belongs to the line below
        {BUTTON_LEFT, 0, 9, 110, false},
        {BUTTON_LEFT, 0, 15, 99, false},
        {BUTTON_LEFT, BUTTON_LEFT, 15, 110, false},  // held: no new edge
        {BUTTON_RIGHT | BUTTON_LEFT, BUTTON_LEFT, 15, 110, true},
        {BUTTON_MIDDLE, 0, 15, 110, true},
        {WHEEL_UP, 0, 15, 110, true},
        {WHEEL_UP, WHEEL_UP, 15, 110, false},  // a wheel turning on hides its next pulse
        {0, BUTTON_LEFT, 15, 110, false},      // a release is no click
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message() << row.buttons << " " << row.prev << " " << row.x << ","
                                        << row.y);
        mouse_buttons = row.buttons;
        mouse_buttons_prev = row.prev;
        mouse_x = row.x;
        mouse_y = row.y;
        EXPECT_EQ(panel_click(10, 20, 100, 25), row.hit);
    }
    // a line above the window (rows past its top) is never hit from inside it
    mouse_buttons = BUTTON_LEFT;
    mouse_buttons_prev = 0;
    mouse_x = 15;
    mouse_y = 0;
    EXPECT_FALSE(panel_click(10, 20, -30, 25));
    EXPECT_TRUE(panel_click(10, 20, -20, 25));
    mouse_buttons = 0;
}

TEST_F(TextStages, LabelTextIsExpandedAndElidedAtAWholeTerm)
{
    NotationRow row = new_row_template;
    char *text = label_text(pool.read("psi_{0}(omega)"), row);
    // omega is glyph 279, as a glyph escape; the raised omega comes after a script escape
    const std::string expanded(text, text_end(text) - text);
    EXPECT_EQ(expanded.substr(0, 3), std::string("\x02\x01\x17", 3));
    EXPECT_NE(expanded.find('\x05'), std::string::npos);
    EXPECT_FALSE(text_has_markup(text));
    free(text);

    // with "alpha.n" off a coefficient repeats its term: 1,667 times "omega+" is past the
    // guard, and is cut after its last whole term there instead of shown raw
    row.toggle[TOGGLE_DOT] = 0;
    char *cut = label_text(pool.read("omega.1667"), row);
    const std::string shown(cut, text_end(cut) - cut);
    EXPECT_FALSE(text_has_markup(cut));
    EXPECT_EQ(shown.substr(shown.size() - 7), std::string("\x02\x01\x17+...", 7));
    EXPECT_LE(shown.size(), (size_t)LABEL_TEXT_MAX);
    free(cut);
    // and a label line is cut to its room in pixels
    char *narrow = label_text(pool.read("omega.1667"), row, 100.0f);
    EXPECT_LE(text_width(narrow), 100.0f);
    EXPECT_EQ(std::string(narrow, text_end(narrow) - narrow).substr(text_end(narrow) - narrow - 4),
              "+...");
    free(narrow);
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
        lines.push_back({line.tx, line.y, line.colour,
                         std::string(line.text, text_end(line.text) - line.text), text_height});
    EXPECT_EQ(text_height, 25u);  // "normal" again, or a font of its size
}

WalkRecord first_view(int32_t width)
{
    screen_w = width;
    WalkRecord r = {};
    double min_length;
    view_start(&r.xlo, &r.xhi, &min_length);
    walk_record_screen(&r);
    r.minsize = (float)(5 * text_height);
    tick_arrays_rebuild(r.right);  // every pass records its interval sizes
    return r;
}

TEST_F(TextStages, LabelsStandAboveTheirTicksOneLinePerRow)
{
    WalkRecord r = first_view(864);
    lines.clear();
    walk_line(collect_label, r);
    std::vector<Line> one_row = lines;
    ASSERT_GT(one_row.size(), 5u);
    EXPECT_EQ(one_row[0].text, "0");
    // "0" at x 86.4, where the line is at 64.8 + 86.4 * 0.675: 37 above the tick's top, 6 left
    EXPECT_NEAR(one_row[0].x, 86.4f - 6.0f, 1e-3f);
    EXPECT_NEAR(one_row[0].y, 64.8f + 58.32f - 32.4f - 37.0f, 0.01f);
    // the end of the line carries its name in the small grey font above the label
    const Line &name = one_row.back();
    EXPECT_EQ(name.text, "Extended Buchholz ordinal");
    EXPECT_EQ(name.colour, 0x808080u);
    EXPECT_EQ(name.height, 15u);
    const Line &top = one_row[one_row.size() - 2];
    EXPECT_EQ(top.colour, 0xffffffu);
    EXPECT_FLOAT_EQ(name.y, top.y - 22.0f);
    EXPECT_FLOAT_EQ(name.x, top.x + 6.0f - 3.0f);

    // a second row doubles every label line, each 37 pixels above the one before
    DynArray_append(&notation_rows, &new_row_template);
    notation_row(1)->toggle[TOGGLE_OMEGA] = 0;
    lines.clear();
    walk_line(collect_label, r);
    ASSERT_EQ(lines.size(), 2 * one_row.size() - 1);
    size_t i = 0;
    for (const Line &first : one_row) {
        if (first.colour == 0x808080u)
            break;
        EXPECT_EQ(lines[i].text, first.text);
        EXPECT_FLOAT_EQ(lines[i + 1].y, first.y - 37.0f);
        i += 2;
    }
    // omega^omega is the fourth label; the second row writes it with psi
    EXPECT_NE(lines[7].text, lines[6].text);
    EXPECT_NE(lines[7].text.find("\x02\x01\x16", 0, 3), std::string::npos);  // psi
    Bignum_free(r.xlo);
    Bignum_free(r.xhi);
}

TEST_F(TextStages, OnlyTicksInTheWindowHaveLabels)
{
    WalkRecord r = first_view(864);
    Bignum_free(r.xlo);
    Bignum_free(r.xhi);
    r.ordlo = Ord_zero();
    r.ordhi = Ord_zero();
    LabelLine line;
    struct Row {
        double x;
        bool drawn;
    };
    const Row rows[] = {{-0.01, false}, {0.0, true}, {863.99, true}, {864.0, false}};
    for (const Row &row : rows) {
        SCOPED_TRACE(row.x);
        r.xlo = Bignum_fromdouble(row.x);
        bool drawn = label_start(r, &line);
        EXPECT_EQ(drawn, row.drawn);
        if (drawn)
            while (label_next(&line)) {
            }
        Bignum_free(r.xlo);
    }
}

TEST_F(TextStages, CentreReadoutPicksTheLeafAtTheMarker)
{
    struct Row {
        double lo, hi;     // the view at width 1280
        const char *want;  // what the read-out shows; null: nothing
    };
    // the first view runs from 128 to 1152 with 1 at 219.1185
    const Row rows[] = {
        {128.0 + 421, 1152.0 + 421, "1"},
        // the end of the line is a candidate like any leaf, near or far
        {128.0 - 512, 1152.0 - 512, "psi_{0}(I)"},
        {128.0 + 580, 1152.0 + 580, "psi_{0}(I)"},
        // nothing in the column, and the end further out than any distance counts
        {1000.0, 1e30, nullptr},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.lo);
        set_window(1280, 960);
        WalkRecord r = first_view(1280);
        Bignum_free(r.xlo);
        Bignum_free(r.xhi);
        r.xlo = Bignum_fromdouble(row.lo);
        r.xhi = Bignum_fromdouble(row.hi);
        CentreText text;
        bool shown = centre_text(640.0f, r, 960.0f, &text);
        // "normal" is selected after; "bigger" is 80 pixels high here
        EXPECT_EQ(text_height, 32u);
        if (!row.want) {
            EXPECT_FALSE(shown);
        } else {
            ASSERT_EQ(text.count, 1u);
            font_select("bigger");
            char *want = label_text(pool.read(row.want), new_row_template);
            font_select("normal");
            EXPECT_STREQ(text.lines[0], want);
            free(want);
            EXPECT_FLOAT_EQ(text.x, 162.0f);
            EXPECT_FLOAT_EQ(text.y[0], 748.8f);
        }
        EXPECT_EQ(centre_ord.count, 0u);
        centre_text_free(&text);
        Bignum_free(r.xlo);
        Bignum_free(r.xhi);
    }
}

TEST(CentreReadout, PlacedAtAnEighthThenPulledInsideTheWindow)
{
    screen_w = 864;
    struct Row {
        float cx, w, x;
    };
    const Row rows[] = {
        {432, 100, 110}, {432, 753, 110}, {432, 754, 109}, {432, 863, 0}, {432, 2000, 0},
        {432.5f, 100, 110.5f},
    };
    for (const Row &row : rows)
        EXPECT_FLOAT_EQ(centre_text_x(row.cx, row.w), row.x) << row.w;
}

}  // namespace

namespace {

// A source after the Greek pass, in a buffer with the capacity rule's room.
std::vector<char> greek_source(const char *text)
{
    std::vector<char> buf(MARKUP_CAPACITY(strlen(text)), 0);
    memcpy(buf.data(), text, strlen(text) + 1);
    greek_expand(buf.data());
    return buf;
}

std::string source_bytes(const std::vector<char> &buf)
{
    return std::string(buf.data(), text_end(buf.data()) - buf.data());
}

TEST_F(TextStages, ElisionKeepsTheLongestRunOfWholeTermsThatFits)
{
    struct Row {
        const char *source;
        const char *want;  // also the room: exactly its width
        bool cut_short;    // the source was already cut at an arbitrary byte
    };
    const Row rows[] = {
        {"omega+1", "omega+1", false},
        {"omega^{omega}+omega^{2}+1", "omega^{omega}+...", false},
        // inside a script the ellipsis is raised with it, and the group closed
        {"omega^{omega+omega+omega^{2}}", "omega^{omega+omega+...}", false},
        {"psi_{0}(Omega_{2}+Omega)", "psi_{0}(Omega_{2}+...", false},
        {"psi_{0}(Omega_{2}+Omega)", "psi_{0}(...", false},
        {"varphi_{omega}(1)", "varphi_{...}", false},
        {"omega^{omega}", "...", false},  // nothing fits but the ellipsis
        {"too deep to draw", "too deep...", false},
        {"omega+omega+eps", "omega+omega+...", true},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.source);
        std::vector<char> source = greek_source(row.source), want = greek_source(row.want);
        // the width of a source is that of its expansion
        std::vector<char> expanded = source;
        script_expand(expanded.data(), -1, 0, 256, expanded.size());
        EXPECT_FLOAT_EQ(markup_width(source.data()), text_width(expanded.data()));
        float room = markup_width(want.data());
        bool cut = markup_elide(source.data(), source.size(), room, row.cut_short);
        EXPECT_EQ(cut, strcmp(row.source, row.want) != 0);
        EXPECT_EQ(source_bytes(source), source_bytes(want));
    }
}

TEST_F(TextStages, LinesBreakAfterATermAndKeepTheirScriptLevel)
{
    struct Row {
        const char *source, *head, *tail;  // the head's width is the room
    };
    const Row rows[] = {
        {"omega^{omega+1}+omega+3", "omega^{omega+1}+", "omega+3"},
        {"omega^{omega+omega_{1}+1}", "omega^{omega+}", "^{omega_{1}+1}"},
        {"psi_{0}(Omega_{omega^{2}+1})", "psi_{0}(Omega_{omega^{2}+}", "_{1})"},
        {"omega^{omega}", "", ""},  // no term ends in the room: no break
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.source);
        std::vector<char> source = greek_source(row.source), head = greek_source(row.head);
        size_t at = markup_break(source.data(), markup_width(head.data()));
        if (!*row.head) {
            EXPECT_EQ(at, 0u);
            continue;
        }
        char *tail = markup_tail(source.data(), at);
        EXPECT_EQ(std::string(tail, text_end(tail) - tail), source_bytes(greek_source(row.tail)));
        free(tail);
        // the head with its open groups closed
        markup_head(source.data(), source.size(), at);
        std::string closed = source_bytes(head);
        for (size_t open = std::count(closed.begin(), closed.end(), '{') -
                           std::count(closed.begin(), closed.end(), '}');
             open > 0; open--)
            closed += "}";
        EXPECT_EQ(source_bytes(source), closed);
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
        if (item.kind == TEXT_ITEM_CONTROL && item.control == 2) {
            EXPECT_GE((item.arg & 0xFFFF) * 54.0 / 256, 9.0);
        }
        levels += item.kind == TEXT_ITEM_GLYPH && item.code == 279;
        i += item.length;
    }
    EXPECT_EQ(levels, floor + 1);
    const std::string text = source_bytes(source);
    EXPECT_NE(text.find("..."), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 2), "+1");
    font_select("normal");
}

// The label pass of a view as a frame runs it: the fixed texts' places
// first, then the labels collected and placed around them.
void place_labels(WalkRecord r)
{
    text_boxes_clear();
    panels_reserve(false, buffer, sizeof buffer);
    labels_begin();
    walk_line(label_collect, r);
    labels_place(r);
}

std::vector<std::string> kept_texts()
{
    std::vector<std::string> kept;
    for (uint32_t i = 0; i < labels_kept(); i++) {
        const PlacedLabelLine *line = label_kept(i);
        kept.push_back(std::string(line->text, text_end(line->text) - line->text) + " @ " +
                       std::to_string(line->x) + "," + std::to_string(line->y));
    }
    return kept;
}

TEST_F(TextStages, LabelsKeptStandInTheWindowClearOfEveryOtherText)
{
    struct Row {
        int32_t w, h;
        uint32_t rows;
        int32_t zooms;  // steps of exp(1.5) about the centre: 60 is a 30 s hold of Z
    };
    const Row rows[] = {{864, 648, 1, 0}, {864, 648, 3, 0}, {400, 300, 1, 0},
                        {1920, 1440, 2, 0}, {864, 648, 1, 60}, {864, 648, 3, 60}};
    for (const Row &row : rows) {
        SCOPED_TRACE(testing::Message() << row.w << "x" << row.h << " rows " << row.rows
                                        << " zooms " << row.zooms);
        set_window(row.w, row.h);
        while (notation_rows.count < row.rows)
            DynArray_append(&notation_rows, &new_row_template);
        WalkRecord r = first_view(row.w);
        for (int32_t k = 0; k < row.zooms; k++)
            view_update(&r.xlo, &r.xhi, exp(1.5), 0);
        place_labels(r);
        EXPECT_GT(labels_kept(), 0u);
        for (uint32_t i = 0; i < text_boxes.count; i++) {
            const PlacedBox *a = DynArray_at<PlacedBox>(&text_boxes, i);
            EXPECT_FALSE(a->raw);
            if (a->kind != BOX_LABEL)
                continue;
            EXPECT_TRUE(a->box.x0 >= 0 && a->box.y0 >= 0 && a->box.x1 <= row.w && a->box.y1 <= row.h)
                << a->box.x0 << "," << a->box.y0 << " " << a->box.x1 << "," << a->box.y1;
            for (uint32_t j = 0; j < i; j++)
                EXPECT_FALSE(text_box_overlap(a->box, DynArray_at<PlacedBox>(&text_boxes, j)->box))
                    << "boxes " << i << " and " << j;
        }
        // a view that stands still keeps the same labels in the same places
        std::vector<std::string> kept = kept_texts();
        labels_discard();
        place_labels(r);
        EXPECT_EQ(kept_texts(), kept);
        labels_discard();
        while (notation_rows.count > 1)
            DynArray_remove(&notation_rows, notation_rows.count - 1);
        Bignum_free(r.xlo);
        Bignum_free(r.xhi);
    }
}

TEST_F(TextStages, TheTickWithMoreRoomKeepsItsLabel)
{
    // the first view: the end of the line stands for the whole line, so its name
    // is kept, moved left to end inside the window; the label its name would
    // meet, of a smaller interval, is left out
    WalkRecord r = first_view(864);
    place_labels(r);
    std::vector<std::string> kept;
    for (uint32_t i = 0; i < labels_kept(); i++)
        kept.push_back(std::string(label_kept(i)->text, text_end(label_kept(i)->text) - label_kept(i)->text));
    auto has = [&](const std::string &text) {
        return std::find(kept.begin(), kept.end(), text) != kept.end();
    };
    auto label = [&](const char *ordinal) {
        char *text = label_text(pool.read(ordinal), new_row_template, label_room(0));
        std::string s(text, text_end(text) - text);
        free(text);
        return s;
    };
    EXPECT_TRUE(has("Extended Buchholz ordinal"));
    EXPECT_TRUE(has(label("psi_{0}(I)")));
    EXPECT_TRUE(has(label("psi_{0}(Omega_{Omega_{Omega}})")));
    EXPECT_FALSE(has(label("psi_{0}(Omega_{Omega_{Omega_{Omega}}})")));
    for (const char *small : {"0", "1", "2", "omega", "omega^{omega}", "epsilon_{0}"})
        EXPECT_TRUE(has(label(small))) << small;
    labels_discard();
    Bignum_free(r.xlo);
    Bignum_free(r.xhi);
}

TEST_F(TextStages, ReadoutKeepsToItsBand)
{
    // long texts of every kind, at two sizes, above a panel of one row and of ten
    const char *ordinals[] = {"1", "omega^{omega^{omega^{omega^{omega^{omega^{omega^{omega^{omega^{omega^{3}}}}}}}}}}",
                              "psi_{0}(Omega_{Omega_{Omega_{Omega_{Omega_{Omega_{Omega_{Omega_{Omega}}}}}}}})",
                              "omega^{omega.2+3}.5+omega^{omega+1}.4+omega^{omega}.3+omega^{7}.2+omega^{2}+omega+1"};
    struct Size {
        int32_t w, h;
    };
    for (Size size : {Size{864, 648}, Size{400, 300}})
        for (uint32_t rows : {1u, 10u})
            for (const char *ordinal : ordinals) {
                SCOPED_TRACE(testing::Message() << size.w << "x" << size.h << " rows " << rows << " " << ordinal);
                set_window(size.w, size.h);
                WalkRecord r = first_view(size.w);
                float band_bottom = (float)(size.h - (int32_t)((rows + 2) * height_of("panel")));
                text_boxes_clear();
                panels_reserve(false, buffer, sizeof buffer);
                font_select("bigger");
                size_t capacity;
                char *source = label_source(pool.read(ordinal), new_row_template, &capacity);
                CentreText t;
                centre_layout(size.w / 2.0f, r, band_bottom, source, capacity, true, &t);
                free(source);
                ASSERT_GE(t.count, 1u);
                EXPECT_LE(t.count, 2u);
                // each line below the line's band where it ends, above the
                // panel, in the window, and clear of the legend
                uint32_t fixed = text_boxes.count;
                centre_text_reserve(&t);
                float slope = (r.yright - r.yleft) / (r.right - r.left);
                for (uint32_t i = fixed; i < text_boxes.count; i++) {
                    const PlacedBox *b = DynArray_at<PlacedBox>(&text_boxes, i);
                    EXPECT_GE(b->box.y0, r.yleft + slope * b->box.x1 + 0.25f * r.ticklen);
                    EXPECT_LE(b->box.y1, band_bottom);
                    EXPECT_TRUE(b->box.x0 >= 0.0f && b->box.x1 <= (float)size.w);
                    EXPECT_FALSE(b->raw);
                    for (uint32_t j = 0; j < fixed; j++)
                        EXPECT_FALSE(text_box_overlap(b->box, DynArray_at<PlacedBox>(&text_boxes, j)->box));
                }
                centre_text_free(&t);
                Bignum_free(r.xlo);
                Bignum_free(r.xhi);
            }
}

}  // namespace
