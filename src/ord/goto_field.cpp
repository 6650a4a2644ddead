// The go-to field: editing, reading, locating, and its two lines on screen.
#include "ord/goto_field.h"

#include <SDL2/SDL.h>
#include <stdio.h>
#include <string.h>

#include "OrdBuchholz/ord_parse.h"
#include "PlotSegment2/locate.h"
#include "notation/named_ordinals.h"
#include "ord/navigation.h"
#include "ord/notice.h"
#include "ord/text_field.h"
#include "ord/view_flight.h"
#include "ord/view_history.h"
#include "support/bitmapfonts/font_registry.h"
#include "support/bitmapfonts/text_draw.h"
#include "support/bitmapfonts/text_measure.h"
#include "support/gl/input_state.h"
#include "support/gl/overlay.h"
#include "support/gl/screen.h"

// How long the note of a go-to that stopped short stays, in seconds.
constexpr double GOTO_NOTE_SECONDS = 6.0;
// The hint under a field with nothing else to say.
static const char goto_hint[] =
    "Enter: fly there   Escape: close   Tab: named ordinals   Up: the last one   Ctrl+V: paste";

// Open or not; start closed.
static bool field_open = false;
// The text being typed.
static TextField field;
// The line under the field: the reader's message (error) or a name or hint.
static char field_message[320];
static bool message_is_error = false;
// The named ordinal Tab put in last, -1 for none.
static int32_t tab_place = -1;
// The text of the last go-to that flew, for Up; start empty.
static char last_text[TEXT_FIELD_MAX + 1];

bool goto_field_open()
{
    return field_open;
}

static void field_close()
{
    field_open = false;
    input_capture = false;
}

// The byte index of 1-based character column `column` of the text (its
// end when the text is shorter).
static uint32_t byte_of_column(const char *text, uint32_t column)
{
    uint32_t i = 0;
    for (uint32_t c = 1; text[i] && c < column; c++)
        for (i++; ((unsigned char)text[i] & 0xC0) == 0x80; i++)
            ;
    return i;
}

// Enter: read the text, locate the ordinal and fly there.
static void field_submit(Bignum view_lo, Bignum view_hi)
{
    // blanks around a name do not count
    char text[TEXT_FIELD_MAX + 1];
    const char *p = field.text;
    while (*p == ' ')
        p++;
    snprintf(text, sizeof text, "%s", p);
    for (size_t n = strlen(text); n > 0 && text[n - 1] == ' '; n--)
        text[n - 1] = 0;
    const char *named = named_ordinal_notation(text);
    Ord target;
    OrdParseError error;
    if (!Ord_parse(named ? named : text, &target, &error)) {
        snprintf(field_message, sizeof field_message, "%s", error.message);
        message_is_error = true;
        if (!named && error.position > 0)
            field.cursor = (uint32_t)(p - field.text) + byte_of_column(text, error.position);
        return;
    }
    Bignum first_lo, first_hi;
    view_first_ends(&first_lo, &first_hi);
    Decimal line_lo = decimal_from_bignum(first_lo), line_hi = decimal_from_bignum(first_hi);
    LocateResult view = locate_ordinal(target, line_lo, line_hi, view_first_width());
    gesture_end(view_lo, view_hi);
    view_history_record(view_lo, view_hi);
    flight_start(view_lo, view_hi, line_lo, line_hi, view.centre, view.zoom_exponent,
                 screen_w / 2, screen_w);
    if (!view.found) {
        char note[300];
        snprintf(note, sizeof note, "Only so far: %s.", view.note);
        notice_show(note, GOTO_NOTE_SECONDS);
    }
    snprintf(last_text, sizeof last_text, "%s", field.text);
    decimal_free(view.centre);
    decimal_free(line_lo);
    decimal_free(line_hi);
    Bignum_free(first_lo);
    Bignum_free(first_hi);
    Ord_free(target);
    field_close();
}

// Tab: the next (or, with Shift, the previous) named ordinal into the field.
static void field_tab(bool backward)
{
    if (tab_place < 0)
        tab_place = backward ? NAMED_ORDINALS - 1 : 0;
    else
        tab_place = (tab_place + (backward ? NAMED_ORDINALS - 1 : 1)) % NAMED_ORDINALS;
    text_field_set(&field, named_ordinals[tab_place].notation);
    snprintf(field_message, sizeof field_message, "%s   (Tab: the next named ordinal)",
             named_ordinals[tab_place].name);
    message_is_error = false;
}

// Ctrl+V: the clipboard's text at the cursor.
static void field_paste()
{
    char *clip = SDL_GetClipboardText();
    if (clip && !text_field_insert(&field, clip)) {
        snprintf(field_message, sizeof field_message,
                 "The clipboard holds more than the field takes (%u bytes).", TEXT_FIELD_MAX);
        message_is_error = true;
    }
    SDL_free(clip);
}

void goto_field_update(Bignum view_lo, Bignum view_hi)
{
    if (!field_open) {
        if (key_edge(KEY_G) || key_edge(KEY_SLASH)) {
            field_open = true;
            input_capture = true;
            message_is_error = false;
            snprintf(field_message, sizeof field_message, "%s", goto_hint);
            // a new text each time; Up brings the last one back
            text_field_clear(&field);
            tab_place = -1;
        }
        return;
    }
    for (uint32_t i = 0; i < input_event_count && field_open; i++) {
        const InputEvent *e = &input_events[i];
        bool edited = true;
        if (e->key < 0) {
            text_field_insert(&field, e->text);
        } else if (e->key == KEY_RETURN || e->key == KEY_KP_ENTER) {
            field_submit(view_lo, view_hi);
            edited = false;
        } else if (e->key == KEY_ESCAPE) {
            field_close();
        } else if (e->key == KEY_TAB) {
            field_tab(e->shift);
            edited = false;
        } else if (e->ctrl && e->key == KEY_V) {
            field_paste();
        } else if (e->key == KEY_UP) {
            text_field_set(&field, last_text);
        } else {
            edited = text_field_key(&field, e->key);
        }
        // an edit makes the old message stale
        if (edited && field_open) {
            snprintf(field_message, sizeof field_message, "%s", goto_hint);
            message_is_error = false;
            tab_place = -1;
        }
    }
}

// The glyphs of one UTF-8 character as the text engine draws them: ASCII as
// it is, the Greek letters as their glyph codes, script digits as digits,
// anything else as "?". Writes at most 3 bytes; returns how many.
static uint32_t display_char(const char *p, uint32_t n, char *out)
{
    unsigned char c = (unsigned char)p[0];
    if (n == 1) {
        out[0] = c >= 0x20 && c < 0x7F ? (char)c : '?';
        return 1;
    }
    uint32_t cp = c & (n == 2 ? 0x1F : n == 3 ? 0x0F : 0x07);
    for (uint32_t i = 1; i < n; i++)
        cp = (cp << 6) | ((unsigned char)p[i] & 0x3F);
    int32_t code = -1;
    if (cp >= 0x3B1 && cp <= 0x3C9 && cp != 0x3C2)
        code = 256 + (int32_t)(cp - 0x3B1) - (cp > 0x3C2 ? 1 : 0);
    else if (cp >= 0x391 && cp <= 0x3A9 && cp != 0x3A2)
        code = 280 + (int32_t)(cp - 0x391) - (cp > 0x3A2 ? 1 : 0);
    else if (cp == 0x3D5)
        code = 307;  // varphi
    else if (cp == 0x3F5)
        code = 260;  // lunate epsilon
    else if (cp >= 0x2080 && cp <= 0x2089)
        code = '0' + (int32_t)(cp - 0x2080);
    else if (cp == 0xB2 || cp == 0xB3 || cp == 0xB9)
        code = cp == 0xB9 ? '1' : '0' + (int32_t)(cp - 0xB0);
    else if (cp >= 0x2070 && cp <= 0x2079)
        code = '0' + (int32_t)(cp - 0x2070);
    if (code < 0)
        code = '?';
    if (code < 0x80) {
        out[0] = (char)code;
        return 1;
    }
    out[0] = 0x02;
    out[1] = (char)(code >> 8);
    out[2] = (char)(code & 0xFF);
    return 3;
}

// Bytes of the UTF-8 character at p (at most what is left).
static uint32_t char_bytes(const char *p, uint32_t left)
{
    uint32_t n = 1;
    while (n < left && ((unsigned char)p[n] & 0xC0) == 0x80)
        n++;
    return n;
}

void goto_field_draw()
{
    if (!field_open)
        return;
    font_select("normal");
    uint32_t lh = text_height;
    float top = (float)screen_h - 2.0f * lh - 8.0f;
    overlay_fill(0.0f, top, (float)screen_w, (float)screen_h, 0x000000, 1.0f);
    overlay_fill(0.0f, top, (float)screen_w, top + 1.0f, 0x6060c0, 1.0f);
    float y = top + 3.0f;
    const char *prompt = "Go to: ";
    text_put(prompt, 0x8080ff, 4.0f, y);
    float x0 = 4.0f + text_width(prompt);
    float room = (float)screen_w - 4.0f - x0;

    // the text from the first character that keeps the cursor in sight
    static char shown[3 * TEXT_FIELD_MAX + 4];
    static float widths[TEXT_FIELD_MAX + 1];
    static uint32_t starts[TEXT_FIELD_MAX + 1];
    uint32_t chars = 0, cursor_char = 0;
    for (uint32_t i = 0; i < field.length; chars++) {
        if (i == field.cursor)
            cursor_char = chars;
        uint32_t n = char_bytes(field.text + i, field.length - i);
        char glyphs[4] = {};
        uint32_t g = display_char(field.text + i, n, glyphs);
        glyphs[g] = 0;
        starts[chars] = i;
        widths[chars] = text_width(glyphs);
        i += n;
    }
    if (field.cursor >= field.length)
        cursor_char = chars;
    uint32_t first = cursor_char;
    float before = 0;
    while (first > 0 && before + widths[first - 1] <= room - (float)lh)
        before += widths[--first];
    uint32_t out = 0;
    float width = 0, cursor_x = x0 + before;
    for (uint32_t c = first; c < chars && width + widths[c] <= room; c++) {
        uint32_t i = starts[c];
        out += display_char(field.text + i, char_bytes(field.text + i, field.length - i),
                            shown + out);
        width += widths[c];
    }
    shown[out] = 0;
    text_put(shown, 0xffffff, x0, y);
    overlay_fill(cursor_x, y, cursor_x + 2.0f, y + (float)lh, 0xffffff, 1.0f);

    text_put(field_message, message_is_error ? 0xff8080 : 0x808080, 4.0f, y + (float)lh + 2.0f);
}
