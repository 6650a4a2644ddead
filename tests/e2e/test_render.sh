#!/usr/bin/env bash
# ordtool render draws what the window shows: the first view, and the view
# after a press above the centre (a zoom by exp(60 * 3 / 324) about the
# marker, in one frame), pixel for pixel but for the frame-rate read-out.
. "$(dirname "$0")/lib.sh"

W=864 H=648
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
