// ordtool: arguments, options, ordinal reading and the memory mode.
#include "tools/ordtool/ordtool.h"

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

#include "OrdBuchholz/memstack.h"
#include "OrdBuchholz/ord_parse.h"
#include "notation/named_ordinals.h"
#include "support/report/report.h"

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

bool ordtool_read_row(const char *bits, NotationRow *row)
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
            if (i + 1 >= argc || !ordtool_read_row(argv[i + 1], &args->row)) {
                ordtool_fail("--row wants six digits 0 or 1, for n, alpha.n, omega^alpha, "
                             "epsilon_alpha, varphi_alpha(beta) and Omega_alpha (got '%s')",
                             ordtool_quote(i + 1 < argc ? argv[i + 1] : ""));
                return false;
            }
            args->row_given = true;
            i++;
        } else if (a[0] == '-' && a[1] == '-') {
            ordtool_fail("unknown option '%s'; usage: %s", ordtool_quote(a), usage);
            return false;
        } else {
            if (args->count == wanted) {
                ordtool_fail("too many arguments ('%s'); usage: %s", ordtool_quote(a), usage);
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

const char *ordtool_named(const char *text)
{
    const char *notation = named_ordinal_notation(text);
    return notation ? notation : text;
}

bool ordtool_read_ord(const char *text, Ord *out)
{
    OrdParseError error;
    if (Ord_parse(ordtool_named(text), out, &error))
        return true;
    ordtool_fail("cannot read '%s': %s", ordtool_quote(text), error.message);
    return false;
}

char *ordtool_text(Ord x, const NotationRow *row, double limit)
{
    // the notation's own writer, stopped one byte past the limit: exact, and
    // iterative however deep x nests
    size_t stop = limit < 0 ? 1 : limit >= 1e15 ? (size_t)1e15 : (size_t)limit + 1;
    bool cut;
    char *text = Ord_tostring_limit(x, row, stop, &cut);
    if (strlen(text) <= limit)
        return text;
    free(text);
    return nullptr;
}

const char *ordtool_quote(const char *text)
{
    static char buffers[4][520];
    static int32_t next = 0;
    char *out = buffers[next];
    next = (next + 1) % 4;
    size_t n = 0;
    for (size_t i = 0; text[i]; i++) {
        if (i >= 120) {
            memcpy(out + n, "...", 4);
            return out;
        }
        unsigned char c = (unsigned char)text[i];
        if (c == '\n')
            n += (size_t)snprintf(out + n, 5, "\\n");
        else if (c == '\t')
            n += (size_t)snprintf(out + n, 5, "\\t");
        else if (c < 0x20 || c == 0x7F)
            n += (size_t)snprintf(out + n, 5, "\\x%02X", c);
        else
            out[n++] = (char)c;
    }
    out[n] = 0;
    return out;
}

// Fatal reports end the command as a refusal; warnings and messages are
// dropped: the tool prints results, and writes no log files.
static void ordtool_report(ReportRecord *record)
{
    if (record->type != REPORT_FATAL)
        return;
    fprintf(stderr, "ordtool: the layout of the line gives up on this view (%s)\n",
            ordtool_quote(record->text));
    _exit(ORDTOOL_FAILED);
}

void ordtool_report_handler_install()
{
    report_handler = ordtool_report;
}
