// ordtool line: the tick pass of a first view (or a zoomed one), headless.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_expand.h"
#include "PlotSegment2/tick_classify.h"
#include "PlotSegment2/tick_walk.h"
#include "ord/navigation.h"
#include "support/gl/screen.h"
#include "tools/ordtool/ordtool.h"
#include "tools/ordtool/ordtool_view.h"

static const char line_usage[] =
    "ordtool line --width W [--minsize S] [--zoom-at X --factor F --steps K] [--columns] [--arena]";

// Every call of the callback: position, kind, text with all notations on.
static void line_print_call(WalkRecord r)
{
    static const NotationRow all_on = {{1, 1, 1, 1, 1, 1}};
    char *position = Bignum_todecimal(r.xlo);
    char *text = Ord_tostring(r.ordlo, &all_on);
    // a leaf the memory limit kept from dividing says so in a fourth field
    printf("%s\t%u\t%s%s\n", position, tick_classify(r.ordlo), text, r.too_deep ? "\ttoo deep" : "");
    free(text);
    free(position);
    tick_record(r);
}

static bool parse_double(const char *text, double *out)
{
    char *end;
    *out = strtod(text, &end);
    return end != text && *end == 0;
}

int ordtool_line(int argc, char **argv)
{
    ViewSetup setup = {};
    setup.minsize = 1.0;
    bool columns = false, arena = false, zoom_at = false;
    for (int i = 2; i < argc; i++) {
        const char *a = argv[i];
        bool has_value = i + 1 < argc;
        double *target = nullptr;
        if (strcmp(a, "--columns") == 0) {
            columns = true;
            continue;
        }
        if (strcmp(a, "--arena") == 0) {
            arena = true;
            continue;
        }
        if (strcmp(a, "--width") == 0) target = &setup.width;
        else if (strcmp(a, "--minsize") == 0) target = &setup.minsize;
        else if (strcmp(a, "--zoom-at") == 0) { target = &setup.zoom_at; zoom_at = true; }
        else if (strcmp(a, "--factor") == 0) target = &setup.factor;
        else if (strcmp(a, "--steps") == 0) target = &setup.steps;
        else
            return ordtool_fail("unknown argument '%s'; usage: %s", a, line_usage);
        if (!has_value || !parse_double(argv[i + 1], target))
            return ordtool_fail("%s needs a number; usage: %s", a, line_usage);
        i++;
    }
    if (!(setup.width >= 1 && setup.width <= 100000) || setup.width != (int32_t)setup.width)
        return ordtool_fail("--width must be a whole number of pixels from 1 to 100000; usage: %s",
                            line_usage);
    if (!(setup.minsize > 0))
        return ordtool_fail("--minsize must be above 0");
    if (zoom_at) {
        if (!(setup.factor > 0 && setup.factor <= 10))
            return ordtool_fail("--zoom-at needs --factor F with 0 < F <= 10");
        if (!(setup.steps >= 0 && setup.steps <= 1000000) || setup.steps != (int64_t)setup.steps)
            return ordtool_fail("--zoom-at needs --steps K, a whole number from 0 to 1000000");
    }
    setup.zoomed = zoom_at;

    WalkRecord record = view_setup_record(&setup);
    ordtool_memory_mode(arena);
    // no work limit, as the tool has no frame rate to keep; memory stops it
    ord_memory_limit = ORDTOOL_MEMORY_LIMIT;
    tick_arrays_rebuild(record.right);
    walk_line(columns ? tick_record : line_print_call, record);
    if (columns)
        for (int32_t c = 0; c < tick_columns; c++)
            if (tick_kinds[c] != 0)
                printf("%d\t%u\t%.6f\n", c, tick_kinds[c], (double)tick_sizes[c]);
    if (columns && segment_too_deep > 0)
        printf("too deep\t%lld leaves\n", (long long)segment_too_deep);
    Bignum_free(record.xlo);
    Bignum_free(record.xhi);
    return 0;
}
