#!/usr/bin/env bash
# A resize moves the marker to the new centre column and keeps it full height.
. "$(dirname "$0")/lib.sh"

app_start || exit 1
xdotool windowsize --sync "$WID" 1000 700 2>/dev/null || xdotool windowsize "$WID" 1000 700
sleep 0.7
geometry=$(window_geometry)
check "window is now 1000x700, got $geometry" [ "$geometry" = "0 0 1000 700" ]
img=$(shot resized)
check "column 500 is the marker now" is_marker_column "$img" 500 1000 700
old=$(column_outside_band "$img" 432 1000 700 | awk '$2 == "0,0,128"')
check "the old centre column 432 holds no marker, got: $old" [ -z "$old" ]

xdotool windowsize --sync "$WID" 601 400 2>/dev/null || xdotool windowsize "$WID" 601 400
sleep 0.7
img=$(shot odd-width)
check "odd width 601: column 300 is the marker" is_marker_column "$img" 300 601 400

app_key Escape
app_wait_exit 10
check "Escape ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
e2e_finish
