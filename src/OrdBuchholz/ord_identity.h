// OrdMap: a hash map keyed by the identity of a term array, not its value.
//
// Values share sub-ordinals freely, so the same array is met again and again
// while walking one value. Keyed by (terms, count), the map lets a walk visit
// each array once (cloning and freeing a value that shares parts) and lets the
// expansion cache find an ordinal it has seen by the address it was built at.
// Two equal values built apart are different keys; that is the point.
//
// Open addressing with linear probing and backward-shift deletion; the slot
// block is always on the heap and grows at three quarters full. Allocation
// failure is a fatal report.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"

struct OrdMapSlot {
    const OrdTerm *terms;  // key: the array (null marks an empty slot)
    uint32_t count;        // key: the number of terms viewed
    void *value;           // what the owner of the map keeps for the key
};

struct OrdMap {
    OrdMapSlot *slots;  // capacity slots, a power of two
    uint32_t capacity;
    uint32_t count;     // keys held
};

// An empty map with room for about `expected` keys without growing.
void OrdMap_init(OrdMap *map, uint32_t expected);
void OrdMap_free(OrdMap *map);
// The slot of key, or null when the key is absent. Zero (count 0) is never a key.
OrdMapSlot *OrdMap_find(const OrdMap *map, Ord key);
// The slot of key, made with a null value if it was absent; *added says which.
// Pointers to slots are stale after the next insertion or removal.
OrdMapSlot *OrdMap_insert(OrdMap *map, Ord key, bool *added);
// Removes key if it is there.
void OrdMap_remove(OrdMap *map, Ord key);
