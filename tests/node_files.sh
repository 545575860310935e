# shellcheck shell=bash
# Runs test files of node's runner one by one. Sourced; the caller has `set -o pipefail`.
#
# RunNodeFiles NAME FILE...: runs each file, and a file that fails once more: on a busy machine a real key or a browser
# may be seconds late. A line "repeated: FILE: TESTS" names what failed the first time. A file that fails twice has
# failed. Ends with "NAME: N passed, N failed, N skipped"; fails if a test failed.
RunNodeFiles() {
    local name=$1 file code fails passed=0 failed=0 skipped=0
    shift
    nodeResult=$(mktemp)
    for file in "$@"; do
        code=0
        RunNodeFile "$file" || code=$?
        if [ "$code" != 0 ]; then
            echo "repeated: $file: $(sed -n 's/^ *not ok [0-9]* - //p' "$nodeResult" | paste -sd ';')"
            code=0
            RunNodeFile "$file" || code=$?
        fi
        fails=$(($(NodeCount fail) + $(NodeCount cancelled)))
        # A file that ended before its last test has failed too.
        if [ "$code" != 0 ] && [ "$fails" = 0 ]; then
            fails=1
        fi
        passed=$((passed + $(NodeCount pass)))
        failed=$((failed + fails))
        skipped=$((skipped + $(NodeCount skipped)))
    done
    rm -f "$nodeResult"
    echo "$name: $passed passed, $failed failed, $skipped skipped"
    [ "$failed" = 0 ]
}

# Runs one file; returns its exit code. The tests do not inherit the lock of the Wine prefix.
RunNodeFile() {
    node --test --test-reporter=tap "$1" 9>&- </dev/null 2>&1 | tee "$nodeResult"
    return "${PIPESTATUS[0]}"
}

# Prints one of the runner's counts: pass, fail, cancelled, skipped.
NodeCount() {
    local number
    number=$(sed -n "s/^# $1 \([0-9]*\)$/\1/p" "$nodeResult" | tail -n 1)
    echo "${number:-0}"
}
