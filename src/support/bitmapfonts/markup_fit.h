// Fitting markup into a width: measuring, elision and line breaks on the
// source of a text between the Greek pass and the script pass (markup.h).
//
// Such a source is plain bytes and glyph escapes with its script marks still
// in it ("^{...}", "_{...}"; a mark without braces raises one run). Its width
// is worked out without expanding it: the size of each script level follows
// from text_height alone, so markup_width gives exactly what text_width gives
// for the expansion with the font selected now, and a cut costs one walk.
//
// Cuts fall only between whole terms: after a "+", after a "(", at the
// opening of a braced script (the whole script elided), or before a blank of
// plain text. An elided source ends in MARKUP_ELLIPSIS at the size of the
// level it was cut in, and the groups still open are closed, so the script
// pass sees well-formed groups and nothing raw reaches the screen.
//
// Ownership: functions that change a source work in place, in a buffer of
// `capacity` bytes that the caller owns; MARKUP_CAPACITY of the source's
// length is always enough. markup_tail returns a new heap text.
#pragma once

#include <stddef.h>
#include <stdint.h>

// The mark of an elision: three full stops, the font having no ellipsis glyph.
#define MARKUP_ELLIPSIS "..."

// Width in pixels of the expansion of source with the selected font.
float markup_width(const char *source);

// Cuts source at the last whole-term point where what is kept plus the
// ellipsis is at most max_width wide, and ends it there with the ellipsis.
// A source that fits as it is stays whole, unless cut_short says it was
// already cut at an arbitrary byte (it is then cut at its last whole-term
// point, at the latest). Where nothing fits, the ellipsis alone is left.
// Returns whether it cut.
bool markup_elide(char *source, size_t capacity, float max_width, bool cut_short);

// The deepest script level whose glyphs are smaller than the level above it
// with the selected font: below it the floor size repeats.
int32_t markup_floor_depth();

// Replaces the inside of every braced script deeper than `depth` levels by
// the ellipsis: a tower keeps its levels down to the floor, and "..." stands
// for the rest. Returns whether anything was replaced.
bool markup_elide_depth(char *source, size_t capacity, int32_t depth);

// A line break: the byte count of the longest head of source, ending after a
// "+" or a "(" (in any level), that is at most max_width wide; 0 when none is.
size_t markup_break(const char *source, float max_width);

// The head of source before byte `at` (a point from markup_break), in place,
// with its open groups closed.
void markup_head(char *source, size_t capacity, size_t at);

// The rest of source from byte `at`, led by the marks of the groups open there
// so that it keeps its sizes and offsets: a new heap text for the caller.
char *markup_tail(const char *source, size_t at);

// Whether an expanded text still holds a script mark or a brace as a plain
// character: raw markup that the passes did not take.
bool text_has_markup(const char *expanded);
