// The floating-point mode that every number of the program lives under.
#pragma once

// Turns on flush-to-zero and denormals-are-zero. Each executable calls it
// from a constructor, before main runs.
void fpu_flush_denormals();
