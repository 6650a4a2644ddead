#!/usr/bin/env bash
# The first view: the window's place, size and caption, and the centre marker
# on a black screen that holds nothing else but the line.
. "$(dirname "$0")/lib.sh"

app_start || exit 1
check "window name is the caption" [ "$(xdotool getwindowname "$WID")" = "Ordinal numbers to the extended Buchholz ordinal" ]
geometry=$(window_geometry)
check "window is 864x648 at (0,0) on a 1920x1080 screen, got $geometry" [ "$geometry" = "0 0 864 648" ]

img=$(shot first)
# the line's strokes cross the marker column; everywhere else it is the marker
marker=$(column_outside_band "$img" 432 864 648)
check "column 432 is (0,0,128) from top to bottom outside the line, got: $marker" [ "$(echo "$marker" | cut -d' ' -f2 | sort -u)" = "0,0,128" ]
check "the marker column covers the window's height" [ "$(echo "$marker" | awk '{ n += $1 } END { print n }')" -gt 600 ]
stray=$(stray_pixels "$img" 864 648 432)
check "the rest is black outside the line's band ($stray stray pixels)" [ "$stray" = "0" ]

app_key q
app_wait_exit 2
check "Q ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
check "no error log after a clean run" [ ! -e graphics_error.log ]
e2e_finish
