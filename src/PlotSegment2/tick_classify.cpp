// Tick classification by a few tests on the normal form.
#include "PlotSegment2/tick_classify.h"

#include "OrdBuchholz/ord_arith.h"

const uint32_t tick_colours[11] = {
    0x000000, 0x808080, 0xa00000, 0xffa000, 0xffff00, 0xffffff,
    0x00ff00, 0x00ffff, 0xff00ff, 0x0000ff, 0x404040,
};

// Omega, Omega^2 = psi_1(Omega) and Omega^Omega = psi_1(Omega^2), built once.
static bool classify_ready = false;
static Ord ord_Omega, ord_Omega_squared, ord_Omega_to_Omega;

// A one-term ordinal (1, psi_1, arg), with a term of its own for the 1.
static Ord psi_one_of(Ord arg)
{
    return Ord_term(1, Ord_term(1, Ord_zero(), Ord_zero()), arg);
}

static void classify_constants()
{
    ord_Omega = psi_one_of(Ord_zero());
    ord_Omega_squared = psi_one_of(ord_Omega);
    ord_Omega_to_Omega = psi_one_of(ord_Omega_squared);
    classify_ready = true;
}

uint32_t tick_classify(Ord x)
{
    if (!classify_ready)
        classify_constants();

    if (x.count == 0)
        return KIND_ZERO;
    x = Ord_force(x);
    const OrdTerm *t = Ord_lastterm(x);
    if (OrdTerm_isfinite(t))
        return KIND_SUCCESSOR;
    if (x.count != 1 || t->coef != 1)
        return KIND_LIMIT;
    // an uncountable Omega_a has no argument to read; it is not on the line
    if (t->arg.count == 0)
        return KIND_LIMIT;

    // the kind follows the last term of the argument alone
    const OrdTerm *L = Ord_lastterm(Ord_force(t->arg));
    if (L->sub.count == 0) {
        if (t->sub.count != 0)
            return KIND_OMEGA_POWER;
        return KIND_OMEGA_POWER + (is_omega_tower(t->arg) ? 1 : 0);
    }
    Ord Lsub = Ord_force(L->sub);
    if (Lsub.count != 1 || !OrdTerm_isfinite(&Lsub.terms[0]))
        return KIND_BUCHHOLZ;
    if (Lsub.terms[0].coef != 1)
        return KIND_BACHMANN_HOWARD;

    // psi_1 of L's argument, with L's own coefficient dropped
    Ord y = Ord_term(1, L->sub, L->arg);
    uint32_t kind = KIND_FEFERMAN_SCHUTTE;
    if (Ord_cmp(y, ord_Omega_squared) < 0)
        kind = KIND_EPSILON;
    else if (Ord_cmp(y, ord_Omega_to_Omega) < 0)
        kind = KIND_VEBLEN;
    Ord_freearray(y);
    return kind;
}
