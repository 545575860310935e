# shellcheck shell=bash
# The test run: every kind with its count. Sourced by ./dev.

# Kinds of one lane share a build folder and run one after the other; the lanes run beside each other, since those with
# real input mostly wait.
TestLanes=("check asan tsan fuzz" "unit simulated pages linux program" "unit-windows windows program-windows")
TestKinds="check unit simulated unit-windows linux windows pages program program-windows asan tsan fuzz"
FuzzSeconds=${FUZZ_TARGET_SECONDS:-20}

passedTotal=0
failedTotal=0
skippedTotal=0
failedKinds=()

# Reads a test runner's counts from its log: GoogleTest, node's runner (TAP), libFuzzer runs and our own closing line
# "NAME: N passed, N failed, N skipped". Sets passed, failed, skipped.
ReadCounts() {
    local log=$1
    read -r passed failed skipped < <(awk '
        /^\[  PASSED  \] [0-9]+ test/ { passed += $4 }
        /^\[  FAILED  \] [0-9]+ test/ { failed += $4 }
        /^\[  SKIPPED \] [0-9]+ test/ { skipped += $4 }
        /^# pass [0-9]+/ { passed += $3 }
        /^# fail [0-9]+/ { failed += $3 }
        /^# cancelled [0-9]+/ { failed += $3 }
        /^# skipped [0-9]+/ { skipped += $3 }
        # A runner that closes with its own line has counted what went before.
        /^[a-z-]+: [0-9]+ passed, [0-9]+ failed/ {
            closed = 1
            closedPassed += $2; closedFailed += $4
            if ($0 ~ / skipped/) closedSkipped += $6
        }
        END {
            if (closed) print closedPassed + 0, closedFailed + 0, closedSkipped + 0
            else print passed + 0, failed + 0, skipped + 0
        }' <(tr -d '\r' <"$log"))
}

# Runs one kind: its command with a limit in seconds, its output in a log, one line here.
TestKind() {
    local kind=$1 limit=$2
    shift 2
    local log=build/test/$kind.log begin=$SECONDS status=0 passed failed skipped
    mkdir -p build/test
    # A kind may leave processes behind when it is cut off: it runs in a process group of its own.
    timeout --kill-after=10 "$limit" "$@" >"$log" 2>&1 </dev/null || status=$?
    ReadCounts "$log"
    if [ "$status" = 0 ] && [ "$passed" = 0 ]; then
        echo "$kind: ran no test" >>"$log"
        status=1
    fi
    if [ "$status" != 0 ] && [ "$failed" = 0 ]; then
        failed=1
    fi
    passedTotal=$((passedTotal + passed))
    failedTotal=$((failedTotal + failed))
    skippedTotal=$((skippedTotal + skipped))
    printf '%-18s %6d passed %4d failed %4d skipped %5d s\n' "$kind" "$passed" "$failed" "$skipped" $((SECONDS - begin))
    # What was tried a second time is to be seen, also where it then passed.
    grep -a '^again: ' "$log" || true
    if [ "$failed" != 0 ]; then
        failedKinds+=("$kind")
        echo "---- $log (exit $status)"
        grep -aE '^not ok|\[  FAILED  \]|FAILED|[Ff]ailure|ERROR:|WARNING: ThreadSanitizer|runtime error|^  *error:' "$log" |
            head -n 40 || true
        tail -n 30 "$log"
        echo "----"
    fi
}

# Everything of a kind is built before it is timed; a build that fails is a failed kind.
BuildFor() {
    local kind=$1
    shift
    local log=build/test/$kind.log
    mkdir -p build/test
    if ! BuildPreset "$@" 2>"$log"; then
        failedTotal=$((failedTotal + 1))
        failedKinds+=("$kind")
        printf '%-18s does not build\n' "$kind"
        cat "$log"
        return 1
    fi
}

TestOne() {
    case "$1" in
        check) TestKind check 3000 ./dev check ;;
        unit) BuildFor unit linux unit_tests && TestKind unit 600 build/linux/unit_tests --gtest_brief=1 ;;
        simulated)
            BuildFor simulated linux simulated_tests &&
                TestKind simulated 900 build/linux/simulated_tests --gtest_brief=1
            ;;
        unit-windows)
            BuildFor unit-windows windows unit_tests && TestKind unit-windows 600 tests/windows/run_unit.sh build/windows
            ;;
        linux) BuildFor linux linux && TestKind linux 800 tests/linux/run.sh build/linux ;;
        windows) BuildFor windows windows && TestKind windows 800 tests/windows/run.sh build/windows ;;
        pages) TestKind pages 2400 tests/pages/run.sh ;;
        program) BuildFor program linux all dist && TestKind program 1500 tests/program/run.sh linux build/linux ;;
        program-windows)
            BuildFor program-windows windows all dist &&
                TestKind program-windows 2400 tests/program/run.sh windows build/windows
            ;;
        asan)
            BuildFor asan linux-asan unit_tests simulated_tests &&
                TestKind asan 1500 tools/dev/sanitized_tests.sh build/linux-asan
            ;;
        tsan)
            BuildFor tsan linux-tsan unit_tests simulated_tests &&
                TestKind tsan 1500 tools/dev/sanitized_tests.sh build/linux-tsan
            ;;
        fuzz) BuildFor fuzz linux-fuzz all && TestKind fuzz 800 tools/dev/fuzz_all.sh "$FuzzSeconds" ;;
        *)
            echo "dev: no kind of test named '$1'; there are: $TestKinds" >&2
            return 2
            ;;
    esac
}

RunKinds() {
    local kind
    for kind in "$@"; do
        TestOne "$kind" || [ $? != 2 ] || return 2
    done
}

# All lanes at once; the one with the most to compute gives way to those that a person's time is played in.
RunLanes() {
    local lane results=build/test/lanes pids=()
    rm -rf "$results"
    mkdir -p "$results"
    for lane in "${!TestLanes[@]}"; do
        (
            [ "$lane" != 0 ] || renice -n 10 "$BASHPID" >/dev/null
            # shellcheck disable=SC2086
            RunKinds ${TestLanes[lane]}
            echo "$passedTotal $failedTotal $skippedTotal ${failedKinds[*]}" >"$results/$lane"
        ) &
        pids+=($!)
    done
    wait "${pids[@]}" || true
    local passed failed skipped kinds
    for lane in "${!TestLanes[@]}"; do
        # A lane that left no result ended in the middle.
        read -r passed failed skipped kinds < <(cat "$results/$lane" 2>/dev/null || echo "0 1 0 lane-$lane")
        passedTotal=$((passedTotal + passed))
        failedTotal=$((failedTotal + failed))
        skippedTotal=$((skippedTotal + skipped))
        [ -z "$kinds" ] || failedKinds+=("$kinds")
    done
}

Test() {
    if [ "${1:-}" = list ]; then
        echo "$TestKinds"
        return 0
    fi
    Setup
    if [ $# -gt 0 ]; then
        RunKinds "$@" || return
    else
        RunLanes
    fi
    echo
    if [ ${#failedKinds[@]} -gt 0 ]; then
        echo "failed kinds: ${failedKinds[*]}"
    fi
    echo "$passedTotal passed, $failedTotal failed, $skippedTotal skipped"
    [ "$failedTotal" = 0 ]
}

Fuzz() {
    local name=${1:-} seconds=${2:-60}
    if [ "$name" = engines ]; then
        BuildPreset linux simulated_tests
        FUZZ_SECONDS=$seconds exec build/linux/simulated_tests --gtest_filter='RandomScripts*'
    fi
    if [ -z "$name" ] || [ ! -f "tests/fuzz/$name.cpp" ]; then
        echo "targets: engines $(basename -s .cpp -a tests/fuzz/*.cpp | tr '\n' ' ')" >&2
        return 2
    fi
    BuildPreset linux-fuzz "$name"
    mkdir -p "build/fuzz/$name"
    exec "build/linux-fuzz/$name" -max_total_time="$seconds" -artifact_prefix="build/fuzz/$name-" \
        "build/fuzz/$name" "tests/fuzz/corpus/$name"
}
