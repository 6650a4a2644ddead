// Ordinal terms: allocation in either memory mode, copies and releases.
#include "OrdBuchholz/ord.h"

#include <stdlib.h>
#include <string.h>

// The active arena; null (heap mode) except while the frame loop lends it.
MemStack *ord_arena = nullptr;

Ord Ord_alloc(uint32_t n)
{
    if (n == 0)
        return Ord_zero();
    size_t bytes = (size_t)n * sizeof(OrdTerm);
    void *terms = ord_arena ? memstack_alloc(ord_arena, bytes) : malloc(bytes);
    return Ord{n, (OrdTerm *)terms};
}

Ord Ord_alloc1()
{
    return Ord_alloc(1);
}

Ord Ord_term(uint32_t coef, Ord sub, Ord arg)
{
    Ord x = Ord_alloc1();
    x.terms[0] = OrdTerm{coef, sub, arg};
    return x;
}

void Ord_freearray(Ord x)
{
    if (ord_arena || x.count == 0)
        return;
    free(x.terms);
}

void Ord_free(Ord x)
{
    if (ord_arena || x.count == 0)
        return;
    // last term first, sub before arg: the reverse of how a clone is built
    for (uint32_t i = x.count; i-- > 0;) {
        Ord_free(x.terms[i].sub);
        Ord_free(x.terms[i].arg);
    }
    free(x.terms);
}

Ord Ord_copy(Ord x)
{
    Ord copy = Ord_alloc(x.count);
    if (x.count)
        memcpy(copy.terms, x.terms, (size_t)x.count * sizeof(OrdTerm));
    return copy;
}

Ord Ord_clone(Ord x)
{
    Ord clone = Ord_alloc(x.count);
    for (uint32_t i = x.count; i-- > 0;) {
        clone.terms[i].coef = x.terms[i].coef;
        clone.terms[i].sub = Ord_clone(x.terms[i].sub);
        clone.terms[i].arg = Ord_clone(x.terms[i].arg);
    }
    return clone;
}

Ord Ord_zero()
{
    return Ord{0, nullptr};
}

bool Ord_isfinite(Ord x)
{
    return x.count == 0 || (x.count == 1 && OrdTerm_isfinite(&x.terms[0]));
}

Ord Ord_maketop()
{
    Ord inner = Ord_term(ORD_COEF_I, Ord_zero(), Ord_zero());
    Ord marker = Ord_term(ORD_COEF_I, inner, Ord_zero());
    Ord top = Ord_term(1, Ord_zero(), marker);
    return top;
}

bool Ord_istop(Ord x)
{
    if (x.count != 1 || x.terms[0].coef != 1 || x.terms[0].sub.count != 0)
        return false;
    Ord marker = x.terms[0].arg;
    if (marker.count != 1 || marker.terms[0].coef != ORD_COEF_I || marker.terms[0].arg.count)
        return false;
    Ord inner = marker.terms[0].sub;
    return inner.count == 1 && inner.terms[0].coef == ORD_COEF_I &&
           OrdTerm_isfinite(&inner.terms[0]);
}
