#!/usr/bin/env bash
# Every fuzz target for some seconds each, two at a time, from its kept corpus: fuzz_all.sh SECONDS.
set -uo pipefail
export seconds=$1

# Shows the output of the target when it has ended, in one piece.
RunTarget() {
    local name=$1 log=build/fuzz/$1.log status=ok
    mkdir -p "build/fuzz/$name"
    "build/linux-fuzz/$name" -max_total_time="$seconds" -rss_limit_mb=4096 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/$name-" "build/fuzz/$name" "tests/fuzz/corpus/$name" >"$log" 2>&1 ||
        status="FAILED; the input is build/fuzz/$name-*"
    # One write, so that the lines of the other target do not come in between.
    printf '%s\n' "$(cat "$log")" "fuzz target $name $status" | grep -av '^#'
}
export -f RunTarget

mkdir -p build/fuzz
passed=0
failed=0
targets=$(basename -s .cpp -a tests/fuzz/*.cpp)
# shellcheck disable=SC2016
xargs -P 2 -I{} bash -c 'RunTarget "$1"' fuzz {} <<<"$targets" | tee build/fuzz/all.log
for name in $targets; do
    if grep -aq "^fuzz target $name ok\$" build/fuzz/all.log; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
    fi
done
echo "fuzz: $passed passed, $failed failed"
[ "$failed" = 0 ]
