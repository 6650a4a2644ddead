// Reading ordinals from text: a recursive descent that converts every
// classical form to its psi term as it goes.
#include "OrdBuchholz/ord_parse.h"

#include <stdio.h>
#include <string.h>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"

// Largest coefficient that is an ordinary number: the next one marks I.
static const uint64_t COEF_MAX = ORD_COEF_I - 1;

// The letters of the notation, by name and as the window writes them (UTF-8).
enum Letter { L_NONE, L_OMEGA, L_BIG_OMEGA, L_EPSILON, L_VARPHI, L_PSI };
struct LetterSpelling {
    const char *text;
    Letter letter;
};
// Longer spellings first where one is a prefix of another.
static const LetterSpelling letter_spellings[] = {
    {"omega", L_OMEGA},     {"\xCF\x89", L_OMEGA},      {"Omega", L_BIG_OMEGA},
    {"\xCE\xA9", L_BIG_OMEGA}, {"epsilon", L_EPSILON},  {"\xCE\xB5", L_EPSILON},
    {"\xCF\xB5", L_EPSILON}, {"varphi", L_VARPHI},      {"\xCF\x86", L_VARPHI},
    {"\xCF\x95", L_VARPHI},  {"psi", L_PSI},            {"\xCF\x88", L_PSI},
};

// Unicode script digits: superscripts (U+2070, U+00B9, U+00B2, U+00B3,
// U+2074..9) and subscripts (U+2080..9), by digit.
static const char *const superscript_digits[10] = {
    "\xE2\x81\xB0", "\xC2\xB9",     "\xC2\xB2",     "\xC2\xB3",     "\xE2\x81\xB4",
    "\xE2\x81\xB5", "\xE2\x81\xB6", "\xE2\x81\xB7", "\xE2\x81\xB8", "\xE2\x81\xB9"};
static const char *const subscript_digits[10] = {
    "\xE2\x82\x80", "\xE2\x82\x81", "\xE2\x82\x82", "\xE2\x82\x83", "\xE2\x82\x84",
    "\xE2\x82\x85", "\xE2\x82\x86", "\xE2\x82\x87", "\xE2\x82\x88", "\xE2\x82\x89"};

// The reader's own arena: everything built on the way lives here and goes at
// the rewind after each call; only the result is copied out.
static MemStack reader_arena;
static bool reader_arena_ready = false;

struct OrdReader {
    const char *text;
    uint32_t pos;          // 0-based byte index of the next character
    uint32_t depth;        // braces and parentheses open
    uint32_t first;        // byte index of the first non-blank character
    bool any;              // uncountable values are read too
    bool top;              // the text is the top psi_{0}(I)
    OrdParseError *error;  // filled at the first failure
    bool failed;
};

// ---- failures ----

// 1-based column of byte `pos`: UTF-8 continuation bytes start no character.
static uint32_t column_of(const char *text, uint32_t pos)
{
    uint32_t column = 1;
    for (uint32_t i = 0; i < pos && text[i]; i++)
        column += ((unsigned char)text[i] & 0xC0) != 0x80;
    return column;
}

// Records the first failure only: later ones are consequences of it.
static void reader_fail(OrdReader *r, uint32_t pos, const char *what)
{
    if (r->failed)
        return;
    r->failed = true;
    r->error->position = column_of(r->text, pos);
    snprintf(r->error->message, sizeof r->error->message, "position %u: %s",
             r->error->position, what);
}

// "unexpected 'c', expected ..." at the current position.
static void reader_fail_here(OrdReader *r, const char *expected)
{
    char what[160];
    unsigned char c = (unsigned char)r->text[r->pos];
    if (c == 0)
        snprintf(what, sizeof what, "the text ends, expected %s", expected);
    else if (c > ' ' && c < 127)
        snprintf(what, sizeof what, "unexpected '%c', expected %s", c, expected);
    else
        snprintf(what, sizeof what, "unexpected byte 0x%02X, expected %s", c, expected);
    reader_fail(r, r->pos, what);
}

// ---- characters ----

static void skip_blanks(OrdReader *r)
{
    while (r->text[r->pos] == ' ' || r->text[r->pos] == '\t')
        r->pos++;
}

// Consumes `word` if the text goes on with it.
static bool accept(OrdReader *r, const char *word)
{
    size_t n = strlen(word);
    if (strncmp(r->text + r->pos, word, n) != 0)
        return false;
    r->pos += (uint32_t)n;
    return true;
}

// Blanks, then `word`.
static bool accept_after_blanks(OrdReader *r, const char *word)
{
    skip_blanks(r);
    return accept(r, word);
}

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

// The letter at the current position, consumed; L_NONE consumes nothing.
static Letter accept_letter(OrdReader *r)
{
    for (const LetterSpelling &s : letter_spellings)
        if (accept(r, s.text))
            return s.letter;
    return L_NONE;
}

// True if a letter of the notation, by name or Greek, starts here.
static bool at_letter(const OrdReader *r)
{
    for (const LetterSpelling &s : letter_spellings)
        if (strncmp(r->text + r->pos, s.text, strlen(s.text)) == 0)
            return true;
    return false;
}

// A run of script digits (superscripts or subscripts) as a number; -1 when
// none stands here.
static int64_t accept_script_number(OrdReader *r, const char *const digits[10])
{
    int64_t value = -1;
    for (;;) {
        int32_t d = 0;
        while (d < 10 && strncmp(r->text + r->pos, digits[d], strlen(digits[d])) != 0)
            d++;
        if (d == 10)
            return value;
        r->pos += (uint32_t)strlen(digits[d]);
        value = (value < 0 ? 0 : value) * 10 + d;
        if (value > (int64_t)COEF_MAX)
            value = (int64_t)COEF_MAX + 1;  // refused by the caller
    }
}

// A decimal number up to COEF_MAX; the caller has seen a digit.
static uint64_t read_number(OrdReader *r)
{
    uint32_t start = r->pos;
    uint64_t value = 0;
    while (is_digit(r->text[r->pos])) {
        value = value * 10 + (uint64_t)(r->text[r->pos] - '0');
        r->pos++;
        if (value > COEF_MAX) {
            reader_fail(r, start, "number too large (at most 4294967294)");
            return 0;
        }
    }
    return value;
}

// ---- small values (all in the reader's arena, never freed one by one) ----

static Ord number(uint64_t n)
{
    return n ? Ord_term((uint32_t)n, Ord_zero(), Ord_zero()) : Ord_zero();
}

// Omega_a, with Omega_0 = 1.
static Ord big_omega(Ord a)
{
    return Ord_term(1, a, Ord_zero());
}

// The subscript of x's leading term: x lies between Omega_level and the next
// Omega (the level of 0 and of countable values is 0).
static Ord level_of(Ord x)
{
    return x.count ? x.terms[0].sub : Ord_zero();
}

// x + y, or false (reported at `at`) when a merged coefficient would pass
// COEF_MAX: the next value would read as the marker of I.
static bool add_checked(OrdReader *r, uint32_t at, Ord x, Ord y, Ord *sum)
{
    if (y.count) {
        const OrdTerm *t = &y.terms[0];
        for (uint32_t i = 0; i < x.count; i++)
            if (Ord_cmp(x.terms[i].sub, t->sub) == 0 && Ord_cmp(x.terms[i].arg, t->arg) == 0 &&
                (uint64_t)x.terms[i].coef + t->coef > COEF_MAX) {
                reader_fail(r, at, "coefficient too large (at most 4294967294)");
                *sum = Ord_zero();
                return false;
            }
    }
    *sum = Ord_add(x, y);
    return true;
}

// x with one copy of its leading term taken away: x = t0 + rest.
static Ord drop_leading(Ord x)
{
    if (x.terms[0].coef > 1) {
        Ord y = Ord_copy(x);
        y.terms[0].coef -= 1;
        return y;
    }
    return Ord_slice(x, 1, x.count - 1);
}

// Every psi_s(e) in t with s at least nu, reached through sums and the sub
// and arg of such terms, has e below alpha: psi_nu(alpha) is then in normal
// form when nu and alpha are (Ord_isnormal walks the whole value; the reader
// checks each new term once, its parts being normal already).
static bool args_below(Ord t, Ord nu, Ord alpha)
{
    for (uint32_t i = 0; i < t.count; i++) {
        const OrdTerm *s = &t.terms[i];
        if (Ord_cmp(s->sub, nu) < 0)
            continue;
        if (Ord_cmp(s->arg, alpha) >= 0 || !args_below(s->sub, nu, alpha) ||
            !args_below(s->arg, nu, alpha))
            return false;
    }
    return true;
}

static bool term_is_normal(Ord x)
{
    return args_below(x.terms[0].arg, x.terms[0].sub, x.terms[0].arg);
}

// ---- the classical forms as psi terms ----
//
// Every additive principal ordinal of [Omega_a, Omega_(a+1)) is one psi_a(b)
// in normal form. The forms are inverted the way the notation reads them:
// omega^E, epsilon_A and varphi_A(B) each split into the largest fixed point
// P = psi_a(h) at or below them and a rest that counts the steps above it.

// The y with omega^y = t, t one term taken with coefficient 1.
static Ord omega_log(const OrdTerm *t)
{
    Ord a = t->sub, b = t->arg;
    if (b.count == 0)
        return a.count ? big_omega(a) : Ord_zero();  // Omega_a is omega^Omega_a; 1 is omega^0
    // psi_a(b) with b ending above subscript a is a fixed point of omega^x
    if (Ord_cmp(Ord_lastterm(b)->sub, a) > 0)
        return Ord_term(1, a, b);
    // psi_a(h + s) = omega^(psi_a(h) + s), h the part of b above subscript a
    uint32_t i = 0;
    while (Ord_cmp(b.terms[i].sub, a) > 0)
        i++;
    Ord head = i ? Ord_term(1, a, Ord_slice(b, 0, i)) : a.count ? big_omega(a) : Ord_zero();
    return Ord_add(head, Ord_slice(b, i, b.count - i));
}

// omega^E as one term of coefficient 1.
static Ord omega_pow(Ord E)
{
    if (E.count == 0)
        return number(1);
    const OrdTerm *t0 = &E.terms[0];
    Ord a = t0->sub, g = t0->arg;
    Ord b;
    if (g.count == 0 && a.count) {
        // E = Omega_a + rest: psi_a(rest)
        b = drop_leading(E);
    } else if (g.count && Ord_cmp(Ord_lastterm(g)->sub, a) > 0) {
        // E = psi_a(g) + rest with psi_a(g) a fixed point: psi_a(g + rest)
        b = Ord_add(g, drop_leading(E));
    } else {
        // E = psi_a(g) + rest above the largest fixed point psi_a(h) below it,
        // h the part of g above subscript a: psi_a(h + E)
        uint32_t n = 0;
        while (n < g.count && Ord_cmp(g.terms[n].sub, a) > 0)
            n++;
        b = Ord_add(Ord_slice(g, 0, n), E);
    }
    OrdTerm c = Ord_collapse(OrdTerm{1, a, b});
    return Ord_term(1, c.sub, c.arg);
}

// Omega_S times g.
static Ord times_big_omega(OrdReader *r, uint32_t at, Ord S, Ord g)
{
    Ord product = Ord_zero();
    for (uint32_t i = 0; i < g.count && !r->failed; i++) {
        Ord p = omega_pow(Ord_add(big_omega(S), omega_log(&g.terms[i])));
        p.terms[0].coef = g.terms[i].coef;
        add_checked(r, at, product, p, &product);
    }
    return product;
}

// varphi_A(B) for A at least 1 (epsilon_B is varphi_1(B)); `at` is where the
// form starts, for refusals.
static Ord veblen(OrdReader *r, uint32_t at, Ord A, Ord B)
{
    Ord a = level_of(A);
    if (Ord_cmp(level_of(B), a) > 0)
        a = level_of(B);
    if (a.count && Ord_cmp(level_of(B), a) < 0) {
        reader_fail(r, at,
                    "varphi_{A}(B) with A uncountable is read only with B at least the Omega "
                    "below A");
        return Ord_zero();
    }
    Ord S = Ord_succ(a);
    // a step of the index is a term omega^(K + x): Omega_S^A times omega^x
    Ord K = times_big_omega(r, at, S, A);
    Ord K1;
    if (!add_checked(r, at, K, big_omega(S), &K1))
        return Ord_zero();
    Ord threshold = omega_pow(K1);

    // P: the largest fixed point of varphi_A(x) at or below B's leading term;
    // terms of b from `threshold` up make one
    Ord h = Ord_zero(), R = B;
    bool has_fixed_point = a.count != 0;  // Omega_a for a not 0
    if (B.count) {
        const OrdTerm *t0 = &B.terms[0];
        Ord g = t0->arg;
        auto big = [&](const OrdTerm *t) {
            OrdTerm one = {1, t->sub, t->arg};
            return Ord_cmp(Ord{1, &one}, threshold) >= 0;
        };
        if ((g.count == 0 && a.count) || (g.count && big(Ord_lastterm(g)))) {
            // B's leading term is itself a fixed point
            h = g;
            R = drop_leading(B);
            has_fixed_point = true;
        } else {
            uint32_t n = 0;
            while (n < g.count && big(&g.terms[n]))
                n++;
            h = Ord_slice(g, 0, n);
            has_fixed_point = has_fixed_point || n > 0;
        }
    }
    // with no fixed point below, the steps count from 1: psi_0(Omega) is epsilon_0
    if (!has_fixed_point && Ord_isfinite(R)) {
        if (R.count && R.terms[0].coef == COEF_MAX) {
            reader_fail(r, at, "coefficient too large (at most 4294967294)");
            return Ord_zero();
        }
        R = Ord_succ(R);
    }

    Ord b = h;
    for (uint32_t i = 0; i < R.count && !r->failed; i++) {
        Ord step = omega_pow(Ord_add(K, omega_log(&R.terms[i])));
        step.terms[0].coef = R.terms[i].coef;
        add_checked(r, at, b, step, &b);
    }
    OrdTerm c = Ord_collapse(OrdTerm{1, a, b});
    return Ord_term(1, c.sub, c.arg);
}

// ---- the grammar ----

static Ord read_sum(OrdReader *r);
static Ord read_atom(OrdReader *r);

// Opens one level of nesting, or refuses past the bound.
static bool nest(OrdReader *r, uint32_t at)
{
    if (++r->depth <= ORD_PARSE_MAX_DEPTH)
        return true;
    reader_fail(r, at, "nested more than 1000 levels deep");
    return false;
}

// The script of a letter: "{" sum "}", a number, or one letter's form.
static Ord read_group(OrdReader *r)
{
    skip_blanks(r);
    uint32_t at = r->pos;
    if (accept(r, "{")) {
        if (!nest(r, at))
            return Ord_zero();
        Ord x = read_sum(r);
        if (!r->failed && !accept_after_blanks(r, "}"))
            reader_fail_here(r, "'+' or '}'");
        r->depth--;
        return x;
    }
    if (is_digit(r->text[r->pos]))
        return number(read_number(r));
    if (at_letter(r)) {
        if (!nest(r, at))
            return Ord_zero();
        Ord x = read_atom(r);
        r->depth--;
        return x;
    }
    reader_fail_here(r, "'{', a number or a letter");
    return Ord_zero();
}

// "_" and a group, or subscript digits.
static Ord read_subscript(OrdReader *r)
{
    int64_t n = accept_script_number(r, subscript_digits);
    if (n > (int64_t)COEF_MAX)
        reader_fail(r, r->pos, "number too large (at most 4294967294)");
    if (n >= 0)
        return number((uint64_t)n);
    if (!accept_after_blanks(r, "_")) {
        reader_fail_here(r, "'_'");
        return Ord_zero();
    }
    return read_group(r);
}

// "(" sum ")" of varphi and psi; I is handled by read_psi.
static Ord read_parenthesised(OrdReader *r)
{
    uint32_t at = r->pos;
    if (!nest(r, at))
        return Ord_zero();
    Ord x = read_sum(r);
    if (!r->failed && !accept_after_blanks(r, ")"))
        reader_fail_here(r, "'+' or ')'");
    r->depth--;
    return x;
}

// psi_{a}(b) after the letter, which starts at `start`.
static Ord read_psi(OrdReader *r, uint32_t start)
{
    Ord sub = read_subscript(r);
    if (!r->failed && !accept_after_blanks(r, "("))
        reader_fail_here(r, "'('");
    if (r->failed)
        return Ord_zero();
    skip_blanks(r);
    if (r->text[r->pos] == 'I') {
        uint32_t at = r->pos++;
        if (!accept_after_blanks(r, ")")) {
            reader_fail(r, at, "I is read only in psi_{0}(I), standing alone");
            return Ord_zero();
        }
        if (sub.count) {
            r->error->above_top = true;
            reader_fail(r, start, "psi_{a}(I) with a not 0 is above psi_{0}(I), the top of the line");
            return Ord_zero();
        }
        // the top stands alone: nothing may be added to it or hold it
        skip_blanks(r);
        if (start != r->first || r->text[r->pos] != 0) {
            reader_fail(r, start != r->first ? start : r->pos,
                        "psi_{0}(I) is the top of the line and stands alone");
            return Ord_zero();
        }
        r->top = true;
        return Ord_zero();
    }
    Ord arg = read_parenthesised(r);
    if (r->failed)
        return Ord_zero();

    // psi_a(psi_a(y)) at a fixed point is psi_a(y): keep the inner argument
    OrdTerm c = Ord_collapse(OrdTerm{1, sub, arg});
    Ord x = Ord_term(1, c.sub, c.arg);
    // the notation reads psi_a(h + t), t at or below subscript a, as
    // omega^(psi_a(h) + t) even where Buchholz's normal form differs (the
    // indices of epsilon and varphi, written in psi form), and so does the reader
    if (!term_is_normal(x) && arg.count && Ord_cmp(Ord_lastterm(arg)->sub, sub) <= 0)
        x = omega_pow(omega_log(&x.terms[0]));
    if (!term_is_normal(x)) {
        reader_fail(r, start,
                    "this psi term is not in normal form (a psi inside its argument, "
                    "with a subscript at least its own, has an argument not below its own)");
        return Ord_zero();
    }
    return x;
}

// One atom: a number or a letter's form.
static Ord read_atom(OrdReader *r)
{
    skip_blanks(r);
    uint32_t start = r->pos;
    char c = r->text[r->pos];
    if (is_digit(c))
        return number(read_number(r));

    switch (accept_letter(r)) {
    case L_OMEGA: {
        int64_t n = accept_script_number(r, superscript_digits);
        if (n > (int64_t)COEF_MAX)
            reader_fail(r, start, "number too large (at most 4294967294)");
        if (n >= 0)
            return omega_pow(number((uint64_t)n));
        if (!accept_after_blanks(r, "^"))
            return omega_pow(number(1));
        Ord E = read_group(r);
        return r->failed ? Ord_zero() : omega_pow(E);
    }
    case L_BIG_OMEGA: {
        // Omega alone is Omega_1; a script is the subscript
        uint32_t after = r->pos;
        skip_blanks(r);
        bool scripted = r->text[r->pos] == '_' || accept_script_number(r, subscript_digits) >= 0;
        r->pos = after;
        Ord sub = scripted ? read_subscript(r) : number(1);
        return r->failed ? Ord_zero() : big_omega(sub);
    }
    case L_EPSILON: {
        Ord A = read_subscript(r);
        return r->failed ? Ord_zero() : veblen(r, start, number(1), A);
    }
    case L_VARPHI: {
        Ord A = read_subscript(r);
        if (!r->failed && !accept_after_blanks(r, "("))
            reader_fail_here(r, "'('");
        if (r->failed)
            return Ord_zero();
        Ord B = read_parenthesised(r);
        if (r->failed)
            return Ord_zero();
        return A.count == 0 ? omega_pow(B) : veblen(r, start, A, B);
    }
    case L_PSI:
        return read_psi(r, start);
    default:
        break;
    }
    if (c == 'I') {
        reader_fail(r, start, "I is read only in psi_{0}(I), standing alone");
        return Ord_zero();
    }
    if (c == 'x' && !((r->text[r->pos + 1] | 0x20) >= 'a' && (r->text[r->pos + 1] | 0x20) <= 'z')) {
        reader_fail(r, start, "x is the placeholder of a template, not an ordinal");
        return Ord_zero();
    }
    reader_fail_here(r, "a number, omega, Omega, epsilon, varphi or psi");
    return Ord_zero();
}

// An atom with an optional coefficient ".n".
static Ord read_term(OrdReader *r)
{
    Ord x = read_atom(r);
    if (r->failed || !accept_after_blanks(r, "."))
        return x;
    skip_blanks(r);
    uint32_t start = r->pos;
    if (!is_digit(r->text[r->pos])) {
        reader_fail_here(r, "a coefficient");
        return Ord_zero();
    }
    uint64_t n = read_number(r);
    if (!r->failed && n == 0)
        reader_fail(r, start, "a coefficient is at least 1");
    // an atom is one term; a number atom multiplies out: 3.2 is 6
    if (!r->failed && x.count && (uint64_t)x.terms[0].coef * n > COEF_MAX)
        reader_fail(r, start, "coefficient too large (at most 4294967294)");
    if (r->failed)
        return Ord_zero();
    if (x.count)
        x.terms[0].coef *= (uint32_t)n;
    return x;
}

// Terms joined by "+", summed left to right.
static Ord read_sum(OrdReader *r)
{
    Ord sum = Ord_zero();
    for (;;) {
        skip_blanks(r);
        uint32_t start = r->pos;
        Ord t = read_term(r);
        if (r->failed || !add_checked(r, start, sum, t, &sum))
            return Ord_zero();
        // the line ends at the countable psi_{0}(I); Omega is past it
        if (!r->any && r->depth == 0 && t.count && t.terms[0].sub.count) {
            r->error->above_top = true;
            reader_fail(r, start, "this term is uncountable, above psi_{0}(I), the top of the line");
            return Ord_zero();
        }
        if (!accept_after_blanks(r, "+"))
            return sum;
    }
}

static bool parse(const char *text, Ord *out, OrdParseError *error, bool any)
{
    OrdReader r = {text, 0, 0, 0, any, false, error, false};
    error->position = 0;
    error->above_top = false;
    error->message[0] = 0;
    *out = Ord_zero();
    skip_blanks(&r);
    r.first = r.pos;

    if (!reader_arena_ready) {
        memstack_init(&reader_arena);
        reader_arena_ready = true;
    }
    MemStack *caller_arena = ord_arena;
    ord_arena = &reader_arena;
    Ord x = read_sum(&r);
    if (!r.failed && !r.top && text[r.pos] != 0)
        reader_fail_here(&r, "'+', '.' or the end of the text");
    // every step keeps the normal form; this is the guard that it did
    if (!r.failed && !r.top && !Ord_isnormal(x))
        reader_fail(&r, r.first, "the reader could not bring this ordinal to normal form");
    ord_arena = caller_arena;

    // the result leaves the reader's arena as a deep copy in the caller's mode
    if (!r.failed)
        *out = r.top ? Ord_maketop() : Ord_clone(x);
    memstack_rewind(&reader_arena);
    return !r.failed;
}

bool Ord_parse(const char *text, Ord *out, OrdParseError *error)
{
    return parse(text, out, error, false);
}

bool Ord_parse_any(const char *text, Ord *out, OrdParseError *error)
{
    return parse(text, out, error, true);
}
