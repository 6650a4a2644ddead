#!/usr/bin/env bash
# The window: its caption, place and size, the centre marker on a black
# screen; the marker and the fonts follow a resize; closing the window ends
# the program at once, and so does starting it without a display.
. "$(dirname "$0")/lib.sh"

# Line height from the legend: the orange line 2 and the yellow line 3 start
# alike (a swatch, then the flat capitals L and P), so their tops lie one
# line height apart. The legend stands in the right half, above the line.
line_height() {  # line_height FILE W H
    pixels "$1" $(($2 / 2)) $((4 * $3 / 10)) $(($2 / 2)) 0 | awk "$TINTED"' { c = $3 "," $4 "," $5 }
        tinted(c, "255,160,0") && !o++ { y = $2 } tinted(c, "255,255,0") && !h { h = $2 - y } END { print h }'
}

# (HOME where nothing can be written: no subsystem the program does not use
# starts and complains)
HOME=/proc app_start || exit 1
check "window name is the caption" \
    [ "$(xdotool getwindowname "$WID")" = "Ordinal numbers to the extended Buchholz ordinal" ]
check "window is 864x648 at (0,0), got $(window_geometry)" [ "$(window_geometry)" = "0 0 864 648" ]
img=$(shot first)
check "column 432 is the marker from top to bottom outside the line" is_marker_column "$img" 432 864 648
stray=$(lit_pixels "$img" 864 648 | awk '$1 >= 440 && $2 > 0.675 * $1 + 66.8' | wc -l)
check "below the line on the right it is black ($stray lit pixels)" [ "$stray" = 0 ]
lh=$(line_height "$img" 864 648)
check "at 864x648 the line height is 25 ($lh)" [ "$lh" = 25 ]

app_resize 1000 700
check "window is now 1000x700, got $(window_geometry)" [ "$(window_geometry)" = "0 0 1000 700" ]
img=$(shot resized)
check "column 500 is the marker now" is_marker_column "$img" 500 1000 700
old=$(marker_pixels "$img" 432 1000 700)
check "the old centre column 432 holds no marker ($old)" [ "${old%% *}" = 0 ]
app_resize 601 400
check "odd width 601: column 300 is the marker" is_marker_column "$(shot odd-width)" 300 601 400

# The fonts: 25 pixels a line up to a height of 750, about a thirtieth of
# the height above it; narrower than 640 pixels the fixed texts shrink.
app_resize 480 360
small=$(shot small)
lh=$(line_height "$small" 480 360)
check "at 480x360 the fixed texts shrink to three quarters ($lh)" between "$lh" 16 19
# the status line stands right on the add line, its top from the layout report
status=$(awk '$1 == "status" { printf "%d %d", $3, $5; exit }' "$LAYOUT")
panel=$(awk '$1 == "panel" { printf "%d", $3 }' "$LAYOUT")
fps_lines=$(text_runs "$small" 0 "${status% *}" 200 "$lh" 12 | wc -l)
check "the frame rate stands on the line above \"Add \" ($status over $panel)" \
    [ "$fps_lines" -ge 1 -a "${status#* }" = "$panel" ]
app_resize 1200 900
tall=$(shot tall)
lh=$(line_height "$tall" 1200 900)
check "at 1200x900 the line height is about 30 ($lh)" between "$lh" 29 31
check "the notation row fills the bottom 30 pixels" [ "$(brightest "$tall" 300 30 0 870)" -ge 250 ]
check "and nothing of it stands above them" [ "$(brightest "$tall" 300 5 150 864)" = 0 ]

app_ends close
check "nothing printed: $(cat "$E2E_DIR/stdout.txt")" [ ! -s "$E2E_DIR/stdout.txt" ]

# Without a usable display: one line that says so and status 1, at once.
# (The run directory stands in for the desktop's XDG_RUNTIME_DIR, so that
# no library probing for a display prints its own complaint.)
alone() {  # alone ENV-ARGS...
    XDG_RUNTIME_DIR=$E2E_DIR timeout 30 env -u WAYLAND_DISPLAY "$@" "$ORDLINE" >alone.txt 2>&1
    local status=$?
    echo "status $status: $(cat alone.txt)"
    [ $status = 1 ] && [ "$(grep -c . alone.txt)" = 1 ] && grep -q "^No display" alone.txt
}
check "DISPLAY unset" alone -u DISPLAY
check "DISPLAY pointing nowhere" alone DISPLAY=:1999
e2e_finish
