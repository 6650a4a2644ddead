#!/usr/bin/env bash
# Text on the screen: three ordinal labels at 25 and 50 pixels, drawn by the
# text probe in the text bracket, against a reviewed reference image; the
# ink of each label against its measured width; the software mipmaps against
# the driver's; a paragraph wrapped at a bound.
. "$(dirname "$0")/lib.sh"

REFERENCE=${E2E_REFERENCE:-$(dirname "$0")/reference}/text_probe.png
# pixels that may differ by more than the fuzz: a few glyph edges at most
TOLERANCE=400
ORDLINE=$TEXT_PROBE

# Starts the probe with ARGS and, once it says its labels are on the screen,
# keeps its window, 1000 by 400 at the top left, as the image NAME, in PROBE.
probe_shot() {  # probe_shot NAME [ARGS...]
    app_start "${@:2}" || exit 1
    check "the probe drew its labels" wait_until 30 grep -qx drawn stdout.txt
    PROBE="$E2E_OUT/$E2E_NAME-$1.png"
    import -window root -crop 1000x400+0+0 +repage "$PROBE"
}

differ() {  # differ A B: how many pixels differ by more than 10 per cent
    compare -metric AE -fuzz 10% "$1" "$2" null: 2>&1 | cut -d' ' -f1
}

ink_box() {  # ink_box FILE W H X Y: the ink's box there, "left top right bottom"
    convert "$1" -crop "$2x$3+$4+$5" +repage -colorspace gray -threshold 25% -format "%@" info: |
        awk -F'[x+]' -v x="$4" -v y="$5" '{ print x + $3, y + $4, x + $3 + $1, y + $4 + $2 }'
}

# With no window manager the keyboard follows the pointer; taking the focus
# with xdotool makes SDL see it lost.
app_focus() {
    xdotool mousemove 500 380
    sleep 0.1
}

probe_shot probe
img=$PROBE
check "the font texture is 2048 by 1024" grep -qx "texture 2048 1024" stdout.txt
diff=$(differ "$REFERENCE" "$img")
check "matches the reference within $TOLERANCE pixels, $diff differ" [ "$diff" -le "$TOLERANCE" ]

while read -r _ size x y width; do
    read -r left top right bottom <<<"$(ink_box "$img" 900 $((size * 17 / 10)) 0 $((y - size * 3 / 10)))"
    check "label at $size px, y $y: ink from $left to $right, measured from $x to $((x + width))" \
        [ "$left" -ge "$x" -a "$left" -le $((x + 4)) -a "$right" -le $((x + width)) -a \
        "$right" -ge $((x + width - size / 3)) ]
    # the raised scripts reach above the top of the line box of the label
    check "label at $size px, y $y: ink from row $top to $bottom within the band" \
        [ "$top" -gt $((y - size * 3 / 10)) -a "$bottom" -lt $((y + size * 14 / 10)) ]
done < <(grep '^label' stdout.txt)

top_row=$(ink_box "$img" 900 60 0 130)
check "the tower's outer superscript at 50 px rises above the line top (150), ink box $top_row" \
    [ "$(echo "$top_row" | cut -d' ' -f2)" -lt 150 ]
brightest=$(convert "$img" -format "%[fx:maxima.r*255],%[fx:maxima.g*255],%[fx:maxima.b*255]" info:)
check "white text reaches full white, got $brightest" [ "$brightest" = "255,255,255" ]
app_ends q

probe_shot software-mipmaps --software-mipmaps
diff=$(differ "$img" "$PROBE")
check "software mipmaps match the driver's ($diff pixels differ)" [ "$diff" -le "$TOLERANCE" ]
app_ends q

# A paragraph wrapped at x = 320: whole words move to the next line, which is
# one line height (25 + 1) lower; the last line starts at y 72.
probe_shot bounded --bounded
check "text_draw_bounded returns the y of its third line" grep -qx "bounded 72" stdout.txt
read -r left top right bottom <<<"$(ink_box "$PROBE" 1000 400 0 0)"
check "the paragraph stays left of 320, ink from $left to $right" [ "$left" -ge 20 -a "$right" -le 320 ]
check "the paragraph takes three lines, ink rows $top to $bottom" \
    [ "$top" -ge 20 -a "$bottom" -gt 80 -a "$bottom" -le 100 ]
app_ends q
e2e_finish
