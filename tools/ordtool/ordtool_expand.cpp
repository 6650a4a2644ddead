// ordtool expand: the first members of a fundamental sequence, one per line.
#include <stdio.h>
#include <stdlib.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_expand.h"
#include "tools/ordtool/ordtool.h"

// Most members asked for at once. Member i of a sequence that iterates a
// template nests i levels deep, and printing recurses along that nesting.
static const long EXPAND_MAX = 1000;

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
                            count_text);
    ordtool_memory_mode(args.arena);

    Ord x;
    if (!ordtool_read_ord(args.positional[0], &x))
        return ORDTOOL_FAILED;
    // only a limit has a fundamental sequence
    if (x.count == 0 || Ord_issuccessor(x)) {
        ordtool_fail("'%s' is %s and has no fundamental sequence", args.positional[0],
                     x.count == 0 ? "0" : "a successor ordinal");
        Ord_free(x);
        return ORDTOOL_FAILED;
    }

    // members carry x's coefficients, and coefficients below N of their own
    if (!ordtool_text_fits(x, &args.row)) {
        Ord_free(x);
        return ORDTOOL_FAILED;
    }

    OrdExpansion e = Ord_expandfresh(x, (int32_t)n);
    for (int32_t i = 0; i < e.n; i++) {
        char *text = Ord_tostring(e.seq[i], &args.row);
        printf("%s\n", text);
        free(text);
    }
    Ord_freeexpansion(e);
    Ord_free(x);
    return 0;
}
