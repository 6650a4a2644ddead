// ordtool expand: the first members of a fundamental sequence, one per line.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_expand.h"
#include "OrdBuchholz/ord_parse.h"
#include "support/report/report.h"
#include "tools/ordtool/ordtool.h"

// Most members asked for at once. Member i of a sequence that iterates a
// template nests i levels deep, and printing recurses along that nesting.
static const long EXPAND_MAX = 1000;

// True if x, a value above the line, has uncountable cofinality: along its
// chain of last terms (into the argument, or into a limit subscript) it ends
// at Omega_a, a a successor, with no term on the way of a subscript below a
// (such a term is what lets the expansion diagonalise to an omega-sequence).
static bool cofinality_uncountable(Ord x)
{
    Ord subs[ORD_PARSE_MAX_DEPTH + 1];
    uint32_t n = 0;
    for (;;) {
        if (x.count == 0)
            return false;
        const OrdTerm *t = Ord_lastterm(x);
        if (OrdTerm_isfinite(t) || Ord_istop(x))
            return false;
        if (n <= ORD_PARSE_MAX_DEPTH)
            subs[n++] = t->sub;
        if (t->arg.count) {
            if (Ord_issuccessor(t->arg))
                return false;
            x = t->arg;
            continue;
        }
        if (!Ord_issuccessor(t->sub)) {
            x = t->sub;
            continue;
        }
        for (uint32_t i = 0; i < n; i++)
            if (Ord_cmp(subs[i], t->sub) < 0)
                return false;
        return true;
    }
}

int ordtool_expand(int argc, char **argv)
{
    OrdtoolArgs args;
    if (!ordtool_args(argc, argv, 2, 2, true, "ordtool expand ORD N [--row BITS] [--arena]",
                      &args))
        return ORDTOOL_FAILED;

    const char *count_text = args.positional[1];
    char *end = nullptr;
    long n = strtol(count_text, &end, 10);
    if (end == count_text || *end != 0 || n < 1 || n > EXPAND_MAX)
        return ordtool_fail("N must be a whole number from 1 to %ld (got '%s')", EXPAND_MAX,
                            ordtool_quote(count_text));
    ordtool_memory_mode(args.arena);

    Ord x;
    OrdParseError error;
    if (!Ord_parse(ordtool_named(args.positional[0]), &x, &error)) {
        // a value above the line: say why it has no sequence to print, if so
        Ord any;
        OrdParseError ignored;
        if (error.above_top && Ord_parse_any(args.positional[0], &any, &ignored)) {
            bool uncountable = cofinality_uncountable(any);
            Ord_free(any);
            if (uncountable)
                return ordtool_fail("'%s' has uncountable cofinality: no sequence of length omega "
                                    "reaches it, and such a sequence is what expand prints",
                                    ordtool_quote(args.positional[0]));
        }
        return ordtool_fail("cannot read '%s': %s", ordtool_quote(args.positional[0]),
                            error.message);
    }
    // only a limit has a fundamental sequence
    if (x.count == 0 || Ord_issuccessor(x)) {
        ordtool_fail("'%s' is %s and has no fundamental sequence", ordtool_quote(args.positional[0]),
                     x.count == 0 ? "0" : "a successor ordinal");
        Ord_free(x);
        return ORDTOOL_FAILED;
    }

    // every member's text is made before any is written, within the limit
    OrdExpansion e = Ord_expandfresh(x, (int32_t)n);
    char **texts = (char **)calloc((size_t)e.n, sizeof(char *));
    if (!texts)
        REPORT(REPORT_FATAL, "Out of memory for the members' texts", 0);
    double total = 0;
    for (int32_t i = 0; i < e.n && total <= ORDTOOL_MAX_TEXT; i++) {
        texts[i] = ordtool_text(e.seq[i], &args.row, ORDTOOL_MAX_TEXT - total);
        total = texts[i] ? total + (double)strlen(texts[i]) + 1 : ORDTOOL_MAX_TEXT + 1;
    }
    if (total > ORDTOOL_MAX_TEXT) {
        for (int32_t i = 0; i < e.n; i++)
            free(texts[i]);
        free(texts);
        Ord_freeexpansion(e);
        Ord_free(x);
        return ordtool_fail("the members' texts would be too long (over %.0f bytes); "
                            "ask for fewer, or turn alpha.n on in --row",
                            ORDTOOL_MAX_TEXT);
    }
    for (int32_t i = 0; i < e.n; i++) {
        printf("%s\n", texts[i]);
        free(texts[i]);
    }
    free(texts);
    Ord_freeexpansion(e);
    Ord_free(x);
    return 0;
}
