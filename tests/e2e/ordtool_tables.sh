#!/bin/sh
# ordtool from the outside: print, expand and cmp on a few telling rows, in
# heap and in arena mode (the unit tests hold the full tables), and the
# refusals with their status. Usage: ordtool_tables.sh PATH_TO_ORDTOOL
tool=${1:?usage: ordtool_tables.sh PATH_TO_ORDTOOL}
passed=0
failed=0

# check NAME EXPECTED_OUTPUT COMMAND...: stdout and status 0, in both modes
check() {
    name=$1 want=$2
    shift 2
    for mode in "" --arena; do
        got=$("$tool" "$@" $mode 2>&1)
        status=$?
        if [ "$status" -eq 0 ] && [ "$got" = "$want" ]; then
            passed=$((passed + 1))
        else
            failed=$((failed + 1))
            printf 'FAIL %s %s\n  ordtool %s\n  want: %s\n  got (%s): %s\n' "$name" "$mode" "$*" "$want" "$status" "$got"
        fi
    done
}

# refuse NAME WORDS COMMAND...: status 2, one line on stderr containing WORDS, nothing on stdout
refuse() {
    name=$1 words=$2
    shift 2
    out=$("$tool" "$@" 2>/dev/null)
    err=$("$tool" "$@" 2>&1 >/dev/null)
    status=$?
    lines=$(printf '%s\n' "$err" | wc -l)
    case "$err" in
    *"$words"*) found=1 ;;
    *) found=0 ;;
    esac
    if [ "$status" -eq 2 ] && [ -z "$out" ] && [ "$found" -eq 1 ] && [ "$lines" -eq 1 ]; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        printf 'FAIL %s\n  ordtool %s\n  want status 2 and "%s"\n  got (%s): %s / %s\n' "$name" "$*" "$words" "$status" "$out" "$err"
    fi
}

# expand_row X TEXT MEMBERS...: the text of X and its first members
expand_row() {
    x=$1 text=$2
    shift 2
    check "print $x" "$text" print "$x"
    want=$(printf '%s\n' "$@")
    check "expand $x" "$want" expand "$x" $#
}

# telling sequences: a limit of omega, a fixed point, the top
expand_row 'psi_{0}(Omega)' 'epsilon_{0}' 1 omega 'omega^{omega}' 'omega^{omega^{omega}}'
expand_row 'psi_{0}(psi_{1}(psi_{1}(Omega)))' 'psi_{0}(omega^{omega^{Omega.2}})' 'varphi_{2}(0)' 'varphi_{varphi_{2}(0)}(0)' 'varphi_{varphi_{varphi_{2}(0)}(0)}(0)'
expand_row 'psi_{0}(I)' 'psi_{0}(I)' omega 'epsilon_{0}' 'psi_{0}(Omega_{Omega})' 'psi_{0}(Omega_{Omega_{Omega}})'

# texts in other rows (toggles n, alpha.n, omega, epsilon, varphi, Omega)
while IFS='|' read -r x bits text; do
    check "print $x --row $bits" "$text" print "$x" --row "$bits"
done <<'EOF'
3|000000|psi_{0}(0)+psi_{0}(0)+psi_{0}(0)
omega.2+3|101111|omega+omega+3
psi_{0}(psi_{1}(Omega))|011111|varphi_{psi_{0}(0).2}(0)
EOF

# members in another row, and comparisons, the top included
check "expand in a row" "$(printf '1\npsi_{1}(0)\npsi_{2}(0)')" expand 'Omega_{omega}' 3 --row 100000
check "cmp below" -1 cmp omega 'psi_{0}(2)'
check "cmp equal" 0 cmp '1+omega' omega
check "cmp above" 1 cmp Omega 'psi_{0}(Omega_{omega})'
check "cmp top equal" 0 cmp 'psi_{0}(I)' 'psi_{0}(I)'
check "cmp below top" -1 cmp 'psi_{0}(Omega_{Omega_{Omega}})' 'psi_{0}(I)'
check "cmp top below Omega" -1 cmp 'psi_{0}(I)' Omega

# refusals: status 2, one line on stderr
refuse "successor" "successor" expand 'omega+1' 3
refuse "zero" "0 and has no" expand 0 3
refuse "bad count" "N must be" expand omega 0
refuse "huge count" "N must be" expand omega 1001
refuse "bad text" "position 6" print 'omega^{2}'
refuse "not normal" "not in normal form" print 'psi_{0}(psi_{0}(Omega)+1)'
refuse "bad row" "--row wants six digits" print omega --row 11111
refuse "row on cmp" "not an option" cmp 1 2 --row 111111
refuse "missing" "missing arguments" cmp 1
refuse "too many" "too many arguments" print 1 2
refuse "unknown option" "unknown option" print 1 --fast
refuse "huge text" "too long" print 'omega.4000000000' --row 101111
refuse "huge members" "too long" expand 'omega.4000000000+omega' 2 --row 101111
check "big coefficient with alpha.n" 'omega.4000000000' print 'omega.4000000000'
refuse "unknown command" "unknown command" frobnicate
# no arguments: the usage on stderr, status 2
out=$("$tool" 2>&1 >/dev/null)
status=$?
case "$out" in
"usage: ordtool"*) [ "$status" -eq 2 ] && passed=$((passed + 1)) || failed=$((failed + 1)) ;;
*) failed=$((failed + 1)); echo "FAIL no arguments: $status $out" ;;
esac

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
