// The application: entry and frame loop.
#pragma once

#include <stdint.h>

// Opens the window and runs the frames; the arguments are not read.
int32_t program_main(int32_t argc, char **argv, const char *joined);
// Start-up that needs the window, then the frames until the user leaves.
void frame_loop();
