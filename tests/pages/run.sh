#!/bin/sh
# The page tests: the built page in Chromium on a stand-in host. Pictures of every state land in build/pages.
cd "$(dirname "$0")/../.." || exit 1
exec node --test --test-reporter=tap tests/pages/
