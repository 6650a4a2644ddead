// The notation rows.
#include "notation/notation_rows.h"

DynArray notation_rows = {};
const NotationRow new_row_template = {{1, 1, 1, 1, 1, 1}};

void notation_rows_start()
{
    DynArray_init(&notation_rows, sizeof(NotationRow), dyn_default_capacity);
    DynArray_append(&notation_rows, &new_row_template);
}

void notation_rows_free()
{
    DynArray_free(&notation_rows);
}
