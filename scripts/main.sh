#!/usr/bin/env bash
# Installs what is needed, builds the library and its tools, and runs the
# main job.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/release -j "$(nproc)"
echo "libqxbase built: $(ls build/release/libqxbase.so.*.*)"
