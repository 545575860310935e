#!/usr/bin/env bash
# Whole programs on a desktop with real input: tests/program/run.sh linux|windows BUILD_DIR [FILE...]
# The build folder holds the targets `all` and `dist`.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

home=${1:?usage: run.sh linux|windows BUILD_DIR [FILE...]}
build=${2:?usage: run.sh linux|windows BUILD_DIR [FILE...]}
shift 2
files=("$@")
[ ${#files[@]} -gt 0 ] || files=(tests/program/*.test.mjs)

if [ "$home" = windows ]; then
    . tests/windows/wine_env.sh
    StartWine "$build" desktop
fi

export VARNELLE_HOME=$home VARNELLE_BUILD=$build
unset NODE_OPTIONS
result=$(mktemp)
passed=0
failed=0
skipped=0

# Runs one file; gives its exit code.
RunFile() {
    node --test --test-reporter=tap "$1" 9>&- </dev/null 2>&1 | tee "$result"
    return "${PIPESTATUS[0]}"
}

# Number of the runner's own: pass, fail, cancelled, skipped.
Count() {
    local number
    number=$(sed -n "s/^# $1 \([0-9]*\)$/\1/p" "$result" | tail -n 1)
    echo "${number:-0}"
}

# One after the other: every file has a desktop of its own, but the two processors are shared.
for file in "${files[@]}"; do
    code=0
    RunFile "$file" || code=$?
    if [ "$code" != 0 ]; then
        # Real keys on a real desktop: one is lost now and then while the machine does something else for a second. It
        # is said, and what fails twice has failed.
        echo "again: $file: $(sed -n 's/^ *not ok [0-9]* - //p' "$result" | paste -sd ';')"
        code=0
        RunFile "$file" || code=$?
    fi
    fails=$(($(Count fail) + $(Count cancelled)))
    # A file that ended before its tests were through has failed too.
    if [ "$code" != 0 ] && [ "$fails" = 0 ]; then
        fails=1
    fi
    passed=$((passed + $(Count pass)))
    failed=$((failed + fails))
    skipped=$((skipped + $(Count skipped)))
done
rm -f "$result"
echo "program-$home: $passed passed, $failed failed, $skipped skipped"
[ "$failed" = 0 ]
