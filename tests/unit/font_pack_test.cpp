// The font pack: unpacking, the embedded typeface, shelf packing, atlas
// pixels, the palette, and the re-toning of small mip levels.
#include <gtest/gtest.h>

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/bitmapfonts/font_pack.h"
#include "support/gl/palette.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes unpack(const Bytes &packed)
{
    uint32_t size = (uint32_t)packed.size();
    uint8_t *block = (uint8_t *)malloc(size ? size : 1);
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
        {{}, {}},
        {{0x00}, {}},
        {{0x00, 'a', 0x00, 'x', 3, 'b'}, {'a', 'x', 'x', 'x', 'b'}},
        {{0x00, 0x00, 'x', 0, 'b'}, {'b'}},              // a run of 0 writes nothing
        {{0x00, 0x00, 0x00, 2}, {0x00, 0x00}},           // the escape value itself, as a run
        {{0x7F, 0x00, 0x7F, 0x01, 2}, {0x00, 0x01, 0x01}},  // any escape value
        {{0x00, 'a', 0x00, 'x'}, {'a'}},                 // a run cut short is dropped
    };
    for (const auto &[packed, expected] : cases)
        EXPECT_EQ(unpack(packed), expected) << "pack of " << packed.size() << " bytes";
}

// The glyph stream of the embedded pack, and its records.
struct Record {
    uint32_t w, h;
    const uint8_t *pixels;
};

class EmbeddedPack : public ::testing::Test {
protected:
    void SetUp() override
    {
        stream = unpack(Bytes(font_pack_data, font_pack_data + font_pack_size));
        size_t pos = 0;
        while (pos + 2 <= stream.size() && records.size() < 512) {
            Record r = {stream[pos], stream[pos + 1], &stream[pos + 2]};
            records.push_back(r);
            pos += 2 + (size_t)r.w * r.h;
        }
        consumed = pos;
    }
    bool has_ink(uint32_t code) const
    {
        const Record &r = records[code];
        for (uint32_t i = 0; i < r.w * r.h; i++)
            if (r.pixels[i] >= 17 && r.pixels[i] <= 39)
                return true;
        return false;
    }
    Bytes stream;
    std::vector<Record> records;
    size_t consumed = 0;
};

TEST_F(EmbeddedPack, EveryReachableCodeHasAGlyph)
{
    ASSERT_EQ(records.size(), 512u);
    EXPECT_EQ(consumed, stream.size()) << "bytes after the last record";
    // printable ASCII, the Latin-1 signs and letters but the soft hyphen, the
    // Greek letters and variants
    for (uint32_t c = 33; c <= 308; c++)
        EXPECT_TRUE(has_ink(c) || (c > 126 && c < 161) || c == 173) << "code " << c;
    // the space advances and draws nothing
    const Record &space = records[32];
    EXPECT_GT(space.w, 10u);
    EXPECT_EQ(space.h, 1u);
    for (uint32_t i = 0; i < space.w; i++)
        EXPECT_EQ(space.pixels[i], 255);
    // codes without a glyph hold the 1 by 1 record of value 1
    for (uint32_t c : {0u, 10u, 31u, 127u, 159u, 309u, 400u, 511u}) {
        EXPECT_EQ(records[c].w * records[c].h, 1u) << "code " << c;
        EXPECT_EQ(records[c].pixels[0], 1) << "code " << c;
    }
}

TEST_F(EmbeddedPack, GlyphsShareOneBaseline)
{
    // the bottom row of "x", "H", "1" and omega sits on the same line
    auto last_ink_row = [&](uint32_t code) {
        const Record &r = records[code];
        uint32_t last = 0;
        for (uint32_t i = 0; i < r.w * r.h; i++)
            if (r.pixels[i] != 255)
                last = i / r.w;
        return last;
    };
    uint32_t base = last_ink_row('H');
    for (uint32_t code : {(uint32_t)'x', (uint32_t)'1', (uint32_t)'E', 279u, 303u})
        EXPECT_NEAR(last_ink_row(code), base, 1) << "code " << code;
    EXPECT_GT(last_ink_row('g'), base + 8);  // descenders go below
    // the line is as high as the tallest glyph; the only pixel values are the
    // greys, white and transparent
    uint32_t height = 0;
    for (uint32_t c = 32; c < 512; c++) {
        height = std::max(height, records[c].h);
        if (records[c].w * records[c].h > 1)
            for (uint32_t i = 0; i < records[c].w * records[c].h; i++) {
                uint8_t p = records[c].pixels[i];
                ASSERT_TRUE(p == 255 || (p >= 17 && p <= 39)) << "code " << c << " value " << (int)p;
            }
    }
    EXPECT_EQ(height, 74u);
}

TEST_F(EmbeddedPack, ShelvesFitATexture2048By1024)
{
    Font font = {};
    font.name = (char *)"fullsize";
    font_pack_layout(stream.data(), (uint32_t)stream.size(), FONT_ATLAS_MAX, &font);
    EXPECT_EQ(font.height, 74u);
    EXPECT_EQ(font.tex_w, 2048u);
    EXPECT_EQ(font.tex_h, 1024u);
    // shelves 92 apart (74 plus a gap of 18), each glyph inside the texture and
    // apart from its neighbour on the shelf by at least the gap
    for (uint32_t c = 0; c < 512; c++) {
        EXPECT_EQ(font.glyph_y[c] % 92, 0u) << "code " << c;
        EXPECT_LE(font.glyph_x[c] + font.glyph_w[c], 2048u) << "code " << c;
        EXPECT_LE(font.glyph_y[c] + 74, 1024u) << "code " << c;
        if (c > 0 && font.glyph_y[c] == font.glyph_y[c - 1]) {
            EXPECT_EQ(font.glyph_x[c], font.glyph_x[c - 1] + font.glyph_w[c - 1] + 18);
        } else if (c > 0) {
            EXPECT_EQ(font.glyph_x[c], 0u);
        }
        EXPECT_EQ(font.glyph_w[c], records[c].w);
    }
    font_root_finish(&font);
    EXPECT_EQ(font.cell_w, records['C'].w + 1);
    EXPECT_EQ(font.parent, &font);
    EXPECT_EQ(font.glyphs, 512u);
}

TEST(FontPack, LayoutOfShortStreams)
{
    // nothing at all: one line high, every width 0, a texture of 1 by 1
    Font empty = {};
    font_pack_layout(nullptr, 0, 2048, &empty);
    EXPECT_EQ(empty.height, 1u);
    EXPECT_EQ(empty.tex_w, 1u);
    EXPECT_EQ(empty.tex_h, 1u);
    EXPECT_EQ(empty.glyph_w[0], 0u);

    // widths 3, 0 (no pixels) and 6, two rows high: gap 0, shelves 2 apart, a
    // texture 8 wide; the empty record keeps its place on the shelf
    Bytes s = {3, 2, 39, 17, 255, 1, 39, 39,
               0, 2,
               6, 1, 39, 39, 39, 39, 39, 39};
    Font f = {};
    f.name = (char *)"tiny";
    font_pack_layout(s.data(), (uint32_t)s.size(), 8, &f);
    auto place = [&](uint32_t c) {
        return std::vector<uint32_t>{f.glyph_x[c], f.glyph_y[c], f.glyph_w[c]};
    };
    EXPECT_EQ(f.height, 2u);
    EXPECT_EQ(place(1), (std::vector<uint32_t>{3, 0, 0}));
    EXPECT_EQ(place(2), (std::vector<uint32_t>{0, 2, 6}));  // 3 + 6 passes 8: a new shelf
    EXPECT_EQ(place(3), (std::vector<uint32_t>{6, 2, 0}));  // past the data: the final pen, width 0
    EXPECT_EQ(f.tex_w, 8u);
    EXPECT_EQ(f.tex_h, 4u);

    // coverage in the colour, alpha 255 on every glyph pixel, 0 where transparent
    Bytes atlas(8 * 4 * 4, 0xAA);
    font_pack_rasterize(s.data(), (uint32_t)s.size(), &f, atlas.data());
    auto px = [&](int x, int y) {
        return Bytes(&atlas[(y * 8 + x) * 4], &atlas[(y * 8 + x) * 4 + 4]);
    };
    EXPECT_EQ(px(0, 0), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(px(1, 0), (Bytes{11, 11, 11, 255}));
    EXPECT_EQ(px(2, 0), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(px(0, 1), (Bytes{0, 0, 127, 255}));  // the dark blue speck of an empty glyph
    EXPECT_EQ(px(5, 2), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(px(3, 0), (Bytes{0xAA, 0xAA, 0xAA, 0xAA}));  // untouched between glyphs
    EXPECT_EQ(px(6, 2), (Bytes{0xAA, 0xAA, 0xAA, 0xAA}));
}

TEST(FontPack, TooTallATextureIsFatal)
{
    char pattern[] = "/tmp/ordline-fontpack-XXXXXX";
    std::string dir = mkdtemp(pattern);
    char old[4096];
    ASSERT_NE(getcwd(old, sizeof old), nullptr);
    ASSERT_EQ(chdir(dir.c_str()), 0);
    Bytes stream = unpack(Bytes(font_pack_data, font_pack_data + font_pack_size));
    Font font = {};
    font.name = (char *)"fullsize";
    EXPECT_EXIT(font_pack_layout(stream.data(), (uint32_t)stream.size(), 1024, &font),
                ::testing::ExitedWithCode(1), "");
    std::stringstream text;
    text << std::ifstream(dir + "/graphics_error.log").rdbuf();
    EXPECT_NE(text.str().find("Font 'fullsize' required texture of size 1024x2048 but maxtx=1024"),
              std::string::npos)
        << text.str();
    ASSERT_EQ(chdir(old), 0);
}

TEST(FontPack, GlyphGreysRunEvenlyFromBlackToWhite)
{
    // the glyph pixels 17 to 39 of the rasterizer; 16 is the ramp's black
    float r[256], g[256], b[256];
    build_palette(r, g, b);
    for (int i = 16; i <= 39; i++) {
        EXPECT_NEAR(r[i], (i - 16) / 23.0, 1e-6) << "index " << i;
        EXPECT_TRUE(g[i] == r[i] && b[i] == r[i]) << "index " << i;
    }
    EXPECT_EQ((int)(r[39] * 255.9f), 255);
}

TEST(FontPack, MipmapBoost)
{
    uint8_t curve[256];
    mipmap_boost_curve(curve);
    // 255.9 * (i / 255.9)^0.4, truncated
    EXPECT_EQ((Bytes{curve[0], curve[1], curve[64], curve[128], curve[255]}),
              (Bytes{0, 27, 146, 193, 255}));

    // level 1 of a 16 by 8 atlas: the digit "1" at (0, 0), "A" at (8, 0), 8 wide, 8 high
    Font f = {};
    f.height = 8;
    f.glyph_x['1'] = 0;
    f.glyph_w['1'] = 8;
    f.glyph_x['A'] = 8;
    f.glyph_w['A'] = 8;
    f.glyph_x[300] = 0;
    f.glyph_w[300] = 1;  // a level where it is 0 wide: nothing changes
    Bytes level(8 * 4 * 4, 0);
    for (size_t i = 0; i < level.size(); i++)
        level[i] = (uint8_t)(i % 16 * 8);  // 0 to 120 in each row's 4 pixels
    Bytes before = level;
    mipmap_boost_level(&f, 1, level.data(), 8, 4, curve);
    for (int y = 0; y < 4; y++)
        for (int x = 0; x < 8; x++)
            for (int k = 0; k < 4; k++) {
                size_t i = ((size_t)y * 8 + x) * 4 + k;
                uint8_t expect = x < 4 ? curve[(uint32_t)(before[i] * (255.4 / 120))] : before[i];
                ASSERT_EQ(level[i], expect) << "x " << x << " y " << y << " k " << k;
            }
    EXPECT_EQ(level[15], 255);  // the brightest byte of the digit comes out white
}

}  // namespace
