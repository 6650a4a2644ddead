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
