#!/usr/bin/env bash
# The whole test suite: a Release build with every test, an install checked
# by a consumer project (find_package and pkg-config) and by the examples
# built against it, an AddressSanitizer + UBSan build with every test, a
# ThreadSanitizer build of the tests that exercise concurrency (label
# "tsan"), and a bounded libFuzzer run of the INI reader (FUZZ_SECONDS,
# default 60).
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

step "Install, then build and run a consumer with find_package and with pkg-config"
PREFIX="$ROOT/build/install-check"
rm -rf "$PREFIX" build/consumer
cmake --install build/release --prefix "$PREFIX" >/dev/null
CXX_COMPILER=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' build/release/CMakeCache.txt)
cmake -S tests/consumer -B build/consumer -G Ninja -DCMAKE_PREFIX_PATH="$PREFIX" \
  -DCMAKE_CXX_COMPILER="$CXX_COMPILER" >/dev/null
cmake --build build/consumer -j "$JOBS"
build/consumer/consumer_app build/consumer/libconsumer_module.so
PC_FLAGS=$(PKG_CONFIG_PATH="$PREFIX/lib/pkgconfig:$PREFIX/lib64/pkgconfig" pkg-config --cflags --libs qxbase)
"$CXX_COMPILER" -std=c++17 tests/consumer/app.cpp $PC_FLAGS -o build/consumer/consumer_app_pkgconfig
build/consumer/consumer_app_pkgconfig build/consumer/libconsumer_module.so

step "Examples built against the install, run with a class registry of their own"
rm -rf build/examples
cmake -S examples -B build/examples -G Ninja -DCMAKE_PREFIX_PATH="$PREFIX" \
  -DCMAKE_CXX_COMPILER="$CXX_COMPILER" >/dev/null
cmake --build build/examples -j "$JOBS"
sandbox_status=0
scripts/registry-sandbox.sh bash -c 'set -e
  export PLWUTILS=/opt/QueltoVideo/PLW.utils
  "$1"/bin/qxregsvr "$(ls "$1"/lib*/libqxbase.so)"
  "$1"/bin/qxregsvr build/examples/libqxexample_framestats.so
  build/examples/qxexample_copyframe
  build/examples/qxexample_measure' _ "$PREFIX" || sandbox_status=$?
if [ "$sandbox_status" -eq 77 ]; then
  echo "(the examples were built; running them needs a private mount namespace, which this machine does not give)"
elif [ "$sandbox_status" -ne 0 ]; then
  exit "$sandbox_status"
fi

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

step "Fuzzing the INI reader for ${FUZZ_SECONDS:=60} s"
cmake -S "$ROOT" -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQXBASE_SANITIZE=address,undefined -DQXBASE_BUILD_FUZZERS=ON -DQXBASE_BUILD_TESTS=OFF \
  -DQXBASE_BUILD_BENCH=OFF -DQXBASE_BUILD_TOOLS=OFF -DQXBASE_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/fuzz -j "$JOBS" --target fuzz_inifile
rm -rf build/fuzz/corpus && mkdir -p build/fuzz/corpus
if ! ASAN_OPTIONS=detect_leaks=1 build/fuzz/tests/fuzz/fuzz_inifile -max_total_time="$FUZZ_SECONDS" \
    -max_len=8192 -print_final_stats=1 build/fuzz/corpus tests/fuzz/corpus/inifile \
    >build/fuzz/fuzz.log 2>&1; then
  tail -n 80 build/fuzz/fuzz.log
  echo "The INI reader fuzzer found a fault (input saved as crash-* in $PWD)." >&2
  exit 1
fi
tail -n 8 build/fuzz/fuzz.log

echo; echo "All test stages passed."
