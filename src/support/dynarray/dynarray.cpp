// DynArray: growth and shrink by a load figure, with a mirrored data pointer.
#include "support/dynarray/dynarray.h"

#include <stdlib.h>
#include <string.h>

#include "support/report/report.h"

uint32_t dyn_default_capacity = 1;

// Moves the first `keep` elements into a fresh block of `capacity` elements.
static void dynarray_realloc(DynArray *array, uint32_t capacity, uint32_t keep)
{
    void *block = malloc((size_t)capacity * array->element_size);
    if (!block)
        REPORT(REPORT_FATAL, "Out of memory for a growable array", 0);
    memcpy(block, array->data, (size_t)keep * array->element_size);
    free(array->data);
    array->data = block;
    array->capacity = capacity;
    if (array->mirror)
        *array->mirror = block;
}

// The divisor that turns a length into the capacity of that load: 0.8 for 60.
static double dynarray_load_divisor(const DynArray *array)
{
    return array->growth * 0.005 + 0.5;
}

void DynArray_init(DynArray *array, uint32_t element_size, uint32_t capacity)
{
    if (capacity == 0)
        capacity = 1;
    array->data = malloc((size_t)capacity * element_size);
    if (!array->data)
        REPORT(REPORT_FATAL, "Out of memory for a growable array", 0);
    array->mirror = nullptr;
    array->count = 0;
    array->capacity = capacity;
    array->min_capacity = capacity;
    array->element_size = element_size;
    array->growth = 60.0f;
}

uint32_t DynArray_append(DynArray *array, const void *element)
{
    uint32_t n = array->count;
    if (n >= array->capacity) {
        double capacity = (n + 1.0) / dynarray_load_divisor(array);
        // past 32 bits of count the array cannot grow: as fatal as a failed malloc
        if (capacity >= 4294967295.0)
            REPORT(REPORT_FATAL, "Out of memory for a growable array", 0);
        dynarray_realloc(array, (uint32_t)capacity, n);
    }
    memcpy((char *)array->data + (size_t)n * array->element_size, element, array->element_size);
    array->count = n + 1;
    return n;
}

void DynArray_remove(DynArray *array, uint32_t index)
{
    uint32_t last = array->count - 1;
    if (index > last)
        return;
    size_t size = array->element_size;
    if (index < last)
        memcpy((char *)array->data + index * size, (char *)array->data + last * size, size);
    array->count = last;

    // shrink once the array is less full than the load figure
    if (0.01 * array->growth > (float)last / (float)array->capacity &&
        array->min_capacity < array->capacity) {
        uint32_t capacity = (uint32_t)(last / dynarray_load_divisor(array));
        if (capacity < array->min_capacity)
            capacity = array->min_capacity;
        dynarray_realloc(array, capacity, last);
    }
}

void DynArray_free(DynArray *array)
{
    free(array->data);
    array->data = nullptr;
    if (array->mirror)
        *array->mirror = nullptr;
}
