#!/usr/bin/env bash
# The first view: the window's place, size and caption, and the centre marker
# on an otherwise black screen.
. "$(dirname "$0")/lib.sh"

app_start || exit 1
check "window name is the caption" [ "$(xdotool getwindowname "$WID")" = "Ordinal numbers to the extended Buchholz ordinal" ]
geometry=$(window_geometry)
check "window is 864x648 at (0,0) on a 1920x1080 screen, got $geometry" [ "$geometry" = "0 0 864 648" ]

img=$(shot first)
marker=$(colours "$img" 1 648 432 0)
check "column 432 is (0,0,128) from top to bottom, got: $marker" [ "$marker" = "648 0,0,128" ]
rest_left=$(colours "$img" 432 648 0 0)
rest_right=$(colours "$img" 431 648 433 0)
check "left of the marker is black, got: $rest_left" [ "$rest_left" = "279936 0,0,0" ]
check "right of the marker is black, got: $rest_right" [ "$rest_right" = "279288 0,0,0" ]

app_key q
app_wait_exit 2
check "Q ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
check "no error log after a clean run" [ ! -e graphics_error.log ]
e2e_finish
