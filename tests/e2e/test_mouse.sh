#!/usr/bin/env bash
# The mouse: the wheel zooms about the pointer, a press above the centre
# zooms by its distance (as ordtool render draws it), a press on a stroke
# brings it to the marker, a vertical drag zooms; then a long flight with
# Shift+Z into a point between ticks.
. "$(dirname "$0")/lib.sh"

W=864 H=648
# the line's y at column c
line_y() { awk -v c="$1" -v W=$W -v H=$H 'BEGIN { printf "%d", ((H - 0.1 * H) / W) * c + 0.1 * H }'; }
# a successor's red (0xa00000, darkened or mixed toward white) on the marker column's stroke rows
reddish() {
    colours "$1" 3 24 431 $(($(line_y 432) - 28)) |
        awk '{ split($2, c, ","); if (c[1] > c[2] + 60 && c[2] == c[3]) found = 1 } END { exit !found }'
}
ends_of() { stroke_columns "$1" $W $H | sed -n '1p;$p' | tr '\n' ' '; }
home() {  # home NAME: back to the first view
    app_key Home
    wait_frame 20 "$1" "$first" || fail "Home brings back the first view"
}
render() {  # render NAME VIEW...: ordtool's render of a view
    "$ORDTOOL" render --width $W --height $H "${@:2}" -o "$E2E_OUT/$E2E_NAME-$1-render.png" &&
        echo "$E2E_OUT/$E2E_NAME-$1-render.png"
}

app_start || exit 1
first=$(shot first)
same_frame "ordtool render draws the first view" "$first" "$(render first)"
if reddish "$first"; then fail "the marker column already shows a successor's red"; fi

# the wheel over the tick of omega zooms about it: the tick keeps its column
# while the line grows past the left edge, and as many pulses back give the
# first view again
omega=$("$ORDTOOL" line --width $W --minsize 300 | awk -F'\t' '$3 == "omega" { printf "%d", $1 }')
white_stroke() {  # white_stroke FILE: omega's white stroke on its column, give or take one
    colours "$1" 3 30 $((omega - 1)) $(($(line_y "$omega") - 32)) |
        awk '{ split($2, c, ","); if (c[1] > 200 && c[2] > 200 && c[3] > 200) found = 1 } END { exit !found }'
}
check "the tick of omega stands at column $omega" white_stroke "$first"
xdotool mousemove --window "$WID" "$omega" $(($(line_y "$omega") - 10))
xdotool click --repeat 3 --delay 150 4
sleep 0.5
wheeled=$(shot wheel-in)
check "after three pulses up the tick of omega keeps its column" white_stroke "$wheeled"
check "and the line grows: 0 leaves at the left (ends $(ends_of "$wheeled"), first view 86 778)" \
    [ "$(ends_of "$wheeled" | cut -d' ' -f1)" -lt 40 ]
xdotool click --repeat 3 --delay 150 5
sleep 0.5
same_frame "three pulses down: the first view again" "$(shot wheel-out)" "$first"

# the frame after a press reads the pointer's distance from the centre: 60
# pixels up and none across zooms by exp(-(-60 * 3) / (648 / 2)), no pan
app_click 432 264 0.4
factor=$(awk 'BEGIN { printf "%.17g", exp(60 * 3.0 / 324) }')
same_frame "a press above centre" "$(shot press)" "$(render press --zoom-at 432 --factor "$factor" --steps 1)"

home home-1
app_click 148 300 0.4
check "the pressed stroke of 1 now stands at the marker column" reddish "$(shot jumped)"

# a vertical drag upward from the centre row zooms in: the line grows past
# both edges (a press away from the centre row would zoom by its distance first)
home home-2
xdotool mousemove --window "$WID" 432 324
xdotool mousedown 1
sleep 0.2
for _ in 1 2 3 4 5 6; do
    xdotool mousemove_relative -- 0 -20
    sleep 0.1
done
xdotool mouseup 1
sleep 0.3
dragged_ends=$(ends_of "$(shot dragged)")
check "after an upward drag the line reaches past both edges (ends $dragged_ends, first view 86 778)" \
    awk -v e="$dragged_ends" 'BEGIN { split(e, x, " "); exit !(x[1] < 40 && x[2] > 823) }'

# the long flight, aimed at a point between ticks. The ends of the view round
# by a ten-thousandth of a pixel each frame, and the frames' lengths vary, so
# the point flown into varies by about that much: about one flight in ten
# ends inside the gap between some a+n and a+n+1, where nothing stands (the
# gap may open as early as 10^13). Another flight lands elsewhere.
deep_cols=0
for flight in 1 2 3; do
    home home-3-$flight
    app_click 472 300 0.4
    app_hold shift+z "${E2E_FLIGHT_SECONDS:-60}"
    sleep 0.2
    kill -0 "$APP_PID" || break
    deep_cols=$(stroke_columns "$(shot deep-$flight)" $W $H | wc -l)
    [ "$deep_cols" -gt 20 ] && break
    echo "flight $flight ended between two ticks ($deep_cols columns)"
done
check "still running after the long flight" kill -0 "$APP_PID"
check "strokes stand in the deep view ($deep_cols columns)" [ "$deep_cols" -gt 20 ]
app_ends Escape
e2e_finish
