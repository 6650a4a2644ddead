// A one-line text field's editing: UTF-8 text with a cursor, and the keys
// that edit it (Left, Right, Home, End, Backspace, Delete), as plain logic.
//
// The cursor is a byte index that always stands between whole characters,
// and every edit moves or removes whole characters. Inserted text loses its
// control characters (a pasted line break or tab becomes a blank, since the
// reader skips blanks) and is refused whole when it would pass the capacity.
// The field is a plain value with its text inline; nothing is allocated.
#pragma once

#include <stdint.h>

// Most bytes of text a field holds: room for a long pasted ordinal.
enum : uint32_t { TEXT_FIELD_MAX = 16384 };

struct TextField {
    char text[TEXT_FIELD_MAX + 1];  // closed by 0
    uint32_t length;                // bytes of text
    uint32_t cursor;                // byte index, 0..length, on a character boundary
};

// Empties the field.
void text_field_clear(TextField *f);
// Replaces the text (cut at the capacity, on a character boundary) and puts
// the cursor at its end.
void text_field_set(TextField *f, const char *text);
// Inserts text at the cursor and moves the cursor past it; false, with the
// field unchanged, when it does not fit.
bool text_field_insert(TextField *f, const char *utf8);
// An editing key (a key_down index of input_state.h); returns whether it
// was one. Keys that edit nothing where the cursor stands are still taken.
bool text_field_key(TextField *f, int32_t key);
