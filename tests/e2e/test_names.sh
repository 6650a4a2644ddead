#!/usr/bin/env bash
# Named ordinals carry their names in small grey letters above their labels:
# the end of the line in the first view, and the Bachmann-Howard ordinal once
# the user aims at it and zooms in.
. "$(dirname "$0")/lib.sh"

W=864 H=648
app_start || exit 1
first=$(shot first)
# (its name, wider than the room right of the end, moves left to end inside the window)
end=$(grey_text_pixels "$first" 200 40 660 450 $W $H)
check "the end of the line carries a grey name above its label ($end pixels)" [ "$end" -ge 60 ]
# (the legend's grey lines stand above y 250)
near=$(grey_text_pixels "$first" 220 245 420 255 $W $H)
check "no name stands near the marker in the first view ($near pixels)" [ "$near" -le 5 ]

# the Bachmann-Howard ordinal stands at x 453.4 of the first view: a press on
# its column at the height of the centre brings it to the marker, then Z
app_click 453 324 0.3
app_hold z 1.5
aimed=$(shot bachmann-howard)
named=$(grey_text_pixels "$aimed" 220 245 420 255 $W $H)
check "near the marker a grey name stands above the labels ($named pixels)" [ "$named" -ge 100 ]
# the name is one line, as wide as "Bachmann-Howard ordinal" in the legend font
grey_line=$(convert "$aimed" -crop 220x245+420+255 -depth 8 txt:- |
    sed -n 's/^\([0-9]*\),\([0-9]*\): (\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2 \3 \4 \5/p' |
    awk '$3 == $4 && $4 == $5 && $3 >= 100 && $3 <= 136 { n[$2 + 255]++ } END { for (y in n) print n[y], y }' |
    sort -rn | head -n 1 | cut -d' ' -f2)
runs=$(text_runs "$aimed" 434 $((grey_line - 4)) 300 14 12 | head -n 1)
width=$(echo "$runs" | awk '{ print $2 - $1 }')
check "the grey line near the marker is about 200 pixels wide ($runs)" between "${width:-0}" 170 230

app_key q
app_wait_exit 10
check "Q ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
e2e_finish
