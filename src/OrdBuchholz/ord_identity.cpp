// OrdMap: open addressing over (terms, count) keys.
#include "OrdBuchholz/ord_identity.h"

#include <stdlib.h>

#include "support/report/report.h"

static uint32_t slot_hash(const OrdTerm *terms, uint32_t count)
{
    // term arrays are at least 8-byte aligned: the low bits carry nothing
    uint64_t h = (uint64_t)(uintptr_t)terms >> 3;
    h ^= (uint64_t)count * 0x9E3779B97F4A7C15ull;
    h *= 0xBF58476D1CE4E5B9ull;
    return (uint32_t)(h ^ (h >> 31));
}

static void map_alloc(OrdMap *map, uint32_t capacity)
{
    map->slots = (OrdMapSlot *)calloc(capacity, sizeof(OrdMapSlot));
    if (!map->slots)
        REPORT(REPORT_FATAL, "Out of memory for an ordinal identity map", 0);
    map->capacity = capacity;
    map->count = 0;
}

void OrdMap_init(OrdMap *map, uint32_t expected)
{
    uint32_t capacity = 16;
    while (capacity < expected + expected / 2 + 1)
        capacity *= 2;
    map_alloc(map, capacity);
}

void OrdMap_free(OrdMap *map)
{
    free(map->slots);
    map->slots = nullptr;
    map->capacity = 0;
    map->count = 0;
}

OrdMapSlot *OrdMap_find(const OrdMap *map, Ord key)
{
    uint32_t mask = map->capacity - 1;
    for (uint32_t i = slot_hash(key.terms, key.count) & mask;; i = (i + 1) & mask) {
        OrdMapSlot *s = &map->slots[i];
        if (!s->terms)
            return nullptr;
        if (s->terms == key.terms && s->count == key.count)
            return s;
    }
}

static void map_grow(OrdMap *map)
{
    OrdMapSlot *old = map->slots;
    uint32_t old_capacity = map->capacity;
    map_alloc(map, old_capacity * 2);
    for (uint32_t i = 0; i < old_capacity; i++) {
        if (!old[i].terms)
            continue;
        bool added;
        OrdMap_insert(map, Ord{old[i].count, (OrdTerm *)old[i].terms}, &added)->value = old[i].value;
    }
    free(old);
}

OrdMapSlot *OrdMap_insert(OrdMap *map, Ord key, bool *added)
{
    if ((map->count + 1) * 4 > map->capacity * 3)
        map_grow(map);
    uint32_t mask = map->capacity - 1;
    for (uint32_t i = slot_hash(key.terms, key.count) & mask;; i = (i + 1) & mask) {
        OrdMapSlot *s = &map->slots[i];
        if (s->terms == key.terms && s->count == key.count) {
            *added = false;
            return s;
        }
        if (!s->terms) {
            *s = OrdMapSlot{key.terms, key.count, nullptr};
            map->count++;
            *added = true;
            return s;
        }
    }
}

void OrdMap_remove(OrdMap *map, Ord key)
{
    OrdMapSlot *s = OrdMap_find(map, key);
    if (!s)
        return;
    uint32_t mask = map->capacity - 1;
    uint32_t hole = (uint32_t)(s - map->slots);
    // backward shift: pull later members of the probe run into the hole, so
    // that no run is broken and no tombstones pile up
    for (uint32_t j = (hole + 1) & mask; map->slots[j].terms; j = (j + 1) & mask) {
        uint32_t home = slot_hash(map->slots[j].terms, map->slots[j].count) & mask;
        // j may move to the hole unless its home lies cyclically in (hole, j]
        bool stays = hole <= j ? (hole < home && home <= j) : (hole < home || home <= j);
        if (!stays) {
            map->slots[hole] = map->slots[j];
            hole = j;
        }
    }
    map->slots[hole] = OrdMapSlot{nullptr, 0, nullptr};
    map->count--;
}
