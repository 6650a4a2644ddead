#!/bin/sh
# ordtool from the outside: exit statuses, refusals on stderr, argument
# handling, a few rows in heap and in arena mode (the unit tests hold the full
# tables), and locate then line. Usage: ordtool_tables.sh PATH_TO_ORDTOOL
tool=${1:?usage: ordtool_tables.sh PATH_TO_ORDTOOL}
passed=0 failed=0
logs=$(mktemp -d)
err=$(mktemp)
ok() { passed=$((passed + 1)); }
bad() {
    failed=$((failed + 1))
    printf 'FAIL %s\n' "$*"
}

# check EXPECTED COMMAND...: that output and status 0, in both modes
check() {
    want=$1
    shift
    for mode in "" --arena; do
        got=$("$tool" "$@" $mode 2>&1)
        status=$?
        [ "$status" -eq 0 ] && [ "$got" = "$want" ] && ok || bad "$* $mode: want $want, got ($status) $got"
    done
}

# refuse WORDS COMMAND...: status 2, nothing on stdout, one line on stderr
# holding WORDS, and no log file (run in an empty directory)
refuse() {
    words=$1
    shift
    out=$(cd "$logs" && "$tool" "$@" 2>"$err")
    status=$?
    case "$(cat "$err")" in *"$words"*) found=1 ;; *) found=0 ;; esac
    [ "$status" -eq 2 ] && [ -z "$out" ] && [ $found = 1 ] && [ "$(grep -c '' "$err")" -eq 1 ] &&
        [ -z "$(ls -A "$logs")" ] && ok ||
        bad "ordtool $*: want status 2 and \"$words\", got ($status) $out / $(cat "$err") $(ls "$logs")"
    rm -f "$logs"/*
}

# a limit of omega, a fixed point and the top with their members, texts in
# other rows, comparisons (a name the window shows stands for its ordinal)
check 'epsilon_{0}' print 'psi_{0}(Omega)'
check "$(printf '1\nomega\nomega^{omega}')" expand 'psi_{0}(Omega)' 3
check "$(printf 'varphi_{2}(0)\nvarphi_{varphi_{2}(0)}(0)')" expand 'psi_{0}(psi_{1}(psi_{1}(Omega)))' 2
check "$(printf 'omega\nepsilon_{0}\npsi_{0}(Omega_{Omega})')" expand 'psi_{0}(I)' 3
check 'omega+omega+3' print 'omega.2+3' --row 101111
check "$(printf 'psi_{0}(1)\npsi_{0}(psi_{1}(0))')" expand 'psi_{0}(Omega_{omega})' 2 --row 100000
check -1 cmp omega 'omega^2'
check 0 cmp 'Bachmann-Howard ordinal' 'ψ₀(Ω₂)'
check -1 cmp 'psi_{0}(Omega_{Omega_{Omega}})' 'psi_{0}(I)'
# a tower 30 high with alpha.n off is a short text, written, not refused
tower=0
for _ in $(seq 30); do tower="omega^{$tower}"; done
check "$("$tool" print "$tower")" print "$tower" --row 101111

# line in another row, and the view of locate puts each ordinal (every kind
# of the legend, from the first view to past 10^1000) at the centre column
check "$(printf '%s\t%s\t%s\n' 288.0000 1 0 379.1185 2 'psi_{0}(0)' 593.4592 5 'psi_{0}(psi_{0}(0))' \
    1312.0000 9 'psi_{0}(I)')" line --width 640 --minsize 300 --row 010001 --centre 80 --zoom 2
deep='omega^{9}.800+omega^{8}.800+omega^{7}.800+omega^{6}.800+omega^{5}.800+omega^{4}.800+omega^{3}.800'
deep="$deep+omega^{2}.800+omega.800+800"
for x in 0 7 'omega.2' 'omega^2' omega 'epsilon_0' 'varphi_2(0)' 'psi_{0}(omega^{omega^{Omega.2}})' \
    'psi_0(Omega_2)' 'psi_0(Omega_omega)' 'psi_{0}(I)' 'varphi_{varphi_{2}(0)}(5)+omega^{3}.7+12' \
    'psi_{0}(Omega_{Omega_{Omega_{Omega_{Omega_{3}+1}}}}+Omega_{5})' "$deep"; do
    view=$("$tool" locate "$x" --width 1280)
    "$tool" line --width 1280 $view | awk -F'\t' -v t="$("$tool" print "$x")" '
        $3 == t && $1 >= 639 && $1 <= 641 { f = 1 } END { exit !f }' && ok || bad "locate then line $x: $view"
done
case $("$tool" locate "$deep" --width 1280) in
*"--zoom 10^1"[0-9][0-9][0-9]) ok ;;
*) bad "the deep ordinal is not past 10^1000" ;;
esac
# too deep to follow: a note, the deepest view reached, status 1
view=$("$tool" locate 950 --width 1280 2>/dev/null)
case "$? $view" in
"1 --centre "*" --zoom 10^"*) ok ;;
*) bad "locate past 900 ticks: $view" ;;
esac
# right at omega, 10^3000 deep: some 19,500 converging ticks, counted, not stepped
near=$("$tool" line --width 1280 --centre 433.4592 --zoom 10^3000 |
    awk -F'\t' '$1 > 0 && $1 < 1280 { print $3 }' | head -n 2 | tr '\n' ' ')
[ "$near" = "19498 19499 " ] && ok || bad "a view on a limit: want 19498 19499, got $near"

refuse "successor" expand 'omega+1' 3
refuse "0 and has no" expand 0 3
for n in 0 1001; do refuse "N must be" expand omega $n; done
refuse "position 8" print 'omega^{x}'
refuse "uncountable cofinality" expand 'psi_{5}(psi_{11}(Omega))' 3
refuse 'ome\nga' print "$(printf 'ome\nga')"
for v in 0.0001 inf nan; do refuse "--minsize wants" line --width 1280 --minsize $v; done
for v in nan 1e300; do refuse "--zoom-at wants" line --width 1280 --zoom-at $v --factor 2 --steps 1; done
refuse "--steps wants" line --width 1280 --zoom-at 700 --factor 2 --steps 20000
refuse "--width wants" line --width 12.5
for v in 0.5 10^200001; do refuse "--zoom wants" line --width 1280 --centre 640 --zoom $v; done
refuse "go together" line --width 1280 --centre 640
refuse "--centre wants" line --width 1280 --centre 1e3 --zoom 2
refuse "two ways" line --width 1280 --centre 640 --zoom 2 --zoom-at 700 --factor 2 --steps 1
# a psi nested 100 deep: member i nests i times as deep, and a thousand of
# them are refused for their length instead of overflowing the stack
nested=$(printf 'psi_{1}(%.0s' $(seq 100))Omega$(printf ')%.0s' $(seq 100))
refuse "too long" expand "psi_{0}($nested)" 1000
refuse "above psi_{0}(I)" locate Omega --width 1280
refuse "-o FILE.png are needed" render --width 64 --height 48
refuse "--rows wants" render --width 64 --height 48 --rows 111111,11 -o x.png
refuse "missing arguments" locate omega
refuse "--row wants six digits" print omega --row 11111
refuse "not an option" cmp 1 2 --row 111111
refuse "missing arguments" cmp 1
refuse "too many arguments" print 1 2
refuse "unknown option" print 1 --fast
# a big coefficient is a short text with alpha.n, too long a one without
check 'omega.4000000000' print 'omega.4000000000'
refuse "too long" print 'omega.4000000000' --row 101111
refuse "too long" expand 'omega.4000000000+omega' 2 --row 101111
refuse "unknown command" frobnicate
# no arguments: the usage on stderr, status 2
out=$("$tool" 2>"$err")
[ $? -eq 2 ] && [ -z "$out" ] && [ "$(head -c 14 "$err")" = "usage: ordtool" ] && ok || bad "no usage"

rm -rf "$logs" "$err"
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
