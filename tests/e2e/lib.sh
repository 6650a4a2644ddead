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
E2E_FAILS=0
APP_PID=""
WID=""

if [ -z "${DISPLAY:-}" ]; then
    echo "SKIP: no display"
    exit 77
fi

# Each test runs the program in its own working directory, where its logs land.
E2E_DIR=$(mktemp -d /tmp/ordline-e2e-run-XXXXXX)
cd "$E2E_DIR" || exit 1

e2e_cleanup() {
    if [ -n "$APP_PID" ] && kill -0 "$APP_PID" 2>/dev/null; then
        kill "$APP_PID" 2>/dev/null
        wait "$APP_PID" 2>/dev/null
    fi
    rm -rf "$E2E_DIR"
}
trap e2e_cleanup EXIT

fail() {
    echo "FAIL: $*"
    E2E_FAILS=$((E2E_FAILS + 1))
}

check() {  # check "description" test-args...
    local what=$1
    shift
    if "$@"; then echo "ok: $what"; else fail "$what"; fi
}

# The opposite of a test command, for check.
not() {
    ! "$@"
}

# Whether LO <= V <= HI (numbers).
between() {  # between V LO HI
    [ "$1" -ge "$2" ] && [ "$1" -le "$3" ]
}

# The end of a test script: its status for CTest.
e2e_finish() {
    if [ "$E2E_FAILS" -ne 0 ]; then
        echo "$E2E_NAME: $E2E_FAILS check(s) failed"
        exit 1
    fi
    echo "$E2E_NAME: all checks passed"
    exit 0
}

# The program's report of where each frame put its texts (its test mode).
LAYOUT="$E2E_DIR/layout.txt"

# Starts ordline and waits for its window; sets APP_PID and WID. SDL is held
# to X11, so a refused connection fails here instead of drawing offscreen.
app_start() {
    SDL_VIDEODRIVER=x11 ORDLINE_LAYOUT_FILE="$LAYOUT" "$ORDLINE" >"$E2E_DIR/stdout.txt" 2>&1 &
    APP_PID=$!
    local i
    # generous: a loaded machine can take many seconds to map a GL window
    for i in $(seq 1 300); do
        WID=$(xdotool search --pid "$APP_PID" --name "Ordinal numbers" 2>/dev/null | head -n 1)
        if [ -n "$WID" ]; then
            # let the first frames reach the screen
            sleep 0.7
            return 0
        fi
        if ! kill -0 "$APP_PID" 2>/dev/null; then
            echo "ordline exited before its window appeared:"
            cat "$E2E_DIR/stdout.txt"
            return 1
        fi
        sleep 0.1
    done
    echo "no ordline window after 30 seconds; windows named so: $(xdotool search --name "Ordinal numbers" 2>/dev/null | tr '\n' ' ')"
    cat "$E2E_DIR/stdout.txt"
    return 1
}

# Gives the window the keyboard focus (there is no window manager).
app_focus() {
    xdotool windowfocus --sync "$WID" 2>/dev/null || xdotool windowfocus "$WID"
}

# Presses one key and releases it a little later: the program reads keys
# once per frame, so a press and release within one pump would never show.
app_key() {
    app_focus
    xdotool keydown "$1"
    sleep 0.15
    xdotool keyup "$1"
}

# Waits up to $1 seconds for the program to end. Sets EXIT_RESULT to
# "STATUS SECONDS", or to "running" if it did not end in time. (Not to be run
# in a subshell: only this shell can wait for the program.)
app_wait_exit() {
    local limit=$1 start now status
    start=$(date +%s.%N)
    while kill -0 "$APP_PID" 2>/dev/null; do
        now=$(date +%s.%N)
        if awk -v a="$start" -v b="$now" -v l="$limit" 'BEGIN { exit !(b - a > l) }'; then
            EXIT_RESULT="running"
            return
        fi
        sleep 0.05
    done
    wait "$APP_PID"
    status=$?
    now=$(date +%s.%N)
    APP_PID=""
    EXIT_RESULT="$status $(awk -v a="$start" -v b="$now" 'BEGIN { printf "%.2f", b - a }')"
}

# Waits up to $1 seconds (10 or more: a loaded machine is slow) for a test
# command to succeed, trying every half second.
wait_until() {  # wait_until SECONDS test-args...
    local limit=$1 start=$SECONDS
    shift
    until "$@"; do
        [ $((SECONDS - start)) -ge "$limit" ] && return 1
        sleep 0.5
    done
}

# Screenshot of the whole screen to $E2E_OUT/NAME.png; prints the path.
shot() {
    local file="$E2E_OUT/$E2E_NAME-$1.png"
    import -window root "$file"
    echo "$file"
}

# The colour of one pixel as "r,g,b".
pixel() {  # pixel FILE X Y
    convert "$1" -crop "1x1+$2+$3" -depth 8 txt:- |
        sed -n '2s/^[^(]*(\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1,\2,\3/p'
}

# The colours of a rectangle and their pixel counts, "count r,g,b" a line,
# most frequent first.
colours() {  # colours FILE W H X Y
    convert "$1" -crop "$2x$3+$4+$5" -depth 8 -format %c histogram:info:- |
        sed -n 's/^ *\([0-9]*\): (\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2,\3,\4/p' |
        sort -rn
}

# The window's geometry as "x y w h".
window_geometry() {
    xdotool getwindowgeometry --shell "$WID" |
        awk -F= '/^X=/{x=$2} /^Y=/{y=$2} /^WIDTH=/{w=$2} /^HEIGHT=/{h=$2} END {print x, y, w, h}'
}

# Holds a key (xdotool key name, "+" for chords) down for $2 seconds.
app_hold() {
    app_focus
    xdotool keydown "$1"
    sleep "$2"
    xdotool keyup "$1"
    sleep 0.3
}

# The whole window region of a screenshot as "x y r g b" lines.
window_pixels() {  # window_pixels FILE W H
    convert "$1" -crop "$2x$3+0+0" -depth 8 txt:- |
        sed -n 's/^\([0-9]*\),\([0-9]*\): (\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2 \3 \4 \5/p'
}

# The same for the lit (not black) pixels only: ten times faster.
lit_pixels() {  # lit_pixels FILE W H
    convert "$1" -crop "$2x$3+0+0" +repage -transparent black sparse-color:- | tr ' ' '\n' |
        sed -n 's/^\([0-9]*\),\([0-9]*\),srgba*(\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2 \3 \4 \5/p'
}

# Columns of a screenshot (window W x H) that hold a stroke: any pixel in the
# line's band that is not black, outside the marker's column W/2. (Labels
# stand above the band and the panels beside it.) Prints the column numbers.
stroke_columns() {  # stroke_columns FILE W H
    lit_pixels "$1" "$2" "$3" |
        awk -v marker=$(($2 / 2)) -v W="$2" -v H="$3" '
            $1 != marker && !($3 == 0 && $4 == 0 && $5 == 0) {
                y = ((H - 0.1 * H) / W) * $1 + 0.1 * H
                if ($2 >= y - 0.05 * H - 2 && $2 <= y + 2) seen[$1] = 1
            }
            END { for (c in seen) print c }' | sort -n
}

# Whether a rectangle holds any pixel that is not black, or holds none.
has_stroke() {  # has_stroke FILE W H X Y
    colours "$@" | grep -qv ' 0,0,0$'
}

# The line's band at column c of a window W x H: the rows a tick stroke may
# cover, from 0.1 of the height at the left edge down to the bottom at the
# right, strokes 0.05 of the height long. Prints "top bottom".
line_band() {  # line_band C W H
    awk -v c="$1" -v W="$2" -v H="$3" 'BEGIN {
        y = ((H - 0.1 * H) / W) * c + 0.1 * H
        printf "%d %d\n", y - 0.05 * H - 2, y + 2 }'
}

# Whether column c is the marker: outside the line's band at least 80 per
# cent of it is (0,0,128), and text drawn over it (added to it) keeps the
# blue of every pixel at 128 or more.
is_marker_column() {  # is_marker_column FILE C W H
    column_outside_band "$@" | awk '
        { split($2, c, ","); total += $1; if ($2 == "0,0,128") blue += $1; if (c[3] < 128) low += $1 }
        END { printf "column: %d of %d pixels marker blue, %d less blue\n", blue, total, low; exit !(blue >= 0.8 * total && low == 0) }'
}

# The colours of column c outside the line's band, as "count r,g,b" lines.
column_outside_band() {  # column_outside_band FILE C W H
    local band top bottom
    band=$(line_band "$2" "$3" "$4")
    top=${band% *}
    bottom=${band#* }
    convert "$1" -crop "1x$4+$2+0" -depth 8 txt:- |
        sed -n 's/^[0-9]*,\([0-9]*\): (\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2,\3,\4/p' |
        awk -v t="$top" -v b="$bottom" '$1 < t || $1 > b { n[$2]++ } END { for (c in n) print n[c], c }' |
        sort -rn
}


# A click as a person makes it: press, hold across a few frames (0.15 s
# unless HOLD says otherwise), release, and give the frames time to show it.
# (A press and release inside one pump of the program would never show.) A
# press in the middle strip brings the pressed point to the marker.
app_click() {  # app_click X Y [HOLD]
    xdotool mousemove --window "$WID" "$1" "$2"
    xdotool mousedown 1
    sleep "${3:-0.15}"
    xdotool mouseup 1
    sleep 0.4
}

# Pixels of exactly one colour ("r,g,b") in a rectangle.
colour_count() {  # colour_count FILE W H X Y COLOUR
    colours "$1" "$2" "$3" "$4" "$5" | awk -v c="$6" '$2 == c { n += $1 } END { print n + 0 }'
}

# Pixels of a rectangle in the tint of COLOUR ("r,g,b"): text drawn in that
# colour on black, at half coverage or more (its soft edges are darker copies).
tinted_count() {  # tinted_count FILE W H X Y COLOUR
    colours "$1" "$2" "$3" "$4" "$5" | awk -v c="$6" '
        BEGIN { split(c, want, ","); top = want[1]; if (want[2] > top) top = want[2]; if (want[3] > top) top = want[3] }
        {
            split($2, got, ","); m = got[1]; if (got[2] > m) m = got[2]; if (got[3] > m) m = got[3]
            if (m < top / 2) next
            k = m / top; ok = 1
            for (i = 1; i <= 3; i++) { d = got[i] - k * want[i]; if (d > 16 || d < -16) ok = 0 }
            if (ok) n += $1
        }
        END { print n + 0 }'
}

# The brightest channel value in a rectangle.
brightest() {  # brightest FILE W H X Y
    colours "$@" | awk '{ split($2, c, ","); for (i = 1; i <= 3; i++) if (c[i] > m) m = c[i] } END { print m + 0 }'
}

# The texts of one line of the window as runs of lit columns: "start end max"
# per run, where a gap of at least GAP dark columns separates two runs and max
# is the brightest channel value of the run.
text_runs() {  # text_runs FILE X Y W H GAP
    convert "$1" -crop "$4x$5+$2+$3" -depth 8 txt:- |
        sed -n 's/^\([0-9]*\),[0-9]*: (\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2 \3 \4/p' |
        awk -v x0="$2" -v gap="$6" '
            { m = $2; if ($3 > m) m = $3; if ($4 > m) m = $4; if (m > col[$1]) col[$1] = m; w = $1 + 1 > w ? $1 + 1 : w }
            END {
                start = -1; dark = 0
                for (c = 0; c < w; c++) {
                    if (col[c] > 0) {
                        if (start < 0) { start = c; best = 0 }
                        last = c; dark = 0; if (col[c] > best) best = col[c]
                    } else if (start >= 0 && ++dark >= gap) {
                        print start + x0, last + x0, best; start = -1
                    }
                }
                if (start >= 0) print start + x0, last + x0, best
            }'
}

# Whether two screenshots agree on a rectangle.
same_region() {  # same_region FILE1 FILE2 W H X Y
    [ "$(convert "$1" -crop "$3x$4+$5+$6" -depth 8 rgb:- | md5sum)" = \
      "$(convert "$2" -crop "$3x$4+$5+$6" -depth 8 rgb:- | md5sum)" ]
}

# Pixels of grey text (0x808080 on black) in a rectangle, above the line's
# band of a window WW x WH: grey of 64 to 136 with nothing brighter than 140
# within two pixels, so that the soft edges of white text do not count.
grey_text_pixels() {  # grey_text_pixels FILE W H X Y WW WH
    convert "$1" -crop "$2x$3+$4+$5" -depth 8 txt:- |
        sed -n 's/^\([0-9]*\),\([0-9]*\): (\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2 \3 \4 \5/p' |
        awk -v X="$4" -v Y="$5" -v W="$6" -v H="$7" '
             { m = $3; if ($4 > m) m = $4; if ($5 > m) m = $5; v[$1, $2] = m
               top = ((H - 0.1 * H) / W) * ($1 + X) + 0.1 * H - 0.05 * H - 2
               if ($2 + Y < top && $3 == $4 && $4 == $5 && m >= 64 && m <= 136) { gx[++n] = $1; gy[n] = $2 } }
             END {
                 for (i = 1; i <= n; i++) {
                     ok = 1
                     for (dx = -2; dx <= 2 && ok; dx++)
                         for (dy = -2; dy <= 2; dy++)
                             if (v[gx[i] + dx, gy[i] + dy] > 140) { ok = 0; break }
                     count += ok
                 }
                 print count + 0
             }'
}

# Lit pixels below the line's band, right of column X0.
below_line_pixels() {  # below_line_pixels FILE W H X0
    lit_pixels "$1" "$2" "$3" |
        awk -v W="$2" -v H="$3" -v x0="$4" '
            $1 >= x0 && !($3 == 0 && $4 == 0 && $5 == 0) && $2 > ((H - 0.1 * H) / W) * $1 + 0.1 * H + 2 { n++ }
            END { print n + 0 }'
}

# The first row of a rectangle that holds a pixel in the tint of COLOUR
# (see tinted_count), or -1.
first_row_of() {  # first_row_of FILE W H X Y COLOUR
    convert "$1" -crop "$2x$3+$4+$5" -depth 8 txt:- |
        sed -n 's/^[0-9]*,\([0-9]*\): (\([0-9]*\),\([0-9]*\),\([0-9]*\).*/\1 \2,\3,\4/p' |
        awk -v c="$6" -v y0="$5" '
            BEGIN { split(c, want, ","); top = want[1]; if (want[2] > top) top = want[2]; if (want[3] > top) top = want[3] }
            {
                split($2, got, ","); m = got[1]; if (got[2] > m) m = got[2]; if (got[3] > m) m = got[3]
                if (m < top / 2) next
                k = m / top; ok = 1
                for (i = 1; i <= 3; i++) { d = got[i] - k * want[i]; if (d > 16 || d < -16) ok = 0 }
                if (ok && (min == "" || $1 < min)) min = $1
            }
            END { print (min == "" ? -1 : min + y0) }'
}

# Pixels that differ between the window's regions (W x H) of two pictures of
# the window (screenshots or renders), as "x y" lines.
differing() {  # differing PICTURE1 PICTURE2
    convert \( "$1" -crop "${W}x${H}+0+0" +repage \) \( "$2" -crop "${W}x${H}+0+0" +repage \) \
        -compose difference -composite -threshold 0 txt:- |
        awk -F'[,: ]+' 'NR > 1 && $0 !~ /#000000/ { print $1, $2 }'
}
# The frame-rate read-out's box in a picture: its blue (0x8080ff, scaled by
# the text's coverage) in the lower left quarter, padded by two pixels.
fps_box() {  # fps_box PICTURE
    convert "$1" -crop "$((W / 4))x$((H / 2))+0+$((H / 2))" +repage -depth 8 txt:- |
        awk -F'[,:() ]+' -v top=$((H / 2)) 'NR > 1 && $3 == $4 && $5 > $3 + 20 {
            y = $2 + top; if (!n++ || $1 < x0) x0 = $1; if ($1 > x1) x1 = $1
            if (n == 1 || y < y0) y0 = y; if (y > y1) y1 = y }
            END { if (n) print x0 - 2, y0 - 2, x1 + 2, y1 + 2; else print "none" }'
}
# How many pixels differ outside the frame-rate read-outs of both pictures.
differing_outside_fps() {  # differing_outside_fps PICTURE1 PICTURE2
    differing "$1" "$2" | awk -v a="$(fps_box "$1")" -v b="$(fps_box "$2")" '
        BEGIN { split(a, r, " "); split(b, s, " ") }
        !($1 >= r[1] && $1 <= r[3] && $2 >= r[2] && $2 <= r[4]) &&
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

# Resizes the window and gives the frames time to follow.
app_resize() {  # app_resize W H
    xdotool windowsize --sync "$WID" "$1" "$2" 2>/dev/null || xdotool windowsize "$WID" "$1" "$2"
    sleep 0.7
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
                    if (j != i && x0[i] < x1[j] - 0.1 && x0[j] < x1[i] - 0.1 && y0[i] < y1[j] - 0.1 && y0[j] < y1[i] - 0.1)
                        fault("label meets " box " / " k[j] " " x0[j] "," y0[j] " " x1[j] "," y1[j])
            }
            if (!readouts) fault("no read-out")
            exit faults > 0
        }' "${1:-$LAYOUT}"
}

# Whether the legend of a screenshot stands whole in the window: its ten
# swatches in their exact colours, and nothing lit in the window's last two
# columns beside it. Its box comes from the layout report.
legend_whole() {  # legend_whole FILE W [REPORT]
    local box colour n missing=0
    box=$(awk '$1 == "legend" { printf "%d %d %d %d", $2, $3, $4 - $2 + 1, $5 - $3 + 1 }' "${3:-$LAYOUT}")
    set -- "$1" "$2" $box
    for colour in 128,128,128 160,0,0 255,160,0 255,255,0 255,255,255 0,255,0 0,255,255 255,0,255 0,0,255 64,64,64; do
        n=$(colour_count "$1" "$5" "$6" "$3" "$4" "$colour")
        # a swatch is half a line square: at least 5 by 5 pixels
        [ "$n" -ge 25 ] || { echo "legend: no swatch of $colour ($n pixels)"; missing=1; }
    done
    [ "$(brightest "$1" 2 "$6" $(($2 - 2)) 0)" = 0 ] || { echo "legend: text at the right edge"; missing=1; }
    return $missing
}
