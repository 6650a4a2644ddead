// Buchholz normal form: collapse, templates, substitution and the normal test.
#include "OrdBuchholz/ord_buchholz.h"

#include <string.h>

#include "OrdBuchholz/ord_arith.h"
#include "support/report/report.h"

OrdTerm Ord_collapse(OrdTerm t)
{
    if (t.arg.count != 1 || t.arg.terms[0].coef != 1)
        return t;
    const OrdTerm *inner = &t.arg.terms[0];
    if (Ord_cmp(t.sub, inner->sub) != 0)
        return t;
    // the inner argument must end above Omega_(a+1) for psi_a(inner) to be a
    // fixed point of psi_a
    Ord y = inner->arg;
    Ord last_sub = y.count ? Ord_lastterm(y)->sub : Ord_zero();
    if (Ord_cmp(last_sub, t.sub) > 0)
        return OrdTerm{t.coef, inner->sub, y};
    return t;
}

Ord Ord_makeimpredfn(Ord x)
{
    if (x.count == 0) {
        REPORT(REPORT_FATAL, "Zero ordinal given to Ord_makeimpredfn", 0);
        return Ord_zero();
    }
    uint32_t n = x.count;
    const OrdTerm *last = Ord_lastterm(x);
    Ord a = last->sub;
    Ord b = last->arg;

    // every term but the last, and one copy fewer of the last, stand as they
    // are; the tail takes the place of the remaining copy
    Ord tmpl = Ord_alloc(last->coef > 1 ? n + 1 : n);
    for (uint32_t i = 0; i + 1 < n; i++) {
        const OrdTerm *t = &x.terms[i];
        tmpl.terms[i] = OrdTerm{t->coef, Ord_clone(t->sub), Ord_clone(t->arg)};
    }
    OrdTerm *tail = &tmpl.terms[n - 1];
    if (last->coef > 1) {
        *tail = OrdTerm{last->coef - 1, Ord_clone(a), Ord_clone(b)};
        tail = &tmpl.terms[n];
    }

    if (b.count) {
        // the Omega_a lies inside the argument
        if (OrdTerm_isfinite(Ord_lastterm(b))) {
            REPORT(REPORT_FATAL, "Successor ordinal argument given to Ord_makeimpredfn", 0);
            return tmpl;
        }
        *tail = OrdTerm{1, Ord_clone(a), Ord_makeimpredfn(b)};
    } else if (a.count && !OrdTerm_isfinite(Ord_lastterm(a))) {
        // Omega_a with a limit subscript: the hole is inside the subscript
        *tail = OrdTerm{1, Ord_makeimpredfn(a), Ord_zero()};
    } else {
        // this term is the Omega_a itself
        *tail = OrdTerm{0, Ord_zero(), Ord_zero()};
    }
    return tmpl;
}

Ord Ord_substitute(Ord tmpl, Ord p, DynArray *list)
{
    if (tmpl.count == 0)
        return Ord_zero();

    // one place per ordinary term, p's terms in place of each placeholder
    uint32_t places = 0;
    for (uint32_t i = 0; i < tmpl.count; i++)
        places += tmpl.terms[i].coef ? 1 : p.count;

    Ord r = Ord_alloc(places);
    uint32_t j = 0;
    for (uint32_t i = 0; i < tmpl.count; i++) {
        const OrdTerm *t = &tmpl.terms[i];
        if (t->coef == 0) {
            if (p.count)
                memcpy(r.terms + j, p.terms, (size_t)p.count * sizeof(OrdTerm));
            j += p.count;
            continue;
        }
        Ord sub = Ord_substitute(t->sub, p, list);
        DynArray_append(list, &sub);
        Ord arg = Ord_substitute(t->arg, p, list);
        DynArray_append(list, &arg);
        r.terms[j++] = OrdTerm{t->coef, sub, arg};
    }
    return r;
}

// Every psi_s(e) in t with s at least nu, reached through sums and the sub and
// arg of such terms, has e below alpha. Terms with s below nu lie below
// Omega_nu, where everything is reached, so they are not looked into.
static bool normal_args_below(Ord t, Ord nu, Ord alpha)
{
    for (uint32_t i = 0; i < t.count; i++) {
        const OrdTerm *s = &t.terms[i];
        if (Ord_cmp(s->sub, nu) < 0)
            continue;
        if (Ord_cmp(s->arg, alpha) >= 0)
            return false;
        if (!normal_args_below(s->sub, nu, alpha) || !normal_args_below(s->arg, nu, alpha))
            return false;
    }
    return true;
}

// Normal form of a value that is not the top: I and placeholders are refused.
static bool normal_form(Ord x)
{
    for (uint32_t i = 0; i < x.count; i++) {
        const OrdTerm *t = &x.terms[i];
        if (t->coef == 0 || t->coef == ORD_COEF_I)
            return false;
        if (i > 0) {
            // strictly descending by (sub, arg): equal pairs would be merged
            const OrdTerm *prev = &x.terms[i - 1];
            int32_t r = Ord_cmp(prev->sub, t->sub);
            if (r == 0)
                r = Ord_cmp(prev->arg, t->arg);
            if (r <= 0)
                return false;
        }
        if (!normal_form(t->sub) || !normal_form(t->arg))
            return false;
        if (!normal_args_below(t->arg, t->sub, t->arg))
            return false;
    }
    return true;
}

bool Ord_isnormal(Ord x)
{
    return Ord_istop(x) || normal_form(x);
}
