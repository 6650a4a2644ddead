#!/usr/bin/env bash
# Compares what ordtool writes, built from an older commit and from the work
# tree: the tick pass of `ordtool line` (texts, --columns, --arena) and the
# label and read-out texts and places of tests/compare/view_dump.cpp, over
# the first view and zoomed views of 1280 and 864 wide windows. A view that the
# older build cannot finish within the time limit is skipped and named.
# A tool for changes made for speed, not part of scripts/test.
#
#   tests/compare/compare_builds.sh OLD_REV [SECONDS]
set -uo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
rev=${1:?usage: compare_builds.sh OLD_REV [SECONDS]}
limit=${2:-60}
work=$(mktemp -d /tmp/ordline-compare.XXXXXX)
trap 'git -C "$root" worktree remove --force "$work/old" >/dev/null 2>&1; rm -rf "$work"' EXIT

# Builds ordtool and the dump tool of one tree into $2.
build_tree() {
    local tree=$1 out=$2
    cmake -S "$tree" -B "$out" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORDLINE_GRAPHICS=OFF >/dev/null &&
        cmake --build "$out" -j "$(nproc)" --target ordtool ordcore >/dev/null || return 1
    # with the view setup of ordtool
    g++ -std=c++20 -O2 -I"$tree/src" -I"$tree" "$root/tests/compare/view_dump.cpp" \
        "$tree"/tools/ordtool/ordtool_{view,args}.cpp "$out/libordcore.a" -lm -o "$out/view_dump"
}

git -C "$root" worktree add --detach "$work/old" "$rev" >/dev/null 2>&1 || { echo "cannot check out $rev" >&2; exit 2; }
build_tree "$work/old" "$work/build-old" || { echo "the build of $rev failed" >&2; exit 2; }
build_tree "$root" "$work/build-new" || { echo "the build of the work tree failed" >&2; exit 2; }

# Runs one tool of one build with a time and memory limit; prints nothing on failure.
run() {
    local build=$1; shift
    (ulimit -v 8000000; timeout "$limit" "$@") 2>/dev/null | sed "s#$build##g"
    return "${PIPESTATUS[0]}"
}

same=0 differ=0 skipped=0
# Outputs go to files: near the top of the line a listing runs to gigabytes.
compare() {
    local name=$1; shift
    local old=$work/old.txt new=$work/new.txt
    if ! (cd "$work" && run "$work/build-old" "${@//BUILD/$work/build-old}") >"$old"; then
        skipped=$((skipped + 1))
        echo "skipped (old build does not finish): $name"
        return
    fi
    # a "too deep" stretch is where the old build gave up: nothing to compare
    if grep -q 'too deep' "$old"; then
        skipped=$((skipped + 1))
        echo "skipped (old build gives up on part of the view): $name"
        return
    fi
    if ! (cd "$work" && run "$work/build-new" "${@//BUILD/$work/build-new}") >"$new"; then
        differ=$((differ + 1))
        echo "NEW BUILD DOES NOT FINISH: $name"
        return
    fi
    if cmp -s "$old" "$new"; then
        same=$((same + 1))
    else
        differ=$((differ + 1))
        echo "DIFFERENT: $name"
        diff "$old" "$new" | head -5
    fi
}

views=("--width 1280" "--width 864")
for w in 1280 864; do
    for target in 300 640 700 770 1000 1100 1150; do
        t=$((target * w / 1280))
        for depth in 10 20 50 100 200 1000; do
            views+=("--width $w --zoom-at $t --factor 10 --steps $depth")
        done
    done
done
for view in "${views[@]}"; do
    compare "line $view" BUILD/ordtool line $view
    compare "line $view --columns" BUILD/ordtool line $view --columns
    compare "line $view --columns --arena" BUILD/ordtool line $view --columns --arena
    compare "labels $view" BUILD/view_dump $view
done
echo "$same same, $differ different, $skipped skipped"
[ "$differ" -eq 0 ]
