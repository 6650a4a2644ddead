// Wall-clock time stamps in seconds, as every timed part of the program takes them.
#pragma once

// Seconds of CLOCK_REALTIME: tv_nsec times 1e-9 plus tv_sec. The wall clock, so
// it may step backward when the system time is set back.
double clock_seconds();
// Seconds of CLOCK_MONOTONIC, for deadlines within a frame: never steps back.
double clock_monotonic_seconds();
