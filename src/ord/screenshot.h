// F12, P or Print: the window as a PNG file in the working directory, named
// for the date and time ("ordline-2025-03-01-142233.png", "-2" and on when
// that name is taken), its name shown for two seconds and printed.
#pragma once

// On a new press of F12, P or Print: reads the frame just drawn (call it
// after everything is drawn, before the swap) and writes it.
void screenshot_keys();
