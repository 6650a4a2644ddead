#!/usr/bin/env bash
# Every text in its own place, at every depth, size and row count: labels
# meet no other text and stay in the window, the legend stands whole, the
# centre read-out keeps to its band under the line and above the panel, and
# no raw markup reaches the screen. Checked on the program's report of its
# boxes (its test mode) and on the screenshots.
. "$(dirname "$0")/lib.sh"

W=864 H=648 LH=25
# the report and the screenshot of one moment: a still view, shown twice the same
layout_ok() {  # layout_ok NAME
    local faults
    shot "$1" >/dev/null
    faults=$(layout_faults) || { echo "$faults"; return 1; }
}

app_start || exit 1
check "the first view keeps every text in its place" layout_ok first
check "the legend stands whole at 864x648" legend_whole "$E2E_OUT/$E2E_NAME-first.png" $W

app_click 15 $((H - LH - LH / 2))
check "so does a view of two rows" layout_ok two-rows

# 30 s of Z, then a flight near the top of the line: a press at x 770 brings
# it to the marker, and Shift+Z for 20 s
app_hold z 30
check "after 30 s of zooming" layout_ok zoom
app_key Home
app_click 770 324 0.3
app_hold shift+z 20
check "after a flight near the top" layout_ok flight

app_resize 400 300
check "in a 400x300 window" layout_ok small
check "the legend stands whole at 400x300" legend_whole "$E2E_OUT/$E2E_NAME-small.png" 400

# the same frame at 1920x1440, drawn offscreen
big="$E2E_OUT/$E2E_NAME-big.png"
ORDLINE_LAYOUT_FILE="$E2E_DIR/big.txt" "$ORDTOOL" render --width 1920 --height 1440 -o "$big"
check "the legend stands whole at 1920x1440" legend_whole "$big" 1920 "$E2E_DIR/big.txt"

app_key q
app_wait_exit 10
check "Q ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
e2e_finish
