#!/usr/bin/env bash
# Whole programs on a desktop with real input: tests/program/run.sh linux|windows BUILD_DIR [FILE...]
# The build folder holds the targets `all` and `dist`.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. tests/node_files.sh

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
# One after the other: every file has a desktop of its own, but the two processors are shared.
RunNodeFiles "program-$home" "${files[@]}"
