#!/usr/bin/env bash
# Flying along the line with the keys: zoom in and back out to the first
# view, pan with the arrows, the depth limit with S and A, and a long flight.
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

# X for longer: back to the length of the first view, and no further. (The
# factor is held to four decimals while the anchor offset is not, so the line
# may creep sideways by fractions of a pixel per frame; the length is what
# the minimum-zoom rule keeps.)
app_hold x 3
length() { stroke_columns "$1" $W $H | sed -n '1p;$p' | tr '\n' ' ' | awk '{ print $2 - $1 }'; }
first_length=$(length "$first")
back=$(shot back)
back_length=$(length "$back")
within() { awk -v a="$1" -v b="$2" -v d="$3" 'BEGIN { exit !((a - b)^2 <= d * d) }'; }
check "X comes back to the first view's length ($first_length before, $back_length after)" within "$first_length" "$back_length" 2
app_hold x 1
again_length=$(length "$(shot back-again)")
check "more X shortens nothing ($again_length)" within "$again_length" "$back_length" 1

# Right arrow moves the line left, Left arrow moves it right
left_end() { stroke_columns "$1" $W $H | head -n 1; }
start=$(left_end "$back")
app_hold Right 0.25
moved=$(left_end "$(shot right)")
check "Right moves the line left ($start -> $moved)" [ "$moved" -lt "$start" ]
app_hold Left 0.5
moved_back=$(left_end "$(shot left)")
check "Left moves the line right ($moved -> $moved_back)" [ "$moved_back" -gt "$moved" ]

# S from the start: one stroke for the whole line plus the end; A brings it
# back (in a fresh first view: the pans above leave the line where their
# timing put it)
app_key q
app_wait_exit 3
app_start || exit 1
app_key s
sleep 1
limited=$(stroke_columns "$(shot depth0)" $W $H | awk 'NR == 1 || $1 > prev + 1 { n++ } { prev = $1 } END { print n }')
check "with S only the whole line's stroke and the end's remain (groups: $limited)" [ "$limited" = "2" ]
app_key a
sleep 1
restored=$(stroke_columns "$(shot depth-back)" $W $H | wc -l)
check "A brings the line back ($restored columns)" [ "$restored" -gt 100 ]

app_key Escape
app_wait_exit 3
check "Escape ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
check "no error log" [ ! -e graphics_error.log ]
e2e_finish
