// Fundamental sequences: Ord_expand by cases, and the release of its result.
#include "OrdBuchholz/ord_expand.h"

#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_arith.h"
#include "OrdBuchholz/ord_buchholz.h"
#include "support/report/report.h"

// Chain of arguments of the current top-level call; empty between calls.
DynArray ord_path;

// An expansion with room for n members and an empty keep list.
static OrdExpansion expansion_new(int32_t n)
{
    OrdExpansion e;
    e.n = n;
    e.seq = (Ord *)malloc((size_t)(n > 0 ? n : 1) * sizeof(Ord));
    DynArray_init(&e.keep, sizeof(Ord), dyn_default_capacity);
    return e;
}

// One new term array holding the terms of `head` followed by those of `m`,
// concatenated with no absorption.
static Ord concat_terms(Ord head, Ord m)
{
    Ord r = Ord_alloc(head.count + m.count);
    if (head.count)
        memcpy(r.terms, head.terms, (size_t)head.count * sizeof(OrdTerm));
    if (m.count)
        memcpy(r.terms + head.count, m.terms, (size_t)m.count * sizeof(OrdTerm));
    return r;
}

// Replaces every member m of r by head followed by m; m moves to keep, so that
// each array still stands exactly once.
static void members_prefix(OrdExpansion *r, Ord head)
{
    for (int32_t i = 0; i < r->n; i++) {
        DynArray_append(&r->keep, &r->seq[i]);
        r->seq[i] = concat_terms(head, r->seq[i]);
    }
}

// Omega_a with a zero or successor subscript: iterate the template of the
// nearest enclosing term of lower subscript, in psi_(a-1).
static OrdExpansion expand_omega(Ord a, int32_t n)
{
    // nearest enclosing one-term ordinal psi_s(...) with s below a
    const Ord *path = DynArray_at<Ord>(&ord_path, 0);
    uint32_t from = 0;
    for (uint32_t k = ord_path.count; k-- > 0;) {
        Ord e = path[k];
        if (e.count == 1 && e.terms[0].coef == 1 && Ord_cmp(e.terms[0].sub, a) < 0) {
            from = k + 1;
            break;
        }
    }
    // with no such term the chain's first element gives the template
    Ord tmpl = Ord_makeimpredfn(path[from]);
    Ord p = Ord_pred(a);

    OrdExpansion r = expansion_new(n);
    DynArray_append(&r.keep, &p);
    if (n > 0)
        r.seq[0] = Ord_zero();
    for (int32_t i = 1; i < n; i++) {
        Ord s = Ord_substitute(tmpl, r.seq[i - 1], &r.keep);
        DynArray_append(&r.keep, &s);
        r.seq[i] = Ord_term(1, p, s);
    }
    Ord_free(tmpl);
    return r;
}

OrdExpansion Ord_expand(Ord x, int32_t n)
{
    if (x.count == 0) {
        REPORT(REPORT_FATAL, "Zero ordinal given to Ord_expand", 0);
        return expansion_new(0);
    }
    DynArray_append(&ord_path, &x);
    const OrdTerm *first = &x.terms[0];

    // I: 1, Omega, Omega_Omega, ... each the Omega of the one before
    if (first->coef == ORD_COEF_I) {
        OrdExpansion r = expansion_new(n);
        for (int32_t i = 0; i < n; i++)
            r.seq[i] = i == 0 ? Ord_term(1, Ord_zero(), Ord_zero())
                              : Ord_term(1, r.seq[i - 1], Ord_zero());
        return r;
    }

    // a sum: the head stays, the last term is expanded
    if (x.count > 1) {
        Ord head = Ord_copy(Ord_slice(x, 0, x.count - 1));
        Ord tail = Ord_copy(Ord_slice(x, x.count - 1, 1));
        OrdExpansion r = Ord_expand(tail, n);
        DynArray_append(&r.keep, &tail);
        members_prefix(&r, head);
        Ord_freearray(head);
        return r;
    }

    // a multiple c.t: (c - 1).t stays, one t is expanded
    if (first->coef > 1) {
        Ord one = Ord_term(1, first->sub, first->arg);
        Ord rest = Ord_term(first->coef - 1, first->sub, first->arg);
        OrdExpansion r = Ord_expand(one, n);
        DynArray_append(&r.keep, &one);
        members_prefix(&r, rest);
        Ord_freearray(rest);
        return r;
    }

    // from here on x is the single term psi_a(b)
    Ord a = first->sub;
    Ord b = first->arg;

    // successor argument: 0, psi_a(p), psi_a(p).2, ... with b = p + 1
    if (b.count && OrdTerm_isfinite(Ord_lastterm(b))) {
        OrdExpansion r = expansion_new(n);
        Ord p = Ord_pred(b);
        DynArray_append(&r.keep, &p);
        for (int32_t i = 0; i < n; i++)
            r.seq[i] = i == 0 ? Ord_zero() : Ord_term((uint32_t)i, a, p);
        return r;
    }

    // limit argument: psi_a of the members of b
    if (b.count) {
        OrdExpansion r = Ord_expand(b, n);
        for (int32_t i = 0; i < r.n; i++) {
            DynArray_append(&r.keep, &r.seq[i]);
            r.seq[i] = Ord_term(1, a, r.seq[i]);
        }
        return r;
    }

    // Omega_a with a limit subscript: Omega of the members of a
    if (a.count && !OrdTerm_isfinite(Ord_lastterm(a))) {
        OrdExpansion r = Ord_expand(a, n);
        for (int32_t i = 0; i < r.n; i++) {
            DynArray_append(&r.keep, &r.seq[i]);
            r.seq[i] = Ord_term(1, r.seq[i], Ord_zero());
        }
        return r;
    }

    return expand_omega(a, n);
}

OrdExpansion Ord_expandfresh(Ord x, int32_t n)
{
    DynArray_init(&ord_path, sizeof(Ord), dyn_default_capacity);
    OrdExpansion r = Ord_expand(x, n);
    DynArray_free(&ord_path);
    return r;
}

void Ord_freeexpansion(OrdExpansion e)
{
    for (int32_t i = 0; i < e.n; i++)
        Ord_freearray(e.seq[i]);
    free(e.seq);
    for (uint32_t i = 0; i < e.keep.count; i++)
        Ord_freearray(*DynArray_at<Ord>(&e.keep, i));
    DynArray_free(&e.keep);
}
