// Copying the ordinal under the marker.
#include "ord/marker_copy.h"

#include <SDL2/SDL.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "PlotSegment2/marker_ordinal.h"
#include "notation/notation.h"
#include "notation/notation_rows.h"
#include "ord/notice.h"
#include "support/gl/input_state.h"
#include "support/gl/screen.h"

// Psi form: numbers and coefficients as such, everything else as psi terms.
static const NotationRow psi_row = {{1, 1, 0, 0, 0, 0}};

// The text of x in `row`, cut with "..." past MARKER_COPY_MAX bytes; the caller frees it.
static char *copy_text(Ord x, const NotationRow *row)
{
    bool cut = false;
    char *text = Ord_tostring_limit(x, row, MARKER_COPY_MAX, &cut);
    if (cut) {
        size_t n = strlen(text);
        text = (char *)realloc(text, n + 4);
        memcpy(text + n, "...", 4);
    }
    return text;
}

void marker_copy(WalkRecord record)
{
    if (!key_edge(KEY_C))
        return;
    Ord x;
    if (!marker_ordinal((float)(screen_w / 2), record, &x)) {
        notice_show("Nothing under the marker to copy.");
        return;
    }
    char *psi = copy_text(x, &psi_row);
    char *shown = copy_text(x, notation_row(0));
    size_t n = strlen(psi) + strlen(shown) + 2;
    char *both = (char *)malloc(n);
    snprintf(both, n, "%s\n%s", psi, shown);
    SDL_SetClipboardText(both);
    printf("%s\n", both);
    fflush(stdout);
    char note[200];
    snprintf(note, sizeof note, "Copied: %.150s%s", shown, strlen(shown) > 150 ? "..." : "");
    notice_show(note);
    free(both);
    free(shown);
    free(psi);
    Ord_free(x);
}
