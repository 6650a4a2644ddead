#!/usr/bin/env bash
# Finding the way as a person does: go to epsilon_0, to varphi_2(omega) and
# to a deep ordinal of a walk at 10^82 (pasted), each time landing on the
# view ordtool locates, whose render the window then shows and whose centre
# read-out names the ordinal; Backspace back to the view before; a 5 ms tap
# of Right or a click on a toggle between two frames acts; C copies the
# ordinal under the marker; F12 saves the window; a text that names no ordinal keeps the
# field open with the reader's message, and Escape then only closes it; the
# depth read-out; F1 and H show the keys table, also in a small window.
. "$(dirname "$0")/lib.sh"

W=864 H=648
# the view ordtool locates for an ordinal, as view options
located() { "$ORDTOOL" locate "$1" --width $W; }
# the ordinal the centre read-out names in a view: of the ticks ordtool line
# lists at a stop size of one pixel, the one nearest the middle of the
# marker's column
at_centre() {  # at_centre VIEW...
    "$ORDTOOL" line --width $W "$@" --minsize 1 | awk -F'\t' '
        { d = $1 - 432.5; d = d < 0 ? -d : d; if (NR == 1 || d < best) { best = d; text = $3 } }
        END { print text }'
}
# goes to TEXT and checks the window against ordtool's render of the located view
goto_checked() {  # goto_checked NAME TEXT TARGET [PASTE]
    local view render
    view=$(located "$3")
    check "$1: the read-out of its located view names $3" \
        [ "$(at_centre $view)" = "$("$ORDTOOL" print "$3")" ]
    render="$E2E_OUT/$E2E_NAME-$1-render.png"
    "$ORDTOOL" render --width $W --height $H $view -o "$render"
    app_goto "$2" "${4:-}"
    # the flight takes at most about 3 s; a deep view may take frames to fill in
    wait_frame 20 "$1" "$render"
    same_frame "$1: the window shows the located view" "$SHOT" "$render"
}

app_start || exit 1
first=$(shot first)

goto_checked epsilon "epsilon_{0}" "epsilon_{0}"
app_key BackSpace
wait_frame 10 back "$first"
same_frame "Backspace: back to the first view" "$SHOT" "$first"

goto_checked varphi "varphi_{2}(omega)" "varphi_{2}(omega)"

# C: both forms on the clipboard and on standard output
app_key c
sleep 0.5
clip=$(timeout 10 xclip -o -selection clipboard)
expected="$("$ORDTOOL" print 'varphi_{2}(omega)' --row 110000)
$("$ORDTOOL" print 'varphi_{2}(omega)')"
check "C puts psi form and row form on the clipboard (got: $clip)" [ "$clip" = "$expected" ]
check "C prints both to standard output" grep -qxF "$("$ORDTOOL" print 'varphi_{2}(omega)' --row 110000)" "$E2E_DIR/stdout.txt"

# a walk at 10^82 and the ordinal at its centre, pasted into the field
deep=$(at_centre $(located 'epsilon_{0}.200+omega.300'))
check "the walk at 10^82 has an ordinal at its centre ($deep)" [ -n "$deep" ]
goto_checked deep "$deep" "$deep" paste

# taps between two frames: with the program stopped (a frame as slow as one
# likes) a 5 ms tap of Right comes and goes, and so does a click on a toggle
stopped() {  # stopped COMMAND...: runs it while the program is stopped
    kill -STOP "$APP_PID"
    "$@"
    sleep 0.2
    kill -CONT "$APP_PID"
    sleep 0.8
}
for i in 1 2 3; do
    before=$(shot "tap-$i-before")
    app_focus
    stopped xdotool keydown Right sleep 0.005 keyup Right
    after=$(shot "tap-$i-after")
    check "a 5 ms tap of Right between two frames moves the view (tap $i)" \
        [ "$(differing_outside_fps "$before" "$after")" -gt 1000 ]
done
toggle=$(text_runs "$after" 0 $((H - 25)) 420 25 8 | sed -n 2p)
stopped xdotool mousemove --window "$WID" $(((${toggle%% *} + $(echo "$toggle" | cut -d' ' -f2)) / 2)) $((H - 12)) click 1
flipped=$(text_runs "$(shot toggle-click)" 0 $((H - 25)) 420 25 8 | sed -n 2p)
check "a click on the toggle n between two frames flips it ($toggle, then $flipped)" \
    [ "$(echo "$flipped" | cut -d' ' -f3)" -le 128 ]

# F12: a PNG of the window in the working directory, its name printed
app_key F12
wait_until 10 grep -q '^Saved ordline-.*\.png$' "$E2E_DIR/stdout.txt"
saved=$(sed -n 's/^Saved \(ordline-.*\.png\)$/\1/p' "$E2E_DIR/stdout.txt" | tail -n 1)
check "F12 saves $saved, $W by $H" [ "$(identify -format '%w %h' "$E2E_DIR/$saved" 2>/dev/null)" = "$W $H" ]
cp "$E2E_DIR/$saved" "$E2E_OUT/$E2E_NAME-saved.png" 2>/dev/null

# a text that names no ordinal: the message stands under the field, which stays
app_goto "omega^{"
sleep 0.5
bad=$(shot bad-text)
check "the reader's message stands under the field" [ "$(tinted_count "$bad" $W 24 0 $((H - 24)) 255,128,128)" -gt 50 ]
app_key Escape
sleep 0.5
check "Escape closes the field and leaves the program running" kill -0 "$APP_PID"
check "the field is gone" [ "$(tinted_count "$(shot closed)" $W 24 0 $((H - 24)) 255,128,128)" -eq 0 ]

# where am I: the zoom depth at the top left, in its blue-grey
check "the depth read-out stands at the top left" \
    [ "$(tinted_count "$(shot depth)" 200 20 0 0 144,144,192)" -gt 30 ]

# F1 shows the keys table over everything (inputs in yellow, actions in
# white), F1 hides it, and H shows it readable in a small window too
help_yellow() { tinted_count "$1" "$2" "$3" 0 0 255,224,128; }
app_key F1
sleep 0.5
check "F1 shows the keys table" [ "$(help_yellow "$(shot help)" $W $H)" -gt 2000 ]
app_key F1
sleep 0.5
check "F1 again hides it" [ "$(help_yellow "$(shot help-hidden)" $W $H)" -eq 0 ]
xdotool windowsize "$WID" 400 300
sleep 1
# (the line's own texts hold a few pixels of that yellow's tint)
plain=$(help_yellow "$(shot small-window)" 400 300)
app_key h
sleep 0.5
small=$(shot help-small)
check "H shows it in a window of 400 by 300" [ "$(help_yellow "$small" 400 300)" -gt $((plain + 500)) ]
# there it goes on pages: H shows the next, and after the last hides it
pages=1
while [ "$pages" -lt 8 ]; do
    app_key h
    sleep 0.5
    page=$(shot "help-small-$pages")
    [ "$(help_yellow "$page" 400 300)" -le $((plain + 50)) ] && break
    check "page $((pages + 1)) shows other rows" not same_region "$small" "$page" 400 300 0 0
    pages=$((pages + 1))
done
check "the table takes 2 to 7 pages there ($pages), and H after the last hides it" between "$pages" 2 7

app_key q
app_wait_exit 10
check "Q ends with status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
e2e_finish
