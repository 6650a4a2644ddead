#!/usr/bin/env bash
# ordtool render draws what the window shows: the first view, and the view
# after a press above the centre (a zoom by exp(60 * 3 / 324) about the
# marker, in one frame), pixel for pixel but for the frame-rate read-out.
. "$(dirname "$0")/lib.sh"

W=864 H=648
# differing pixels as "x y" lines, the window's region of the screenshot
# against the render
differing() {  # differing SHOT RENDER
    convert "$1" -crop "${W}x${H}+0+0" +repage "$2" -compose difference -composite \
        -threshold 0 txt:- | awk -F'[,: ]+' 'NR > 1 && $0 !~ /#000000/ { print $1, $2 }'
}
# the frame-rate read-out's box: its blue (0x8080ff, scaled by the text's
# coverage) in the lower left quarter, padded by two pixels
fps_box() {  # fps_box SHOT
    convert "$1" -crop "$((W / 4))x$((H / 2))+0+$((H / 2))" +repage -depth 8 txt:- |
        awk -F'[,:() ]+' -v top=$((H / 2)) 'NR > 1 && $3 == $4 && $5 > $3 + 20 {
            y = $2 + top; if (!n++ || $1 < x0) x0 = $1; if ($1 > x1) x1 = $1
            if (n == 1 || y < y0) y0 = y; if (y > y1) y1 = y }
            END { if (n) print x0 - 2, y0 - 2, x1 + 2, y1 + 2; else print "none" }'
}
# the same pixels outside the read-out, and the read-out is there
same_frame() {  # same_frame NAME SHOT RENDER
    local box outside
    box=$(fps_box "$2")
    outside=$(differing "$2" "$3" | awk -v b="$box" 'BEGIN { split(b, r, " ") }
        !($1 >= r[1] && $1 <= r[3] && $2 >= r[2] && $2 <= r[4]) { n++ } END { print n + 0 }')
    check "$1: the read-out stands in the window ($box)" [ "$box" != "none" ]
    check "$1: no pixel differs outside the read-out ($outside do)" [ "$outside" = "0" ]
}

app_start || exit 1
first=$(shot first)
"$ORDTOOL" render --width $W --height $H -o "$E2E_OUT/$E2E_NAME-first-render.png"
check "render of the first view exits 0" [ $? -eq 0 ]
same_frame "first view" "$first" "$E2E_OUT/$E2E_NAME-first-render.png"

# the frame after a press reads the pointer's distance from the centre: 60
# pixels up and none across zooms by exp(-(-60 * 3) / (648 / 2)), no pan
xdotool mousemove --window "$WID" 432 264
xdotool mousedown 1
sleep 0.4
xdotool mouseup 1
sleep 0.5
zoomed=$(shot zoomed)
factor=$(awk 'BEGIN { printf "%.17g", exp(60 * 3.0 / 324) }')
"$ORDTOOL" render --width $W --height $H --zoom-at 432 --factor "$factor" --steps 1 \
    -o "$E2E_OUT/$E2E_NAME-zoomed-render.png"
same_frame "zoomed view" "$zoomed" "$E2E_OUT/$E2E_NAME-zoomed-render.png"

app_key q
app_wait_exit 10
check "Q ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
e2e_finish
