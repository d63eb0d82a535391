#!/usr/bin/env bash
# Installs what is needed, builds everything (library, tools, examples,
# tests, benchmarks) and runs the main job: qxconvert draws the built-in
# colour bars in 8-bit YUYV, the host buffer engine converts them to v210
# and on to 8-bit RGBA, and the result is written as a PNG picture.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/release -j "$(nproc)"
echo "libqxbase built: $(ls build/release/libqxbase.so.*.*)"

OUTPUT=${1:-build/bars.png}
echo
echo "\$ qxconvert -v --pattern bars --size 1920x1080 --format yuyv8 --to v210,argb -o $OUTPUT"
build/release/tools/qxconvert -v --pattern bars --size 1920x1080 --format yuyv8 --to v210,argb -o "$OUTPUT"
echo "Look at $OUTPUT: 75% colour bars over reversed blue bars, a white patch and a PLUGE."
