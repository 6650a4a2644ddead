// ordtool print: the text of an ordinal in the notation of one row.
#include <stdio.h>
#include <stdlib.h>

#include "tools/ordtool/ordtool.h"

int ordtool_print(int argc, char **argv)
{
    OrdtoolArgs args;
    if (!ordtool_args(argc, argv, 2, 1, true, "ordtool print ORD [--row BITS] [--arena]", &args))
        return ORDTOOL_FAILED;
    ordtool_memory_mode(args.arena);

    Ord x;
    if (!ordtool_read_ord(args.positional[0], &x))
        return ORDTOOL_FAILED;
    char *text = ordtool_text(x, &args.row, ORDTOOL_MAX_TEXT);
    if (!text) {
        Ord_free(x);
        return ordtool_fail("the text would be too long with alpha.n off (over %.0f bytes); "
                            "turn alpha.n on in --row",
                            ORDTOOL_MAX_TEXT);
    }
    printf("%s\n", text);
    free(text);
    Ord_free(x);
    return 0;
}
