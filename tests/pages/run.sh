#!/usr/bin/env bash
# The page tests: the built page in Chromium on a stand-in host: tests/pages/run.sh [FILE...]
# Pictures of every state land in build/pages.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. tests/node_files.sh

files=("$@")
[ ${#files[@]} -gt 0 ] || files=(tests/pages/*.test.mjs)
RunNodeFiles pages "${files[@]}"
