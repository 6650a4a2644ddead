#!/usr/bin/env bash
# The panels of the first view, read as a person reads them: the legend, the
# notation row, the frame rate, labels and the centre read-out; then the
# toggles and the rows answer to clicks.
. "$(dirname "$0")/lib.sh"

W=864 H=648 LH=25
app_start || exit 1
first=$(shot first)

# the legend: ten lines from the top, moved left so the longest ends inside
# the window, each a swatch in its kind's colour and the name beside it
legend_x=$(awk '$1 == "legend" { printf "%d", $2 }' "$LAYOUT")
legend_line() {  # legend_line I COLOUR
    local y=$(($1 * LH)) start n
    start=$(text_runs "$first" 440 $y 424 $LH 12 | head -n 1 | cut -d' ' -f1)
    n=$(colour_count "$first" 20 $LH "$legend_x" $y "$2")
    echo "legend line $1 starts at x $start, a swatch of $n pixels in $2"
    between "${start:-0}" "$legend_x" $((legend_x + 1)) && [ "$n" -ge 100 ] &&
        [ "$(brightest "$first" 300 $LH $((legend_x + 20)) $y)" -ge 128 ]
}
i=0
for colour in $LEGEND; do
    check "legend line $i: swatch in $colour, then its name" legend_line $i $colour
    i=$((i + 1))
done

row_runs() { text_runs "$1" 0 $((H - ($2 + 1) * LH)) "${3:-420}" $LH 8; }  # row_runs FILE ROW [WIDTH]
white_toggles() { row_runs "$1" "$2" | sed -n "$3" | awk '$3 >= 250' | wc -l; }
runs=$(row_runs "$first" 0)
check "the bottom line holds \"Notation: \" and six toggles: $(echo $runs)" [ "$(echo "$runs" | wc -l)" = 7 ]
check "\"Notation: \" is grey" [ "$(echo "$runs" | sed -n 1p | cut -d' ' -f3)" -le 128 ]
check "all six toggles are white" [ "$(white_toggles "$first" 0 2,7p)" = 6 ]
check "above the row stands \"Add \" alone: $(row_runs "$first" 1)" [ "$(row_runs "$first" 1 | wc -l)" = 1 ]

fps=$(tinted_count "$first" 200 $LH 0 $((H - 3 * LH)) 128,128,255)
check "the frame rate shows in 0x8080ff on the line above \"Add \" ($fps pixels)" [ "$fps" -ge 60 ]
# "0" stands over its stroke at x 86 (tick top at y 91), "1" over x 148
check "the label 0 stands above its tick" [ "$(brightest "$first" 24 28 76 50)" = 255 ]
check "the label 1 stands above its tick" [ "$(brightest "$first" 24 28 138 92)" = 255 ]
check "no label below the tick of 0" [ "$(brightest "$first" 24 28 76 126)" = 0 ]
readout=$(colour_count "$first" 300 70 100 500 255,255,255)
check "the centre read-out stands at an eighth of the width, 0.78 down ($readout white pixels)" \
    [ "$readout" -ge 40 ]

# Aim at 1 first (a press on its stroke brings it to the marker): the
# read-out is then "1", short in every notation. (Under the marker of the
# first view stands a tower of omega, whose psi form wraps over the panel.)
app_click 148 324 0.3
aimed=$(shot aimed)
readout=$(colour_count "$aimed" 300 70 100 500 255,255,255)
check "the read-out shows the short text of 1 ($readout white pixels)" between "$readout" 20 400

# a click on "omega^alpha" greys it; the labels that are omega powers become psi terms
omega_x=$(run_middle "$runs" 4)
app_click $omega_x $((H - LH / 2))
off=$(shot omega-off)
runs_off=$(row_runs "$off" 0)
check "the clicked toggle is grey now: $(echo $runs_off)" \
    [ "$(echo "$runs_off" | sed -n 4p | cut -d' ' -f3)" -le 128 ]
check "the other toggles stay white" [ "$(white_toggles "$off" 0 '2,3p;5,7p')" = 5 ]
check "the labels of omega and omega^omega changed" not same_region "$aimed" "$off" 120 70 540 360
check "the labels 0, 1 and 2 did not" same_region "$aimed" "$off" 110 110 320 225
app_click $omega_x $((H - LH / 2))
check "a second click turns it on again" same_region "$aimed" "$(shot omega-on)" 420 $LH 0 $((H - LH))

app_click 15 $((H - LH - LH / 2))
two=$(shot two-rows)
check "a second notation row stands above the first, all white" [ "$(white_toggles "$two" 1 2,7p)" = 6 ]
add_runs=$(row_runs "$two" 2)
check "the add line moved up and reads \"Add Remove \"" [ "$(echo "$add_runs" | wc -l)" = 2 ]
# the label 0 now stands at (370, 252), its second line 37 pixels higher
check "the label 0 has a second line 37 pixels higher" [ "$(brightest "$two" 24 30 360 208)" = 255 ]
check "and the label 2 too" [ "$(brightest "$two" 24 30 464 276)" = 255 ]

app_click $(run_middle "$add_runs" 2) $((H - 2 * LH - LH / 2))
one=$(shot one-row)
check "after \"Remove \" one row is left" [ "$(row_runs "$one" 1 | wc -l)" = 1 ]
check "and the labels have one line" [ "$(brightest "$one" 24 30 360 208)" = 0 ]

# "Add " 15 times, each click where it stands: the rows stop at what keeps
# the panel in the lower half of the window (10 at this height), so the add
# line stays on screen, and clicks on panel texts never move the line
right_strokes() { stroke_columns "$1" $W $H | awk '$1 > 440' | tr '\n' ' '; }
rows=1
for _ in $(seq 15); do
    app_click 15 $((H - (rows + 1) * LH + LH / 2))
    [ $rows -lt 10 ] && rows=$((rows + 1))
done
full=$(shot rows-full)
top_runs=$(row_runs "$full" 10 200)
check "the add line above ten rows reads \"Add Remove \"" [ "$(echo "$top_runs" | wc -l)" = 2 ]
check "the line did not move" [ "$(right_strokes "$one")" = "$(right_strokes "$full")" ]
app_click $(run_middle "$top_runs" 2) $((H - 11 * LH + LH / 2))
check "\"Remove \" on the add line takes a row away" [ "$(row_runs "$(shot rows-less)" 9 200 | wc -l)" = 2 ]
app_ends q
e2e_finish
