// ordtool: arguments, options, ordinal reading and the memory mode.
#include "tools/ordtool/ordtool.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord_parse.h"

// The tool's arena, lent to ord_arena by --arena; a global, so its blocks stay
// reachable to the end.
static MemStack ordtool_arena;

int ordtool_fail(const char *format, ...)
{
    va_list list;
    va_start(list, format);
    fputs("ordtool: ", stderr);
    vfprintf(stderr, format, list);
    fputc('\n', stderr);
    va_end(list);
    return ORDTOOL_FAILED;
}

// Six digits 0 or 1, in toggle order.
static bool read_row(const char *bits, NotationRow *row)
{
    if (strlen(bits) != (size_t)NOTATION_TOGGLES)
        return false;
    for (int32_t i = 0; i < NOTATION_TOGGLES; i++) {
        if (bits[i] != '0' && bits[i] != '1')
            return false;
        row->toggle[i] = (uint32_t)(bits[i] - '0');
    }
    return true;
}

bool ordtool_args(int argc, char **argv, int first, int32_t wanted, bool takes_row,
                  const char *usage, OrdtoolArgs *args)
{
    args->count = 0;
    args->row_given = false;
    args->arena = false;
    for (int32_t i = 0; i < NOTATION_TOGGLES; i++)
        args->row.toggle[i] = 1;

    for (int i = first; i < argc; i++) {
        const char *a = argv[i];
        if (strcmp(a, "--arena") == 0) {
            args->arena = true;
        } else if (strcmp(a, "--row") == 0) {
            if (!takes_row) {
                ordtool_fail("--row is not an option of this command; usage: %s", usage);
                return false;
            }
            if (i + 1 >= argc || !read_row(argv[i + 1], &args->row)) {
                ordtool_fail("--row wants six digits 0 or 1, for n, alpha.n, omega^alpha, "
                             "epsilon_alpha, varphi_alpha(beta) and Omega_alpha (got '%s')",
                             i + 1 < argc ? argv[i + 1] : "");
                return false;
            }
            args->row_given = true;
            i++;
        } else if (a[0] == '-' && a[1] == '-') {
            ordtool_fail("unknown option '%s'; usage: %s", a, usage);
            return false;
        } else {
            if (args->count == wanted) {
                ordtool_fail("too many arguments ('%s'); usage: %s", a, usage);
                return false;
            }
            args->positional[args->count++] = a;
        }
    }
    if (args->count < wanted) {
        ordtool_fail("missing arguments; usage: %s", usage);
        return false;
    }
    return true;
}

void ordtool_memory_mode(bool arena)
{
    if (!arena)
        return;
    memstack_init(&ordtool_arena);
    ord_arena = &ordtool_arena;
}

bool ordtool_read_ord(const char *text, Ord *out)
{
    OrdParseError error;
    if (Ord_parse(text, out, &error))
        return true;
    ordtool_fail("cannot read '%s': %s", text, error.message);
    return false;
}

// An upper bound on the bytes of x's text: each term costs its own letters
// (at most 32 with its number) plus its sub and arg, times the number of
// times it is written.
static double text_bound(Ord x, const NotationRow *row)
{
    double bytes = 1;
    for (uint32_t i = 0; i < x.count; i++) {
        const OrdTerm *t = &x.terms[i];
        // numbers (with "n" on), I and the placeholder are written once
        bool once = row->toggle[TOGGLE_DOT] || t->coef == ORD_COEF_I || t->coef == 0 ||
                    (row->toggle[TOGGLE_N] && OrdTerm_isfinite(t));
        double times = once ? 1 : (double)t->coef + 1;
        bytes += times * (32 + text_bound(t->sub, row) + text_bound(t->arg, row));
        // stop early: the bound only needs to pass the limit
        if (bytes > ORDTOOL_MAX_TEXT)
            return bytes;
    }
    return bytes;
}

bool ordtool_text_fits(Ord x, const NotationRow *row)
{
    if (text_bound(x, row) <= ORDTOOL_MAX_TEXT)
        return true;
    ordtool_fail("the text would be too long with alpha.n off (over %.0f bytes); "
                 "turn alpha.n on in --row",
                 ORDTOOL_MAX_TEXT);
    return false;
}
