// Font registry: parsing items in order, resolving to near variants, cloning,
// deleting with the texture, selection, and measuring text in the selected font.
#include <gtest/gtest.h>

#include <math.h>
#include <stdlib.h>
#include <string.h>

#include <string>
#include <vector>

#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_measure.h"

namespace {

std::vector<uint32_t> deleted_textures;

void record_delete(uint32_t texture)
{
    deleted_textures.push_back(texture);
}

// A root like the program's: line height 74, widest glyph 83, "C" 35 wide.
Font *make_root(const char *name, uint32_t texture)
{
    Font *f = (Font *)calloc(1, sizeof(Font));
    f->texture = texture;
    for (uint32_t c = 0; c < FONT_CODES; c++)
        f->glyph_w[c] = 30;
    f->glyph_w['W'] = 83;
    f->glyph_w['C'] = 35;
    f->max_w = 83;
    f->height = 74;
    f->cell_w = 36;
    f->name = strdup(name);
    f->parent = f;
    f->scale_x = f->scale_y = 1.0f;
    f->glyphs = FONT_CODES;
    return f;
}

void empty_registry()
{
    while (fonts && font_list.count > 0)
        font_delete(fonts[font_list.count - 1]);
    current_font = nullptr;
    current_spec = FontSpec{};
}

class FontRegistry : public ::testing::Test {
protected:
    void SetUp() override
    {
        empty_registry();
        deleted_textures.clear();
        font_texture_delete = record_delete;
        root = make_root("fullsize", 7);
        font_register(root);
    }
    void TearDown() override
    {
        empty_registry();
        font_texture_delete = nullptr;
    }
    FontSpec parse(const char *text)
    {
        FontSpec spec;
        font_parse(&spec, text);
        return spec;
    }
    Font *root = nullptr;
};

TEST_F(FontRegistry, ParseAppliesItemsInOrder)
{
    const float px25 = (float)(25.0 / 74);
    struct Case {
        const char *text;
        float scale_x, scale_y, skew, boldness;
    } cases[] = {
        {"fullsize", 1, 1, 0, 0},
        {"fullsize:scale=25.000000px", 0.33783785f, 0.33783785f, 0, 0},
        {"fullsize:big:scale=25px", px25, px25, 0, 0},  // "px" replaces
        {"fullsize:scale=25px:big", px25 * 1.5f, px25 * 1.5f, 0, 0},
        {"fullsize:scale=50%", 0.5f, 0.5f, 0, 0},
        {"fullsize:size=2:size=3", 6, 6, 0, 0},
        {"fullsize:width=37px", 0.5f, 1, 0, 0},  // the divisor is the line height
        {"fullsize:height=200%:width=0.5", 0.5f, 2, 0, 0},
        {"fullsize:small", 0.6666667f, 0.6666667f, 0, 0},
        {"fullsize:bold", 1.1f, 1, 0, 0.05f},
        {"fullsize:black", 1.2f, 1, 0, 0.08f},
        {"fullsize:demibold:boldness=83px", 1, 1, 0, 1.03f},
        {"fullsize:boldness=10%:boldness=0.5", 1, 1, 0, 0.6f},
        {"fullsize:italic:skew=0.1", 1, 1, 0.5f, 0},
        {"fullsize:skew=37px:skew=10%", 1, 1, 0.6f, 0},
        {"fullsize:skew=0.3:angle=10\xB0", 1, 1, 0.176327f, 0},  // the degree sign replaces
        {"fullsize:angle=10\xC2\xB0:skew=0.1", 1, 1, 0.276327f, 0},
        {"fullsize:big:bold:normal", 1, 1, 0, 0},
        {"FULLSIZE:SCALE=2:Foo=3:bar", 2, 2, 0, 0},
        {"fullsize:scale=abc", 0, 0, 0, 0},
        {"fullsize:scale", 0, 0, 0, 0},
    };
    for (const Case &c : cases) {
        FontSpec s = parse(c.text);
        EXPECT_EQ(s.parent, root) << c.text;
        EXPECT_FLOAT_EQ(s.scale_x, c.scale_x) << c.text;
        EXPECT_FLOAT_EQ(s.scale_y, c.scale_y) << c.text;
        EXPECT_NEAR(s.skew, c.skew, 1e-6) << c.text;
        EXPECT_NEAR(s.boldness, c.boldness, 1e-6) << c.text;
    }
}

// A registered copy of the root under another name.
Font *renamed_clone(Font *font, const char *name)
{
    Font *copy = font_clone(font);
    free(copy->name);
    copy->name = strdup(name);
    return copy;
}

TEST_F(FontRegistry, NamesAndTheRootInUse)
{
    // the root's own fields come along, glyphs included; "normal" drops them
    EXPECT_EQ(parse("fullsize").glyphs, 512u);
    EXPECT_EQ(parse("fullsize:normal").glyphs, 0u);
    // an unknown or empty name means the root in use, with default scales
    for (const char *text : {"nothere:scale=2", ":scale=2"}) {
        FontSpec s = parse(text);
        EXPECT_EQ(s.parent, root) << text;
        EXPECT_EQ(s.glyphs, 0u) << text;
        EXPECT_FLOAT_EQ(s.scale_x, 2) << text;
    }
    // a name registered twice is found at its lowest index
    Font *first = renamed_clone(root, "twin");
    first->scale_x = 0.5f;
    font_clone(first)->scale_x = 0.25f;
    EXPECT_FLOAT_EQ(parse("TWIN").scale_x, 0.5f);

    // existence looks at the name before the first ":" only, case ignored
    renamed_clone(root, "normal");
    for (const char *name : {"normal:big", "NORMAL", "fullsize:scale=3"})
        EXPECT_EQ(font_exists(name), 1) << name;
    for (const char *name : {"norm", "bigger"})
        EXPECT_EQ(font_exists(name), 0) << name;
}

TEST_F(FontRegistry, ResolveReusesWithinFivePerCent)
{
    Font *v25 = font_resolve(parse("fullsize:scale=25px"));
    EXPECT_NE(v25, root);
    EXPECT_STREQ(v25->name, "fullsize:width=0.337838:height=0.337838");
    EXPECT_EQ(v25->glyphs, 0u);
    EXPECT_EQ(v25->parent, root);
    EXPECT_EQ(v25->texture, root->texture);
    uint32_t count = font_list.count;

    // a 0.16 on each axis: score 0.84, the same variant
    EXPECT_EQ(font_resolve(parse("fullsize:scale=25.2px")), v25);
    EXPECT_EQ(font_resolve(parse("fullsize:scale=26.2px")), v25);  // 4.8 per cent
    EXPECT_EQ(font_list.count, count);
    // 5.2 per cent: a new variant
    Font *v26 = font_resolve(parse("fullsize:scale=26.3px"));
    EXPECT_NE(v26, v25);
    EXPECT_EQ(font_list.count, count + 1);
    // the exact spec of the root is the root
    EXPECT_EQ(font_resolve(parse("fullsize")), root);

    // boldness and skew cost 50 and 20 points a unit
    Font *bold = font_resolve(parse("fullsize:boldness=0.03"));
    EXPECT_NE(bold, root);
    EXPECT_STREQ(bold->name, "fullsize:boldness=0.03");
    Font *slant = font_resolve(parse("fullsize:skew=0.04:bold"));
    EXPECT_STREQ(slant->name, "fullsize:width=1.1:boldness=0.05:skew=0.04");
    EXPECT_EQ(slant->cell_w, 36u);
    EXPECT_EQ(slant->max_w, 83u);
}

TEST_F(FontRegistry, DeleteFreesTheTextureWithItsLastFont)
{
    Font *clone = font_clone(root);
    Font *variant = font_resolve(parse("fullsize:scale=0.5"));
    Font *other = make_root("other", 9);
    font_register(other);

    font_delete(clone);
    font_delete(variant);
    EXPECT_TRUE(deleted_textures.empty());
    font_delete(other);
    EXPECT_EQ(deleted_textures, std::vector<uint32_t>{9});
    font_delete(root);
    EXPECT_EQ(deleted_textures, (std::vector<uint32_t>{9, 7}));
    EXPECT_EQ(current_font, nullptr);
}

TEST_F(FontRegistry, SelectionAndItsFigures)
{
    font_select("fullsize:scale=25.000000px");
    EXPECT_EQ(text_height, 25u);
    EXPECT_EQ(text_max_w, 28u);
    EXPECT_EQ(text_cell_w, 12u);
    Font *at25 = current_font;
    ASSERT_NE(at25, root);

    // a near spec keeps the font, and is remembered as asked
    font_select_spec(parse("fullsize:scale=25.2px"));
    EXPECT_EQ(current_font, at25);
    EXPECT_FLOAT_EQ(current_spec.scale_y, (float)(25.2 / 74));
    // the same spec again walks nothing and makes nothing
    uint32_t count = font_list.count;
    font_select_spec(parse("fullsize:scale=25.2px"));
    EXPECT_EQ(font_list.count, count);

    // deleting the selected font selects another, with its figures
    font_delete(at25);
    EXPECT_EQ(current_font, root);
    EXPECT_EQ(text_height, 74u);
    EXPECT_EQ(text_max_w, 83u);
    EXPECT_EQ(text_cell_w, 36u);
}

TEST_F(FontRegistry, ParseWithoutAnyFontMakesAPlaceholder)
{
    empty_registry();
    EXPECT_FLOAT_EQ(text_width("W"), 0) << "no font measures nothing";
    FontSpec spec;
    font_parse(&spec, "fullsize:scale=2");
    ASSERT_NE(spec.parent, nullptr);
    EXPECT_STREQ(spec.parent->name, "fullsize:scale=2");
    EXPECT_EQ(spec.parent->height, 1u);
    EXPECT_EQ(spec.parent->glyph_w[0], 1u);
    EXPECT_EQ(current_font, spec.parent);
    EXPECT_FLOAT_EQ(spec.scale_x, 2);
}

// The root at 25 pixels: an advance is the glyph's scaled width plus 0.5
// plus the spacing, a tenth of the line height, truncated to whole pixels.
class TextMeasure : public FontRegistry {
protected:
    void SetUp() override
    {
        FontRegistry::SetUp();
        font_select("fullsize:scale=25px");
        ASSERT_EQ(text_height, 25u);
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
    // 83 * 25/74 = 28.04, plus 0.5, plus the spacing 2.5: 31
    EXPECT_FLOAT_EQ(text_width("W"), 31);
    EXPECT_FLOAT_EQ(text_width("WW"), 62);
    // 35 * 25/74 = 11.82 + 3 = 14 for the C, and 30 * 25/74 = 10.14 + 3 = 13 for
    // the space: the space is a glyph like any other
    EXPECT_FLOAT_EQ(text_width("C"), 14);
    EXPECT_FLOAT_EQ(text_width("W C"), 58);
    EXPECT_FLOAT_EQ(text_width(""), 0);
    EXPECT_FLOAT_EQ(text_width(nullptr), text_width("NULL?"));
    // a line break adds nothing: lines measure as their sum
    EXPECT_FLOAT_EQ(text_width("WB\nWB"), 2 * text_width("WB"));
    // glyph escapes are codes; 512 and above hold no glyph
    EXPECT_FLOAT_EQ(text_width(std::string("\x02\x00\x57", 3).c_str()), 31);
    EXPECT_FLOAT_EQ(text_width("\x02\x02\x01"), 0);
    // boldness widens the advance: 28.04 * 1.5 + 3
    font_select("fullsize:scale=25px:boldness=0.5");
    EXPECT_FLOAT_EQ(text_width("W"), 45);
}

TEST_F(TextMeasure, ControlEscapes)
{
    // kind 1 sets the pen
    EXPECT_FLOAT_EQ(text_width(("W" + control(1, 100) + "W").c_str()), 131);
    // kind 2 scales later glyphs; the spacing keeps the line's value: 14.02 + 3 and 5.91 + 3
    EXPECT_FLOAT_EQ(text_width(("W" + control(2, 128) + "WC").c_str()), 31 + 17 + 8);
    // a colour, and kinds that mean nothing, change no width
    std::string odd = "W" + control(0, 0xff0000) + control(7, 5) + control(0x85, 5) + "W";
    EXPECT_FLOAT_EQ(text_width(odd.c_str()), 62);
}

TEST_F(TextMeasure, CutEscapesEndTheMeasure)
{
    const char alpha_cut[] = {'W', 0x02, 0x01, 0x00};
    EXPECT_FLOAT_EQ(text_width_bytes(alpha_cut, 3), 31);
    EXPECT_FLOAT_EQ(text_width_bytes(alpha_cut, 4), 31 + 13);
    std::string script = "W" + control(2, 128);
    EXPECT_FLOAT_EQ(text_width_bytes(script.c_str(), 4), 31);
}

}  // namespace
