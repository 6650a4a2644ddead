// MemStack: block sizes, the bump allocator and its figures.
#include "OrdBuchholz/memstack.h"

#include <stdlib.h>
#include <string.h>

#include "support/report/report.h"

int64_t memstack_block_size(int32_t k)
{
    static const uint32_t factor[3] = {10, 13, 17};
    uint32_t shift = (uint32_t)k / 3;
    // a shift past the word is no size at all; the caller reports it
    if (shift >= 32)
        return 0;
    uint32_t size = (100000u << shift) * factor[k % 3];
    return (int64_t)(int32_t)size;
}

void memstack_init(MemStack *stack)
{
    memset(stack->base, 0, sizeof stack->base);
    memset(stack->end, 0, sizeof stack->end);
    int64_t size = memstack_block_size(0);
    stack->base[0] = (char *)malloc((size_t)size);
    if (!stack->base[0])
        REPORT(REPORT_FATAL, "Out of memory for a MemStack block", 0);
    stack->end[0] = stack->base[0] + size;
    stack->top = stack->base[0];
    stack->limit = stack->end[0];
    stack->current = 0;
}

void memstack_rewind(MemStack *stack)
{
    stack->current = 0;
    stack->top = stack->base[0];
    stack->limit = stack->end[0];
}

uint32_t memstack_used(const MemStack *stack)
{
    uint32_t used = (uint32_t)(stack->top - stack->base[stack->current]);
    for (int32_t k = 0; k < stack->current; k++)
        used += (uint32_t)(stack->end[k] - stack->base[k]);
    return used;
}

uint32_t memstack_capacity(const MemStack *stack)
{
    uint32_t capacity = 0;
    for (int32_t k = 0; k < MEMSTACK_SLOTS && stack->base[k]; k++)
        capacity += (uint32_t)(stack->end[k] - stack->base[k]);
    return capacity;
}

void *memstack_alloc(MemStack *stack, size_t bytes)
{
    // advance until a block has room; later blocks are bigger, so this ends
    // unless the demand outgrows every block the slots can describe
    while ((size_t)(stack->limit - stack->top) < bytes) {
        int32_t k = stack->current + 1;
        if (k >= MEMSTACK_SLOTS) {
            REPORT(REPORT_FATAL, "MemStack has no block large enough", 0);
            return nullptr;
        }
        stack->current = k;
        if (!stack->base[k]) {
            int64_t size = memstack_block_size(k);
            if (size <= 0) {
                REPORT(REPORT_FATAL, "MemStack has no block large enough", 0);
                return nullptr;
            }
            stack->base[k] = (char *)malloc((size_t)size);
            if (!stack->base[k]) {
                REPORT(REPORT_FATAL, "Out of memory for a MemStack block", 0);
                return nullptr;
            }
            stack->end[k] = stack->base[k] + size;
        }
        stack->top = stack->base[k];
        stack->limit = stack->end[k];
    }
    void *block = stack->top;
    stack->top += bytes;
    return block;
}

void memstack_free(MemStack *stack)
{
    for (int32_t k = 0; k < MEMSTACK_SLOTS; k++) {
        free(stack->base[k]);
        stack->base[k] = nullptr;
        stack->end[k] = nullptr;
    }
    stack->top = nullptr;
    stack->limit = nullptr;
    stack->current = 0;
}
