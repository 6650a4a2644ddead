// Wall-clock time stamps in seconds.
#include "support/timing/clock.h"

#include <time.h>

double clock_seconds()
{
    struct timespec ts;
    clock_gettime(CLOCK_REALTIME, &ts);
    return ts.tv_nsec * 1e-9 + ts.tv_sec;
}

double clock_monotonic_seconds()
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return (double)ts.tv_nsec * 1e-9 + (double)ts.tv_sec;
}
