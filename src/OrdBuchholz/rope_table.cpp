// RopeTable: probing, growth and reset.
#include "OrdBuchholz/rope_table.h"

#include <stdlib.h>

#include "support/report/report.h"

// Slots of a table when it is first used.
constexpr uint32_t TABLE_FIRST_CAPACITY = 64;

constexpr uint64_t SLOT_POINTER = ((uint64_t)1 << 48) - 1;

static uint64_t slot_tag(uint64_t hash)
{
    return (uint64_t)((uint32_t)hash >> 16) << 48;
}

static void *slot_entry(uint64_t slot)
{
    return (void *)(uintptr_t)(slot & SLOT_POINTER);
}

// The slot where an entry equal to key sits, or the empty slot it would take.
static uint32_t table_probe(const RopeTable *t, uint64_t hash, bool (*same)(const void *, const void *),
                            const void *key)
{
    uint32_t mask = t->capacity - 1;
    uint64_t tag = slot_tag(hash);
    for (uint32_t i = (uint32_t)hash & mask;; i = (i + 1) & mask) {
        uint64_t slot = t->slots[i];
        if (!slot || ((slot & ~SLOT_POINTER) == tag && same(slot_entry(slot), key)))
            return i;
    }
}

void *RopeTable_find(const RopeTable *t, uint64_t hash, bool (*same)(const void *, const void *), const void *key)
{
    return t->capacity ? slot_entry(t->slots[table_probe(t, hash, same, key)]) : nullptr;
}

// The first empty slot from the home of hash on.
static uint32_t table_empty_slot(const RopeTable *t, uint64_t hash)
{
    uint32_t mask = t->capacity - 1;
    uint32_t i = (uint32_t)hash & mask;
    while (t->slots[i])
        i = (i + 1) & mask;
    return i;
}

void RopeTable_add(RopeTable *t, void *entry, uint64_t hash, uint64_t (*hash_of)(const void *), uint64_t *bytes)
{
    if ((uintptr_t)entry & ~SLOT_POINTER)
        REPORT(REPORT_FATAL, "A rope entry lies above the addresses a table slot holds", 0);
    if ((t->count + 1) * 4 > t->capacity * 3) {
        RopeTable old = *t;
        t->capacity = old.capacity ? old.capacity * 2 : TABLE_FIRST_CAPACITY;
        t->slots = (uint64_t *)calloc(t->capacity, sizeof(uint64_t));
        if (!t->slots)
            REPORT(REPORT_FATAL, "Out of memory for a rope table", 0);
        for (uint32_t i = 0; i < old.capacity; i++)
            if (old.slots[i])
                t->slots[table_empty_slot(t, hash_of(slot_entry(old.slots[i])))] = old.slots[i];
        free(old.slots);
        *bytes += (uint64_t)(t->capacity - old.capacity) * sizeof(uint64_t);
    }
    t->slots[table_empty_slot(t, hash)] = (uint64_t)(uintptr_t)entry | slot_tag(hash);
    t->count++;
}

void RopeTable_free(RopeTable *t)
{
    free(t->slots);
    *t = RopeTable{nullptr, 0, 0};
}

void RopeTable_reset(RopeTable *t, uint32_t expected, uint64_t *bytes)
{
    *bytes -= (uint64_t)t->capacity * sizeof(uint64_t);
    free(t->slots);
    uint32_t capacity = TABLE_FIRST_CAPACITY;
    while (capacity < 2 * expected)
        capacity *= 2;
    t->slots = (uint64_t *)calloc(capacity, sizeof(uint64_t));
    if (!t->slots)
        REPORT(REPORT_FATAL, "Out of memory for a rope table", 0);
    t->capacity = capacity;
    t->count = 0;
    *bytes += (uint64_t)capacity * sizeof(uint64_t);
}
