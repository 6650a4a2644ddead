// ordtool: the command-line companion of ordline; dispatches on the command word.
#include <stdio.h>
#include <string.h>

#include "PlotSegment2/segment.h"
#include "ord/fpu_mode.h"
#include "tools/ordtool/ordtool.h"

// The same floating-point mode as the viewer, so positions agree.
__attribute__((constructor)) static void ordtool_fpu_mode()
{
    fpu_flush_denormals();
}

static const char usage_text[] =
    "usage: ordtool COMMAND ...\n"
    "  ordtool print ORD [--row BITS] [--arena]     the text of ORD in notation BITS\n"
    "  ordtool expand ORD N [--row BITS] [--arena]  the first N (up to 1000) members of the\n"
    "                                               fundamental sequence of ORD, one per line\n"
    "  ordtool cmp A B [--arena]                    -1, 0 or 1 as A is below, equal to\n"
    "                                               or above B\n"
    "  ordtool line --width W [VIEW] [--minsize S] [--row BITS] [--columns] [--arena]\n"
    "                                               the tick pass of a view W wide: position,\n"
    "                                               kind and text of each call, or with\n"
    "                                               --columns column, kind, size\n"
    "  ordtool locate ORD --width W                 the VIEW that shows ORD's tick at the\n"
    "                                               centre column, the members before and\n"
    "                                               after it 100 pixels or more away\n"
    "  ordtool render --width W --height H [VIEW] [--rows BITS,BITS,...] -o FILE.png\n"
    "                                               the frame the window shows for the view,\n"
    "                                               but the frame rate, as a PNG\n"
    "  ordtool bench [--depths K,..] [--targets X,..] [--motion still|moving] [--width W] [VIEW]\n"
    "                                               the cost of the tick, label and read-out\n"
    "                                               passes at zoom depths 10^0 to 10^1000\n"
    "                                               (or of the one VIEW), heap and arena,\n"
    "                                               still and moving, with each outcome:\n"
    "                                               ok, budget, memory, timeout or crash\n"
    "VIEW is the first view, or --centre P --zoom Z: the point P of the first view (an\n"
    "exact decimal) at the centre column, magnified Z times (a decimal from 1, or 10^K with\n"
    "K up to 200000); or --zoom-at X --factor F --steps K: X panned to the centre, then\n"
    "K zoom steps (up to 2000) by F (up to 10) as the viewer makes them.\n"
    "ORD is read in any form the notation writes: numbers, omega, omega^{a}, epsilon_{a},\n"
    "varphi_{a}(b), Omega, Omega_{a}, psi_{a}(b), sums with '+', coefficients '.n', and\n"
    "psi_{0}(I) (the top of the line) standing alone; braces may be left out around a\n"
    "number or a letter (omega^2, psi_0(Omega_2)), and the letters may be Greek (\xcf\x89\xc2\xb2,\n"
    "\xce\xb5\xe2\x82\x80, \xcf\x88\xe2\x82\x80(\xce\xa9)). Ordinals above the top, such as Omega, are refused.\n"
    "The names the window shows stand for their ordinals ('Bachmann-Howard ordinal').\n"
    "BITS is six digits 0 or 1 for the toggles n, alpha.n, omega^alpha, epsilon_alpha,\n"
    "varphi_alpha(beta) and Omega_alpha, in that order; the default is 111111.\n"
    "--arena runs the command with the ordinal arena in place of the heap.\n"
    "Refused arguments get one line on standard error and status 2; locate, where the\n"
    "depth needed is past what it can follow, says so and prints the deepest view (status 1).\n";

int main(int argc, char **argv)
{
    segment_stack_room();
    if (argc < 2) {
        fputs(usage_text, stderr);
        return ORDTOOL_FAILED;
    }
    ordtool_report_handler_install();
    const char *command = argv[1];
    if (strcmp(command, "print") == 0)
        return ordtool_print(argc, argv);
    if (strcmp(command, "expand") == 0)
        return ordtool_expand(argc, argv);
    if (strcmp(command, "cmp") == 0)
        return ordtool_cmp(argc, argv);
    if (strcmp(command, "line") == 0)
        return ordtool_line(argc, argv);
    if (strcmp(command, "bench") == 0)
        return ordtool_bench(argc, argv);
    if (strcmp(command, "locate") == 0)
        return ordtool_locate(argc, argv);
    if (strcmp(command, "render") == 0)
        return ordtool_render(argc, argv);
    if (strcmp(command, "help") == 0 || strcmp(command, "--help") == 0 ||
        strcmp(command, "-h") == 0) {
        fputs(usage_text, stdout);
        return 0;
    }
    return ordtool_fail("unknown command '%s' (try: ordtool help)", ordtool_quote(command));
}
