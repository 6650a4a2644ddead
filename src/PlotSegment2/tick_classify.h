// Tick classification: the ten kinds of ordinal of the legend, by colour.
#pragma once

#include <stdint.h>

#include "OrdBuchholz/ord.h"

enum TickKind : uint32_t {
    KIND_NONE = 0,          // no tick in the column
    KIND_ZERO = 1,
    KIND_SUCCESSOR = 2,
    KIND_LIMIT = 3,
    KIND_OMEGA_POWER = 4,
    KIND_OMEGA_TOWER = 5,
    KIND_EPSILON = 6,
    KIND_VEBLEN = 7,
    KIND_FEFERMAN_SCHUTTE = 8,
    KIND_BACHMANN_HOWARD = 9,
    KIND_BUCHHOLZ = 10,
};

// Colour of each kind as 0xRRGGBB; entry 0 is black and never drawn.
extern const uint32_t tick_colours[11];

// The kind of an ordinal on the line (1 to 10), from its normal form alone.
// The first call builds three constant ordinals with the allocator then in
// force and keeps them for the run.
uint32_t tick_classify(Ord x);
