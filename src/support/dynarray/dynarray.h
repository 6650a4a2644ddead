// DynArray: the one growable array of the program, for elements of a fixed size.
//
// The record is plain data that its owner keeps (usually as a global). The
// element block is always on the heap, also while the ordinal arena is active.
// Growth and shrink are driven by `growth`, a load figure in per cent (60 for
// every array of this program): a full array of n elements grows to
// trunc((n + 1) / 0.8), and an array that falls below 60 per cent full shrinks
// to 1.25 times its length, never below `min_capacity`.
//
// Any pointer into `data` may be stale after an append or a remove; owners who
// keep a typed view of the block set `mirror`, and it is rewritten exactly
// when the block moves.
//
// A block that cannot be had (the heap refuses, or the count would pass 32
// bits) is a fatal report, never a null pointer written through.
#pragma once

#include <stdint.h>

struct DynArray {
    void *data;          // element block, owned by the array
    void **mirror;       // if not null, always holds the current `data`
    uint32_t count;      // elements in use
    uint32_t capacity;   // elements allocated
    uint32_t min_capacity;  // floor of shrinking
    uint32_t element_size;  // bytes per element
    float growth;        // load figure in per cent
};

// Capacity and min_capacity of a new array.
extern uint32_t dyn_default_capacity;

// Fills a new array in place: `capacity` elements of `element_size` bytes
// (a capacity of 0 is made 1), no mirror, count 0, growth 60.
void DynArray_init(DynArray *array, uint32_t element_size, uint32_t capacity);

// Copies element_size bytes from `element` to the end; returns its index.
uint32_t DynArray_append(DynArray *array, const void *element);

// Removes the element at `index` by moving the last one into its place (order
// is not kept); an index past the end is ignored. Must not be called on an
// empty array.
void DynArray_remove(DynArray *array, uint32_t index);

// Frees the element block and writes null through `mirror` if that is set.
void DynArray_free(DynArray *array);

// Typed access to element i; no range check.
template <typename T>
inline T *DynArray_at(const DynArray *array, uint32_t i)
{
    return static_cast<T *>(array->data) + i;
}
