// The start-up check that a window exists before the first frame.
#include "ord/startup_check.h"

#include "support/gl/screen.h"
#include "support/report/report.h"

void startup_check_screen()
{
    if (screen_w == 0)
        REPORT(REPORT_FATAL, "GRAPHICS() macro not called at LOOP start, or no resolution specified", 0);
}
