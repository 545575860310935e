#!/usr/bin/env bash
# Runs all measurements and prints one table with ratios: run.sh BUILD_DIR
set -uo pipefail
cd "$(dirname "$0")/.." || exit 1
build=$1
work=$(mktemp -d)
: >"$work/display"
Xvfb -screen 0 1600x1000x24 -nolisten tcp -noreset -displayfd 3 3>"$work/display" >"$work/xvfb.log" 2>&1 &
server=$!
trap 'kill $server 2>/dev/null; rm -rf "$work"' EXIT
for _ in $(seq 100); do
    [ -s "$work/display" ] && break
    sleep 0.1
done
DISPLAY=:$(head -n 1 "$work/display")
export DISPLAY

echo "== Files and lists, a million events"
"$build/bench/storage_bench"
echo
echo "== Risk scan, a million key presses"
"$build/bench/scan_bench"
echo
echo "== Theme files of 12 MB"
"$build/bench/theme_bench" "$build/dist/themes/quiet-ridges.vrltheme"
echo
echo "== Input"
"$build/bench/input_bench"
echo
echo "== Stop"
tests/linux/start_servers.sh "$build/bench/stop_bench"
echo
echo "== One hook call while recording, a million events in the macro"
"$build/bench/hook_cost_simulated"
echo
echo "== Hook calls beside polls, a million events in the macro"
"$build/bench/poll_wait"
echo
echo "== The running program with its window open, idle"
openbox --sm-disable >/dev/null 2>&1 &
manager=$!
bench/idle_cpu.sh "$build/dist/varnelle" "$work"
kill $manager 2>/dev/null
