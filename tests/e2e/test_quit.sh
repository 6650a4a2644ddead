#!/usr/bin/env bash
# The three ways out: Q, Escape and closing the window each end the program
# with status 0 at once (a generous 10 s ceiling for a loaded machine).
. "$(dirname "$0")/lib.sh"

for way in q Escape close; do
    app_start || exit 1
    if [ "$way" = close ]; then
        "$XCLOSE" "$WID"
    else
        app_key "$way"
    fi
    app_wait_exit 10
    check "$way: status 0, got: $EXIT_RESULT" [ "${EXIT_RESULT%% *}" = "0" ]
done
check "no error log" [ ! -e graphics_error.log ]
e2e_finish
