// Flush-to-zero and denormals-are-zero for the whole process.
#include "ord/fpu_mode.h"

#if defined(__SSE__) || defined(__x86_64__)
#include <xmmintrin.h>
#endif

void fpu_flush_denormals()
{
#if defined(__SSE__) || defined(__x86_64__)
    // FTZ is bit 15 of MXCSR, DAZ bit 6
    _mm_setcsr(_mm_getcsr() | 0x8040u);
#endif
}
