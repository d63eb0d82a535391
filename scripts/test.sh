#!/usr/bin/env bash
# The whole test suite: a Release build with every test, an AddressSanitizer +
# UBSan build with every test, and a ThreadSanitizer build of the tests that
# exercise concurrency (label "tsan").
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
JOBS=${JOBS:-$(nproc)}
"$ROOT/scripts/install-deps.sh"

step() { echo; echo "=== $* ==="; }

configure_build() {  # dir, extra cmake args...
  local dir=$1; shift
  cmake -S "$ROOT" -B "$dir" -G Ninja "$@" >/dev/null
  cmake --build "$dir" -j "$JOBS"
}

step "Release build and tests"
configure_build build/release -DCMAKE_BUILD_TYPE=Release
ctest --test-dir build/release --output-on-failure -j "$JOBS"

step "AddressSanitizer + UBSan build and tests"
configure_build build/asan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQXBASE_SANITIZE=address,undefined \
  -DQXBASE_BUILD_BENCH=OFF
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir build/asan --output-on-failure -j "$JOBS" -LE no-asan

step "ThreadSanitizer build and concurrency tests"
configure_build build/tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQXBASE_SANITIZE=thread \
  -DQXBASE_BUILD_BENCH=OFF -DQXBASE_BUILD_TOOLS=OFF -DQXBASE_BUILD_EXAMPLES=OFF
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
  ctest --test-dir build/tsan --output-on-failure -j "$JOBS" -L tsan

echo; echo "All test stages passed."
