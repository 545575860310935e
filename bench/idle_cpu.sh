#!/usr/bin/env bash
# Measures the processor share of a running program that does nothing: idle_cpu.sh PROGRAM WORK_FOLDER
set -uo pipefail
program=$1
export LOCALAPPDATA=$2/data XDG_RUNTIME_DIR=$2/run XDG_CONFIG_HOME=$2/config
mkdir -p "$LOCALAPPDATA" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
seconds=20

# Returns the processor ticks of a process and of all its descendants: the native program and the web view.
TicksOf() {
    awk '{ sub(/^.*\) /, ""); print $12 + $13 }' "/proc/$1/stat" 2>/dev/null || echo 0
}
Below() {
    local child
    for child in $(pgrep -P "$1"); do
        echo "$child"
        Below "$child"
    done
}
TicksBelow() {
    local sum=0 child
    for child in $(Below "$1"); do
        sum=$((sum + $(TicksOf "$child")))
    done
    echo "$sum"
}

"$program" >"$2/idle.log" 2>&1 &
process=$!
for _ in $(seq 200); do
    [ -s "$LOCALAPPDATA/Varnelle/status.txt" ] && break
    sleep 0.1
done
if [ ! -s "$LOCALAPPDATA/Varnelle/status.txt" ]; then
    echo "  the program's page never asked for its status; see its output:"
    cat "$2/idle.log"
    kill "$process" 2>/dev/null
    exit 1
fi
# The first seconds build and draw the page.
sleep 10
own=$(TicksOf "$process")
web=$(TicksBelow "$process")
sleep "$seconds"
own=$(($(TicksOf "$process") - own))
web=$(($(TicksBelow "$process") - web))
awk -v own="$own" -v web="$web" -v s="$seconds" -v hz="$(getconf CLK_TCK)" 'BEGIN {
    printf "  the program itself %28.2f %% of one processor\n", own * 100 / hz / s
    printf "  the web view below it %25.2f %%\n", web * 100 / hz / s }'
kill "$process" 2>/dev/null
wait "$process" 2>/dev/null
