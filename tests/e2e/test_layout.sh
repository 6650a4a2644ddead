#!/usr/bin/env bash
# Every text in its own place, at every depth, size and row count, checked
# on the program's report of its boxes (its test mode) and on screenshots;
# named ordinals carry their names in small grey letters above their labels.
. "$(dirname "$0")/lib.sh"

W=864 H=648 LH=25
# the report and the screenshot of one moment: a still view, shown twice the same
layout_ok() {  # layout_ok NAME
    local faults
    shot "$1" >/dev/null
    faults=$(layout_faults) || { echo "$faults"; return 1; }
}

# Pixels of grey text (0x808080 on black) in a rectangle, above the line's
# band: grey of 64 to 136 with nothing brighter than 140 within two pixels,
# so that the soft edges of white text do not count.
grey_text_pixels() {  # grey_text_pixels FILE W H X Y
    pixels "$@" | awk -v X="$4" -v Y="$5" -v W=$W -v H=$H '
        { v[$1, $2] = m = $3 > $4 ? ($3 > $5 ? $3 : $5) : ($4 > $5 ? $4 : $5)
          top = ((H - 0.1 * H) / W) * ($1 + X) + 0.05 * H - 2
          if ($2 + Y < top && $3 == $4 && $4 == $5 && m >= 64 && m <= 136) { gx[++n] = $1; gy[n] = $2 } }
        END {
            for (i = 1; i <= n; i++) {
                ok = 1
                for (dx = -2; dx <= 2; dx++)
                    for (dy = -2; dy <= 2; dy++)
                        if (v[gx[i] + dx, gy[i] + dy] > 140) ok = 0
                count += ok
            }
            print count + 0
        }'
}

app_start || exit 1
check "the first view keeps every text in its place" layout_ok first
first="$E2E_OUT/$E2E_NAME-first.png"
check "the legend stands whole at 864x648" legend_whole "$first" $W
# (the end's name, wider than the room right of the end, moves left to end
# inside the window; the legend's grey lines stand above y 250)
end=$(grey_text_pixels "$first" 200 40 660 450)
check "the end of the line carries a grey name above its label ($end pixels)" [ "$end" -ge 60 ]
near=$(grey_text_pixels "$first" 220 245 420 255)
check "no name stands near the marker in the first view ($near pixels)" [ "$near" -le 5 ]

# the Bachmann-Howard ordinal stands at x 453.4 of the first view: a press on
# its column at the height of the centre brings it to the marker, then Z
app_click 453 324 0.3
app_hold z 1.5
aimed=$(shot bachmann-howard)
named=$(grey_text_pixels "$aimed" 220 245 420 255)
check "near the marker a grey name stands above the labels ($named pixels)" [ "$named" -ge 100 ]
# the name is one line, as wide as "Bachmann-Howard ordinal" in the legend font
grey_line=$(pixels "$aimed" 220 245 420 255 | awk '$3 == $4 && $4 == $5 && $3 > 99 && $3 < 137 { print $2 }' |
    sort | uniq -c | sort -rn | awk 'NR == 1 { print $2 + 255 }')
runs=$(text_runs "$aimed" 434 $((grey_line - 4)) 300 14 12 | head -n 1)
check "the grey line near the marker is about 200 pixels wide ($runs)" \
    between "$(echo "$runs" | awk '{ print $2 - $1 + 0 }')" 170 230

app_key Home
app_click 15 $((H - LH - LH / 2))
check "so does a view of two rows" layout_ok two-rows

# a flight near the top of the line goes some 10^78 deep: where a frame
# cannot do all the work the line shows the red "too deep" band
app_hold z 30
check "after 30 s of zooming" layout_ok zoom
app_key Home
app_click 770 324 0.3
app_hold shift+z 20
check "after a flight near the top" layout_ok flight
deep=$(stroke_columns "$E2E_OUT/$E2E_NAME-flight.png" $W $H | wc -l)
check "deep near the top the line still draws ($deep columns)" [ "$deep" -gt 20 ]

app_resize 400 300
check "in a 400x300 window" layout_ok small
check "the legend stands whole at 400x300" legend_whole "$E2E_OUT/$E2E_NAME-small.png" 400

big="$E2E_OUT/$E2E_NAME-big.png"
ORDLINE_LAYOUT_FILE="$E2E_DIR/big.txt" "$ORDTOOL" render --width 1920 --height 1440 -o "$big"
check "the legend stands whole at 1920x1440" legend_whole "$big" 1920 "$E2E_DIR/big.txt"
app_ends q
e2e_finish
