// ordtool cmp: the order of two ordinals as -1, 0 or 1.
#include <stdio.h>

#include "OrdBuchholz/ord_arith.h"
#include "tools/ordtool/ordtool.h"

// The order of x against the top psi_0(I), x not the top. Ord_cmp would see
// the subscript of I as a finite number, so the top is placed by what it is:
// the reader admits I nowhere else, so a term psi_0(a) of x has a below I and
// lies below the top, which no sum of such terms reaches; a term of non-zero
// subscript is at least Omega, above every countable ordinal.
static int32_t cmp_with_top(Ord x)
{
    if (x.count == 0)
        return -1;
    return x.terms[0].sub.count ? 1 : -1;
}

// Ord_cmp, right also when one side is the top of the line.
static int32_t ordtool_order(Ord x, Ord y)
{
    bool x_top = Ord_istop(x);
    bool y_top = Ord_istop(y);
    if (x_top && y_top)
        return 0;
    if (x_top)
        return -cmp_with_top(y);
    if (y_top)
        return cmp_with_top(x);
    return Ord_cmp(x, y);
}

int ordtool_cmp(int argc, char **argv)
{
    OrdtoolArgs args;
    if (!ordtool_args(argc, argv, 2, 2, false, "ordtool cmp A B [--arena]", &args))
        return ORDTOOL_FAILED;
    ordtool_memory_mode(args.arena);

    Ord x, y;
    if (!ordtool_read_ord(args.positional[0], &x))
        return ORDTOOL_FAILED;
    if (!ordtool_read_ord(args.positional[1], &y)) {
        Ord_free(x);
        return ORDTOOL_FAILED;
    }
    printf("%d\n", (int)ordtool_order(x, y));
    Ord_free(y);
    Ord_free(x);
    return 0;
}
