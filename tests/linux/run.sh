#!/bin/sh
# Runs the Linux backend's tests in nested servers: run.sh BUILD_DIRECTORY [TEST_FILTER]. Ends with a line
# "linux: N passed, N failed, N skipped".
set -u
build=$1
filter=${2:-*}
here=$(dirname "$0")
work=$(mktemp -d "${TMPDIR:-/tmp}/varnelle-linux.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -m 700 "$work/home" "$work/runtime"

passed=0
failed=0
skipped=0
# Try PROGRAM WINDOW_MANAGER: runs it once; sets tests, failures and skips. Fails if a test did.
Try() {
    code=0
    rm -f "$work/result.json"
    HOME="$work/home" XDG_RUNTIME_DIR="$work/runtime" VARNELLE_WINDOW_MANAGER=$2 "$here/start_servers.sh" "$1" \
        --gtest_brief=1 --gtest_filter="$filter" --gtest_output="json:$work/result.json" || code=$?
    tests=1
    failures=1
    skips=0
    if [ -s "$work/result.json" ]; then
        tests=$(sed -n '2,3s/.*"tests": \([0-9]*\).*/\1/p' "$work/result.json" | head -1)
        failures=$(sed -n '2,4s/.*"failures": \([0-9]*\).*/\1/p' "$work/result.json" | head -1)
        # A skipped test is among the tests, and says why.
        skips=$(grep -c '"result": "SKIPPED"' "$work/result.json")
    else
        echo "$(basename "$1") ended with code $code under $2 before its tests were through" >&2
    fi
    [ "$failures" -eq 0 ]
}

# Run PROGRAM WINDOW_MANAGER: repeats a program with a failure once and reports that, since a busy machine sometimes
# loses a real key.
Run() {
    if ! Try "$1" "$2"; then
        echo "repeated: $(basename "$1") under $2: $failures failed"
        Try "$1" "$2" || true
    fi
    passed=$((passed + tests - failures - skips))
    failed=$((failed + failures))
    skipped=$((skipped + skips))
}

for program in "$build"/tests/*_tests; do
    Run "$program" openbox
done
# What is about windows holds under every window manager.
for program in "$build"/tests/desktop_tests "$build"/tests/window_frame_tests; do
    Run "$program" xfwm4
done
echo "linux: $passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
