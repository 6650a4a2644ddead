#!/usr/bin/env bash
# The mouse: the wheel zooms about the pointer, a press on a stroke brings it
# to the marker, a vertical drag zooms; then a long flight with Shift+Z into
# a point between ticks.
. "$(dirname "$0")/lib.sh"

W=864 H=648
# the line's y at column c, and a rectangle on the stroke of column c
line_y() { awk -v c="$1" -v W=$W -v H=$H 'BEGIN { printf "%d", ((H - 0.1 * H) / W) * c + 0.1 * H }'; }
# a successor's red (0xa00000, darkened or mixed toward white) on the marker column's stroke rows
reddish() { colours "$1" 3 24 431 $(( $(line_y 432) - 28 )) | awk '{ split($2, c, ","); if (c[1] > c[2] + 60 && c[2] == c[3]) found = 1 } END { exit !found }'; }
ends_of() { stroke_columns "$1" $W $H | sed -n '1p;$p' | tr '\n' ' '; }
quit_app() {
    app_key q
    app_wait_exit 10
    check "Q ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
}

app_start || exit 1
first=$(shot first)
if reddish "$first"; then fail "the marker column already shows a successor's red"; fi

# the wheel over the tick of omega zooms about it: the tick keeps its column
# while the line grows past the left edge, and as many pulses back give the
# first view again
omega=$("$ORDTOOL" line --width $W --minsize 300 | awk -F'\t' '$3 == "omega" { printf "%d", $1 }')
white_stroke() {  # white_stroke FILE: omega's white stroke on its column, give or take one
    colours "$1" 3 30 $((omega - 1)) $(( $(line_y "$omega") - 32 )) |
        awk '{ split($2, c, ","); if (c[1] > 200 && c[2] > 200 && c[3] > 200) found = 1 } END { exit !found }'
}
check "the tick of omega stands at column $omega" white_stroke "$first"
xdotool mousemove --window "$WID" "$omega" $(( $(line_y "$omega") - 10 ))
xdotool click --repeat 3 --delay 150 4
sleep 0.5
wheeled=$(shot wheel-in)
check "after three pulses up the tick of omega keeps its column" white_stroke "$wheeled"
check "and the line grows: 0 leaves at the left (ends $(ends_of "$wheeled"), first view 86 778)" \
    [ "$(ends_of "$wheeled" | cut -d' ' -f1)" -lt 40 ]
xdotool click --repeat 3 --delay 150 5
sleep 0.5
same_frame "three pulses down: the first view again" "$(shot wheel-out)" "$first"

# press on the stroke of 1 (column 148) and hold: it jumps to the marker
app_click 148 300 0.4
jumped=$(shot jumped)
check "the pressed stroke of 1 now stands at the marker column" reddish "$jumped"
quit_app

# a vertical drag upward from the centre row zooms in: the line grows past
# both edges (a press away from the centre row would zoom by its distance first)
app_start || exit 1
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
quit_app

# the long flight: aim at a point between ticks by pressing on it, then Shift+Z
app_start || exit 1
app_click 472 300 0.4
app_focus
xdotool keydown shift+z
sleep "${E2E_FLIGHT_SECONDS:-60}"
xdotool keyup shift+z
sleep 0.5
check "still running after the long flight" kill -0 "$APP_PID"
deep=$(shot deep)
deep_cols=$(stroke_columns "$deep" $W $H | wc -l)
check "strokes stand in the deep view ($deep_cols columns)" [ "$deep_cols" -gt 20 ]

# deep frames are slow: hold Escape long enough for a pump to see it down
app_focus
xdotool keydown Escape
app_wait_exit 10
xdotool keyup Escape
check "Escape ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
check "no error log" [ ! -e graphics_error.log ]
e2e_finish
