#!/usr/bin/env bash
# Flying along the line with the keys: zoom in and back out to the first
# view, pan with the arrows, the depth limit with S and A, and the way back
# home from a line lost off the window.
. "$(dirname "$0")/lib.sh"

W=864 H=648
app_start || exit 1
first=$(shot first)
first_cols=$(stroke_columns "$first" $W $H | wc -l)
# the stroke of 0 stands at x 86, from y 90 to 122
check "the stroke of 0 stands at the left end of the line" has_stroke "$first" 3 20 85 95

# Z for one second: 0 leaves to the left and more strokes appear
app_hold z 1
zoomed=$(shot zoomed)
zoomed_cols=$(stroke_columns "$zoomed" $W $H | wc -l)
check "after Z the line runs off the left edge" [ "$(stroke_columns "$zoomed" $W $H | head -n 1)" -le 1 ]
check "after Z more columns hold strokes ($first_cols before, $zoomed_cols after)" [ "$zoomed_cols" -gt "$first_cols" ]

# X for longer: back to the first view exactly, and there it stands still
first_strokes=$(stroke_columns "$first" $W $H | tr '\n' ' ')
first_view() {  # first_view [FILE]: the strokes of the first view (in a new shot)
    [ "$(stroke_columns "${1:-$(shot now)}" $W $H | tr '\n' ' ')" = "$first_strokes" ]
}
app_hold x 3
back=$(shot back)
check "X comes back to the first view" first_view "$back"
app_hold x 1
check "more X moves nothing" first_view "$(shot back-again)"

# Right arrow moves the line left, Left arrow moves it right
left_end() { stroke_columns "$1" $W $H | head -n 1; }
start=$(left_end "$back")
app_hold Right 0.25
moved=$(left_end "$(shot right)")
check "Right moves the line left ($start -> $moved)" [ "$moved" -lt "$start" ]
app_hold Left 0.5
moved_back=$(left_end "$(shot left)")
check "Left moves the line right ($moved -> $moved_back)" [ "$moved_back" -gt "$moved" ]

# Home, then S: one stroke for the whole line plus the end; A brings it back
groups_are() {  # groups_are N: the strokes stand in N runs of neighbouring columns
    [ "$(stroke_columns "$(shot depth)" $W $H | awk 'NR == 1 || $1 > prev + 1 { n++ } { prev = $1 } END { print n + 0 }')" = "$1" ]
}
app_key Home
app_key s
check "with S only the whole line's stroke and the end's remain" wait_until 10 groups_are 2
app_key a
check "A brings the line back" wait_until 10 first_view

# Lost and found: Left takes the line off the window, and zooming in then
# must not fling it away for good (Shift+Z 4 s is Z for 12 s); X held brings
# it back into view, and Home to the first view
app_hold Left 1.5
app_hold shift+z 4
check "the window is blank after Left and Z" [ "$(stroke_columns "$(shot lost)" $W $H | wc -l)" = 0 ]
# in view: strokes beside the marker, or one on it (0 comes back to the marker first)
in_view() {
    local img band
    img=$(shot found)
    band=$(line_band $((W / 2)) $W $H)
    [ "$(stroke_columns "$img" $W $H | wc -l)" -gt 0 ] ||
        colours "$img" 1 $((${band#* } - ${band% *})) $((W / 2)) ${band% *} | grep -qv ' 0,0,\(0\|128\)$'
}
app_focus
xdotool keydown x
check "X held brings the line back into view" wait_until 15 in_view
xdotool keyup x
app_key Home
check "Home returns to the first view" wait_until 10 first_view

# Deep near the top: a press at 770, then Shift+Z for 20 s (some 10^78).
# Where a frame cannot do all the work the line shows the red "too deep"
# band; either way the program keeps drawing and Escape still ends it.
app_click 770 $((H / 2))
app_hold shift+z 20
deep=$(shot deep)
band_red=$(stroke_columns "$deep" $W $H | wc -l)
red=$(colour_count "$deep" $W $H 0 0 255,48,48)
check "deep near the top the line still draws ($band_red columns, $red red pixels)" [ "$band_red" -gt 20 ]
app_key Escape
app_wait_exit 10
check "Escape ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
check "no error log" [ ! -e graphics_error.log ]
e2e_finish
