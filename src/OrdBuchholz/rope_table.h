// RopeTable: an open-addressing table of pointers with linear probing, for
// the rope store's interning and for the places of lazy values. It grows at
// three quarters full and never removes (its owner empties it whole). A slot
// holds the entry's pointer in its low 48 bits and 16 bits of the entry's
// hash above them, so that a probe passes other entries without reading
// them: the tables run to millions of slots, and every read of an entry is a
// miss. Hashes are the owner's; the slot is chosen by the low bits.
#pragma once

#include <stdint.h>

struct RopeTable {
    uint64_t *slots;    // capacity slots, a power of two; 0 is empty
    uint32_t capacity;  // 0 before first use
    uint32_t count;
};

// The entry for which same(entry, key) holds, or null.
void *RopeTable_find(const RopeTable *t, uint64_t hash, bool (*same)(const void *, const void *), const void *key);
// Adds an entry known to be absent, growing first when three quarters full;
// hash_of gives the hash of an entry already in. The slots' bytes go to *bytes.
void RopeTable_add(RopeTable *t, void *entry, uint64_t hash, uint64_t (*hash_of)(const void *), uint64_t *bytes);
// Empties t and gives it room for `expected` entries at half load, so that
// adding them back never grows it.
void RopeTable_reset(RopeTable *t, uint32_t expected, uint64_t *bytes);
// Frees the slots; t is as before first use.
void RopeTable_free(RopeTable *t);
