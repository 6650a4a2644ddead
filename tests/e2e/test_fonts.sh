#!/usr/bin/env bash
# The fonts follow the window's height: the legend's lines stand one line
# height apart, 25 pixels up to a height of 750 however small the window, and
# about a thirtieth of the height above it (a font already made within a few
# per cent of the size asked for serves as it is).
. "$(dirname "$0")/lib.sh"

# Line height from the legend: the orange line 2 and the yellow line 3 start
# with flat capitals (L, P), so their tops lie one line height apart.
line_height() {  # line_height FILE W H
    local x=$(($2 * 3 / 4)) orange yellow
    orange=$(first_row_of "$1" 200 $((4 * $3 / 10)) $x 0 255,160,0)
    yellow=$(first_row_of "$1" 200 $((4 * $3 / 10)) $x 0 255,255,0)
    echo $((yellow - orange))
}

resize() {  # resize W H
    xdotool windowsize --sync "$WID" "$1" "$2" 2>/dev/null || xdotool windowsize "$WID" "$1" "$2"
    sleep 0.7
}

app_start || exit 1
lh=$(line_height "$(shot first)" 864 648)
check "at 864x648 the line height is 25 ($lh)" [ "$lh" = 25 ]

resize 480 360
small=$(shot small)
lh=$(line_height "$small" 480 360)
check "at 480x360 the line height stays 25 ($lh)" [ "$lh" = 25 ]
fps_lines=$(text_runs "$small" 0 $((360 - 4 * 25)) 200 25 12 | wc -l)
check "the frame rate still stands four lines up" [ "$fps_lines" -ge 1 ]

resize 1200 900
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
