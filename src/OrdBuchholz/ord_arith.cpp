// Ordinal arithmetic: comparison, successor, predecessor and sum.
#include "OrdBuchholz/ord_arith.h"

#include <string.h>

int32_t Ord_cmp(Ord x, Ord y)
{
    for (uint32_t i = 0; i < x.count; i++) {
        // x goes on where y has ended: y is a proper prefix
        if (i >= y.count)
            return 1;
        const OrdTerm *s = &x.terms[i];
        const OrdTerm *t = &y.terms[i];
        int32_t r = Ord_cmp(s->sub, t->sub);
        if (r)
            return r;
        r = Ord_cmp(s->arg, t->arg);
        if (r)
            return r;
        if (s->coef != t->coef)
            return s->coef < t->coef ? -1 : 1;
    }
    return x.count < y.count ? -1 : 0;
}

Ord Ord_succ(Ord x)
{
    if (x.count && OrdTerm_isfinite(Ord_lastterm(x))) {
        Ord r = Ord_copy(x);
        r.terms[r.count - 1].coef += 1;
        return r;
    }
    // a limit or 0: a new last term 1
    Ord r = Ord_alloc(x.count + 1);
    if (x.count)
        memcpy(r.terms, x.terms, (size_t)x.count * sizeof(OrdTerm));
    r.terms[x.count] = OrdTerm{1, Ord_zero(), Ord_zero()};
    return r;
}

Ord Ord_pred(Ord x)
{
    if (x.count == 0)
        return Ord_zero();
    const OrdTerm *last = Ord_lastterm(x);
    // a limit has no predecessor; it comes back unchanged, not as an error
    if (!OrdTerm_isfinite(last))
        return Ord_copy(x);
    if (last->coef < 2)
        return Ord_copy(Ord_slice(x, 0, x.count - 1));
    Ord r = Ord_copy(x);
    r.terms[r.count - 1].coef -= 1;
    return r;
}

Ord Ord_add(Ord x, Ord y)
{
    if (x.count == 0)
        return Ord_copy(y);
    if (y.count == 0)
        return Ord_copy(x);

    // walk x from its end while its terms are not above y's leading term t;
    // coefficients play no part, and an equal (sub, arg) merges
    const OrdTerm *t = &y.terms[0];
    uint32_t keep = 0;
    bool merge = false;
    for (uint32_t i = x.count; i-- > 0;) {
        int32_t r = Ord_cmp(x.terms[i].sub, t->sub);
        if (r == 0) {
            r = Ord_cmp(x.terms[i].arg, t->arg);
            if (r == 0)
                merge = true;
        }
        if (r > 0) {
            keep = i + 1;
            break;
        }
    }

    Ord sum = Ord_alloc(keep + y.count);
    if (keep)
        memcpy(sum.terms, x.terms, (size_t)keep * sizeof(OrdTerm));
    memcpy(sum.terms + keep, y.terms, (size_t)y.count * sizeof(OrdTerm));
    if (merge)
        sum.terms[keep].coef += x.terms[keep].coef;
    return sum;
}

bool Ord_issuccessor(Ord x)
{
    return x.count != 0 && OrdTerm_isfinite(Ord_lastterm(x));
}

bool is_omega_tower(Ord x)
{
    // walk down the tower iteratively: its height is the nesting depth
    while (x.count) {
        if (x.count != 1 || x.terms[0].coef != 1 || x.terms[0].sub.count != 0)
            return false;
        x = x.terms[0].arg;
    }
    return true;
}
