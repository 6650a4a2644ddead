#!/usr/bin/env bash
# Shift and Ctrl change the zoom rate. The leftmost green stroke (epsilon_0,
# a few pixels right of the marker in the first view) moves out to
# 432 + 5.3 * factor, so the same hold with Ctrl, plain and Shift must leave
# it ever further right (with Shift it leaves the window).
. "$(dirname "$0")/lib.sh"

W=864 H=648
# (in the line's band: the legend has a green line too)
leftmost_green() {
    lit_pixels "$1" $W $H |
        awk -v W=$W -v H=$H '$1 > W / 2 && $4 > $3 + 60 && $3 == $5 {
                y = ((H - 0.1 * H) / W) * $1 + 0.1 * H
                if ($2 >= y - 0.05 * H - 2 && $2 <= y + 2 && (min == "" || $1 < min)) min = $1
            } END { print (min == "" ? W : min) }'
}

position_after() {  # position_after KEYS
    app_start || exit 1
    local x
    x=$(leftmost_green "$(shot "start-$1")")
    check "$1: epsilon_0 starts just right of the marker ($x)" between "$x" 433 442
    app_hold "$1" 0.5
    POSITION=$(leftmost_green "$(shot "after-$1")")
    app_key q
    app_wait_exit 10
}

position_after ctrl+z
slow=$POSITION
position_after z
plain=$POSITION
position_after shift+z
fast=$POSITION
check "Ctrl zooms slower than plain Z ($slow < $plain)" [ "$slow" -lt "$plain" ]
check "Shift zooms faster than plain Z ($plain < $fast)" [ "$plain" -lt "$fast" ]
check "Ctrl still zooms ($slow > 437)" [ "$slow" -gt 437 ]
e2e_finish
