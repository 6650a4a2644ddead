#!/usr/bin/env bash
# The first view of the line: every column that the headless tick pass lists
# has a stroke of its kind's colour under the brightness rule, and no stroke
# stands where the list has none. Holding M (the arena) shows the arena's
# figures and gives the same picture.
. "$(dirname "$0")/lib.sh"

W=864 H=648
"$ORDTOOL" line --width $W --columns >"$E2E_DIR/columns.txt" || { fail "ordtool line"; e2e_finish; }
app_start || exit 1
img=$(shot first)
lit_pixels "$img" $W $H >"$E2E_DIR/pixels.txt"

# Expected colour of each listed column, then a look at the stroke's middle
# row in that column or one beside it.
awk -v W=$W -v H=$H -v legend="$LEGEND" '
    BEGIN {
        n = split(legend, kinds, " ")
        for (k = 1; k <= n; k++) {
            split(kinds[k], rgb, ",")
            for (i = 0; i < 3; i++) colour[k, i] = rgb[i + 1]
        }
        scale = (1.0 / log(W)) * 256.0
        yleft = 0.1 * H; ticklen = 0.05 * H
    }
    FNR == NR { kind[$1] = $2; size[$1] = $3; next }
    { px[$1, $2] = $3 " " $4 " " $5 }
    END {
        for (c in kind) {
            t = int(log(size[c] + 1.0) * scale + 128.0)
            for (i = 0; i < 3; i++) {
                ch = colour[kind[c], i]
                if (t <= 255) want[i] = int(ch * t / 255)
                else { u = t - 256; if (u > 128) u = 128; want[i] = 255 - int((255 - ch) * (255 - u) / 255) }
            }
            y = int(((H - yleft) / W) * c + yleft - ticklen / 2)
            found = 0
            for (dc = -1; dc <= 1 && !found; dc++) {
                if (!((c + dc, y) in px)) continue
                split(px[c + dc, y], got, " ")
                found = abs(got[1] - want[0]) <= 2 && abs(got[2] - want[1]) <= 2 && abs(got[3] - want[2]) <= 2
            }
            checked++
            if (!found && ++bad <= 5)
                printf "column %d kind %d: want %d,%d,%d at y %d, got %s\n", c, kind[c], want[0], want[1],
                    want[2], y, (((c, y) in px) ? px[c, y] : "0 0 0")
        }
        # where the list has nothing within a pixel, the stroke rows stay dark
        for (c = 0; c < W; c++) {
            if ((c in kind) || ((c - 1) in kind) || ((c + 1) in kind) || c == W / 2) continue
            y = int(((H - yleft) / W) * c + yleft - ticklen / 2)
            if ((c, y) in px && ++stray <= 5) printf "stray stroke at column %d: %s\n", c, px[c, y]
        }
        printf "%d listed columns checked, %d without their stroke, %d stray strokes\n", checked, bad, stray
        exit (bad > 0 || stray > 0 || checked < 50)
    }
    function abs(v) { return v < 0 ? -v : v }
' "$E2E_DIR/columns.txt" "$E2E_DIR/pixels.txt"
check "strokes stand where the tick pass puts them, in their colours" [ $? -eq 0 ]

app_focus
xdotool keydown m
sleep 0.5
img_m=$(shot arena)
xdotool keyup m
# on the status line above "Add ", right of the frame rate's place
memstack=$(tinted_count "$img_m" 450 25 150 573 255,192,128)
check "holding M shows the arena read-out ($memstack pixels of 0xffc080)" [ "$memstack" -gt 100 ]
check "without M there is no arena read-out" [ "$(tinted_count "$img" 450 25 150 573 255,192,128)" = 0 ]
# all but the read-outs at the bottom: the line, its labels, the legend
check "holding M gives the same picture above the read-outs" same_region "$img" "$img_m" $W 540 0 0
check "and the same line beside them" same_region "$img" "$img_m" 244 80 620 540
app_ends q
e2e_finish
