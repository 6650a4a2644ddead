// Buchholz normal form: collapse, templates, substitution and the normal test.
#include "OrdBuchholz/ord_buchholz.h"

#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_arith.h"
#include "support/report/report.h"

OrdTerm Ord_collapse(OrdTerm t)
{
    Ord arg = Ord_force(t.arg);
    if (arg.count != 1 || arg.terms[0].coef != 1)
        return t;
    const OrdTerm *inner = &arg.terms[0];
    if (Ord_cmp(t.sub, inner->sub) != 0)
        return t;
    // the inner argument must end above Omega_(a+1) for psi_a(inner) to be a
    // fixed point of psi_a
    Ord y = inner->arg;
    Ord last_sub = y.count ? Ord_lastterm(Ord_force(y))->sub : Ord_zero();
    if (Ord_cmp(last_sub, t.sub) > 0)
        return OrdTerm{t.coef, inner->sub, y};
    return t;
}

// The level below a template level: the placeholder is in the last term, in
// its arg where that is not 0, else in its sub; null at the placeholder.
static Ord *template_below(Ord level)
{
    OrdTerm *last = &level.terms[level.count - 1];
    if (last->coef == 0)
        return nullptr;
    return last->arg.count ? &last->arg : &last->sub;
}

Ord Ord_makeimpredfn(Ord x)
{
    if (x.count == 0) {
        REPORT(REPORT_FATAL, "Zero ordinal given to Ord_makeimpredfn", 0);
        return Ord_zero();
    }
    // one new array per level of the chain of last terms that leads to the
    // Omega_a; every other term record is copied and shares all below it
    Ord tmpl = Ord_zero();
    Ord *slot = &tmpl;
    for (;;) {
        x = Ord_force(x);
        uint32_t n = x.count;
        const OrdTerm *last = Ord_lastterm(x);
        Ord a = last->sub;
        Ord b = last->arg;

        // every term but the last, and one copy fewer of the last, stand as
        // they are; the tail takes the place of the remaining copy
        Ord level = Ord_alloc(last->coef > 1 ? n + 1 : n);
        for (uint32_t i = 0; i + 1 < n; i++)
            level.terms[i] = x.terms[i];
        OrdTerm *tail = &level.terms[n - 1];
        if (last->coef > 1) {
            *tail = OrdTerm{last->coef - 1, a, b};
            tail = &level.terms[n];
        }
        *slot = level;

        if (b.count) {
            // the Omega_a lies inside the argument
            if (OrdTerm_isfinite(Ord_lastterm(Ord_force(b)))) {
                *tail = OrdTerm{0, Ord_zero(), Ord_zero()};
                REPORT(REPORT_FATAL, "Successor ordinal argument given to Ord_makeimpredfn", 0);
                return tmpl;
            }
            *tail = OrdTerm{1, a, Ord_zero()};
            slot = &tail->arg;
            x = b;
        } else if (a.count && !OrdTerm_isfinite(Ord_lastterm(Ord_force(a)))) {
            // Omega_a with a limit subscript: the hole is inside the subscript
            *tail = OrdTerm{1, Ord_zero(), Ord_zero()};
            slot = &tail->sub;
            x = a;
        } else {
            // this term is the Omega_a itself
            *tail = OrdTerm{0, Ord_zero(), Ord_zero()};
            return tmpl;
        }
    }
}

void Ord_freetemplate(Ord tmpl)
{
    if (ord_arena)
        return;
    // each level is read before its array goes
    while (tmpl.count) {
        Ord *below = template_below(tmpl);
        Ord next = below ? *below : Ord_zero();
        Ord_freearray(tmpl);
        tmpl = next;
    }
}

Ord Ord_substitute(Ord tmpl, Ord p, DynArray *list)
{
    if (tmpl.count == 0)
        return Ord_zero();
    p = Ord_force(p);
    // the levels down to the placeholder, top first
    static DynArray levels;
    static bool levels_ready = false;
    if (!levels_ready) {
        DynArray_init(&levels, sizeof(Ord), 64);
        levels_ready = true;
    }
    levels.count = 0;
    for (Ord level = tmpl;;) {
        DynArray_append(&levels, &level);
        Ord *below = template_below(level);
        if (!below)
            break;
        level = *below;
    }

    // bottom up: the placeholder gives way to p's terms, concatenated with no
    // absorption; each level above is its template level with the new level
    // below in place of the old one
    Ord below = Ord_zero();
    for (uint32_t k = levels.count; k-- > 0;) {
        Ord level = *DynArray_at<Ord>(&levels, k);
        uint32_t keep = level.count - 1;
        bool bottom = k + 1 == levels.count;
        Ord r = Ord_alloc(bottom ? keep + p.count : level.count);
        if (keep)
            memcpy(r.terms, level.terms, (size_t)keep * sizeof(OrdTerm));
        if (bottom) {
            if (p.count)
                memcpy(r.terms + keep, p.terms, (size_t)p.count * sizeof(OrdTerm));
        } else {
            OrdTerm t = level.terms[keep];
            if (t.arg.count)
                t.arg = below;
            else
                t.sub = below;
            r.terms[keep] = t;
            DynArray_append(list, &below);
        }
        below = r;
    }
    return below;
}

// Every psi_s(e) in t with s at least nu, reached through sums and the sub and
// arg of such terms, has e below alpha. Terms with s below nu lie below
// Omega_nu, where everything is reached, so they are not looked into.
static bool normal_args_below(Ord t, Ord nu, Ord alpha)
{
    t = Ord_force(t);
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
    x = Ord_force(x);
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
