// Ordinals held compressed: a lazy value is a rope of the frames of its chain.
//
// The chain of a term array y: its last term t, then t's arg where that is not
// 0, else t's sub where that is not 0, else nothing (t is a number). A frame is
// one level of that chain with the field followed blanked to 0
// (OrdBuchholz/ord_rope.h); the last frame follows nothing. Near the top of the
// line chains run to astronomical lengths while saying the same few things
// again and again, so a rope of frames (concatenations shared by hash-consing)
// holds them in about the size of what is new in them.
//
// A lazy value is an Ord with count ORD_LAZY whose `terms` is the rope, or
// with count ORD_LAZY_PLACE whose `terms` is a place in a rope (a rope and a
// frame index): the rest of a chain below a forced level is such a place, so
// reading down a chain costs a descent of the rope per level, not a cut. It
// spells an ordinal like any other: Ord_force gives its top array, with the
// rest of its chain again lazy in the field followed. Comparison, expansion and
// templates work on the rope itself; everything else forces as it reads.
//
// Memory. Ropes, frames and forced arrays belong to the rope store: built on
// the heap while no arena is active and kept until ord_lazy_clear, built in the
// store's temporary part while it is, and dropped by ord_lazy_rewind. Free
// and clone pass lazy values by: they are never freed one by one.
#pragma once

#include "OrdBuchholz/ord.h"
#include "OrdBuchholz/ord_rope.h"

struct OrdMap;

// The rope of a lazy value; for a place in a rope, the rope from there on,
// made once.
RopeNode *Ord_lazyrope(Ord x);
// The value a rope spells; r not null, its last frame one that follows nothing.
// A rope of one frame gives that frame's term array, which belongs to the
// store (copy it to keep or free it); a longer one gives a lazy value, whose
// top array always has a last term that is not a number.
Ord Ord_fromrope(RopeNode *r);
// The rope of x's chain; null for 0. A lazy x gives its own rope; a term
// array costs one frame per level of its chain down to the first lazy value.
RopeNode *Ord_rope(Ord x);
// Ord_rope of a term array x whose terms but the last were hashed already:
// `first` is their rope_terms_hash.
RopeNode *Ord_rope_hashed(Ord x, const RopeTermsHash *first);

// The frames of r from `at` on, made in the store that holds r whatever the
// mode of the moment: what a lazy value's top array points at lives as long
// as the value.
RopeNode *rope_rest(RopeNode *r, RopeLen at);

// The rope of the term array `head` followed by the terms of y, concatenated
// with no absorption; y is a rope (null for 0), head a term array (0 for none)
// and head_hash its rope_terms_hash, made once by a caller that puts the same
// head before many ropes.
RopeNode *rope_prepend_terms(Ord head, const RopeTermsHash *head_hash, RopeNode *y);
// The frames of `above` (each one that follows a field) wrapped around y:
// their last frame's blank field takes y, or stays 0 when y is null, and the
// chain is then read on from what that frame holds.
RopeNode *rope_wrap(RopeNode *above, RopeNode *y);

// Bytes of forced arrays and places kept.
extern uint64_t ord_lazy_bytes;
// Drops every forced array and place, which only walks and texts being
// written use: the ropes stay. Called between frames once they pass their
// budget, and between texts where many are written.
void ord_lazy_trim();
// Drops what the temporary part of the rope store holds, and the arrays forced
// from it: the frame loop calls it when it rewinds the arena.
void ord_lazy_rewind();
// Drops everything: no lazy value may be used afterwards.
void ord_lazy_clear();

// Drops what the rope store holds that no value handed to ord_lazy_keep
// between the start and the finish uses, and everything that ord_lazy_clear
// drops but the ropes: a value kept stays valid, with everything it holds.
// Each value is gone through once per collection, its term arrays (by
// identity) and ropes once each. `plain` (or null) holds term arrays whose
// every reach is term arrays alone, which the collection need not go into.
void ord_lazy_collect_start(const OrdMap *plain);
void ord_lazy_keep(Ord x);
void ord_lazy_collect_finish();
