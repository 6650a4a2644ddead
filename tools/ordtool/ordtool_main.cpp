// ordtool: the command-line companion of ordline; dispatches on the command word.
#include <stdio.h>
#include <string.h>

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
    "  ordtool expand ORD N [--row BITS] [--arena]  the first N members of the fundamental\n"
    "                                               sequence of ORD, one per line\n"
    "  ordtool cmp A B [--arena]                    -1, 0 or 1 as A is below, equal to\n"
    "                                               or above B\n"
    "  ordtool line --width W [--minsize S] [--zoom-at X --factor F --steps K] [--columns]\n"
    "                                               the tick pass of a first view W wide:\n"
    "                                               position, kind and text of each call,\n"
    "                                               or with --columns column, kind, size;\n"
    "                                               --zoom-at pans X to the centre and\n"
    "                                               zooms K times by F (up to 10)\n"
    "  ordtool bench                                the cost of the tick, label and read-out\n"
    "                                               passes at zoom depths\n"
    "                                               10^0 to 10^1000, heap and arena\n"
    "ORD is read in psi form: numbers, omega, Omega, Omega_{a}, psi_{a}(b), sums with '+',\n"
    "coefficients '.n', and psi_{0}(I) (the top of the line) standing alone.\n"
    "BITS is six digits 0 or 1 for the toggles n, alpha.n, omega^alpha, epsilon_alpha,\n"
    "varphi_alpha(beta) and Omega_alpha, in that order; the default is 111111.\n"
    "--arena runs the command with the ordinal arena in place of the heap.\n";

int main(int argc, char **argv)
{
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
