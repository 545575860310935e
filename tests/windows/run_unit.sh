#!/usr/bin/env bash
# The unit tests as a Windows program: tests/windows/run_unit.sh BUILD_DIR [GTEST_OPTION...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. tests/windows/wine_env.sh

build=${1:?usage: run_unit.sh BUILD_DIR}
shift
StartWine "$build"
Wine 560 "$build/unit_tests.exe" --gtest_brief=1 "$@" </dev/null | cat
