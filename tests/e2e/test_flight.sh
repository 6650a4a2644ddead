#!/usr/bin/env bash
# Flying along the line with the keys: zoom in and back out to the first
# view, pan with the arrows, the depth limit with S and A, the way back home
# from a line lost off the window, and the zoom rate under Ctrl and Shift.
. "$(dirname "$0")/lib.sh"

W=864 H=648
app_start || exit 1
first=$(shot first)
first_strokes=$(stroke_columns "$first" $W $H | tr '\n' ' ')
first_view() {  # first_view [FILE]: the strokes of the first view (in a new shot)
    [ "$(stroke_columns "${1:-$(shot now)}" $W $H | tr '\n' ' ')" = "$first_strokes" ]
}
# the stroke of 0 stands at x 86, from y 90 to 122
check "the stroke of 0 stands at the left end of the line" [ "$(brightest "$first" 3 20 85 95)" -gt 0 ]

app_hold z 1
zoomed=$(stroke_columns "$(shot zoomed)" $W $H)
check "after Z the line runs off the left edge" [ "$(echo "$zoomed" | head -n 1)" -le 1 ]
n=$(echo "$zoomed" | wc -l) n0=$(echo $first_strokes | wc -w)
check "after Z more columns hold strokes ($n0 before, $n after)" [ "$n" -gt "$n0" ]

app_hold x 3
back=$(shot back)
check "X comes back to the first view" first_view "$back"
app_hold x 1
check "more X moves nothing" first_view

left_end() { stroke_columns "$1" $W $H | head -n 1; }
start=$(left_end "$back")
app_hold Right 0.25
moved=$(left_end "$(shot right)")
check "Right moves the line left ($start -> $moved)" [ "$moved" -lt "$start" ]
app_hold Left 0.5
moved_back=$(left_end "$(shot left)")
check "Left moves the line right ($moved -> $moved_back)" [ "$moved_back" -gt "$moved" ]

groups_are() {  # groups_are N: the strokes stand in N runs of neighbouring columns
    [ "$(stroke_columns "$(shot depth)" $W $H |
        awk 'NR == 1 || $1 > prev + 1 { n++ } { prev = $1 } END { print n + 0 }')" = "$1" ]
}
app_key Home
app_key s
check "with S only the whole line's stroke and the end's remain" wait_until 20 groups_are 2
app_key a
check "A brings the line back" wait_until 20 first_view

# Lost and found: zooming in on a line off the window must not fling it away
# for good (Shift+Z 4 s is Z for 12 s)
app_hold Left 1.5
app_hold shift+z 4
check "the window is blank after Left and Z" [ "$(stroke_columns "$(shot lost)" $W $H | wc -l)" = 0 ]
# in view: strokes beside the marker, or one on it (0 comes back to the marker first)
in_view() { band_pixels "$(shot found)" $W $H | awk '$1 != 432 || $3 $4 $5 != "00128"' | grep -q .; }
app_focus
xdotool keydown x
check "X held brings the line back into view" wait_until 30 in_view
xdotool keyup x

# The zoom rate: the leftmost green stroke in the line's band (epsilon_0, just
# right of the marker) moves out to 432 + 5.3 * factor (with Shift it leaves
# the window); the legend has a green line too
leftmost_green() {
    band_pixels "$1" $W $H | awk '$1 > 432 && $4 > $3 + 60 && $3 == $5 && (!m || $1 < m) { m = $1 }
        END { print m ? m : 864 }'
}
rate=()
for keys in ctrl+z z shift+z; do
    app_key Home
    check "Home returns to the first view" wait_until 20 first_view
    x=$(leftmost_green "$(shot "start-$keys")")
    check "$keys: epsilon_0 starts just right of the marker ($x)" between "$x" 433 442
    app_hold "$keys" 0.5
    rate+=("$(leftmost_green "$(shot "after-$keys")")")
done
check "Ctrl zooms slower than plain Z (${rate[0]} < ${rate[1]})" [ "${rate[0]}" -lt "${rate[1]}" ]
check "Shift zooms faster than plain Z (${rate[1]} < ${rate[2]})" [ "${rate[1]}" -lt "${rate[2]}" ]
check "Ctrl still zooms (${rate[0]} > 437)" [ "${rate[0]}" -gt 437 ]
app_ends Escape
e2e_finish
