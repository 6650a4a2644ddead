// ordtool locate: the view that shows an ordinal's tick at the centre column,
// as the window's go-to finds it (PlotSegment2/locate.h).
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "PlotSegment2/locate.h"
#include "tools/ordtool/ordtool.h"
#include "tools/ordtool/ordtool_view.h"

static const char locate_usage[] = "ordtool locate ORD --width W";

int ordtool_locate(int argc, char **argv)
{
    const char *ord_text = nullptr;
    // static: its decimals stay reachable to the end, on every way out
    static ViewSetup setup = {};
    for (int i = 2; i < argc; i++) {
        if (strcmp(argv[i], "--width") == 0) {
            int32_t taken = view_option(argc, argv, &i, &setup, false, false);
            if (taken < 0)
                return ORDTOOL_FAILED;
        } else if (argv[i][0] == '-' && argv[i][1] == '-') {
            return ordtool_fail("unknown option '%s'; usage: %s", ordtool_quote(argv[i]),
                                locate_usage);
        } else if (ord_text) {
            return ordtool_fail("too many arguments ('%s'); usage: %s", ordtool_quote(argv[i]),
                                locate_usage);
        } else {
            ord_text = argv[i];
        }
    }
    if (!ord_text || setup.width == 0)
        return ordtool_fail("missing arguments; usage: %s", locate_usage);
    Ord target;
    if (!ordtool_read_ord(ord_text, &target))
        return ORDTOOL_FAILED;

    Decimal xlo, xhi;
    view_first(setup.width, &xlo, &xhi);
    LocateResult view = locate_ordinal(target, xlo, xhi, setup.width);
    if (!view.found)
        fprintf(stderr, "ordtool: locate stops here: %s; the deepest view reached follows\n",
                view.note);
    char *text = decimal_tostring(view.centre);
    printf("--centre %s --zoom 10^%lld\n", text, (long long)view.zoom_exponent);
    free(text);
    decimal_free(view.centre);
    decimal_free(xlo);
    decimal_free(xhi);
    Ord_free(target);
    return view.found ? 0 : 1;
}
