# shellcheck shell=bash
# The test run: every kind with its count. Sourced by ./dev.

# Kinds of one lane share a build folder and run one after the other. The lanes run side by side, since kinds with real
# input mostly wait. A lane that begins with "nice" gives way to the kinds with real input; two of them keep both
# processors busy to the end.
TestLanes=("nice check fuzz" "nice asan tsan" "unit simulated pages linux program" "unit-windows windows program-windows")
TestKinds="check unit simulated unit-windows linux windows pages program program-windows asan tsan fuzz"
# What a change is checked with before it is shown to anyone: two minutes after a build.
QuickLanes=("check-quick pages-quick" "unit simulated")
QuickKinds="check-quick unit simulated pages-quick"
FuzzSeconds=${FUZZ_TARGET_SECONDS:-20}

# A row for each kind that ran: kind, passed, failed, skipped, seconds, repeated.
TestResults=build/test/results

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

# Records a row and shows it: kind, passed, failed, skipped, seconds, repeated.
RecordResult() {
    echo "$*" >>"$TestResults"
    printf '%-18s %6d passed %4d failed %4d skipped %5d s\n' "$1" "$2" "$3" "$4" "$5"
}

# Runs one kind: its command with a limit in seconds, its output in a log, one line here.
TestKind() {
    local kind=$1 limit=$2
    shift 2
    local log=build/test/$kind.log begin=$SECONDS status=0 passed failed skipped
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
    RecordResult "$kind" "$passed" "$failed" "$skipped" $((SECONDS - begin)) "$(grep -ac '^repeated: ' "$log")"
    if [ "$failed" != 0 ]; then
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
    if ! BuildPreset "$@" 2>"$log"; then
        RecordResult "$kind" 0 1 0 0 0
        printf '%-18s does not build\n' "$kind"
        cat "$log"
        return 1
    fi
}

TestOne() {
    case "$1" in
        check) TestKind check 3000 ./dev check ;;
        check-quick) TestKind check-quick 300 ./dev check quick ;;
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
        pages-quick) TestKind pages-quick 600 tests/pages/run.sh quick ;;
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
    esac
}

RunKinds() {
    local kind
    for kind in "$@"; do
        TestOne "$kind" || true # a build that failed has its row
    done
}

# RunLanes LANE...: all of them side by side.
RunLanes() {
    local lane kinds pids=()
    for lane in "$@"; do
        (
            read -r -a kinds <<<"$lane"
            if [ "${kinds[0]}" = nice ]; then
                renice -n 10 "$BASHPID" >/dev/null
                kinds=("${kinds[@]:1}")
            fi
            RunKinds "${kinds[@]}"
        ) &
        pids+=($!)
    done
    wait "${pids[@]}" || true
}

# ShowSummary KIND...: the closing table, what was repeated, and the totals. Fails if a test failed.
ShowSummary() {
    local kind passed failed skipped seconds repeated failedKinds=() logs=()
    local passedTotal=0 failedTotal=0 skippedTotal=0 repeatedTotal=0
    printf '\n%-16s %8s %8s %8s %8s %8s\n' kind passed failed skipped seconds repeated
    for kind in "$@"; do
        # A kind without a row was cut off.
        read -r _ passed failed skipped seconds repeated < <(grep "^$kind " "$TestResults" || echo "$kind 0 1 0 0 0")
        printf '%-16s %8d %8d %8d %8d %8d\n' "$kind" "$passed" "$failed" "$skipped" "$seconds" "$repeated"
        passedTotal=$((passedTotal + passed))
        failedTotal=$((failedTotal + failed))
        skippedTotal=$((skippedTotal + skipped))
        repeatedTotal=$((repeatedTotal + repeated))
        [ "$failed" = 0 ] || failedKinds+=("$kind")
        [ "$repeated" = 0 ] || logs+=("build/test/$kind.log")
    done
    echo
    echo "repeated: $repeatedTotal"
    [ "$repeatedTotal" = 0 ] || grep -ah '^repeated: ' "${logs[@]}" | sed 's/^repeated: /    /'
    [ ${#failedKinds[@]} = 0 ] || echo "failed kinds: ${failedKinds[*]}"
    echo "$passedTotal passed, $failedTotal failed, $skippedTotal skipped"
    [ "$failedTotal" = 0 ]
}

# Test [quick | list | KIND...]
Test() {
    local kind kinds=("$@")
    case "${1:-}" in
        list)
            echo "$TestKinds"
            return 0
            ;;
        quick)
            read -r -a kinds <<<"$QuickKinds"
            export FUZZ_SEEDS=500 # a quarter of the random scripts
            ;;
        "") read -r -a kinds <<<"$TestKinds" ;;
    esac
    for kind in "${kinds[@]}"; do
        if [[ " $TestKinds $QuickKinds " != *" $kind "* ]]; then
            echo "dev: no kind of test named '$kind'; there are: $TestKinds" >&2
            return 2
        fi
    done
    Setup
    mkdir -p build/test
    : >"$TestResults"
    case "${1:-}" in
        quick) RunLanes "${QuickLanes[@]}" ;;
        "")
            # The lane of check reads this folder while the lane of asan builds in it.
            BuildPreset linux-asan build.ninja
            RunLanes "${TestLanes[@]}"
            ;;
        *) RunKinds "${kinds[@]}" ;;
    esac
    ShowSummary "${kinds[@]}"
}

# Twenty times what the test run does: 500 kills at random, 200 inside a save, 200 crashes during one, 100 full disks.
# Then every file operation of loading and saving fails in turn.
FuzzKill() {
    BuildPreset linux session_writer full_disk simulated_tests
    SESSION_KILLS=${SESSION_KILLS:-20} VARNELLE_BACKEND=linux VARNELLE_BUILD=build/linux \
        node --test --test-reporter=spec tests/program/kills.test.mjs
    build/linux/simulated_tests --gtest_brief=1 --gtest_filter='FileFaults.*'
}

Fuzz() {
    local name=${1:-} seconds=${2:-60}
    if [ "$name" = engines ]; then
        BuildPreset linux simulated_tests
        FUZZ_SECONDS=$seconds exec build/linux/simulated_tests --gtest_filter='RandomScripts*'
    fi
    if [ "$name" = kill ]; then
        FuzzKill
        return
    fi
    if [ -z "$name" ] || [ ! -f "tests/fuzz/$name.cpp" ]; then
        echo "targets: engines kill $(basename -s .cpp -a tests/fuzz/*.cpp | tr '\n' ' ')" >&2
        return 2
    fi
    BuildPreset linux-fuzz "$name"
    mkdir -p "build/fuzz/$name"
    exec "build/linux-fuzz/$name" -max_total_time="$seconds" -artifact_prefix="build/fuzz/$name-" \
        "build/fuzz/$name" "tests/fuzz/corpus/$name"
}
