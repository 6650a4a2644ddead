// The ordinal under the centre marker, as a value: the read-out pass without
// its text, for taking the ordinal elsewhere (the clipboard).
#pragma once

#include "OrdBuchholz/ord.h"
#include "PlotSegment2/segment.h"

// Walks the column at cx as the centre read-out does (the record brings the
// view) and returns whether an ordinal was picked; *out is then a deep copy
// the caller frees with Ord_free, else 0. Runs on the heap.
bool marker_ordinal(float cx, WalkRecord r, Ord *out);
