#!/usr/bin/env bash
# The Windows backend on real input: tests/windows/run.sh BUILD_DIR
#
# An X server of its own holds a Wine desktop; xdotool is the user, hook_probe.exe the program with the hooks,
# target.exe the application in front. Ends with the line "windows: N passed, N failed, N skipped".
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. tests/windows/wine_env.sh

build=${1:?usage: run.sh BUILD_DIR}
work=$(mktemp -d)
passed=0
failed=0
skipped=0

# ---- waiting and comparing ----

# WaitUntil COMMAND...: until it succeeds, at most 60 seconds.
WaitUntil() {
    local deadline=$((SECONDS + 60))
    until "$@" 2>/dev/null; do
        if [ $SECONDS -ge $deadline ]; then
            return 1
        fi
        sleep 0.02
    done
}

# New lines of a log since the last Mark, without the times of the target.
Mark() {
    probeMark=$(wc -l <"$work/probe.log")
    targetMark=$(wc -l <"$work/target.log")
}
NewProbe() { tail -n "+$((probeMark + 1))" "$work/probe.log"; }
NewTarget() { tail -n "+$((targetMark + 1))" "$work/target.log" | cut -d' ' -f2-; }

ProbeSaw() { NewProbe | grep -q "^$1"; }
TargetSaw() { NewTarget | grep -q "^$1"; }
ProbeCount() { [ "$(NewProbe | grep -c "^$1")" -ge "$2" ]; }

# Expect WHAT COMMAND...: the condition holds now or soon.
Expect() {
    local what=$1
    shift
    if ! WaitUntil "$@"; then
        echo "    not seen: $what ($*)"
        ok=no
    fi
}

# Refuse WHAT COMMAND...: the condition does not hold.
Refuse() {
    local what=$1
    shift
    if "$@"; then
        echo "    seen: $what ($*)"
        ok=no
    fi
}

# Same WHAT EXPECTED ACTUAL
Same() {
    if [ "$2" != "$3" ]; then
        printf '    %s\n      expected: %s\n      actual:   %s\n' "$1" "$2" "$3"
        ok=no
    fi
}

# Runs one test, a function with a readable name. Repeats a failed one once and reports that, since a busy machine
# sometimes loses a real key.
Test() {
    local try
    for try in first second; do
        ok=yes
        Mark
        "$1"
        if [ "$ok" = yes ]; then
            passed=$((passed + 1))
            echo "ok $1"
            return
        fi
        NewProbe | tail -n 12 | sed 's/^/    probe:  /'
        NewTarget | tail -n 12 | sed 's/^/    target: /'
        [ $try = second ] || echo "repeated: $1"
    done
    failed=$((failed + 1))
    echo "FAILED $1"
}

# ---- target and probe ----

StartTarget() {
    : >"$work/target.log"
    Wine 3000 "$build/tests/target.exe" "$work/target.log" Target 200 150 400 300 </dev/null >/dev/null 2>&1 &
    WaitUntil grep -q '^ready' "$work/target.log"
}

StartProbe() {
    : >"$work/probe.log"
    rm -f "$work/commands"
    mkfifo "$work/commands"
    # Without a limit around it, so that its process can be ended from here.
    wine "$build/tests/hook_probe.exe" "$work/probe.log" <"$work/commands" >/dev/null 2>&1 9>&- &
    probePid=$!
    exec 8>"$work/commands"
    WaitUntil grep -q '^ready' "$work/probe.log"
}

# Sends the probe a command and waits until it has run.
Command() {
    local before
    before=$(grep -c "^done $1\$" "$work/probe.log" || true)
    echo "$1" >&8
    WaitUntil eval "[ \$(grep -c '^done $1\$' '$work/probe.log') -gt $before ]"
}

# Waits until everything sent before has arrived: sends F2, which no test uses, and waits for it.
Settle() {
    local before
    before=$(grep -c ' key up 113 ' "$work/target.log" || true)
    xdotool key F2
    Expect "the settling key" eval "[ \$(grep -c ' key up 113 ' '$work/target.log') -gt $before ]"
}

# Moves the pointer to a point by real moves and waits until the hook has reported it there. Wine ignores the first real
# move after a sent one, so this may take a second try.
TryToPointAt() {
    xdotool mousemove $(($1 + 1)) "$2" mousemove "$1" "$2"
    sleep 0.05
    [[ "$(grep '^mouse move ' "$work/probe.log" | tail -n 1)" == "mouse move 0 $1 $2 0 0 "* ]]
}
PointAt() { Expect "the pointer at $1 $2" TryToPointAt "$1" "$2"; }

# ---- tests of the hooks ----

RealKeysAreNotInjectedAndReachTheTarget() {
    xdotool key a
    Expect "press at the hook" ProbeSaw "key down 65 0 pass"
    Expect "release at the hook" ProbeSaw "key up 65 0 pass"
    Expect "press at the target" TargetSaw "key down 65 30 0 0"
    Expect "release at the target" TargetSaw "key up 65 30 0 1"
}

LeftAndRightModifiersDiffer() {
    xdotool key Shift_L Shift_R Control_L Control_R
    Expect "left Shift" ProbeSaw "key down 160 0 pass"
    Expect "right Shift" ProbeSaw "key down 161 0 pass"
    Expect "left Ctrl" ProbeSaw "key down 162 0 pass"
    Expect "right Ctrl" ProbeSaw "key up 163 0 pass"
}

KeysUnderAltAreReported() {
    xdotool keydown Alt_L key b keyup Alt_L
    Expect "Alt itself" ProbeSaw "key down 164 0 pass"
    Expect "key under Alt" ProbeSaw "key down 66 0 pass"
    Expect "at the target" TargetSaw "key down 66 48 0 0"
}

# Wine reports no virtual key for a key sent by scan code; Windows reports the right one.
SentKeysAreInjectedAndReachTheTarget() {
    Command "send key 30 down"
    Command "send key 30 up"
    Expect "press at the hook" ProbeSaw "key down [0-9]* 1 pass"
    Expect "release at the hook" ProbeSaw "key up [0-9]* 1 pass"
    Expect "press at the target" TargetSaw "key down [0-9]* 30 0"
    Expect "release at the target" TargetSaw "key up [0-9]* 30 0"
}

AConsumedKeyIsHiddenPressAndRelease() {
    Command "consume key 117"
    xdotool key F6
    Expect "press at the hook" ProbeSaw "key down 117 0 consume"
    Expect "release at the hook" ProbeSaw "key up 117 0 consume"
    Settle
    Refuse "F6 at the target" TargetSaw "key [a-z]* 117"
    Command pass
    xdotool key F6
    Expect "F6 at the target again" TargetSaw "key up 117"
}

AHeldConsumedKeyRepeatsAtTheHookOnly() {
    Command "consume key 117"
    xdotool keydown F6
    Expect "repeats at the hook" ProbeCount "key down 117 0 consume" 3
    xdotool keyup F6
    Expect "release at the hook" ProbeSaw "key up 117 0 consume"
    Command pass
    Settle
    Refuse "F6 at the target" TargetSaw "key [a-z]* 117"
}

AKeyWhoseSinkThrowsPasses() {
    Command "throw key 67"
    xdotool key c
    Expect "press at the hook" ProbeSaw "key down 67 0 throw"
    Expect "press at the target" TargetSaw "key down 67"
    Command pass
    xdotool key c
    Expect "the hook still works" ProbeSaw "key up 67 0 pass"
}

MovesAreReportedWhereThePointerIs() {
    PointAt 400 300
    Mark
    xdotool mousemove 333 222
    Expect "at the hook" ProbeSaw "mouse move 0 333 222 0 0 pass"
    Expect "at the target" TargetSaw "move 333 222"
    xdotool mousemove 1000 700
    Expect "outside the target too" ProbeSaw "mouse move 0 1000 700 0 0 pass"
    xdotool mousemove 400 300
    Expect "back again" TargetSaw "move 400 300"
}

# PressAndRelease NAME X-BUTTON CODE
PressAndRelease() {
    xdotool click "$2"
    Expect "$1 press at the hook" ProbeSaw "mouse press $3 400 300 0 0 pass"
    Expect "$1 release at the hook" ProbeSaw "mouse release $3 400 300 0 0 pass"
    Expect "$1 press at the target" TargetSaw "button down $1 400 300"
    Expect "$1 release at the target" TargetSaw "button up $1 400 300"
}

FiveButtonsAreReportedByTheirCodes() {
    PointAt 400 300
    PressAndRelease left 1 1
    PressAndRelease right 3 2
    PressAndRelease middle 2 4
    PressAndRelease side1 8 5
    PressAndRelease side2 9 6
}

# Wine takes a thread for hung that has asked for no message for five seconds and then passes input by its hooks.
AClickAfterALongPauseReachesTheHook() {
    PointAt 400 300
    Settle
    Mark
    sleep 6
    PressAndRelease middle 2 4
}

WheelsCarrySignedDeltas() {
    PointAt 400 300
    xdotool click 4 click 5
    Expect "up at the hook" ProbeSaw "mouse wheel 0 400 300 120 0 pass"
    Expect "down at the hook" ProbeSaw "mouse wheel 0 400 300 -120 0 pass"
    Expect "up at the target" TargetSaw "wheel 120 400 300"
    Expect "down at the target" TargetSaw "wheel -120 400 300"
    xdotool click 7
    Expect "sideways at the hook" ProbeSaw "mouse hwheel 0 400 300 [-0-9]* 0 pass"
}

AConsumedButtonIsHiddenPressAndRelease() {
    PointAt 400 300
    Command "consume button 2"
    xdotool click 3
    Expect "press at the hook" ProbeSaw "mouse press 2 400 300 0 0 consume"
    Expect "release at the hook" ProbeSaw "mouse release 2 400 300 0 0 consume"
    Command pass
    Settle
    Refuse "right button at the target" TargetSaw "button [a-z]* right"
    xdotool click 3
    Expect "right button at the target again" TargetSaw "button up right"
}

SentClicksAreInjectedAndReachTheTarget() {
    PointAt 400 300
    Command "send button 1 down"
    Command "send button 1 up"
    Expect "press at the hook" ProbeSaw "mouse press 1 400 300 0 1 pass"
    Expect "release at the hook" ProbeSaw "mouse release 1 400 300 0 1 pass"
    Expect "press at the target" TargetSaw "button down left 400 300"
    Expect "release at the target" TargetSaw "button up left 400 300"
}

# 1024 is a power of two, so that the scaled coordinate comes back exactly.
SentAbsoluteMovesLandOnThePixel() {
    Command "send to $((300 * 65536 / 1024)) 32768"
    Expect "at the hook" ProbeSaw "mouse move 0 300 384 0 1 pass"
    Expect "at the target" TargetSaw "move 300 384"
}

RawReportsAreRelative() {
    PointAt 400 300
    Mark
    xdotool mousemove_relative -- 7 -3
    Expect "the report" ProbeSaw "raw 7 -3"
    Expect "the pointer" ProbeSaw "mouse move 0 407 297 0 0 pass"
    Command "send by -5 11"
    Expect "the report of a sent move" ProbeSaw "raw -5 11"
    Expect "the pointer after it" ProbeSaw "mouse move 0 402 308 0 1 pass"
}

LocksAndDisconnectsAreReportedOnce() {
    local change
    for change in 1 2 3 4 5 6 7 8 9; do
        Command "session $change"
    done
    Expect "the lock" ProbeSaw "session lock"
    Settle
    Same "session changes" "session console-disconnect session remote-disconnect session lock" "$(NewProbe | grep '^session' | xargs)"
}

AStoppedInputThreadLeavesNothingBehind() {
    # A second try has none any more.
    if ! kill -0 "$probePid" 2>/dev/null; then
        StartProbe
        Mark
    fi
    echo quit >&8
    exec 8>&-
    Expect "the end, without the hidden window" ProbeSaw "stopped 0"
    wait "$probePid" || ok=no
    Mark
    xdotool key d click 1
    Expect "key at the target" TargetSaw "key up 68"
    Expect "button at the target" TargetSaw "button up left"
}

AKilledProgramLeavesNoHook() {
    StartProbe
    Mark
    Command "consume key 69"
    Command "consume button 1"
    xdotool key e
    Expect "consumed" ProbeSaw "key up 69 0 consume"
    kill -9 "$probePid"
    wait "$probePid" 2>/dev/null || true
    exec 8>&-
    xdotool key e
    Expect "key at the target" TargetSaw "key up 69"
    xdotool mousemove 400 300 click 1
    Expect "button at the target" TargetSaw "button up left"
}

# ---- tests of the program file ----

TheProgramFileCarriesIconsManifestAndVersion() {
    local resources
    resources=$(wrestool -l "$build/dist/Varnelle.exe")
    local number
    for number in 107 108; do
        grep -q -- "--type=14 --name=$number " <<<"$resources" || Same "icon" "$number" "missing"
    done
    Same "manifests" 1 "$(grep -c -- '--type=24 --name=1 ' <<<"$resources")"
    wrestool -x --raw -t24 "$build/dist/Varnelle.exe" | grep -q 'level="requireAdministrator"' ||
        Same "level" requireAdministrator "another"
    wrestool -x --raw -t16 "$build/dist/Varnelle.exe" | strings -el | grep -qx '1\.0\.1' || Same "version" 1.0.1 none
}

# ---- the run ----

EndRun() {
    exec 8>&- || true
    StopWine
    rm -rf "$work"
}

# TryTestProgram NAME: runs it once; sets good, bad and left. Fails if a test did.
TryTestProgram() {
    local log=$work/$1.out status=0
    Wine 600 "$build/tests/$1.exe" </dev/null >"$log" 2>&1 || status=$?
    good=$(tr -d '\r' <"$log" | sed -n 's/^\[  PASSED  \] \([0-9]*\) test.*/\1/p')
    bad=$(tr -d '\r' <"$log" | sed -n 's/^\[  FAILED  \] \([0-9]*\) test.*/\1/p')
    left=$(tr -d '\r' <"$log" | sed -n 's/^\[  SKIPPED \] \([0-9]*\) test.*/\1/p')
    if [ "$status" != 0 ] && [ -z "$bad" ]; then
        bad=1  # it did not come to its end
    fi
    if [ "${bad:-0}" != 0 ]; then
        sed 's/^/    /' "$log"
        return 1
    fi
}

# Adds the counts of a GoogleTest program to ours. Shows its output, indented, only if a test fails. Repeats it once as a
# test.
RunTestProgram() {
    local good bad left
    if ! TryTestProgram "$1"; then
        echo "repeated: $1: $bad failed"
        TryTestProgram "$1" || true
    fi
    passed=$((passed + ${good:-0}))
    failed=$((failed + ${bad:-0}))
    skipped=$((skipped + ${left:-0}))
    echo "$1: ${good:-0} of $((${good:-0} + ${bad:-0})) ok"
}

StartWine "$build" desktop
trap EndRun EXIT
RunTestProgram windows_platform_tests
RunTestProgram windows_input_tests
RunTestProgram windows_frame_tests

StartTarget
StartProbe
Test RealKeysAreNotInjectedAndReachTheTarget
Test LeftAndRightModifiersDiffer
Test KeysUnderAltAreReported
Test SentKeysAreInjectedAndReachTheTarget
Test AConsumedKeyIsHiddenPressAndRelease
Test AHeldConsumedKeyRepeatsAtTheHookOnly
Test AKeyWhoseSinkThrowsPasses
Test MovesAreReportedWhereThePointerIs
Test FiveButtonsAreReportedByTheirCodes
Test AClickAfterALongPauseReachesTheHook
Test WheelsCarrySignedDeltas
Test AConsumedButtonIsHiddenPressAndRelease
Test SentClicksAreInjectedAndReachTheTarget
Test SentAbsoluteMovesLandOnThePixel
Test RawReportsAreRelative
Test LocksAndDisconnectsAreReportedOnce
Test AStoppedInputThreadLeavesNothingBehind
Test AKilledProgramLeavesNoHook

Test TheProgramFileCarriesIconsManifestAndVersion

echo "windows: $passed passed, $failed failed, $skipped skipped"
[ "$failed" = 0 ]
