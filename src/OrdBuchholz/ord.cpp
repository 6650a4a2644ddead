// Ordinal terms: allocation in either memory mode, copies and releases.
#include "OrdBuchholz/ord.h"

#include <stdlib.h>
#include <string.h>

#include "OrdBuchholz/ord_identity.h"
#include "support/dynarray/dynarray.h"
#include "support/report/report.h"

// The active arena; null (heap mode) except while the frame loop lends it.
MemStack *ord_arena = nullptr;
uint64_t ord_heap_bytes = 0;

Ord Ord_alloc(uint32_t n)
{
    if (n == 0)
        return Ord_zero();
    size_t bytes = (size_t)n * sizeof(OrdTerm);
    void *terms = ord_arena ? memstack_alloc(ord_arena, bytes) : malloc(bytes);
    if (!terms)
        REPORT(REPORT_FATAL, "Out of memory for ordinal terms", 0);
    if (!ord_arena)
        ord_heap_bytes += bytes;
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
    // a lazy value belongs to the rope store
    if (ord_arena || x.count == 0 || Ord_islazy(x))
        return;
    ord_heap_bytes -= (uint64_t)x.count * sizeof(OrdTerm);
    free(x.terms);
}

// Pops the last Ord of a DynArray used as a stack.
static Ord stack_pop(DynArray *stack)
{
    return *DynArray_at<Ord>(stack, --stack->count);
}

void Ord_free(Ord x)
{
    if (ord_arena || x.count == 0 || Ord_islazy(x))
        return;
    // an explicit stack and a visited set: the depth can run to hundreds of
    // thousands of levels, and a value from Ord_clone may reach one array by
    // several ways
    OrdMap seen;
    OrdMap_init(&seen, 16);
    DynArray todo, found;
    DynArray_init(&todo, sizeof(Ord), 16);
    DynArray_init(&found, sizeof(Ord), 16);
    bool added;
    OrdMap_insert(&seen, x, &added);
    DynArray_append(&todo, &x);
    while (todo.count) {
        Ord y = stack_pop(&todo);
        DynArray_append(&found, &y);
        for (uint32_t i = 0; i < y.count; i++) {
            const Ord parts[2] = {y.terms[i].sub, y.terms[i].arg};
            for (Ord part : parts)
                if (part.count && !Ord_islazy(part) && (OrdMap_insert(&seen, part, &added), added))
                    DynArray_append(&todo, &part);
        }
    }
    // freed only after the walk, which reads every array
    for (uint32_t i = 0; i < found.count; i++)
        Ord_freearray(*DynArray_at<Ord>(&found, i));
    DynArray_free(&found);
    DynArray_free(&todo);
    OrdMap_free(&seen);
}

Ord Ord_copy(Ord x)
{
    x = Ord_force(x);
    Ord copy = Ord_alloc(x.count);
    if (x.count)
        memcpy(copy.terms, x.terms, (size_t)x.count * sizeof(OrdTerm));
    return copy;
}

Ord Ord_clone(Ord x)
{
    // lazy values are shared, never copied: the rope store keeps them
    if (x.count == 0 || Ord_islazy(x))
        return x;
    // one new array for each array of x, shared in the clone where x shares
    // it, so a value built by expansion does not unfold into a tree
    OrdMap copies;
    OrdMap_init(&copies, 16);
    DynArray todo;
    DynArray_init(&todo, sizeof(Ord), 16);
    bool added;
    Ord root = Ord_alloc(x.count);
    OrdMap_insert(&copies, x, &added)->value = root.terms;
    DynArray_append(&todo, &x);
    while (todo.count) {
        Ord y = stack_pop(&todo);
        OrdTerm *to = (OrdTerm *)OrdMap_find(&copies, y)->value;
        for (uint32_t i = 0; i < y.count; i++) {
            Ord parts[2] = {y.terms[i].sub, y.terms[i].arg};
            for (Ord &part : parts) {
                if (part.count == 0)
                    part = Ord_zero();
                if (part.count == 0 || Ord_islazy(part))
                    continue;
                OrdMapSlot *slot = OrdMap_insert(&copies, part, &added);
                if (added) {
                    slot->value = Ord_alloc(part.count).terms;
                    DynArray_append(&todo, &part);
                }
                part.terms = (OrdTerm *)slot->value;
            }
            to[i] = OrdTerm{y.terms[i].coef, parts[0], parts[1]};
        }
    }
    DynArray_free(&todo);
    OrdMap_free(&copies);
    return root;
}

Ord Ord_zero()
{
    return Ord{0, nullptr};
}

bool Ord_isfinite(Ord x)
{
    x = Ord_force(x);
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
    // the top is built whole, never lazy
    if (Ord_islazy(x) || x.count != 1 || x.terms[0].coef != 1 || x.terms[0].sub.count != 0)
        return false;
    Ord marker = x.terms[0].arg;
    if (marker.count != 1 || marker.terms[0].coef != ORD_COEF_I || marker.terms[0].arg.count)
        return false;
    Ord inner = marker.terms[0].sub;
    return inner.count == 1 && inner.terms[0].coef == ORD_COEF_I &&
           OrdTerm_isfinite(&inner.terms[0]);
}
