// Label sources kept across frames for the members of kept expansions.
#include "PlotSegment2/labels.h"

#include <stdlib.h>
#include <string.h>

#include "support/bitmapfonts/markup.h"
#include "support/report/report.h"

// Slots of the memo, a power of two: a frame shows some tens of labels of a
// few rows each, and the read-out one more. A new text takes the slot of the
// one it hashes to; at most this many texts of MARKUP_CAPACITY(LABEL_TEXT_MAX)
// bytes are held.
constexpr uint32_t LABEL_MEMO_SLOTS = 512;

struct LabelMemoSlot {
    uint64_t life;    // expansion_cache_life of the entry; 0 for an empty slot
    int32_t member;
    uint32_t row;     // the row's toggles, one bit each
    uint32_t limit;   // the bytes the text was made to at most
    bool cut;         // the text was cut at that limit
    char *text;       // the source, Greek done, not elided
    size_t capacity;  // bytes of text
};

static LabelMemoSlot label_memo[LABEL_MEMO_SLOTS];

static uint32_t row_bits(const NotationRow *row)
{
    uint32_t bits = 0;
    for (int32_t i = 0; i < NOTATION_TOGGLES; i++)
        if (row->toggle[i])
            bits |= 1u << i;
    return bits;
}

static LabelMemoSlot *memo_slot(uint64_t life, int32_t member, uint32_t row, uint32_t limit)
{
    uint64_t h = life * 0x9E3779B97F4A7C15ull ^ ((uint64_t)(uint32_t)member << 8 | row) ^
                 (uint64_t)limit << 40;
    h = (h ^ (h >> 29)) * 0xBF58476D1CE4E5B9ull;
    return &label_memo[(h >> 32) & (LABEL_MEMO_SLOTS - 1)];
}

const char *label_memo_find(uint64_t life, int32_t member, const NotationRow *row, uint32_t limit,
                            bool *cut)
{
    if (life == 0)
        return nullptr;
    uint32_t bits = row_bits(row);
    const LabelMemoSlot *s = memo_slot(life, member, bits, limit);
    if (s->life != life || s->member != member || s->row != bits || s->limit != limit)
        return nullptr;
    *cut = s->cut;
    return s->text;
}

void label_memo_keep(uint64_t life, int32_t member, const NotationRow *row, uint32_t limit,
                     const char *text, bool cut)
{
    if (life == 0)
        return;
    uint32_t bits = row_bits(row);
    LabelMemoSlot *s = memo_slot(life, member, bits, limit);
    size_t size = text_size(text);
    if (size > s->capacity) {
        char *grown = (char *)realloc(s->text, size);
        if (!grown)
            REPORT(REPORT_FATAL, "Out of memory for a kept label", 0);
        s->text = grown;
        s->capacity = size;
    }
    memcpy(s->text, text, size);
    s->life = life;
    s->member = member;
    s->row = bits;
    s->limit = limit;
    s->cut = cut;
}
