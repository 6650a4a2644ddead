// ordtool: the command-line companion of ordline.
#include <stdio.h>

#include "ord/fpu_mode.h"

// The same floating-point mode as the viewer, so positions agree.
__attribute__((constructor)) static void ordtool_fpu_mode()
{
    fpu_flush_denormals();
}

int main(int argc, char **)
{
    if (argc < 2) {
        fprintf(stderr, "usage: ordtool COMMAND ...\n");
        return 2;
    }
    fprintf(stderr, "ordtool: unknown command\n");
    return 2;
}
