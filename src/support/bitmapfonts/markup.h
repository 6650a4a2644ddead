// Text markup: Greek names and script marks turned, in place, into expanded text.
//
// Expanded text is a byte string of items, closed by one 0x00:
//   0x00                    end of the text
//   0x02 hi lo              glyph escape: code hi * 256 + lo (lo may be 0x00)
//   0x05 kind a0 a1 a2 a3   control escape, four bytes of argument:
//                             kind 0: colour 0x00RRGGBB, u32 little-endian
//                             kind 1: pen x, i32 little-endian
//                             kind 2: script state: u16 size in 1/256 of the
//                                     full size, then i16 offset of the baseline
//                                     upward in 1/256 of the line height
//   any other byte          the glyph of that code (0x0A breaks the line)
// Since escapes hold zero bytes, the end of an expanded text is found only by
// text_end; every copy or shift of one uses that walk, never strlen.
//
// Glyph codes 256 to 303 are the Greek letters alpha..omega, capitals from
// 280; 304 to 308 are vardelta, varzeta, vartheta, varphi, varomega.
//
// Capacity: both passes work in place. A buffer must hold 3 times the length
// of the text handed in, plus 103 bytes. greek_expand never needs more than
// that; script_expand cuts a text that would outgrow its capacity at an item
// boundary instead of writing past it.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Bytes a buffer needs for the expansion of a text of `length` bytes.
#define MARKUP_CAPACITY(length) (3 * (size_t)(length) + 103)

// Replaces Greek names (matched anywhere, without regard to case; a capital
// first letter gives the capital letter) by glyph escapes. Run it once, on
// plain text. Returns text.
char *greek_expand(char *text);

// Replaces "^" and "_" scripts by control escapes of size and offset. levels
// counts the brace levels still to expand (-1: all; 1 keeps group insides as
// they are); offset and size are the state of the level (0 and 256 at the
// top). Script sizes depend on text_height, so the font that the text will be
// drawn in must already be selected. capacity is the size of the buffer in
// bytes; 0 means the capacity rule for the text as it is handed in.
void script_expand(char *text, int32_t levels, int16_t offset, int16_t size,
                   size_t capacity = 0);

// Size of a script below a level of size s (1/256 of the full size): 1/size
// grows by a constant per level, down to the floor that keeps script glyphs at
// about 12 pixels with the selected font.
int16_t script_size_below(int16_t s);

// The closing 0x00 of an expanded text.
char *text_end(char *text);
const char *text_end(const char *text);
// Bytes of an expanded text with its closing 0x00: what a copy of it takes.
size_t text_size(const char *text);
