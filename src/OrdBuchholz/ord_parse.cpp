// Reading ordinals from text: a recursive descent over the psi form.
#include "OrdBuchholz/ord_parse.h"

#include <stdio.h>
#include <string.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"

// Largest coefficient that is an ordinary number: the next one marks I.
static const uint64_t COEF_MAX = ORD_COEF_I - 1;

struct OrdReader {
    const char *text;
    uint32_t pos;          // 0-based index of the next character
    uint32_t depth;        // psi and Omega_ levels open
    OrdParseError *error;  // filled at the first failure
    bool failed;
};

// ---- failures ----

// Records the first failure only: later ones are consequences of it.
static void reader_fail(OrdReader *r, uint32_t pos, const char *what)
{
    if (r->failed)
        return;
    r->failed = true;
    r->error->position = pos + 1;
    snprintf(r->error->message, sizeof r->error->message, "position %u: %s", pos + 1, what);
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

static bool is_digit(char c)
{
    return c >= '0' && c <= '9';
}

static bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
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

// ---- building values that own all their arrays ----

// acc + term as Ord_add computes it, with acc and term consumed: the arrays of
// absorbed terms are released, so the sum still owns exactly what it holds.
// Returns false, consuming nothing, if a merged coefficient would overflow.
static bool sum_add(Ord *acc, Ord term)
{
    if (term.count == 0)
        return true;
    const OrdTerm *t = &term.terms[0];
    for (uint32_t i = 0; i < acc->count; i++) {
        const OrdTerm *s = &acc->terms[i];
        if (Ord_cmp(s->sub, t->sub) == 0 && Ord_cmp(s->arg, t->arg) == 0 &&
            (uint64_t)s->coef + t->coef > COEF_MAX)
            return false;
    }
    Ord sum = Ord_add(*acc, term);
    // acc's terms from `kept` on were absorbed or merged into term's
    uint32_t kept = sum.count - term.count;
    for (uint32_t i = kept; i < acc->count; i++) {
        Ord_free(acc->terms[i].sub);
        Ord_free(acc->terms[i].arg);
    }
    Ord_freearray(*acc);
    Ord_freearray(term);
    *acc = sum;
    return true;
}

// ---- the grammar ----

static Ord read_sum(OrdReader *r);

// "{" sum "}" after psi_ or Omega_.
static Ord read_braced(OrdReader *r)
{
    if (!accept(r, "{")) {
        reader_fail_here(r, "'{'");
        return Ord_zero();
    }
    Ord x = read_sum(r);
    skip_blanks(r);
    if (!r->failed && !accept(r, "}"))
        reader_fail_here(r, "'+' or '}'");
    return x;
}

// psi_{a}(b), with "psi_" already consumed at `start`.
static Ord read_psi(OrdReader *r, uint32_t start)
{
    Ord sub = read_braced(r);
    skip_blanks(r);
    if (!r->failed && !accept(r, "("))
        reader_fail_here(r, "'('");
    if (r->failed) {
        Ord_free(sub);
        return Ord_zero();
    }
    skip_blanks(r);
    if (r->text[r->pos] == 'I') {
        reader_fail(r, r->pos, "I is read only in psi_{0}(I), standing alone");
        Ord_free(sub);
        return Ord_zero();
    }
    Ord arg = read_sum(r);
    skip_blanks(r);
    if (!r->failed && !accept(r, ")"))
        reader_fail_here(r, "'+' or ')'");
    if (r->failed) {
        Ord_free(sub);
        Ord_free(arg);
        return Ord_zero();
    }

    // psi_a(psi_a(y)) at a fixed point is psi_a(y): keep the inner argument
    OrdTerm t = OrdTerm{1, sub, arg};
    OrdTerm c = Ord_collapse(t);
    if (c.arg.terms != arg.terms) {
        t.arg = Ord_clone(c.arg);
        Ord_free(arg);
    }
    Ord x = Ord_term(1, t.sub, t.arg);
    if (!Ord_isnormal(x)) {
        reader_fail(r, start,
                    "this psi term is not in normal form (a psi inside its argument, "
                    "with a subscript at least its own, has an argument not below its own)");
        Ord_free(x);
        return Ord_zero();
    }
    return x;
}

// One atom: a number, omega, Omega, Omega_{a} or psi_{a}(b).
static Ord read_atom(OrdReader *r)
{
    skip_blanks(r);
    uint32_t start = r->pos;
    char c = r->text[r->pos];

    if (is_digit(c)) {
        uint64_t n = read_number(r);
        return n ? Ord_term((uint32_t)n, Ord_zero(), Ord_zero()) : Ord_zero();
    }
    if (accept(r, "omega")) {
        if (r->text[r->pos] == '^') {
            reader_fail(r, r->pos, "omega^{...} is not read: write the power in psi form");
            return Ord_zero();
        }
        return Ord_term(1, Ord_zero(), Ord_term(1, Ord_zero(), Ord_zero()));
    }
    if (accept(r, "Omega")) {
        if (!accept(r, "_"))
            return Ord_term(1, Ord_term(1, Ord_zero(), Ord_zero()), Ord_zero());
        if (++r->depth > ORD_PARSE_MAX_DEPTH) {
            reader_fail(r, start, "nested more than 200 levels deep");
            return Ord_zero();
        }
        Ord sub = read_braced(r);
        r->depth--;
        if (r->failed) {
            Ord_free(sub);
            return Ord_zero();
        }
        // Omega_a = psi_a(0) is always in normal form
        return Ord_term(1, sub, Ord_zero());
    }
    if (accept(r, "psi_")) {
        if (++r->depth > ORD_PARSE_MAX_DEPTH) {
            reader_fail(r, start, "nested more than 200 levels deep");
            return Ord_zero();
        }
        Ord x = read_psi(r, start);
        r->depth--;
        return x;
    }
    if (c == 'I') {
        reader_fail(r, start, "I is read only in psi_{0}(I), standing alone");
        return Ord_zero();
    }
    if (c == 'x' && !is_letter(r->text[r->pos + 1])) {
        reader_fail(r, start, "x is the placeholder of a template, not an ordinal");
        return Ord_zero();
    }
    if (strncmp(r->text + start, "epsilon", 7) == 0 || strncmp(r->text + start, "varphi", 6) == 0) {
        reader_fail(r, start, "epsilon and varphi are not read: write the ordinal in psi form");
        return Ord_zero();
    }
    reader_fail_here(r, "a number, omega, Omega, Omega_{...} or psi_{...}(...)");
    return Ord_zero();
}

// An atom with an optional coefficient ".n".
static Ord read_term(OrdReader *r)
{
    Ord x = read_atom(r);
    if (r->failed)
        return x;
    skip_blanks(r);
    if (!accept(r, "."))
        return x;
    skip_blanks(r);
    uint32_t start = r->pos;
    if (!is_digit(r->text[r->pos])) {
        reader_fail_here(r, "a coefficient");
        Ord_free(x);
        return Ord_zero();
    }
    uint64_t n = read_number(r);
    if (!r->failed && n == 0)
        reader_fail(r, start, "a coefficient is at least 1");
    // a number atom multiplies out: 3.2 is 6
    if (!r->failed && x.count && (uint64_t)x.terms[0].coef * n > COEF_MAX)
        reader_fail(r, start, "coefficient too large (at most 4294967294)");
    if (r->failed) {
        Ord_free(x);
        return Ord_zero();
    }
    if (x.count)
        x.terms[0].coef *= (uint32_t)n;
    return x;
}

// Terms joined by "+", summed left to right.
static Ord read_sum(OrdReader *r)
{
    Ord acc = Ord_zero();
    for (;;) {
        skip_blanks(r);
        uint32_t start = r->pos;
        Ord t = read_term(r);
        if (r->failed) {
            Ord_free(acc);
            return Ord_zero();
        }
        if (!sum_add(&acc, t)) {
            reader_fail(r, start, "coefficient too large (at most 4294967294)");
            Ord_free(acc);
            Ord_free(t);
            return Ord_zero();
        }
        skip_blanks(r);
        if (!accept(r, "+"))
            return acc;
    }
}

bool Ord_parse(const char *text, Ord *out, OrdParseError *error)
{
    OrdReader r = {text, 0, 0, error, false};
    error->position = 0;
    error->message[0] = 0;
    *out = Ord_zero();

    // the top of the line stands alone
    skip_blanks(&r);
    if (accept(&r, "psi_{0}(I)")) {
        skip_blanks(&r);
        if (text[r.pos] == 0) {
            *out = Ord_maketop();
            return true;
        }
        reader_fail(&r, r.pos, "psi_{0}(I) is the top of the line and stands alone");
        return false;
    }

    Ord x = read_sum(&r);
    if (!r.failed && text[r.pos] != 0)
        reader_fail_here(&r, "'+', '.' or the end of the text");
    if (r.failed) {
        Ord_free(x);
        return false;
    }
    *out = x;
    return true;
}
