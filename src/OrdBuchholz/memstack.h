// MemStack: the block arena that can stand in for the heap for one frame.
//
// Blocks are taken from the heap on first need and kept, across rewinds, for
// the life of the arena: a rewind neither clears nor returns memory, so the
// next frame reuses the same blocks in the same order. Block k holds
// memstack_block_size(k) bytes, about thirty per cent more than block k - 1.
// An allocation that does not fit the rest of the current block moves on to
// the first later block in which it fits; the tail left behind stays unused
// until the next rewind, and skipped blocks are created all the same.
//
// The arena hands out term arrays only (see OrdBuchholz/ord.h). Text and the
// storage of every DynArray always come from the heap.
#pragma once

#include <stddef.h>
#include <stdint.h>

// Number of blocks an arena can hold.
constexpr int32_t MEMSTACK_SLOTS = 150;

struct MemStack {
    char *base[MEMSTACK_SLOTS];  // start of block k, null while it does not exist
    char *end[MEMSTACK_SLOTS];   // one past the end of block k
    char *top;                   // next free byte in the current block
    char *limit;                 // end of the current block
    int32_t current;             // index of the current block
};

// Bytes of block k: 100000 << (k / 3), times 10, 13 or 17 for k % 3 = 0, 1, 2,
// computed in 32 bits and widened as a signed number (so it wraps negative at
// block 34, over ten thousand million bytes in).
int64_t memstack_block_size(int32_t k);

// Clears every slot and takes block 0 (1,000,000 bytes) from the heap.
void memstack_init(MemStack *stack);
// Back to the start of block 0; all blocks are kept.
void memstack_rewind(MemStack *stack);
// Bytes handed out since the rewind, counting abandoned block tails as used.
uint32_t memstack_used(const MemStack *stack);
// Bytes held in all blocks.
uint32_t memstack_capacity(const MemStack *stack);
// Returns `bytes` of the arena, moving to later blocks as needed. A demand
// that no block can meet is a fatal report.
void *memstack_alloc(MemStack *stack, size_t bytes);
// Gives every block back to the heap and clears the slots. The viewer keeps
// its arena to the end; this is for tools and tests that make their own.
void memstack_free(MemStack *stack);
