#!/usr/bin/env bash
# The first view: the window's place, size and caption, and the centre marker
# on a black screen under the line, its labels and the panels.
. "$(dirname "$0")/lib.sh"

app_start || exit 1
check "window name is the caption" [ "$(xdotool getwindowname "$WID")" = "Ordinal numbers to the extended Buchholz ordinal" ]
geometry=$(window_geometry)
check "window is 864x648 at (0,0) on a 1920x1080 screen, got $geometry" [ "$geometry" = "0 0 864 648" ]

img=$(shot first)
# the line's strokes cross the marker column, and a label may touch it; text
# adds to the marker's blue, so the column is blue from top to bottom
check "column 432 is the marker from top to bottom outside the line" is_marker_column "$img" 432 864 648
stray=$(below_line_pixels "$img" 864 648 440)
check "below the line on the right it is black ($stray lit pixels)" [ "$stray" = "0" ]

app_key q
app_wait_exit 10
check "Q ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
check "no error log after a clean run" [ ! -e graphics_error.log ]
e2e_finish
