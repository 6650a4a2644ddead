// Text measuring: advances, scripts, control escapes and cut escapes.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>

#include <string>

#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_measure.h"

namespace {

class TextMeasure : public ::testing::Test {
protected:
    void SetUp() override
    {
        while (fonts && font_list.count > 0)
            font_delete(fonts[font_list.count - 1]);
        current_font = nullptr;
        Font *f = (Font *)calloc(1, sizeof(Font));
        for (uint32_t c = 0; c < FONT_CODES; c++)
            f->glyph_w[c] = 20;
        f->glyph_w['A'] = 39;
        f->height = 74;
        f->max_w = 39;
        f->name = strdup("fullsize");
        f->parent = f;
        f->scale_x = f->scale_y = 1.0f;
        f->glyphs = FONT_CODES;
        font_register(f);
        font_select("fullsize:scale=25px");
        ASSERT_EQ(text_height, 25u);
    }
    void TearDown() override
    {
        while (fonts && font_list.count > 0)
            font_delete(fonts[font_list.count - 1]);
        current_font = nullptr;
    }
};

std::string control(uint8_t kind, uint32_t arg)
{
    std::string s = {0x05, (char)kind};
    for (int i = 0; i < 4; i++)
        s += (char)(arg >> (8 * i));
    return s;
}

TEST_F(TextMeasure, AdvancesAreWholePixels)
{
    // 39 * 25/74 = 13.18, plus 0.5, plus the spacing 2.5: 16
    EXPECT_FLOAT_EQ(text_width("A"), 16);
    EXPECT_FLOAT_EQ(text_width("AA"), 32);
    // 20 * 25/74 = 6.76 + 3 = 9 for the space and the B: the space is a glyph like any other
    EXPECT_FLOAT_EQ(text_width("A B"), 34);
    EXPECT_FLOAT_EQ(text_width(""), 0);
    EXPECT_FLOAT_EQ(text_width(nullptr), text_width("NULL?"));
    // a line break adds nothing: lines measure as their sum
    EXPECT_FLOAT_EQ(text_width("AB\nAB"), 2 * text_width("AB"));
    // glyph escapes are codes; 512 and above hold no glyph
    EXPECT_FLOAT_EQ(text_width(std::string("\x02\x00\x41", 3).c_str()), 16);
    EXPECT_FLOAT_EQ(text_width("\x02\x02\x01"), 0);
}

TEST_F(TextMeasure, BoldnessWidensTheAdvance)
{
    font_select("fullsize:scale=25px:boldness=0.5");
    // 13.18 * 1.5 + 3
    EXPECT_FLOAT_EQ(text_width("A"), 22);
}

TEST_F(TextMeasure, ControlEscapes)
{
    // kind 1 sets the pen
    EXPECT_FLOAT_EQ(text_width(("A" + control(1, 100) + "A").c_str()), 116);
    // kind 2 scales later glyphs; the spacing keeps the line's value: 6.59 + 3
    EXPECT_FLOAT_EQ(text_width(("A" + control(2, 128) + "A").c_str()), 25);
    // a colour, and kinds that mean nothing, change no width
    std::string odd = "A" + control(0, 0xff0000) + control(7, 5) + control(0x85, 5) + "A";
    EXPECT_FLOAT_EQ(text_width(odd.c_str()), 32);
}

TEST_F(TextMeasure, CutEscapesEndTheMeasure)
{
    const char alpha_cut[] = {'A', 0x02, 0x01, 0x00};
    EXPECT_FLOAT_EQ(text_width_bytes(alpha_cut, 3), 16);
    EXPECT_FLOAT_EQ(text_width_bytes(alpha_cut, 4), 16 + 9);
    std::string script = "A" + control(2, 128);
    EXPECT_FLOAT_EQ(text_width_bytes(script.c_str(), 4), 16);
}

TEST_F(TextMeasure, NoFontMeasuresNothing)
{
    while (fonts && font_list.count > 0)
        font_delete(fonts[font_list.count - 1]);
    ASSERT_EQ(current_font, nullptr);
    EXPECT_FLOAT_EQ(text_width("A"), 0);
}

}  // namespace
