#!/usr/bin/env bash
# The three ways out: Q, Escape and closing the window each end the program
# with status 0 at once (a generous 10 s ceiling for a loaded machine); and
# without a display it ends at once too.
. "$(dirname "$0")/lib.sh"

# (HOME where nothing can be written: no subsystem the program does not use
# starts and complains)
for way in q Escape close; do
    HOME=/proc app_start || exit 1
    if [ "$way" = close ]; then
        "$XCLOSE" "$WID"
    else
        app_key "$way"
    fi
    app_wait_exit 10
    check "$way: status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
    check "$way: nothing printed: $(cat "$E2E_DIR/stdout.txt")" [ ! -s "$E2E_DIR/stdout.txt" ]
done
check "no error log" [ ! -e graphics_error.log ]

# Without a usable display: one line that says so and status 1, at once.
# (The run directory stands in for the desktop's XDG_RUNTIME_DIR, so that
# no library probing for a display prints its own complaint.)
alone() {  # alone ENV-ARGS...
    XDG_RUNTIME_DIR=$E2E_DIR timeout 10 env -u WAYLAND_DISPLAY "$@" "$ORDLINE" >alone.txt 2>&1
    local status=$?
    echo "status $status: $(cat alone.txt)"
    [ $status = 1 ] && [ "$(grep -c . alone.txt)" = 1 ] && grep -q "^No display" alone.txt
}
check "DISPLAY unset" alone -u DISPLAY
check "DISPLAY pointing nowhere" alone DISPLAY=:1999
e2e_finish
