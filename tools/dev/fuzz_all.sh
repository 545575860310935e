#!/usr/bin/env bash
# Every fuzz target for some seconds each, from its kept corpus: fuzz_all.sh SECONDS.
set -uo pipefail
seconds=$1
passed=0
failed=0
for source in tests/fuzz/*.cpp; do
    name=$(basename -s .cpp "$source")
    mkdir -p "build/fuzz/$name"
    if "build/linux-fuzz/$name" -max_total_time="$seconds" -rss_limit_mb=4096 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/$name-" "build/fuzz/$name" "tests/fuzz/corpus/$name"; then
        passed=$((passed + 1))
    else
        echo "fuzz target $name FAILED; the input is build/fuzz/$name-*"
        failed=$((failed + 1))
    fi
done
echo "fuzz: $passed passed, $failed failed"
[ "$failed" = 0 ]
