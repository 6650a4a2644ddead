// mkfontpack: renders DejaVu Sans into the program's run-length packed glyph stream.
//
// Build and run by hand (needs FreeType, Debian's libfreetype-dev, and the
// font from fonts-dejavu-core):
//   cmake -S . -B build-fontpack -DORDLINE_FONTPACK_TOOL=ON -DORDLINE_GRAPHICS=OFF
//   cmake --build build-fontpack --target mkfontpack
//   build-fontpack/tools/mkfontpack/mkfontpack FONT data/fonts/dejavu_sans.pack
// with FONT /usr/share/fonts/truetype/dejavu/DejaVuSans.ttf; the test
// fontpack.reproducible of that build checks the committed pack against it.
// The output is the same byte for byte on every run with the same font and
// FreeType; commit it together with data/fonts/LICENSE-DejaVu.txt.
//
// The glyph stream: 512 records in code order, each w, h and w*h palette
// indices from the top row down. Every glyph hangs from the top of a line of
// LINE_HEIGHT rows with one common baseline, so the deepest descender
// reaches the last row and the tallest accent fits under the first. w is the
// advance (widened where ink overhangs it). Coverage is stored as the greys
// 17 to 38 and white 39 of the program's palette, 255 is transparent, and a
// code with no glyph gets the 1 by 1 record with value 1.
#include <ft2build.h>
#include FT_FREETYPE_H

#include <stdint.h>
#include <stdio.h>

#include <algorithm>
#include <vector>

namespace {

const int LINE_HEIGHT = 74;
const int CODES = 512;
const uint8_t TRANSPARENT = 255;
const uint8_t NO_GLYPH = 1;
const uint8_t ESCAPE = 0x00;

// Code slot to Unicode; 0 means no glyph.
std::vector<uint32_t> code_points()
{
    std::vector<uint32_t> map(CODES, 0);
    for (uint32_t c = 32; c <= 126; c++)
        map[c] = c;
    // Latin-1: the no-break space and the printable signs and letters
    for (uint32_t c = 160; c <= 255; c++)
        map[c] = c;
    // alpha..omega in the order of the markup names; final sigma has no slot,
    // and phi is the straight form, with the loop form as varphi
    const uint32_t lower[24] = {0x3B1, 0x3B2, 0x3B3, 0x3B4, 0x3B5, 0x3B6, 0x3B7, 0x3B8,
                                0x3B9, 0x3BA, 0x3BB, 0x3BC, 0x3BD, 0x3BE, 0x3BF, 0x3C0,
                                0x3C1, 0x3C3, 0x3C4, 0x3C5, 0x3D5, 0x3C7, 0x3C8, 0x3C9};
    const uint32_t upper[24] = {0x391, 0x392, 0x393, 0x394, 0x395, 0x396, 0x397, 0x398,
                                0x399, 0x39A, 0x39B, 0x39C, 0x39D, 0x39E, 0x39F, 0x3A0,
                                0x3A1, 0x3A3, 0x3A4, 0x3A5, 0x3A6, 0x3A7, 0x3A8, 0x3A9};
    for (int i = 0; i < 24; i++) {
        map[256 + i] = lower[i];
        map[280 + i] = upper[i];
    }
    map[304] = 0x1E9F;  // vardelta: the Latin small delta, a variant form of the letter
    map[305] = 0x03DB;  // varzeta: small stigma, the nearest zeta-like form DejaVu has
    map[306] = 0x03D1;  // vartheta
    map[307] = 0x03C6;  // varphi, the loop form
    map[308] = 0x03D6;  // varomega, the pi-shaped omega
    return map;
}

struct Rendered {
    bool exists;
    int advance;                  // pixels
    int left, top;                // bitmap offset from the pen, top above the baseline
    int width, rows;
    std::vector<uint8_t> coverage;  // width * rows, 0 to 255
};

Rendered render(FT_Face face, uint32_t cp)
{
    Rendered r = {false, 0, 0, 0, 0, 0, {}};
    if (!cp || !FT_Get_Char_Index(face, cp))
        return r;
    if (FT_Load_Char(face, cp, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT))
        return r;
    FT_GlyphSlot g = face->glyph;
    r.exists = true;
    r.advance = (int)((g->advance.x + 32) >> 6);
    r.left = g->bitmap_left;
    r.top = g->bitmap_top;
    r.width = (int)g->bitmap.width;
    r.rows = (int)g->bitmap.rows;
    for (int y = 0; y < r.rows; y++)
        for (int x = 0; x < r.width; x++)
            r.coverage.push_back(g->bitmap.buffer[y * g->bitmap.pitch + x]);
    return r;
}

// Palette index of a coverage value: greys 17..38, white 39; too faint is transparent.
uint8_t palette_index(uint8_t coverage)
{
    int index = 16 + (coverage * 23 + 127) / 255;
    return index <= 16 ? TRANSPARENT : (uint8_t)index;
}

// Renders all slots at one size; false if they don't fit the line.
bool render_all(FT_Face face, FT_F26Dot6 size, const std::vector<uint32_t> &map,
                std::vector<Rendered> &out, int &baseline)
{
    FT_Set_Char_Size(face, 0, size, 72, 72);
    out.clear();
    int above = 0, below = 0;
    for (int c = 0; c < CODES; c++) {
        out.push_back(render(face, map[c]));
        const Rendered &r = out.back();
        if (!r.exists || r.rows == 0)
            continue;
        above = std::max(above, r.top);
        below = std::max(below, r.rows - r.top);
    }
    // the deepest descender ends on the last row of the line
    baseline = LINE_HEIGHT - below;
    return above + below <= LINE_HEIGHT;
}

void append_record(std::vector<uint8_t> &stream, const Rendered &r, int baseline)
{
    if (!r.exists) {
        stream.insert(stream.end(), {1, 1, NO_GLYPH});
        return;
    }
    int shift = std::max(0, -r.left);  // ink left of the pen moves right, the width grows
    int w = std::max(r.advance + shift, shift + r.left + r.width);
    w = std::max(w, 1);
    int first_row = baseline - r.top;
    int h = r.rows ? first_row + r.rows : 1;
    std::vector<uint8_t> pixels((size_t)w * h, TRANSPARENT);
    for (int y = 0; y < r.rows; y++)
        for (int x = 0; x < r.width; x++)
            pixels[(size_t)(first_row + y) * w + shift + r.left + x] =
                palette_index(r.coverage[(size_t)y * r.width + x]);
    stream.push_back((uint8_t)w);
    stream.push_back((uint8_t)h);
    stream.insert(stream.end(), pixels.begin(), pixels.end());
}

// Runs of four or more (and every escape byte) as tokens, the rest as literals.
std::vector<uint8_t> rle_pack(const std::vector<uint8_t> &in)
{
    std::vector<uint8_t> out = {ESCAPE};
    for (size_t i = 0; i < in.size();) {
        size_t j = i;
        while (j < in.size() && in[j] == in[i] && j - i < 255)
            j++;
        size_t n = j - i;
        if (in[i] == ESCAPE || n >= 4) {
            out.insert(out.end(), {ESCAPE, in[i], (uint8_t)n});
        } else {
            out.insert(out.end(), in.begin() + i, in.begin() + j);
        }
        i = j;
    }
    return out;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: %s DejaVuSans.ttf out.pack\n", argv[0]);
        return 2;
    }
    FT_Library library;
    FT_Face face;
    if (FT_Init_FreeType(&library) || FT_New_Face(library, argv[1], 0, &face)) {
        fprintf(stderr, "mkfontpack: cannot open %s\n", argv[1]);
        return 1;
    }
    std::vector<uint32_t> map = code_points();
    std::vector<Rendered> glyphs;
    int baseline = 0;
    // the largest size, in quarter pixels, at which every glyph fits the line
    FT_F26Dot6 size = LINE_HEIGHT * 64;
    while (size > 64 && !render_all(face, size, map, glyphs, baseline))
        size -= 16;

    std::vector<uint8_t> stream;
    int missing = 0;
    for (int c = 0; c < CODES; c++) {
        append_record(stream, glyphs[c], baseline);
        if (map[c] && !glyphs[c].exists) {
            fprintf(stderr, "mkfontpack: no glyph for U+%04X (code %d)\n", map[c], c);
            missing++;
        }
    }
    std::vector<uint8_t> pack = rle_pack(stream);
    FILE *f = fopen(argv[2], "wb");
    if (!f || fwrite(pack.data(), 1, pack.size(), f) != pack.size() || fclose(f)) {
        fprintf(stderr, "mkfontpack: cannot write %s\n", argv[2]);
        return 1;
    }
    fprintf(stderr, "mkfontpack: %.2f px em, baseline row %d, stream %zu bytes, pack %zu bytes\n",
            size / 64.0, baseline, stream.size(), pack.size());
    FT_Done_Face(face);
    FT_Done_FreeType(library);
    return missing ? 1 : 0;
}
