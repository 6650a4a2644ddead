// Markup: the Greek pass, the script pass, the item walk and the capacity bound.
#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <vector>

#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/markup.h"

namespace {

using Bytes = std::vector<uint8_t>;

// Expanded text as bytes, up to (not including) its end byte.
Bytes expanded(const char *text)
{
    return Bytes((const uint8_t *)text, (const uint8_t *)text_end(text));
}

std::string hex(const Bytes &b)
{
    std::string s;
    char buf[4];
    for (uint8_t v : b) {
        snprintf(buf, sizeof buf, "%02X ", v);
        s += buf;
    }
    return s;
}

// Both passes as labels take them, at the given line height; the Greek pass
// alone without scripts.
Bytes markup(const std::string &source, uint32_t height = 25, int32_t levels = -1,
             bool scripts = true)
{
    text_height = height;
    std::vector<char> buf(MARKUP_CAPACITY(source.size()), 0);
    memcpy(buf.data(), source.c_str(), source.size() + 1);
    greek_expand(buf.data());
    if (scripts)
        script_expand(buf.data(), levels, 0, 256);
    return expanded(buf.data());
}

// Control escape of script state.
Bytes state(int16_t size, int16_t offset)
{
    return {0x05, 0x02, (uint8_t)(size & 0xFF), (uint8_t)((uint16_t)size >> 8),
            (uint8_t)(offset & 0xFF), (uint8_t)((uint16_t)offset >> 8)};
}

Bytes cat(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes &p : parts)
        all.insert(all.end(), p.begin(), p.end());
    return all;
}

Bytes str(const char *s)
{
    return Bytes(s, s + strlen(s));
}

Bytes glyph(uint32_t code)
{
    return {0x02, (uint8_t)(code >> 8), (uint8_t)(code & 0xFF)};
}

const Bytes close_top = state(256, 0);

TEST(TextMarkup, GreekNamesBecomeGlyphEscapes)
{
    const std::pair<const char *, Bytes> cases[] = {
        {"", {}},
        {"alpha", glyph(256)},  // low byte 0x00
        {"omega", glyph(279)},  {"Omega", glyph(303)},
        {"OMEGA", glyph(303)},  // the first letter alone decides
        {"oMEGA", glyph(279)},
        {"xmuy", cat({str("x"), glyph(267), str("y")})},  // two letters grow by one
        {"pi", glyph(271)},     {"Alphabet", cat({glyph(280), str("bet")})},
        {"epsilon", glyph(260)},  // not psi, not eta: the scan reaches the e first
        {"theta", glyph(263)},  {"etabeta", cat({glyph(262), glyph(257)})},
        {"omeg", str("omeg")},  // part of a name
        {"alpha+mu", cat({glyph(256), str("+"), glyph(267)})},
        {"varomega", glyph(308)}, {"vartheta", glyph(306)}, {"varzeta", glyph(305)},
        {"vardelta", glyph(304)},
        {"Varphi", glyph(307)},  // variants have no capitals
        {"varphi_alpha(beta)", cat({glyph(307), str("_"), glyph(256), str("("), glyph(257),
                                    str(")")})},
    };
    for (const auto &[source, bytes] : cases)
        EXPECT_EQ(hex(markup(source, 25, -1, false)), hex(bytes)) << "source \"" << source << "\"";
}

TEST(TextMarkup, OmegaSquaredIsByteExact)
{
    Bytes expected = {0x02, 0x01, 0x17, 0x05, 0x02, 0xB3, 0x00, 0x26, 0x00, '2',
                      0x05, 0x02, 0x00, 0x01, 0x00, 0x00};
    EXPECT_EQ(hex(markup("omega^2")), hex(expected));
}

TEST(TextMarkup, ScriptForms)
{
    const Bytes sup = state(179, 38), sub = state(179, -115);
    const std::pair<const char *, Bytes> cases[] = {
        {"", {}},
        {"x^ab+c", cat({str("x"), sup, str("ab"), close_top, str("+c")})},
        {"x^12a", cat({str("x"), sup, str("12"), close_top, str("a")})},
        {"omega^2n", cat({glyph(279), sup, str("2"), close_top, str("n")})},
        {"omega^omegaomega+1",
         cat({glyph(279), sup, glyph(279), glyph(279), close_top, str("+1")})},
        {"x^(y)", cat({str("x"), sup, str("("), close_top, str("y)")})},
        {"x^-1", cat({str("x"), sup, str("-"), close_top, str("1")})},
        {"x^{a+b}c", cat({str("x"), sup, str("a+b"), close_top, str("c")})},
        {"x^{}", cat({str("x"), sup, close_top})},
        {"x^{ab", cat({str("x"), sup, str("a"), close_top})},  // the last byte closes
        {"x^2_3", cat({str("x"), sup, str("2"), close_top, sub, str("3"), close_top})},
        {"psi_{0}(Omega_{omega+1})",
         cat({glyph(278), sub, str("0"), close_top, str("("), glyph(303), sub, glyph(279),
              str("+1"), close_top, str(")")})},
    };
    for (const auto &[source, bytes] : cases)
        EXPECT_EQ(hex(markup(source)), hex(bytes)) << "source \"" << source << "\"";
}

TEST(TextMarkup, NestedGroupsKeepEachLevel)
{
    // level 1 sits at 38; its own superscript at 179 * 0.3 + 38 - (179 - 138) / 2
    Bytes expected = cat({glyph(279), state(179, 38), glyph(279), state(138, 71), glyph(303),
                          str(".2"), state(179, 38), close_top});
    EXPECT_EQ(hex(markup("omega^{omega^{Omega.2}}")), hex(expected));

    // a subscript's group passes its offset down: 53.7 - 115 - 20.5
    Bytes sub = cat({str("x"), state(179, -115), str("y"), state(138, -81), str("z"),
                     state(179, -115), close_top});
    EXPECT_EQ(hex(markup("x_{y^z}")), hex(sub));
}

TEST(TextMarkup, ScriptSizesShrinkToTheFloor)
{
    // sizes of the opening escapes of a deep tower
    auto sizes = [](uint32_t height) {
        Bytes b = markup("x^{x^{x^{x^{x^{x}}}}}", height);
        std::vector<int> found;
        for (size_t i = 0; i + 5 < b.size(); i++)
            if (b[i] == 0x05 && b[i + 1] == 0x02 && b[i + 2] != 0 && b[i + 3] == 0 &&
                (found.empty() || b[i + 2] < found.back()))
                found.push_back(b[i + 2]);
        return found;
    };
    EXPECT_EQ(sizes(1000), (std::vector<int>{179, 138, 112, 94, 81}));
    // 3072 / 25 + 0.5 gives a floor of 123
    EXPECT_EQ(sizes(25), (std::vector<int>{179, 138, 123}));
    // at 12 pixels and below every script is nearly full size, shifted by 0.3 of the level
    Bytes small = markup("x^2", 12);
    EXPECT_EQ(hex(small), hex(cat({str("x"), state(255, 76), str("2"), close_top})));
    EXPECT_EQ(hex(markup("x^2", 0)), hex(small));  // no font yet: the same floor, no division
}

TEST(TextMarkup, LevelsLimitTheRecursion)
{
    Bytes kept = cat({str("x"), state(179, 38), str("a^b"), close_top});
    EXPECT_EQ(hex(markup("x^{a^b}", 25, 1)), hex(kept));
    // the count is tested after the decrement: 0 expands everything, like -1
    EXPECT_EQ(hex(markup("x^{a^b}", 25, 0)), hex(markup("x^{a^b}", 25, -1)));
}

TEST(TextMarkup, OverlongExpansionIsCutAtAnItemBoundary)
{
    text_height = 25;
    std::string source = "a";
    for (int i = 0; i < 100; i++)
        source += "^b";
    size_t capacity = MARKUP_CAPACITY(source.size());
    // 13 bytes for each of the 100 scripts: the full expansion outgrows the rule
    std::vector<char> big(4096, 0);
    memcpy(big.data(), source.c_str(), source.size() + 1);
    script_expand(big.data(), -1, 0, 256, big.size());
    Bytes full = expanded(big.data());
    ASSERT_EQ(full.size(), 1u + 100 * 13);

    // an exact heap block: any write past it is caught by the sanitizer build
    char *buf = (char *)malloc(capacity);
    memcpy(buf, source.c_str(), source.size() + 1);
    script_expand(buf, -1, 0, 256);
    Bytes cut = expanded(buf);
    EXPECT_LT(cut.size(), capacity);
    EXPECT_GT(cut.size() + 13, capacity - 1) << "cut more than one item short";
    EXPECT_TRUE(std::equal(cut.begin(), cut.end(), full.begin()));
    // the cut falls between items of the full text
    size_t at = 0;
    while (at < cut.size())
        at += full[at] == 0x05 ? 6 : 1;
    EXPECT_EQ(at, cut.size());
    free(buf);
}

}  // namespace
