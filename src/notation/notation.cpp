// Notation: the choice of form per term, the conversions, and the text.
#include "notation/notation.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "support/report/report.h"

// A heap text that grows by doubling; always zero-terminated.
struct NotationText {
    char *data;
    size_t len;
    size_t cap;
};

// ---- text ----

static void text_reserve(NotationText *s, size_t more)
{
    if (s->len + more + 1 <= s->cap)
        return;
    size_t cap = s->cap ? s->cap : 64;
    while (s->len + more + 1 > cap)
        cap *= 2;
    char *data = (char *)realloc(s->data, cap);
    if (!data)
        REPORT(REPORT_FATAL, "Out of memory for the text of an ordinal", 0);
    s->data = data;
    s->cap = cap;
}

static void text_append_bytes(NotationText *s, const char *bytes, size_t n)
{
    text_reserve(s, n);
    memcpy(s->data + s->len, bytes, n);
    s->len += n;
    s->data[s->len] = 0;
}

static void text_append(NotationText *s, const char *str)
{
    text_append_bytes(s, str, strlen(str));
}

// `prefix` (empty or ".") and the decimal digits of value.
static void text_append_uint(NotationText *s, const char *prefix, uint32_t value)
{
    char digits[16];
    char *end = digits + sizeof digits, *p = end;
    do {
        *--p = (char)('0' + value % 10);
        value /= 10;
    } while (value);
    text_append(s, prefix);
    text_append_bytes(s, p, (size_t)(end - p));
}

// ---- small ordinals ----

static bool row_on(const NotationRow *row, NotationToggle toggle)
{
    return row->toggle[toggle] != 0;
}

// psi_a(head) when head is not 0; psi_a(0) = Omega_a when it is, except that
// Omega_0 is left out (0). Both forms split off this P.
static Ord split_head(Ord a, Ord head)
{
    if (head.count)
        return Ord_term(1, a, head);
    return a.count ? Ord_term(1, a, Ord_zero()) : Ord_zero();
}

// ---- the choice of form ----

NotationForm notation_form(const OrdTerm *t, const NotationRow *row)
{
    if (t->coef == 0)
        return FORM_PLACEHOLDER;
    if (t->coef == ORD_COEF_I)
        return FORM_MARKER;
    Ord a = t->sub;
    Ord b = t->arg;
    if (row_on(row, TOGGLE_N) && a.count == 0 && b.count == 0)
        return FORM_NUMBER;
    if (row_on(row, TOGGLE_BIG_OMEGA) && a.count && b.count == 0)
        return FORM_BIG_OMEGA;
    if (b.count == 0)
        return FORM_PSI;

    // psi_a(b) with b ending at or below subscript a is a power of omega
    const OrdTerm *last = Ord_lastterm(Ord_force(b));
    if (row_on(row, TOGGLE_OMEGA) && Ord_cmp(last->sub, a) <= 0)
        return FORM_OMEGA;

    // epsilon and varphi need b to end in subscript a + 1 exactly
    Ord S = Ord_succ(a);
    NotationForm form = FORM_PSI;
    if (Ord_cmp(last->sub, S) == 0) {
        Ord om = Ord_term(1, S, Ord_zero());
        Ord om2 = Ord_term(1, S, om);
        // no fall-back from one classical form to another
        if (Ord_cmp(last->arg, om) < 0)
            form = row_on(row, TOGGLE_EPSILON) ? FORM_EPSILON : FORM_PSI;
        else if (Ord_cmp(last->arg, om2) < 0)
            form = row_on(row, TOGGLE_VARPHI) ? FORM_VARPHI : FORM_PSI;
        Ord_freearray(om2);
        Ord_freearray(om);
    }
    Ord_freearray(S);
    return form;
}

// ---- the conversions ----

Ord notation_omega_exponent(const OrdTerm *t)
{
    Ord a = t->sub;
    Ord b = Ord_force(t->arg);
    // psi_a(h + t) = omega^(psi_a(h) + t) and psi_a(t) = omega^(Omega_a + t),
    // where h is the part of b above subscript a
    uint32_t i = 0;
    while (Ord_cmp(b.terms[i].sub, a) > 0)
        i++;
    Ord P = split_head(a, Ord_slice(b, 0, i));
    Ord E = Ord_add(P, Ord_slice(b, i, b.count - i));
    Ord_freearray(P);
    return E;
}

// How a tail term (c', S, y) is moved to subscript 0 by each form.
enum TailRewrite { REWRITE_EPSILON, REWRITE_VARPHI };

// The index both forms read off b's tail: the terms at the end of b with sub
// S (the subscript a + 1) and arg below B0 count the steps, each rewritten at
// subscript 0; the rest of b, collapsed with a, is what they are added to.
static Ord notation_index(Ord a, Ord b, Ord S, Ord B0, TailRewrite rewrite)
{
    b = Ord_force(b);
    uint32_t start = b.count - 1;
    while (start > 0 && Ord_cmp(b.terms[start - 1].sub, S) == 0 &&
           Ord_cmp(b.terms[start - 1].arg, B0) < 0)
        start--;
    Ord P = split_head(a, Ord_slice(b, 0, start));

    Ord R = Ord_alloc(b.count - start);
    for (uint32_t j = 0; j < R.count; j++) {
        const OrdTerm *s = &b.terms[start + j];
        Ord y = s->arg;
        if (rewrite == REWRITE_VARPHI) {
            y = Ord_force(y);
            // only the part of y after its last term of non-zero subscript
            uint32_t k = y.count;
            while (k > 0 && y.terms[k - 1].sub.count == 0)
                k--;
            y = Ord_slice(y, k, y.count - k);
        }
        R.terms[j] = Ord_collapse(OrdTerm{s->coef, Ord_zero(), y});
    }

    // with nothing before the tail the count of steps starts at 0, so that
    // psi_0(Omega) is epsilon_0 and psi_0(Omega.2) epsilon_1
    Ord index = P.count == 0 && Ord_isfinite(R) ? Ord_pred(R) : Ord_add(P, R);
    Ord_freearray(R);
    Ord_freearray(P);
    return index;
}

Ord notation_epsilon_index(const OrdTerm *t)
{
    Ord S = Ord_succ(t->sub);
    Ord om = Ord_term(1, S, Ord_zero());
    Ord A = notation_index(t->sub, t->arg, S, om, REWRITE_EPSILON);
    Ord_freearray(om);
    Ord_freearray(S);
    return A;
}

void notation_varphi_indices(const OrdTerm *t, Ord *A, Ord *B)
{
    Ord S = Ord_succ(t->sub);
    Ord om = Ord_term(1, S, Ord_zero());
    Ord X = Ord_force(Ord_lastterm(Ord_force(t->arg))->arg);

    // first index: the terms of X at subscript S, moved to subscript 0;
    // varphi_1 is epsilon, so a finite index counts from 1
    uint32_t n = 0;
    for (uint32_t j = 0; j < X.count; j++)
        n += Ord_cmp(X.terms[j].sub, S) == 0;
    *A = Ord_alloc(n);
    n = 0;
    for (uint32_t j = 0; j < X.count; j++)
        if (Ord_cmp(X.terms[j].sub, S) == 0)
            A->terms[n++] = Ord_collapse(OrdTerm{X.terms[j].coef, Ord_zero(), X.terms[j].arg});
    if (Ord_isfinite(*A))
        A->terms[0].coef += 1;

    // second index: steps of the tail below X + Omega_S
    Ord B0 = Ord_add(X, om);
    *B = notation_index(t->sub, t->arg, S, B0, REWRITE_VARPHI);
    Ord_freearray(B0);
    Ord_freearray(om);
    Ord_freearray(S);
}

// ---- text ----

// One step of writing a text, on an explicit stack: the nesting of an
// ordinal can run to hundreds of thousands of levels.
enum PrintStep : uint32_t {
    PRINT_TEXT,    // a fixed string
    PRINT_ORD,     // an ordinal: its terms joined by "+", "0" for 0
    PRINT_TERM,    // one term in the form the row gives it
    PRINT_REPEAT,  // the coefficient after a term's form: ".n", or the form again
    PRINT_FREE,    // a temporary ordinal whose text is written: release it
};

struct PrintTask {
    PrintStep step;
    const char *text;   // PRINT_TEXT
    Ord x;              // PRINT_ORD, PRINT_FREE
    const OrdTerm *t;   // PRINT_TERM, PRINT_REPEAT
    size_t start;       // PRINT_REPEAT: where the term's form begins
};

// The tasks still to do, last first; kept between calls, grown on demand.
static PrintTask *print_tasks = nullptr;
static size_t print_count = 0, print_capacity = 0;

static void task(PrintStep step, const char *text, Ord x, const OrdTerm *t, size_t start)
{
    if (print_count == print_capacity) {
        size_t capacity = print_capacity ? 2 * print_capacity : 256;
        PrintTask *grown = (PrintTask *)realloc(print_tasks, capacity * sizeof(PrintTask));
        if (!grown)
            REPORT(REPORT_FATAL, "Out of memory for the text of an ordinal", 0);
        print_tasks = grown;
        print_capacity = capacity;
    }
    print_tasks[print_count++] = PrintTask{step, text, x, t, start};
}

static void task_text(const char *text)
{
    task(PRINT_TEXT, text, Ord_zero(), nullptr, 0);
}

// x's text; a temporary x is released after it.
static void task_ord(Ord x, bool temporary)
{
    if (temporary)
        task(PRINT_FREE, nullptr, x, nullptr, 0);
    task(PRINT_ORD, nullptr, x, nullptr, 0);
}

// The form of one term, without its coefficient: its pieces go on the stack
// in reverse, so that they come off in reading order.
static void task_form(NotationText *s, const OrdTerm *t, NotationForm form)
{
    switch (form) {
    case FORM_BIG_OMEGA:
        if (Ord_isone(t->sub)) {
            text_append(s, "Omega");
        } else {
            task_text("}");
            task_ord(t->sub, false);
            text_append(s, "Omega_{");
        }
        break;
    case FORM_OMEGA: {
        Ord E = notation_omega_exponent(t);
        if (Ord_isone(E)) {
            text_append(s, "omega");
            Ord_freearray(E);
        } else {
            task_text("}");
            task_ord(E, true);
            text_append(s, "omega^{");
        }
        break;
    }
    case FORM_EPSILON:
        task_text("}");
        task_ord(notation_epsilon_index(t), true);
        text_append(s, "epsilon_{");
        break;
    case FORM_VARPHI: {
        Ord A, B;
        notation_varphi_indices(t, &A, &B);
        task_text(")");
        task_ord(B, true);
        task_text("}(");
        task_ord(A, true);
        text_append(s, "varphi_{");
        break;
    }
    default:
        task_text(")");
        task_ord(t->arg, false);
        task_text("}(");
        task_ord(t->sub, false);
        text_append(s, "psi_{");
        break;
    }
}

static void print_term(NotationText *s, const OrdTerm *t, const NotationRow *row)
{
    NotationForm form = notation_form(t, row);
    if (form == FORM_PLACEHOLDER) {
        text_append(s, "x");
        return;
    }
    if (form == FORM_MARKER) {
        text_append(s, "I");
        return;
    }
    if (form == FORM_NUMBER) {
        text_append_uint(s, "", t->coef);
        return;
    }
    if (t->coef != 1)
        task(PRINT_REPEAT, nullptr, Ord_zero(), t, s->len);
    task_form(s, t, form);
}

// After a form with coefficient c: ".c", or without "alpha.n" the form c - 1
// times more, copied from the text, until it runs past `limit`.
static void print_repeat(NotationText *s, const OrdTerm *t, size_t start, const NotationRow *row,
                         size_t limit)
{
    if (row_on(row, TOGGLE_DOT)) {
        text_append_uint(s, ".", t->coef);
        return;
    }
    size_t n = s->len - start;
    for (uint32_t k = 1; k < t->coef && s->len <= limit; k++) {
        text_reserve(s, n + 1);
        s->data[s->len++] = '+';
        memcpy(s->data + s->len, s->data + start, n);
        s->len += n;
    }
    s->data[s->len] = 0;
}

char *Ord_tostring_limit(Ord x, const NotationRow *row, size_t limit, bool *cut)
{
    print_count = 0;
    NotationText s = {nullptr, 0, 0};
    text_reserve(&s, 0);
    s.data[0] = 0;
    task_ord(x, false);
    while (print_count) {
        PrintTask k = print_tasks[--print_count];
        // one byte past the limit tells that the text is longer; from there
        // only the releases of temporaries are left to do
        if (s.len > limit && k.step != PRINT_FREE)
            continue;
        switch (k.step) {
        case PRINT_TEXT:
            text_append(&s, k.text);
            break;
        case PRINT_ORD:
            k.x = Ord_force(k.x);
            if (k.x.count == 0) {
                text_append(&s, "0");
                break;
            }
            for (uint32_t i = k.x.count; i-- > 0;) {
                task(PRINT_TERM, nullptr, Ord_zero(), &k.x.terms[i], 0);
                if (i > 0)
                    task_text("+");
            }
            break;
        case PRINT_TERM:
            print_term(&s, k.t, row);
            break;
        case PRINT_REPEAT:
            print_repeat(&s, k.t, k.start, row, limit);
            break;
        case PRINT_FREE:
            Ord_freearray(k.x);
            break;
        }
    }
    *cut = s.len > limit;
    if (*cut) {
        s.len = limit;
        s.data[limit] = 0;
    }
    return s.data;
}

char *Ord_tostring(Ord x, const NotationRow *row)
{
    bool cut;
    return Ord_tostring_limit(x, row, SIZE_MAX, &cut);
}
