// A one-line text field: cursor moves and edits by whole UTF-8 characters.
#include "ord/text_field.h"

#include <string.h>

#include "support/gl/input_state.h"

// Whether byte c continues a UTF-8 character rather than starting one.
static bool continues(char c)
{
    return ((unsigned char)c & 0xC0) == 0x80;
}

// The start of the character before byte i (0 stays 0).
static uint32_t char_before(const TextField *f, uint32_t i)
{
    while (i > 0 && continues(f->text[--i]))
        ;
    return i;
}

// The byte after the character at i (length stays length).
static uint32_t char_after(const TextField *f, uint32_t i)
{
    if (i < f->length)
        for (i++; i < f->length && continues(f->text[i]); i++)
            ;
    return i;
}

// Removes the bytes from `from` up to `to`.
static void cut(TextField *f, uint32_t from, uint32_t to)
{
    memmove(f->text + from, f->text + to, f->length - to + 1);
    f->length -= to - from;
}

void text_field_clear(TextField *f)
{
    f->text[0] = 0;
    f->length = 0;
    f->cursor = 0;
}

void text_field_set(TextField *f, const char *text)
{
    text_field_clear(f);
    size_t n = strlen(text);
    if (n > TEXT_FIELD_MAX) {
        // cut before a character that would be split
        n = TEXT_FIELD_MAX;
        while (n > 0 && continues(text[n]))
            n--;
    }
    memcpy(f->text, text, n);
    f->text[n] = 0;
    f->length = f->cursor = (uint32_t)n;
}

bool text_field_insert(TextField *f, const char *utf8)
{
    // what stays of the text: controls as blanks, and DEL dropped
    size_t n = 0;
    for (const char *p = utf8; *p; p++)
        n += *p != 0x7F;
    if (n > TEXT_FIELD_MAX - f->length)
        return false;
    memmove(f->text + f->cursor + n, f->text + f->cursor, f->length - f->cursor + 1);
    char *out = f->text + f->cursor;
    for (const char *p = utf8; *p; p++)
        if (*p != 0x7F)
            *out++ = (unsigned char)*p < 0x20 ? ' ' : *p;
    f->cursor += (uint32_t)n;
    f->length += (uint32_t)n;
    return true;
}

bool text_field_key(TextField *f, int32_t key)
{
    switch (key) {
    case KEY_LEFT:
        f->cursor = char_before(f, f->cursor);
        return true;
    case KEY_RIGHT:
        f->cursor = char_after(f, f->cursor);
        return true;
    case KEY_HOME:
        f->cursor = 0;
        return true;
    case KEY_END:
        f->cursor = f->length;
        return true;
    case KEY_BACKSPACE: {
        uint32_t from = char_before(f, f->cursor);
        cut(f, from, f->cursor);
        f->cursor = from;
        return true;
    }
    case KEY_DELETE:
        cut(f, f->cursor, char_after(f, f->cursor));
        return true;
    default:
        return false;
    }
}
