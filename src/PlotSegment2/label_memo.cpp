// Label sources kept across frames for the members of kept expansions.
#include "PlotSegment2/labels.h"

#include <stdlib.h>
#include <string.h>

#include "support/bitmapfonts/markup.h"
#include "support/report/report.h"

// Slots of the memo, a power of two, in sets of LABEL_MEMO_WAYS: a text may
// stand in any slot of the set it hashes to, and a new one takes the slot
// used longest ago. A frame may reach thousands of labels where a long
// descent of ordinals crowds the line, and each is made anew every frame
// unless it is kept here. The texts are mostly heads of LABEL_HEAD_MAX or
// LABEL_SHORT_MAX bytes, at most some 10 MB in all; only a text that needs
// more is kept longer.
constexpr uint32_t LABEL_MEMO_SLOTS = 8192;
constexpr uint32_t LABEL_MEMO_WAYS = 4;

struct LabelMemoSlot {
    uint64_t life;    // expansion_cache_life of the entry; 0 for an empty slot
    int32_t member;
    uint32_t row;     // the row's toggles, one bit each
    uint32_t limit;   // the bytes the text was made to at most
    bool cut;         // the text was cut at that limit
    char *text;       // the source, Greek done, not elided
    size_t capacity;  // bytes of text
    uint64_t used;    // label_memo_clock when last found or kept
};

static uint64_t label_memo_clock = 0;

static LabelMemoSlot label_memo[LABEL_MEMO_SLOTS];

static uint32_t row_bits(const NotationRow *row)
{
    uint32_t bits = 0;
    for (int32_t i = 0; i < NOTATION_TOGGLES; i++)
        if (row->toggle[i])
            bits |= 1u << i;
    return bits;
}

// The first slot of the set of the key.
static LabelMemoSlot *memo_set(uint64_t life, int32_t member, uint32_t row, uint32_t limit)
{
    uint64_t h = life * 0x9E3779B97F4A7C15ull ^ ((uint64_t)(uint32_t)member << 8 | row) ^
                 (uint64_t)limit << 40;
    h = (h ^ (h >> 29)) * 0xBF58476D1CE4E5B9ull;
    return &label_memo[((h >> 32) & (LABEL_MEMO_SLOTS / LABEL_MEMO_WAYS - 1)) * LABEL_MEMO_WAYS];
}

static bool memo_holds(const LabelMemoSlot *s, uint64_t life, int32_t member, uint32_t row,
                       uint32_t limit)
{
    return s->life == life && s->member == member && s->row == row && s->limit == limit;
}

const char *label_memo_find(uint64_t life, int32_t member, const NotationRow *row, uint32_t limit,
                            bool *cut)
{
    if (life == 0)
        return nullptr;
    uint32_t bits = row_bits(row);
    LabelMemoSlot *set = memo_set(life, member, bits, limit);
    for (uint32_t i = 0; i < LABEL_MEMO_WAYS; i++)
        if (memo_holds(&set[i], life, member, bits, limit)) {
            set[i].used = ++label_memo_clock;
            *cut = set[i].cut;
            return set[i].text;
        }
    return nullptr;
}

void label_memo_keep(uint64_t life, int32_t member, const NotationRow *row, uint32_t limit,
                     const char *text, bool cut)
{
    if (life == 0)
        return;
    uint32_t bits = row_bits(row);
    LabelMemoSlot *set = memo_set(life, member, bits, limit);
    // the slot of the same key, else the one used longest ago: an empty one first
    LabelMemoSlot *s = &set[0];
    for (uint32_t i = 0; i < LABEL_MEMO_WAYS; i++) {
        if (memo_holds(&set[i], life, member, bits, limit)) {
            s = &set[i];
            break;
        }
        if (set[i].used < s->used)
            s = &set[i];
    }
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
    s->used = ++label_memo_clock;
}
