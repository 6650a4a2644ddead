// Named ordinals: the eight large ordinals that carry a name of their own.
//
// They are recognised by their text, as Ord_tostring writes it with all six
// toggles on, so a change of the rows on screen does not move a name. The
// comparison is on the whole text: the Feferman-Schutte ordinal plus 1 has no
// name.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Number of entries in named_ordinals.
constexpr int32_t NAMED_ORDINALS = 8;
// Longest notation text in the table, in bytes: a longer text names nothing.
constexpr size_t NAMED_TEXT_MAX = 48;

struct NamedOrdinal {
    const char *notation;  // the text with all toggles on
    const char *name;      // the name to show above the labels
};

// The table, from the Feferman-Schutte ordinal up to the top of the line.
extern const NamedOrdinal named_ordinals[NAMED_ORDINALS];

// The name whose notation equals `text` exactly, or null. The table is walked
// from its last entry to its first; the texts are distinct.
const char *named_ordinal_find(const char *text);
// The notation of the ordinal whose name is `text` (case ignored, as in
// "bachmann-howard ordinal"), or null: names stand for their ordinals
// wherever the user types one.
const char *named_ordinal_notation(const char *text);
