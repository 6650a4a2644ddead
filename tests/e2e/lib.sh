# Shared helpers of the end-to-end tests: start ordline in a real window, drive
# it with xdotool as a person would, read pixels from screenshots.
#
# Environment: DISPLAY (the tests skip with 77 without one), ORDLINE (the
# binary), XCLOSE (sends a window-manager close request), E2E_OUT (where
# screenshots are kept for a person to look at).
set -u

E2E_NAME=$(basename "${0%.sh}")
E2E_OUT=${E2E_OUT:-/tmp/ordline-e2e}
mkdir -p "$E2E_OUT"
E2E_FAILS=0 APP_PID="" WID=""

if [ -z "${DISPLAY:-}" ]; then
    echo "SKIP: no display"
    exit 77
fi

# Each test runs the program in its own working directory, where its logs
# land, and the report of where each frame put its texts (its test mode).
E2E_DIR=$(mktemp -d /tmp/ordline-e2e-run-XXXXXX)
cd "$E2E_DIR" || exit 1
LAYOUT="$E2E_DIR/layout.txt"

e2e_cleanup() {
    [ -n "$APP_PID" ] && kill "$APP_PID" 2>/dev/null && wait "$APP_PID" 2>/dev/null
    rm -rf "$E2E_DIR"
}
trap e2e_cleanup EXIT

fail() {
    echo "FAIL: $*"
    E2E_FAILS=$((E2E_FAILS + 1))
}

check() {  # check "description" test-args...
    if "${@:2}"; then echo "ok: $1"; else fail "$1"; fi
}

not() { ! "$@"; }
between() { [ "$1" -ge "$2" ] && [ "$1" -le "$3" ]; }  # between V LO HI

e2e_finish() {  # the script's status for CTest
    echo "$E2E_NAME: $E2E_FAILS check(s) failed"
    exit $((E2E_FAILS > 0))
}

# Starts ordline and waits for its window; sets APP_PID and WID. SDL is held
# to X11, so a refused connection fails here instead of drawing offscreen.
app_start() {  # app_start [ARGS...]
    SDL_VIDEODRIVER=x11 ORDLINE_LAYOUT_FILE="$LAYOUT" "$ORDLINE" "$@" >"$E2E_DIR/stdout.txt" 2>&1 &
    APP_PID=$!
    local i
    # generous: a loaded machine can take many seconds to map a GL window
    for i in $(seq 1 600); do
        WID=$(xdotool search --pid "$APP_PID" --name "Ordinal numbers" 2>/dev/null | head -n 1)
        # (and then let the first frames reach the screen)
        [ -n "$WID" ] && sleep 0.7 && return 0
        kill -0 "$APP_PID" 2>/dev/null || break
        sleep 0.1
    done
    echo "no ordline window; it printed: $(cat "$E2E_DIR/stdout.txt")"
    return 1
}

# Gives the window the keyboard focus (there is no window manager).
app_focus() {
    xdotool windowfocus --sync "$WID" 2>/dev/null || xdotool windowfocus "$WID"
}

# Holds a key (xdotool name, "+" for chords) down: the program reads keys
# once per frame, so a press and release within one pump would never show.
app_hold() {  # app_hold KEY SECONDS
    app_key "$1" "$2"
    sleep 0.3
}
app_key() {  # app_key KEY [SECONDS]
    app_focus
    xdotool keydown "$1"
    sleep "${2:-0.15}"
    xdotool keyup "$1"
}

# Ends the program by Q, Escape or the window manager's close, and checks
# that it ends at once (30 s at most on a loaded machine) with status 0 and
# leaves no error log. The key stays down until then: a deep frame is slow to
# pump it. (Not in a subshell: only this shell can wait for the program.)
app_ends() {  # app_ends q|Escape|close
    local status=running
    if [ "$1" = close ]; then
        "$XCLOSE" "$WID"
    else
        app_focus
        xdotool keydown "$1"
    fi
    if wait_until 30 not kill -0 "$APP_PID" 2>/dev/null; then
        wait "$APP_PID"
        status=$?
        APP_PID=""
    fi
    [ "$1" = close ] || xdotool keyup "$1"
    check "$1 ends with status 0, got: $status" [ "$status" = 0 ]
    check "no error log" [ ! -e graphics_error.log ]
}

# Waits up to $1 seconds for a test command to succeed, trying every half second.
wait_until() {  # wait_until SECONDS test-args...
    local start=$SECONDS
    until "${@:2}"; do
        [ $((SECONDS - start)) -ge "$1" ] && return 1
        sleep 0.5
    done
}

# A click as a person makes it: press, hold across a few frames, release, and
# give the frames time to show it.
app_click() {  # app_click X Y [HOLD]
    xdotool mousemove --window "$WID" "$1" "$2"
    xdotool mousedown 1
    sleep "${3:-0.15}"
    xdotool mouseup 1
    sleep 0.4
}

app_resize() {  # app_resize W H
    xdotool windowsize --sync "$WID" "$1" "$2" 2>/dev/null || xdotool windowsize "$WID" "$1" "$2"
    sleep 0.7
}

window_geometry() {  # prints "x y w h"
    xdotool getwindowgeometry --shell "$WID" |
        awk -F= '/^(X|Y|WIDTH|HEIGHT)=/ { g = g (g == "" ? "" : " ") $2 } END { print g }'
}

# The go-to field as a person uses it: G, the text typed (or pasted from the
# clipboard with Ctrl+V when PASTE is given), Enter.
app_goto() {  # app_goto TEXT [PASTE]
    app_key g
    if [ -n "${2:-}" ]; then
        # xclip serves the clipboard in the foreground until the paste, at most 20 s
        printf '%s' "$1" >"$E2E_DIR/clipboard.txt"
        timeout 20 xclip -quiet -selection clipboard -i "$E2E_DIR/clipboard.txt" >/dev/null 2>&1 &
        sleep 0.3
        xdotool key ctrl+v
    else
        xdotool type --delay 20 "$1"
    fi
    sleep 0.2
    xdotool key Return
}

shot() {  # shot NAME: a screenshot of the whole screen; prints its path
    local file="$E2E_OUT/$E2E_NAME-$1.png"
    import -window root "$file"
    echo "$file"
}

# The pixels of a rectangle as "x y r g b" lines, x and y within it.
pixels() {  # pixels FILE W H X Y
    convert "$1" -crop "$2x$3+$4+$5" -depth 8 txt:- | awk -F'[,:() ]+' 'NR > 1 { print $1, $2, $3, $4, $5 }'
}

# The lit (not black) pixels of the window region as "x y r g b" lines.
lit_pixels() {  # lit_pixels FILE W H
    convert "$1" -crop "$2x$3+0+0" +repage -transparent black sparse-color:- | tr ' ' '\n' |
        sed -n 's/^\([0-9]*\),\([0-9]*\),srgba*(\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2 \3 \4 \5/p'
}

colours() {  # colours FILE W H X Y: "count r,g,b" lines, most frequent first
    convert "$1" -crop "$2x$3+$4+$5" -depth 8 -format %c histogram:info:- |
        sed -n 's/^ *\([0-9]*\): (\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2,\3,\4/p' | sort -rn
}

colour_count() {  # colour_count FILE W H X Y COLOUR: pixels of exactly that "r,g,b"
    colours "$1" "$2" "$3" "$4" "$5" | awk -v c="$6" '$2 == c { n += $1 } END { print n + 0 }'
}

brightest() {  # brightest FILE W H X Y: the brightest channel value there
    colours "$@" | cut -d' ' -f2 | tr ',' '\n' | sort -n | tail -n 1
}

# An awk function: whether the colour "r,g,b" is text drawn in the tint of
# WANT on black, at half coverage or more (its soft edges are darker copies).
TINTED='function tinted(rgb, want,    got, w, top, m, k, i, d) {
    split(want, w, ","); top = w[1]; if (w[2] > top) top = w[2]; if (w[3] > top) top = w[3]
    split(rgb, got, ","); m = got[1]; if (got[2] > m) m = got[2]; if (got[3] > m) m = got[3]
    if (m < top / 2) return 0
    k = m / top
    for (i = 1; i <= 3; i++) { d = got[i] - k * w[i]; if (d > 16 || d < -16) return 0 }
    return 1
}'
tinted_count() {  # tinted_count FILE W H X Y COLOUR
    colours "$1" "$2" "$3" "$4" "$5" | awk -v c="$6" "$TINTED"' tinted($2, c) { n += $1 } END { print n + 0 }'
}

# The lit pixels of a screenshot (window W x H) in the line's band, where a
# tick stroke, 0.05 of the height long, may stand: from 0.1 of the height at
# the left edge down to the bottom at the right. (Labels stand above the band
# and the panels beside it.)
band_pixels() {  # band_pixels FILE W H
    lit_pixels "$@" | awk -v W="$2" -v H="$3" '{ y = ((H - 0.1 * H) / W) * $1 + 0.1 * H }
        $2 >= y - 0.05 * H - 2 && $2 <= y + 2'
}
stroke_columns() {  # stroke_columns FILE W H: the columns with a stroke, but the marker's
    band_pixels "$@" | awk -v m=$(($2 / 2)) '$1 != m { print $1 }' | sort -nu
}

# Of column C outside the line's band: the pixels in the marker's blue
# (0,0,128), all of them, and those of less blue, as "BLUE ALL LESS".
marker_pixels() {  # marker_pixels FILE C W H
    pixels "$1" 1 "$4" "$2" 0 | awk -v c="$2" -v W="$3" -v H="$4" '
        { y = ((H - 0.1 * H) / W) * c + 0.1 * H }
        $2 < int(y - 0.05 * H - 2) || $2 > int(y + 2) { n++; b += ($3 $4 $5 == "00128"); l += ($5 < 128) }
        END { print b + 0, n + 0, l + 0 }'
}
# Whether column C is the marker: at least 80 per cent of it outside the
# band, and text drawn over it (added to it) keeps every blue at 128 or more.
is_marker_column() {  # is_marker_column FILE C W H
    set -- $(marker_pixels "$@")
    echo "column: $1 of $2 pixels marker blue, $3 less blue"
    [ $(($1 * 5)) -ge $(($2 * 4)) ] && [ "$3" = 0 ]
}

# The texts of one line of the window as runs of lit columns: "start end max"
# per run, where a gap of at least GAP dark columns separates two runs and max
# is the brightest channel value of the run.
text_runs() {  # text_runs FILE X Y W H GAP
    pixels "$1" "$4" "$5" "$2" "$3" | awk -v x0="$2" -v w="$4" -v gap="$6" '
        { m = $3 > $4 ? $3 : $4; m = m > $5 ? m : $5; if (m > col[$1]) col[$1] = m }
        END {
            start = -1
            for (c = 0; c <= w; c++) {
                if (col[c] > 0) {
                    if (start < 0) start = c
                    last = c
                    dark = 0
                    best = col[c] > best ? col[c] : best
                } else if (start >= 0 && (++dark >= gap || c == w)) {
                    print start + x0, last + x0, best
                    start = -1
                    best = 0
                }
            }
        }'
}
run_middle() {  # run_middle RUNS N: the middle of the Nth run
    echo "$1" | awk -v n="$2" 'NR == n { printf "%d", ($1 + $2) / 2 }'
}

same_region() {  # same_region FILE1 FILE2 W H X Y: whether they agree there
    [ "$(convert "$1" -crop "$3x$4+$5+$6" -depth 8 rgb:- | md5sum)" = \
      "$(convert "$2" -crop "$3x$4+$5+$6" -depth 8 rgb:- | md5sum)" ]
}

# The frame-rate read-out's box in a picture: its blue (0x8080ff, scaled by
# the text's coverage) in the lower left quarter, padded by two pixels.
fps_box() {  # fps_box PICTURE
    pixels "$1" $((W / 4)) $((H / 2)) 0 $((H / 2)) | awk -v top=$((H / 2)) '$3 == $4 && $5 > $3 + 20 {
            y = $2 + top; if (!n++ || $1 < x0) x0 = $1; if ($1 > x1) x1 = $1
            if (n == 1 || y < y0) y0 = y; if (y > y1) y1 = y }
            END { if (n) print x0 - 2, y0 - 2, x1 + 2, y1 + 2; else print "none" }'
}
# How many pixels differ between the window's regions (W x H) of two pictures
# of the window (screenshots or renders), outside the read-outs of both.
differing_outside_fps() {  # differing_outside_fps PICTURE1 PICTURE2
    convert \( "$1" -crop "${W}x${H}+0+0" +repage \) \( "$2" -crop "${W}x${H}+0+0" +repage \) \
        -compose difference -composite -threshold 0 txt:- |
        awk -F'[,: ]+' -v a="$(fps_box "$1")" -v b="$(fps_box "$2")" '
        BEGIN { split(a, r, " "); split(b, s, " ") }
        NR > 1 && $0 !~ /#000000/ && !($1 >= r[1] && $1 <= r[3] && $2 >= r[2] && $2 <= r[4]) &&
        !($1 >= s[1] && $1 <= s[3] && $2 >= s[2] && $2 <= s[4]) { n++ } END { print n + 0 }'
}
# Checks that two pictures of the window agree outside the frame-rate
# read-out, and that the first has the read-out.
same_frame() {  # same_frame NAME PICTURE1 PICTURE2
    local box outside
    box=$(fps_box "$2")
    outside=$(differing_outside_fps "$2" "$3")
    check "$1: the read-out stands in the window ($box)" [ "$box" != "none" ]
    check "$1: no pixel differs outside the read-out ($outside do)" [ "$outside" = "0" ]
}
# Waits up to SECONDS for the window to show PICTURE (outside the frame-rate
# read-out); SHOT is set to the last screenshot taken, named NAME.
wait_frame() {  # wait_frame SECONDS NAME PICTURE
    local limit=$1 start=$SECONDS
    while :; do
        SHOT=$(shot "$2")
        [ "$(differing_outside_fps "$SHOT" "$3")" = "0" ] && return 0
        [ $((SECONDS - start)) -ge "$limit" ] && return 1
        sleep 0.5
    done
}

# What is wrong with a layout report (see src/ord/layout_report.h), one line
# each, and status 1 if anything is: a box outside the window, raw markup, a
# label meeting any other text, a read-out line above the line's band where
# it ends or below the top of the status line, or no read-out at all.
layout_faults() {  # layout_faults [REPORT]
    awk 'NR == 1 { W = $2; H = $3; next }
        { n++; k[n] = $1; x0[n] = $2; y0[n] = $3; x1[n] = $4; y1[n] = $5; raw[n] = $6
          if ($1 == "status" && (top == "" || $3 < top)) top = $3 }
        function fault(text) { if (++faults <= 5) print text }
        END {
            for (i = 1; i <= n; i++) {
                box = k[i] " " x0[i] "," y0[i] " " x1[i] "," y1[i]
                if (raw[i]) fault("raw markup: " box)
                if (x0[i] < 0 || y0[i] < 0 || x1[i] > W || y1[i] > H) fault("outside the window: " box)
                if (k[i] == "readout") {
                    readouts++
                    if (y0[i] < 0.1 * H + 0.9 * H * x1[i] / W + 0.0125 * H - 0.5) fault("over the line: " box)
                    if (y1[i] > top + 0.1) fault("over the status line: " box)
                }
                if (k[i] != "label") continue
                # the report rounds to a tenth of a pixel: touching is not meeting
                for (j = 1; j <= n; j++)
                    if (j != i && x0[i] < x1[j] - 0.1 && x0[j] < x1[i] - 0.1 &&
                        y0[i] < y1[j] - 0.1 && y0[j] < y1[i] - 0.1)
                        fault("label meets " box " / " k[j] " " x0[j] "," y0[j] " " x1[j] "," y1[j])
            }
            if (!readouts) fault("no read-out")
            exit faults > 0
        }' "${1:-$LAYOUT}"
}

# The legend's colours from the top, as "r,g,b".
LEGEND="128,128,128 160,0,0 255,160,0 255,255,0 255,255,255 0,255,0 0,255,255 255,0,255 0,0,255 64,64,64"
# Whether the legend of a screenshot stands whole in the window: its ten
# swatches in their exact colours, and nothing lit in the window's last two
# columns beside it. Its box comes from the layout report.
legend_whole() {  # legend_whole FILE W [REPORT]
    local box colour n missing=0
    box=$(awk '$1 == "legend" { printf "%d %d %d %d", $2, $3, $4 - $2 + 1, $5 - $3 + 1 }' "${3:-$LAYOUT}")
    set -- "$1" "$2" $box
    for colour in $LEGEND; do
        n=$(colour_count "$1" "$5" "$6" "$3" "$4" "$colour")
        # a swatch is half a line square: at least 5 by 5 pixels
        [ "$n" -ge 25 ] || { echo "legend: no swatch of $colour ($n pixels)"; missing=1; }
    done
    [ "$(brightest "$1" 2 "$6" $(($2 - 2)) 0)" = 0 ] || { echo "legend: text at the right edge"; missing=1; }
    return $missing
}
