// The bitmap font library without a display: the registry (request texts,
// near variants, clones, deletion with the texture, selection), measuring
// text in the selected font, markup (the Greek pass, the script pass and the
// capacity bound), and the font pack (unpacking, shelves, atlas pixels, the
// fatal report of a texture too tall, the mipmap chain).
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/bitmapfonts/font_pack.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/mipmap.h"

namespace {

std::vector<uint32_t> deleted_textures;

// A root like the program's: line height 74, widest glyph 83, "C" 35 wide.
Font *make_root(const char *name, uint32_t texture)
{
    Font *f = (Font *)calloc(1, sizeof(Font));
    f->texture = texture;
    for (uint32_t c = 0; c < FONT_CODES; c++)
        f->glyph_w[c] = 30;
    f->glyph_w['W'] = f->max_w = 83;
    f->glyph_w['C'] = 35;
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

FontSpec parse(const char *text)
{
    FontSpec spec;
    font_parse(&spec, text);
    return spec;
}

struct FontRegistry : testing::Test {
    void SetUp() override
    {
        empty_registry();
        deleted_textures.clear();
        font_texture_delete = [](uint32_t texture) { deleted_textures.push_back(texture); };
        font_register(root = make_root("fullsize", 7));
    }
    void TearDown() override
    {
        empty_registry();
        font_texture_delete = nullptr;
    }
    Font *root = nullptr;
};

TEST_F(FontRegistry, ParseAppliesItemsInOrder)
{
    const float px25 = (float)(25.0 / 74);
    const struct {
        const char *text;
        float scale_x, scale_y, skew, boldness;
    } cases[] = {
        {"fullsize", 1, 1, 0, 0}, {"fullsize:scale=25.000000px", 0.33783785f, 0.33783785f, 0, 0},
        {"fullsize:big:scale=25px", px25, px25, 0, 0},  // "px" replaces
        {"fullsize:scale=25px:big", px25 * 1.5f, px25 * 1.5f, 0, 0},
        {"fullsize:scale=50%", 0.5f, 0.5f, 0, 0}, {"fullsize:size=2:size=3", 6, 6, 0, 0},
        {"fullsize:width=37px", 0.5f, 1, 0, 0},  // the divisor is the line height
        {"fullsize:height=200%:width=0.5", 0.5f, 2, 0, 0}, {"fullsize:small", 0.6666667f, 0.6666667f, 0, 0},
        {"fullsize:bold", 1.1f, 1, 0, 0.05f}, {"fullsize:black", 1.2f, 1, 0, 0.08f},
        {"fullsize:demibold:boldness=83px", 1, 1, 0, 1.03f},
        {"fullsize:boldness=10%:boldness=0.5", 1, 1, 0, 0.6f},
        {"fullsize:italic:skew=0.1", 1, 1, 0.5f, 0}, {"fullsize:skew=37px:skew=10%", 1, 1, 0.6f, 0},
        {"fullsize:skew=0.3:angle=10\xB0", 1, 1, 0.176327f, 0},  // the degree sign replaces
        {"fullsize:angle=10\xC2\xB0:skew=0.1", 1, 1, 0.276327f, 0}, {"fullsize:big:bold:normal", 1, 1, 0, 0},
        {"FULLSIZE:SCALE=2:Foo=3:bar", 2, 2, 0, 0}, {"fullsize:scale=abc", 0, 0, 0, 0},
        {"fullsize:scale", 0, 0, 0, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        FontSpec s = parse(c.text);
        EXPECT_EQ(s.parent, root);
        EXPECT_FLOAT_EQ(s.scale_x, c.scale_x);
        EXPECT_FLOAT_EQ(s.scale_y, c.scale_y);
        EXPECT_NEAR(s.skew, c.skew, 1e-6);
        EXPECT_NEAR(s.boldness, c.boldness, 1e-6);
    }
}

TEST_F(FontRegistry, NamesAndTheRootInUse)
{
    // the root's own fields come along, glyphs included; "normal" drops them
    EXPECT_EQ(parse("fullsize").glyphs, 512u);
    EXPECT_EQ(parse("fullsize:normal").glyphs, 0u);
    // an unknown or empty name means the root in use, with default scales
    for (const char *text : {"nothere:scale=2", ":scale=2"}) {
        FontSpec s = parse(text);
        EXPECT_TRUE(s.parent == root && s.glyphs == 0 && s.scale_x == 2) << text;
    }
    // a name registered twice is found at its lowest index
    Font *first = font_clone(root);
    free(first->name);
    first->name = strdup("twin");
    first->scale_x = 0.5f;
    font_clone(first)->scale_x = 0.25f;
    EXPECT_FLOAT_EQ(parse("TWIN").scale_x, 0.5f);
    // existence looks at the name before the first ":" only, case ignored
    free(first->name);
    first->name = strdup("normal");
    const std::pair<const char *, int32_t> exists[] = {
        {"normal:big", 1}, {"NORMAL", 1}, {"fullsize:scale=3", 1}, {"norm", 0}, {"bigger", 0}};
    for (const auto &[name, want] : exists)
        EXPECT_EQ(font_exists(name), want) << name;
}

TEST_F(FontRegistry, ResolveReusesWithinFivePerCent)
{
    Font *v25 = font_resolve(parse("fullsize:scale=25px"));
    EXPECT_NE(v25, root);
    EXPECT_STREQ(v25->name, "fullsize:width=0.337838:height=0.337838");
    EXPECT_TRUE(v25->glyphs == 0 && v25->parent == root && v25->texture == root->texture);
    uint32_t count = font_list.count;
    // a 0.16 on each axis: score 0.84, the same variant; 4.8 per cent too, 5.2 is a new one
    EXPECT_EQ(font_resolve(parse("fullsize:scale=25.2px")), v25);
    EXPECT_EQ(font_resolve(parse("fullsize:scale=26.2px")), v25);
    EXPECT_EQ(font_list.count, count);
    EXPECT_NE(font_resolve(parse("fullsize:scale=26.3px")), v25);
    EXPECT_EQ(font_list.count, count + 1);
    // the exact spec of the root is the root
    EXPECT_EQ(font_resolve(parse("fullsize")), root);
    // boldness and skew cost 50 and 20 points a unit
    EXPECT_STREQ(font_resolve(parse("fullsize:boldness=0.03"))->name, "fullsize:boldness=0.03");
    Font *slant = font_resolve(parse("fullsize:skew=0.04:bold"));
    EXPECT_STREQ(slant->name, "fullsize:width=1.1:boldness=0.05:skew=0.04");
    EXPECT_EQ(slant->cell_w, 36u);
    EXPECT_EQ(slant->max_w, 83u);
}

TEST_F(FontRegistry, DeleteFreesTheTextureWithItsLastFontThenParseMakesAPlaceholder)
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
    // without any font nothing measures, and a request makes a placeholder
    EXPECT_FLOAT_EQ(text_width("W"), 0);
    FontSpec spec = parse("fullsize:scale=2");
    ASSERT_NE(spec.parent, nullptr);
    EXPECT_STREQ(spec.parent->name, "fullsize:scale=2");
    EXPECT_TRUE(spec.parent->height == 1 && spec.parent->glyph_w[0] == 1);
    EXPECT_EQ(current_font, spec.parent);
    EXPECT_FLOAT_EQ(spec.scale_x, 2);
}

TEST_F(FontRegistry, SelectionAndItsFigures)
{
    auto figures = [] { return std::vector<uint32_t>{text_height, text_max_w, text_cell_w}; };
    font_select("fullsize:scale=25.000000px");
    EXPECT_EQ(figures(), (std::vector<uint32_t>{25, 28, 12}));
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
    EXPECT_EQ(figures(), (std::vector<uint32_t>{74, 83, 36}));
}

// A control escape of the given kind.
std::string control(uint8_t kind, uint32_t arg)
{
    return {'\x05', (char)kind, (char)arg, (char)(arg >> 8), (char)(arg >> 16), (char)(arg >> 24)};
}

TEST_F(FontRegistry, MeasuresInWholePixels)
{
    // the root at 25 pixels: an advance is the glyph's scaled width plus 0.5
    // plus the spacing, a tenth of the line height, truncated to whole pixels
    font_select("fullsize:scale=25px");
    ASSERT_EQ(text_height, 25u);
    const std::pair<std::string, float> cases[] = {
        {"W", 31}, {"WW", 62},  // 83 * 25/74 = 28.04, plus 0.5, plus 2.5
        {"C", 14},              // 35 * 25/74 = 11.82 + 3
        {"W C", 58},            // the space is a glyph like any other: 30 * 25/74 = 10.14 + 3
        {"", 0}, {"WB\nWB", 88},  // a line break adds nothing
        // glyph escapes are codes; 512 and above hold no glyph
        {std::string("\x02\x00\x57", 3), 31}, {"\x02\x02\x01", 0},
        {"W" + control(1, 100) + "W", 131},  // kind 1 sets the pen
        // kind 2 scales later glyphs; the spacing keeps the line's value: 14.02 + 3 and 5.91 + 3
        {"W" + control(2, 128) + "WC", 31 + 17 + 8},
        // a colour, and kinds that mean nothing, change no width
        {"W" + control(0, 0xff0000) + control(7, 5) + control(0x85, 5) + "W", 62},
    };
    for (const auto &[text, width] : cases)
        EXPECT_FLOAT_EQ(text_width(text.c_str()), width) << text;
    EXPECT_FLOAT_EQ(text_width(nullptr), text_width("NULL?"));
    // an escape cut by the limit ends the measure
    const char alpha_cut[] = {'W', 0x02, 0x01, 0x00};
    EXPECT_FLOAT_EQ(text_width_bytes(alpha_cut, 3), 31);
    EXPECT_FLOAT_EQ(text_width_bytes(alpha_cut, 4), 31 + 13);
    EXPECT_FLOAT_EQ(text_width_bytes(("W" + control(2, 128)).c_str(), 4), 31);
    // boldness widens the advance: 28.04 * 1.5 + 3
    font_select("fullsize:scale=25px:boldness=0.5");
    EXPECT_FLOAT_EQ(text_width("W"), 45);
}

// Both markup passes as labels take them, at the given line height; the
// Greek pass alone without scripts.
std::string markup(const std::string &source, uint32_t height = 25, int32_t levels = -1,
                   bool scripts = true)
{
    text_height = height;
    std::vector<char> buf(MARKUP_CAPACITY(source.size()), 0);
    memcpy(buf.data(), source.c_str(), source.size() + 1);
    greek_expand(buf.data());
    if (scripts)
        script_expand(buf.data(), levels, 0, 256);
    return std::string(buf.data(), text_end(buf.data()));
}

// The escapes of a script state and of a glyph.
std::string state(int16_t size, int16_t offset)
{
    return {'\x05', '\x02', (char)size, (char)(size >> 8), (char)offset, (char)(offset >> 8)};
}

std::string glyph(uint32_t code)
{
    return {'\x02', (char)(code >> 8), (char)code};
}

const std::string top = state(256, 0), sup = state(179, 38), sub = state(179, -115);

TEST(TextMarkup, GreekNamesBecomeGlyphEscapes)
{
    const std::pair<const char *, std::string> cases[] = {
        {"", ""}, {"alpha", glyph(256)} /* low byte 0x00 */, {"omega", glyph(279)}, {"Omega", glyph(303)},
        {"OMEGA", glyph(303)}, {"oMEGA", glyph(279)},  // the first letter alone decides
        {"xmuy", "x" + glyph(267) + "y"},             // two letters grow by one
        {"pi", glyph(271)}, {"Alphabet", glyph(280) + "bet"}, {"theta", glyph(263)},
        {"epsilon", glyph(260)},  // not psi, not eta: the scan reaches the e first
        {"etabeta", glyph(262) + glyph(257)}, {"alpha+mu", glyph(256) + "+" + glyph(267)},
        {"omeg", "omeg"},  // part of a name
        {"varomega", glyph(308)}, {"vartheta", glyph(306)}, {"varzeta", glyph(305)}, {"vardelta", glyph(304)},
        {"Varphi", glyph(307)},  // variants have no capitals
        {"varphi_alpha(beta)", glyph(307) + "_" + glyph(256) + "(" + glyph(257) + ")"},
    };
    for (const auto &[source, bytes] : cases)
        EXPECT_EQ(markup(source, 25, -1, false), bytes) << "source \"" << source << "\"";
}

TEST(TextMarkup, ScriptForms)
{
    const std::pair<const char *, std::string> cases[] = {
        {"", ""}, {"x^ab+c", "x" + sup + "ab" + top + "+c"}, {"x^12a", "x" + sup + "12" + top + "a"},
        {"omega^2n", glyph(279) + sup + "2" + top + "n"},
        {"omega^omegaomega+1", glyph(279) + sup + glyph(279) + glyph(279) + top + "+1"},
        {"x^(y)", "x" + sup + "(" + top + "y)"}, {"x^-1", "x" + sup + "-" + top + "1"},
        {"x^{a+b}c", "x" + sup + "a+b" + top + "c"}, {"x^{}", "x" + sup + top},
        {"x^{ab", "x" + sup + "a" + top},  // the last byte closes
        {"x^2_3", "x" + sup + "2" + top + sub + "3" + top},
        {"psi_{0}(Omega_{omega+1})",
         glyph(278) + sub + "0" + top + "(" + glyph(303) + sub + glyph(279) + "+1" + top + ")"},
        // level 1 sits at 38; its own superscript at 179 * 0.3 + 38 - (179 - 138) / 2
        {"omega^{omega^{Omega.2}}",
         glyph(279) + sup + glyph(279) + state(138, 71) + glyph(303) + ".2" + sup + top},
        // a subscript's group passes its offset down: 53.7 - 115 - 20.5
        {"x_{y^z}", "x" + sub + "y" + state(138, -81) + "z" + sub + top},
    };
    for (const auto &[source, bytes] : cases)
        EXPECT_EQ(markup(source), bytes) << "source \"" << source << "\"";
}

TEST(TextMarkup, ScriptSizesShrinkToTheFloorAndLevelsLimitTheRecursion)
{
    // sizes of the opening escapes of a deep tower
    auto sizes = [](uint32_t height) {
        std::string b = markup("x^{x^{x^{x^{x^{x}}}}}", height);
        std::vector<int> found;
        for (size_t i = 0; i + 5 < b.size(); i++)
            if (b[i] == 5 && b[i + 1] == 2 && b[i + 2] != 0 && b[i + 3] == 0 &&
                (found.empty() || (uint8_t)b[i + 2] < found.back()))
                found.push_back((uint8_t)b[i + 2]);
        return found;
    };
    EXPECT_EQ(sizes(1000), (std::vector<int>{179, 138, 112, 94, 81}));
    // 3072 / 25 + 0.5 gives a floor of 123
    EXPECT_EQ(sizes(25), (std::vector<int>{179, 138, 123}));
    // at 12 pixels and below every script is nearly full size, shifted by 0.3 of the level
    EXPECT_EQ(markup("x^2", 12), "x" + state(255, 76) + "2" + top);
    EXPECT_EQ(markup("x^2", 0), markup("x^2", 12));  // no font yet: the same floor, no division

    EXPECT_EQ(markup("x^{a^b}", 25, 1), "x" + sup + "a^b" + top);
    // the count is tested after the decrement: 0 expands everything, like -1
    EXPECT_EQ(markup("x^{a^b}", 25, 0), markup("x^{a^b}", 25, -1));
}

TEST(TextMarkup, OverlongExpansionIsCutAtAnItemBoundary)
{
    std::string source = "a";
    for (int i = 0; i < 100; i++)
        source += "^b";
    // 13 bytes for each of the 100 scripts: the full expansion outgrows the capacity rule
    std::string full = markup(source + std::string(2000, ' '));
    full.resize(full.find(' '));
    ASSERT_EQ(full.size(), 1u + 100 * 13);
    // an exact heap block: any write past it is caught by the sanitizer build
    size_t capacity = MARKUP_CAPACITY(source.size());
    char *buf = (char *)malloc(capacity);
    memcpy(buf, source.c_str(), source.size() + 1);
    script_expand(buf, -1, 0, 256);
    std::string cut(buf, text_end(buf));
    free(buf);
    EXPECT_LT(cut.size(), capacity);
    EXPECT_GT(cut.size() + 13, capacity - 1) << "cut more than one item short";
    EXPECT_EQ(full.substr(0, cut.size()), cut);
    // the cut falls between items of the full text
    size_t at = 0;
    while (at < cut.size())
        at += full[at] == 5 ? 6 : 1;
    EXPECT_EQ(at, cut.size());
}

using Bytes = std::vector<uint8_t>;

Bytes unpack(const Bytes &packed)
{
    uint32_t size = (uint32_t)packed.size();
    uint8_t *block = (uint8_t *)malloc(size + 1);
    if (size)
        memcpy(block, packed.data(), size);
    rle_unpack(&block, &size);
    Bytes out(block, block + size);
    free(block);
    return out;
}

TEST(FontPack, RunLengthUnpacking)
{
    const std::pair<Bytes, Bytes> cases[] = {
        {{}, {}}, {{0x00}, {}}, {{0x00, 'a', 0x00, 'x', 3, 'b'}, {'a', 'x', 'x', 'x', 'b'}},
        {{0x00, 0x00, 'x', 0, 'b'}, {'b'}},                 // a run of 0 writes nothing
        {{0x00, 0x00, 0x00, 2}, {0x00, 0x00}},              // the escape value itself, as a run
        {{0x7F, 0x00, 0x7F, 0x01, 2}, {0x00, 0x01, 0x01}},  // any escape value
        {{0x00, 'a', 0x00, 'x'}, {'a'}},                    // a run cut short is dropped
    };
    for (const auto &[packed, expected] : cases)
        EXPECT_EQ(unpack(packed), expected) << "pack of " << packed.size() << " bytes";
}

TEST(FontPack, EmbeddedGlyphsStandOnShelvesOfA2048By1024TextureAndNoSmaller)
{
    Bytes stream = unpack(Bytes(font_pack_data, font_pack_data + font_pack_size));
    Font font = {};
    font.name = (char *)"fullsize";
    font_pack_layout(stream.data(), (uint32_t)stream.size(), FONT_ATLAS_MAX, &font);
    EXPECT_EQ(font.height, 74u);
    EXPECT_EQ(std::make_pair(font.tex_w, font.tex_h), std::make_pair(2048u, 1024u));
    // the stream holds a record (w, h, then the pixels) for each of the 512 codes
    size_t at = 0;
    for (uint32_t c = 0; c < 512; c++) {
        SCOPED_TRACE(c);
        ASSERT_LE(at + 2, stream.size());
        uint32_t w = stream[at];
        at += 2 + w * stream[at + 1];
        // shelves 92 apart (74 plus a gap of 18), each glyph inside the texture and
        // apart from its neighbour on the shelf by the gap
        EXPECT_EQ(font.glyph_w[c], w);
        EXPECT_EQ(font.glyph_y[c] % 92, 0u);
        EXPECT_LE(font.glyph_x[c] + w, 2048u);
        EXPECT_LE(font.glyph_y[c] + 74, 1024u);
        bool same_shelf = c > 0 && font.glyph_y[c] == font.glyph_y[c - 1];
        EXPECT_EQ(font.glyph_x[c], same_shelf ? font.glyph_x[c - 1] + font.glyph_w[c - 1] + 18 : 0);
    }
    EXPECT_EQ(at, stream.size()) << "bytes after the last record";
    font_root_finish(&font);
    EXPECT_EQ(font.cell_w, font.glyph_w['C'] + 1);
    EXPECT_EQ(font.parent, &font);
    EXPECT_EQ(font.glyphs, 512u);
    // a texture taller than the side allowed is a fatal report, logged where the program runs
    char pattern[] = "/tmp/ordline-fontpack-XXXXXX", old[4096];
    std::string dir = mkdtemp(pattern);
    ASSERT_NE(getcwd(old, sizeof old), nullptr);
    ASSERT_EQ(chdir(dir.c_str()), 0);
    EXPECT_EXIT(font_pack_layout(stream.data(), (uint32_t)stream.size(), 1024, &font),
                testing::ExitedWithCode(1), "");
    std::stringstream text;
    text << std::ifstream(dir + "/graphics_error.log").rdbuf();
    EXPECT_NE(text.str().find("Font 'fullsize' required texture of size 1024x2048 but maxtx=1024"),
              std::string::npos) << text.str();
    ASSERT_EQ(chdir(old), 0);
}

TEST(FontPack, LayoutOfShortStreams)
{
    // widths 3, 0 (no pixels) and 6, two rows high: gap 0, shelves 2 apart, a
    // texture 8 wide; the empty record keeps its place on the shelf
    Bytes s = {3, 2, 39, 17, 255, 1, 39, 39, 0, 2, 6, 1, 39, 39, 39, 39, 39, 39};
    Font f = {};
    f.name = (char *)"tiny";
    font_pack_layout(s.data(), (uint32_t)s.size(), 8, &f);
    auto place = [&](uint32_t c) { return std::vector<uint32_t>{f.glyph_x[c], f.glyph_y[c], f.glyph_w[c]}; };
    EXPECT_EQ(f.height, 2u);
    EXPECT_EQ(place(1), (std::vector<uint32_t>{3, 0, 0}));
    EXPECT_EQ(place(2), (std::vector<uint32_t>{0, 2, 6}));  // 3 + 6 passes 8: a new shelf
    EXPECT_EQ(place(3), (std::vector<uint32_t>{6, 2, 0}));  // past the data: the final pen, width 0
    EXPECT_EQ(std::make_pair(f.tex_w, f.tex_h), std::make_pair(8u, 4u));

    // coverage in the colour, alpha 255 on every glyph pixel, 0 where transparent
    Bytes atlas(8 * 4 * 4, 0xAA);
    font_pack_rasterize(s.data(), (uint32_t)s.size(), &f, atlas.data());
    auto px = [&](int x, int y) { return Bytes(&atlas[(y * 8 + x) * 4], &atlas[(y * 8 + x) * 4 + 4]); };
    EXPECT_EQ(px(0, 0), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(px(1, 0), (Bytes{11, 11, 11, 255}));
    EXPECT_EQ(px(2, 0), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(px(0, 1), (Bytes{0, 0, 127, 255}));  // the dark blue speck of an empty glyph
    EXPECT_EQ(px(5, 2), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(px(3, 0), (Bytes{0xAA, 0xAA, 0xAA, 0xAA}));  // untouched between glyphs
    EXPECT_EQ(px(6, 2), (Bytes{0xAA, 0xAA, 0xAA, 0xAA}));
}

// The levels that the software mipmap chain makes of a zeroed level 0, in order.
using Levels = std::vector<std::pair<int, int>>;

Levels chain(int w, int h)
{
    Bytes pixels(mip_buffer_bytes(4, w, h), 0);
    Levels levels;
    auto record = [](void *context, int32_t level, int32_t lw, int32_t lh, const uint8_t *) {
        EXPECT_EQ(level, (int32_t)((Levels *)context)->size() + 1);
        ((Levels *)context)->push_back({lw, lh});
    };
    int32_t made = mip_chain_levels(4, w, h, pixels.data(), record, &levels);
    EXPECT_EQ(made, (int32_t)levels.size());
    return levels;
}

TEST(FontMipmap, ChainStopsAfterTheLevelOfSidesBelowFourAndBoxesRound)
{
    const std::pair<std::pair<int, int>, Levels> cases[] = {
        {{1, 1}, {}}, {{2, 2}, {{1, 1}}}, {{3, 3}, {{1, 1}}}, {{4, 4}, {{2, 2}, {1, 1}}},
        {{8, 2}, {{4, 1}, {2, 1}, {1, 1}}}, {{16, 1}, {{8, 1}, {4, 1}, {2, 1}, {1, 1}}},
        {{1, 8}, {{1, 4}, {1, 2}, {1, 1}}},  // thin levels read past their edge, inside the slack
    };
    for (const auto &[size, expected] : cases)
        EXPECT_EQ(chain(size.first, size.second), expected) << size.first << " by " << size.second;
    Levels font = chain(2048, 1024);
    ASSERT_EQ(font.size(), 11u);
    EXPECT_EQ(font[0], std::make_pair(1024, 512));
    EXPECT_EQ(font[9], std::make_pair(2, 1));
    // one component, 3 wide: rows of 4 bytes, the last a pad; the odd column is dropped
    Bytes p = {10, 11, 250, 99, 12, 14, 250, 99, 0, 0, 0, 0, 0, 0};
    ASSERT_EQ(p.size(), mip_buffer_bytes(1, 3, 2));
    mip_halve(1, 3, 2, p.data());
    EXPECT_EQ(p[0], (10 + 11 + 12 + 14 + 2) >> 2);
    EXPECT_EQ(mip_row_bytes(3, 5), 16u);
}

}  // namespace
