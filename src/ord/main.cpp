// Process entry of ordline.
#include <stdlib.h>
#include <string.h>

#include "PlotSegment2/segment.h"
#include "ord/fpu_mode.h"
#include "ord/program.h"

// All numbers of the program live under flush-to-zero, set before main runs.
__attribute__((constructor)) static void ordline_fpu_mode()
{
    fpu_flush_denormals();
}

int main(int argc, char **argv)
{
    segment_stack_room();
    // the arguments joined by blanks; nobody reads them
    char *joined;
    if (argc >= 1) {
        size_t size = 0;
        for (int i = 0; i < argc; i++)
            size += strlen(argv[i]) + 1;
        joined = (char *)malloc(size);
        joined[0] = 0;
        for (int i = 0; i < argc; i++) {
            strcat(joined, argv[i]);
            if (i + 1 < argc)
                strcat(joined, " ");
        }
    } else {
        joined = (char *)malloc(0);
    }
    program_main(argc, argv, joined);
    free(joined);
    return 0;
}
