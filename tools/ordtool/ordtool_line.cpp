// ordtool line: the tick pass of a view, headless.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_expand.h"
#include "OrdBuchholz/ord_lazy.h"
#include "PlotSegment2/tick_classify.h"
#include "PlotSegment2/tick_walk.h"
#include "tools/ordtool/ordtool.h"
#include "tools/ordtool/ordtool_view.h"

static const char line_usage[] =
    "ordtool line --width W [--minsize S] [--centre P --zoom Z | --zoom-at X --factor F --steps K] "
    "[--row BITS] [--columns] [--arena]";

// The row the texts are written in, and where the lines go: a temporary file,
// copied out once the walk is done, so a view the layout gives up on prints
// nothing but the refusal, in bounded memory.
static NotationRow line_row;
static FILE *line_out;

// Most bytes of one text, as for ordtool print: near the top of the line an
// ordinal's full text outgrows any file.
constexpr size_t LINE_TEXT_MAX = (size_t)ORDTOOL_MAX_TEXT;

// Every call of the callback: position, kind, text.
static void line_print_call(WalkRecord r)
{
    char *position = Bignum_todecimal(r.xlo);
    bool cut;
    char *text = Ord_tostring_limit(r.ordlo, &line_row, LINE_TEXT_MAX, &cut);
    // a text cut short, and a leaf the memory limit kept from dividing, say
    // so in fields of their own
    fprintf(line_out, "%s\t%u\t%s%s%s\n", position, tick_classify(r.ordlo), text, cut ? "\tcut" : "",
            r.too_deep ? "\ttoo deep" : "");
    free(text);
    free(position);
    tick_record(r);
    // a long text forces a long stretch of its chain: let it go again
    ord_lazy_trim();
}

int ordtool_line(int argc, char **argv)
{
    // static: its decimals stay reachable to the end, on every way out
    static ViewSetup setup = {};
    setup.minsize = 1.0;
    bool columns = false, arena = false;
    for (int32_t i = 0; i < NOTATION_TOGGLES; i++)
        line_row.toggle[i] = 1;
    for (int i = 2; i < argc; i++) {
        const char *a = argv[i];
        int32_t taken = view_option(argc, argv, &i, &setup, true, false);
        if (taken < 0)
            return ORDTOOL_FAILED;
        if (taken > 0)
            continue;
        if (strcmp(a, "--columns") == 0) {
            columns = true;
        } else if (strcmp(a, "--arena") == 0) {
            arena = true;
        } else if (strcmp(a, "--row") == 0) {
            if (i + 1 >= argc || !ordtool_read_row(argv[i + 1], &line_row))
                return ordtool_fail("--row wants six digits 0 or 1, for n, alpha.n, omega^alpha, "
                                    "epsilon_alpha, varphi_alpha(beta) and Omega_alpha (got '%s')",
                                    ordtool_quote(i + 1 < argc ? argv[i + 1] : ""));
            i++;
        } else {
            return ordtool_fail("unknown argument '%s'; usage: %s", ordtool_quote(a), line_usage);
        }
    }
    if (!view_options_check(&setup, line_usage))
        return ORDTOOL_FAILED;

    WalkRecord record = view_setup_record(&setup);
    ordtool_memory_mode(arena);
    // no work limit, as the tool has no frame rate to keep; memory stops it
    ord_memory_limit = ORDTOOL_MEMORY_LIMIT;
    line_out = tmpfile();
    if (!line_out)
        return ordtool_fail("cannot make a temporary file for the listing");
    tick_arrays_rebuild(record.right);
    walk_line(columns ? tick_record : line_print_call, record);
    if (columns)
        for (int32_t c = 0; c < tick_columns; c++)
            if (tick_kinds[c] != 0)
                fprintf(line_out, "%d\t%u\t%.6f\n", c, tick_kinds[c], (double)tick_sizes[c]);
    if (columns && segment_too_deep > 0)
        fprintf(line_out, "too deep\t%lld leaves\n", (long long)segment_too_deep);
    rewind(line_out);
    char block[65536];
    size_t got;
    while ((got = fread(block, 1, sizeof block, line_out)) > 0)
        fwrite(block, 1, got, stdout);
    fclose(line_out);
    Bignum_free(record.xlo);
    Bignum_free(record.xhi);
    return 0;
}
