// Rope lengths: unsigned numbers of 512 bits in eight limbs, with the
// overflow said rather than wrapped.
#include "OrdBuchholz/ord_rope.h"

bool RopeLen_mulsmall(RopeLen *r, RopeLen a, uint64_t k)
{
    uint64_t carry = 0;
    for (int32_t i = 0; i < ROPELEN_LIMBS; i++) {
        unsigned __int128 p = (unsigned __int128)a.limb[i] * k + carry;
        r->limb[i] = (uint64_t)p;
        carry = (uint64_t)(p >> 64);
    }
    return carry == 0;
}

uint64_t RopeLen_tou64(RopeLen a, bool *fits)
{
    *fits = true;
    for (int32_t i = 1; i < ROPELEN_LIMBS; i++)
        if (a.limb[i])
            *fits = false;
    return a.limb[0];
}

// Number of significant bits; 0 for 0.
static int32_t len_bits(RopeLen a)
{
    for (int32_t i = ROPELEN_LIMBS - 1; i >= 0; i--)
        if (a.limb[i])
            return i * 64 + 64 - __builtin_clzll(a.limb[i]);
    return 0;
}

// a << s for s below 512; bits pushed past the top are lost.
static RopeLen len_shl(RopeLen a, int32_t s)
{
    RopeLen r = {};
    int32_t words = s / 64, bits = s % 64;
    for (int32_t i = ROPELEN_LIMBS - 1; i >= words; i--) {
        uint64_t v = a.limb[i - words] << bits;
        if (bits && i - words > 0)
            v |= a.limb[i - words - 1] >> (64 - bits);
        r.limb[i] = v;
    }
    return r;
}

static RopeLen len_shr1(RopeLen a)
{
    for (int32_t i = 0; i < ROPELEN_LIMBS; i++)
        a.limb[i] = (a.limb[i] >> 1) | (i + 1 < ROPELEN_LIMBS ? a.limb[i + 1] << 63 : 0);
    return a;
}

bool RopeLen_divmod_by(RopeLen a, RopeLen d, uint64_t *q, RopeLen *r)
{
    bool a_small, d_small;
    uint64_t a0 = RopeLen_tou64(a, &a_small), d0 = RopeLen_tou64(d, &d_small);
    if (d_small && d0 == 0)
        return false;
    /* the common case: both fit one limb */
    if (a_small && d_small) {
        *q = a0 / d0;
        *r = RopeLen_small(a0 % d0);
        return true;
    }
    int32_t shift = len_bits(a) - len_bits(d);
    if (shift < 0) {
        *q = 0;
        *r = a;
        return true;
    }
    // the quotient has shift or shift + 1 bits
    if (shift > 64)
        return false;
    /* schoolbook division one quotient bit at a time, top bit first */
    RopeLen rest = a, step = len_shl(d, shift);
    unsigned __int128 quotient = 0;
    for (int32_t i = shift; i >= 0; i--) {
        if (RopeLen_cmp(rest, step) >= 0) {
            rest = RopeLen_sub(rest, step);
            quotient |= (unsigned __int128)1 << i;
        }
        step = len_shr1(step);
    }
    if (quotient >> 64)
        return false;
    *q = (uint64_t)quotient;
    *r = rest;
    return true;
}
