// The application entry: the window, then the frame loop.
#include "ord/program.h"

#include "support/gl/window.h"

int32_t program_main(int32_t, char **, const char *)
{
    if (GRAPHICS(0, 0, "Ordinal numbers to the extended Buchholz ordinal"))
        frame_loop();
    return 0;
}
