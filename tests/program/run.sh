#!/usr/bin/env bash
# The built program on a desktop with real input: tests/program/run.sh linux|windows BUILD_DIR [FILE...]
# The build folder holds the targets `all` and `dist`.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. tests/node_files.sh

backend=${1:?usage: run.sh linux|windows BUILD_DIR [FILE...]}
build=${2:?usage: run.sh linux|windows BUILD_DIR [FILE...]}
shift 2
files=("$@")
[ ${#files[@]} -gt 0 ] || files=(tests/program/*.test.mjs)

if [ "$backend" = windows ]; then
    . tests/windows/wine_env.sh
    StartWine "$build" desktop
fi

export VARNELLE_BACKEND=$backend VARNELLE_BUILD=$build
unset NODE_OPTIONS
# One file after another: each has a desktop of its own, but they would share two processors.
RunNodeFiles "program-$backend" "${files[@]}"
