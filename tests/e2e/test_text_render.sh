#!/usr/bin/env bash
# Text on the screen: three ordinal labels at 25 and 50 pixels, drawn by the
# text probe in the text bracket, against a reviewed reference image; the
# ink of each label against its measured width; the driver's mipmaps against
# the software ones.
. "$(dirname "$0")/lib.sh"

REFERENCE=${E2E_REFERENCE:-$(dirname "$0")/reference}/text_probe.png
# pixels that may differ by more than the fuzz: a few glyph edges at most
TOLERANCE=400

# Waits for the probe's word that its labels are on the screen.
probe_drawn() {
    local i
    for i in $(seq 1 100); do
        grep -qx drawn stdout.txt && return 0
        sleep 0.1
    done
    echo "the probe never said it had drawn"
    return 1
}

# The probe's window, 1000 by 400 at the top left, as its own image.
probe_shot() {  # probe_shot NAME
    local full
    probe_drawn || return 1
    full=$(shot "$1-screen")
    convert "$full" -crop 1000x400+0+0 +repage "$E2E_OUT/$E2E_NAME-$1.png"
    rm -f "$full"
    echo "$E2E_OUT/$E2E_NAME-$1.png"
}

# Pixels of two images that differ by more than 10 per cent.
differing() {
    compare -metric AE -fuzz 10% "$1" "$2" null: 2>&1
}

# Bounding box "left top right bottom" of the ink in a band of an image.
ink_box() {  # ink_box FILE W H X Y
    convert "$1" -crop "$2x$3+$4+$5" +repage -colorspace gray -threshold 25% \
        -format "%@" info: |
        awk -F'[x+]' -v x="$4" -v y="$5" '{ print x + $3, y + $4, x + $3 + $1, y + $4 + $2 }'
}

# Q held across a few frames: a press and release inside one pump leave no key
# down. With no window manager the keyboard follows the pointer; taking the
# focus with xdotool makes SDL see it lost.
probe_quit() {
    xdotool mousemove 500 380
    sleep 0.1
    xdotool keydown q
    sleep 0.2
    xdotool keyup q
}

ORDLINE=$TEXT_PROBE
app_start || exit 1
img=$(probe_shot probe)
check "the font texture is 2048 by 1024" grep -qx "texture 2048 1024" stdout.txt

diff=$(differing "$REFERENCE" "$img")
check "matches the reference within $TOLERANCE pixels, $diff differ" [ "${diff%% *}" -le "$TOLERANCE" ]

# each label's ink starts at its x and ends within its measured width
while read -r _ size x y width; do
    box=$(ink_box "$img" 900 $((size * 17 / 10)) 0 $((y - size * 3 / 10)))
    read -r left top right bottom <<<"$box"
    check "label at $size px, y $y: ink from $left, expected $x to $((x + 4))" \
        [ "$left" -ge "$x" -a "$left" -le $((x + 4)) ]
    check "label at $size px, y $y: ink to $right, expected $((x + width - size / 3)) to $((x + width))" \
        [ "$right" -le $((x + width)) -a "$right" -ge $((x + width - size / 3)) ]
    # the raised scripts reach above the top of the line box of the label
    check "label at $size px, y $y: ink from row $top to $bottom within the band" \
        [ "$top" -gt $((y - size * 3 / 10)) -a "$bottom" -lt $((y + size * 14 / 10)) ]
done < <(grep '^label' stdout.txt)

top_row=$(ink_box "$img" 900 60 0 130)
check "the tower's outer superscript at 50 px rises above the line top (150), ink box $top_row" \
    [ "$(echo "$top_row" | cut -d' ' -f2)" -lt 150 ]
brightest=$(convert "$img" -format "%[fx:maxima.r*255],%[fx:maxima.g*255],%[fx:maxima.b*255]" info:)
check "white text reaches full white, got $brightest" [ "$brightest" = "255,255,255" ]

probe_quit
app_wait_exit 10
check "Q ends the probe with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]

# The software mipmap chain gives the same picture as the driver's.
printf '#!/bin/sh\nexec "%s" --software-mipmaps\n' "$TEXT_PROBE" > software_mipmaps.sh
chmod +x software_mipmaps.sh
ORDLINE=$PWD/software_mipmaps.sh
app_start || exit 1
soft=$(probe_shot software-mipmaps)
diff=$(differing "$img" "$soft")
check "software mipmaps match the driver's within $TOLERANCE pixels, $diff differ" \
    [ "${diff%% *}" -le "$TOLERANCE" ]
probe_quit
app_wait_exit 10
check "Q ends the second probe with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]

# A paragraph wrapped at x = 320: whole words move to the next line, which is
# one line height (25 + 1) lower; the last line starts at y 72.
printf '#!/bin/sh\nexec "%s" --bounded\n' "$TEXT_PROBE" > bounded.sh
chmod +x bounded.sh
ORDLINE=$PWD/bounded.sh
app_start || exit 1
para=$(probe_shot bounded)
check "text_draw_bounded returns the y of its third line" grep -qx "bounded 72" stdout.txt
read -r left top right bottom <<<"$(ink_box "$para" 1000 400 0 0)"
check "the paragraph stays left of 320, ink from $left to $right" [ "$left" -ge 20 -a "$right" -le 320 ]
check "the paragraph takes three lines, ink rows $top to $bottom" [ "$top" -ge 20 -a "$bottom" -gt 80 -a "$bottom" -le 100 ]
probe_quit
app_wait_exit 10
check "no error log" [ ! -e graphics_error.log ]
e2e_finish
