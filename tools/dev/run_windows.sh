#!/usr/bin/env bash
# Starts Varnelle.exe under Wine on the display there is: run_windows.sh BUILD_DIR
set -euo pipefail
build=$1
. tests/windows/wine_env.sh

display=$DISPLAY
# Uses the user's display, or the virtual one that was started for this run.
StartXServer() {
    export DISPLAY=$display
}
StartWine "$build" desktop
export VARNELLE_BACKEND=windows VARNELLE_BUILD=$build
node tools/dev/run_windows.mjs 9>&-
