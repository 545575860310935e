#!/usr/bin/env bash
# Unit and simulated tests of a build with sanitizers: sanitized_tests.sh BUILD_DIR. A report ends the test program.
set -uo pipefail
build=$1
export ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
status=0
"$build/unit_tests" --gtest_brief=1 || status=1
"$build/simulated_tests" --gtest_brief=1 || status=1
exit $status
