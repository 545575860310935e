#!/usr/bin/env bash
# The page tests: the built page in Chromium on a fake host: tests/pages/run.sh [quick | FILE...]
# Pictures of every state land in build/pages.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
. tests/node_files.sh

# The sample of ./dev test quick: how the page asks, and its controls. The polls of a day are too long for it.
quickFiles=(tests/pages/bridge.test.mjs tests/pages/numbers.test.mjs tests/pages/list_box.test.mjs)

files=("$@")
[ ${#files[@]} -gt 0 ] || files=(tests/pages/*.test.mjs)
[ "${files[0]}" != quick ] || files=("${quickFiles[@]}")

# One built page and one browser for all files.
folder=$(mktemp -d)
node tests/pages/browser_server.mjs "$folder" </dev/null >"$folder/log" 2>&1 9>&- &
server=$!
StopServer() {
    kill "$server" 2>/dev/null || true
    wait "$server" 2>/dev/null || true
    rm -rf "$folder"
}
trap StopServer EXIT
until [ -s "$folder/browser" ]; do
    kill -0 "$server" 2>/dev/null || { cat "$folder/log" >&2; exit 1; }
    sleep 0.1
done
VARNELLE_TEST_PAGE=$folder/index.html
VARNELLE_TEST_BROWSER=$(cat "$folder/browser")
export VARNELLE_TEST_PAGE VARNELLE_TEST_BROWSER

RunNodeFiles pages "${files[@]}"
