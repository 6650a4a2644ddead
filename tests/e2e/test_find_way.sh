#!/usr/bin/env bash
# Finding the way as a person does: go to (typed or pasted) lands on the view
# ordtool locates, and Backspace goes back; taps between two frames act; C
# copies, F12 saves; a text that names no ordinal keeps the field open with
# the reader's message; the depth read-out; F1 and H show the keys table.
. "$(dirname "$0")/lib.sh"

W=864 H=648
located() { "$ORDTOOL" locate "$1" --width $W; }  # as view options
press() {  # press KEY: a key, and time for the frames to show it
    app_key "$1"
    sleep 0.5
}
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
    local view render="$E2E_OUT/$E2E_NAME-$1-render.png"
    view=$(located "$3")
    check "$1: the located view's read-out names $3" [ "$(at_centre $view)" = "$("$ORDTOOL" print "$3")" ]
    "$ORDTOOL" render --width $W --height $H $view -o "$render"
    app_goto "$2" "${4:-}"
    # the flight takes at most about 3 s; a deep view may take frames to fill in
    wait_frame 30 "$1" "$render"
    same_frame "$1: the window shows the located view" "$SHOT" "$render"
}

app_start || exit 1
first=$(shot first)
# epsilon_0, varphi_2(omega) and a deep ordinal of a walk at 10^82
goto_checked epsilon "epsilon_{0}" "epsilon_{0}"
app_key BackSpace
wait_frame 20 back "$first"
same_frame "Backspace: back to the first view" "$SHOT" "$first"
goto_checked varphi "varphi_{2}(omega)" "varphi_{2}(omega)"

press c
clip=$(timeout 20 xclip -o -selection clipboard)
row=$("$ORDTOOL" print 'varphi_{2}(omega)' --row 110000)
check "C puts psi form and row form on the clipboard (got: $clip)" \
    [ "$clip" = "$row"$'\n'"$("$ORDTOOL" print 'varphi_{2}(omega)')" ]
check "C prints both to standard output" grep -qxF "$row" "$E2E_DIR/stdout.txt"

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
stopped xdotool mousemove --window "$WID" "$(run_middle "$toggle" 1)" $((H - 12)) click 1
flipped=$(text_runs "$(shot toggle-click)" 0 $((H - 25)) 420 25 8 | sed -n 2p)
check "a click on the toggle n between two frames flips it ($toggle, then $flipped)" \
    [ "$(echo "$flipped" | cut -d' ' -f3)" -le 128 ]

app_key F12
wait_until 20 grep -q '^Saved ordline-.*\.png$' "$E2E_DIR/stdout.txt"
saved=$(sed -n 's/^Saved \(ordline-.*\.png\)$/\1/p' "$E2E_DIR/stdout.txt" | tail -n 1)
check "F12 saves $saved, $W by $H" [ "$(identify -format '%w %h' "$E2E_DIR/$saved" 2>/dev/null)" = "$W $H" ]

message() { tinted_count "$(shot "$1")" $W 24 0 $((H - 24)) 255,128,128; }
app_goto "omega^{"
sleep 0.5
check "the reader's message stands under the field" [ "$(message bad-text)" -gt 50 ]
press Escape
check "Escape closes the field and leaves the program running" kill -0 "$APP_PID"
check "the field is gone" [ "$(message closed)" -eq 0 ]

check "the depth read-out at the top left" [ "$(tinted_count "$(shot depth)" 200 20 0 0 144,144,192)" -gt 30 ]

# the keys table: inputs in yellow, actions in white
help_yellow() { tinted_count "$1" "$2" "$3" 0 0 255,224,128; }
press F1
check "F1 shows the keys table" [ "$(help_yellow "$(shot help)" $W $H)" -gt 2000 ]
press F1
check "F1 again hides it" [ "$(help_yellow "$(shot help-hidden)" $W $H)" -eq 0 ]
app_resize 400 300
# (the line's own texts hold a few pixels of that yellow's tint)
plain=$(help_yellow "$(shot small-window)" 400 300)
press h
small=$(shot help-small)
check "H shows it in a window of 400 by 300" [ "$(help_yellow "$small" 400 300)" -gt $((plain + 500)) ]
pages=1
while [ "$pages" -lt 8 ]; do
    press h
    page=$(shot "help-small-$pages")
    [ "$(help_yellow "$page" 400 300)" -le $((plain + 50)) ] && break
    check "page $((pages + 1)) shows other rows" not same_region "$small" "$page" 400 300 0 0
    pages=$((pages + 1))
done
check "the table takes 2 to 7 pages there ($pages), and H after the last hides it" between "$pages" 2 7
app_ends q
e2e_finish
