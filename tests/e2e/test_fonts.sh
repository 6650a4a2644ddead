#!/usr/bin/env bash
# The fonts follow the window: the legend's lines stand one line height
# apart, 25 pixels up to a height of 750 and about a thirtieth of the height
# above it (a font already made within a few per cent of the size asked for
# serves as it is); in a window narrower than 640 pixels the fixed texts
# shrink with its width.
. "$(dirname "$0")/lib.sh"

# Line height from the legend: the orange line 2 and the yellow line 3 start
# alike (a swatch, then the flat capitals L and P), so their tops lie one
# line height apart. The legend stands in the right half, above the line.
line_height() {  # line_height FILE W H
    local x=$(($2 / 2)) orange yellow
    orange=$(first_row_of "$1" $x $((4 * $3 / 10)) $x 0 255,160,0)
    yellow=$(first_row_of "$1" $x $((4 * $3 / 10)) $x 0 255,255,0)
    echo $((yellow - orange))
}

app_start || exit 1
lh=$(line_height "$(shot first)" 864 648)
check "at 864x648 the line height is 25 ($lh)" [ "$lh" = 25 ]

app_resize 480 360
small=$(shot small)
lh=$(line_height "$small" 480 360)
check "at 480x360 the fixed texts shrink to three quarters ($lh)" between "$lh" 16 19
# the status line stands right on the add line, its top from the layout report
status=$(awk '$1 == "status" { printf "%d %d", $3, $5; exit }' "$LAYOUT")
panel=$(awk '$1 == "panel" { printf "%d", $3 }' "$LAYOUT")
fps_lines=$(text_runs "$small" 0 "${status% *}" 200 "$lh" 12 | wc -l)
check "the frame rate stands on the line above \"Add \" ($status over $panel)" \
    [ "$fps_lines" -ge 1 -a "${status#* }" = "$panel" ]

app_resize 1200 900
tall=$(shot tall)
lh=$(line_height "$tall" 1200 900)
check "at 1200x900 the line height is about 30 ($lh)" between "$lh" 29 31
# the notation row is then 30 pixels high at the bottom
check "the notation row fills the bottom 30 pixels" [ "$(brightest "$tall" 300 30 0 870)" -ge 250 ]
check "and nothing of it stands above them" [ "$(brightest "$tall" 300 5 150 864)" = 0 ]

app_key q
app_wait_exit 10
check "Q ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
e2e_finish
