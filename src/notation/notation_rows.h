// The notation rows: one line of text on every label per row, each with its
// own six toggles. The user adds and removes rows and flips toggles by
// clicking the panel texts of the viewer (ord/panels.h).
#pragma once

#include <stdint.h>

#include "notation/notation.h"
#include "support/dynarray/dynarray.h"

// The rows, first row first; never fewer than one while the program runs.
extern DynArray notation_rows;
// Every new row has all toggles on.
extern const NotationRow new_row_template;

// Makes the array with its first row.
void notation_rows_start();
// Frees the array.
void notation_rows_free();
// Row i, no range check.
inline NotationRow *notation_row(uint32_t i)
{
    return DynArray_at<NotationRow>(&notation_rows, i);
}
