# shellcheck shell=bash
# Runs test files of node's runner one by one. Sourced; the caller has `set -o pipefail`.
#
# RunNodeFiles NAME FILE...: a file that fails is run once more. Real keys on a real desktop and a browser beside three
# compilers: one thing in a thousand comes too late while the machine does something else for a second. It is said in a
# line "again: FILE: TESTS", and what fails twice has failed. Ends with "NAME: N passed, N failed, N skipped"; fails if
# a test did.
RunNodeFiles() {
    local name=$1 file code fails passed=0 failed=0 skipped=0
    shift
    nodeResult=$(mktemp)
    for file in "$@"; do
        code=0
        RunNodeFile "$file" || code=$?
        if [ "$code" != 0 ]; then
            echo "again: $file: $(sed -n 's/^ *not ok [0-9]* - //p' "$nodeResult" | paste -sd ';')"
            code=0
            RunNodeFile "$file" || code=$?
        fi
        fails=$(($(NodeCount fail) + $(NodeCount cancelled)))
        # A file that ended before its tests were through has failed too.
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

# Runs one file; gives its exit code. The lock of a Wine prefix is not its to hold.
RunNodeFile() {
    node --test --test-reporter=tap "$1" 9>&- </dev/null 2>&1 | tee "$nodeResult"
    return "${PIPESTATUS[0]}"
}

# A number of the runner's own: pass, fail, cancelled, skipped.
NodeCount() {
    local number
    number=$(sed -n "s/^# $1 \([0-9]*\)$/\1/p" "$nodeResult" | tail -n 1)
    echo "${number:-0}"
}
