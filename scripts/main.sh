#!/usr/bin/env bash
# Installs what is needed, builds the library and its tools, and runs the
# main job: qxregsvr registers the library's test component module into a
# temporary class registry (PLWUTILS), and the registry file is printed.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/release -j "$(nproc)" --target qxbase qxregsvr qxbase_testmodule
echo "libqxbase built: $(ls build/release/libqxbase.so.*.*)"

REGISTRY=$(mktemp -d)
trap 'rm -rf "$REGISTRY"' EXIT
MODULE=$(ls build/release/tests/com/libqxbase_testmodule.so)
echo
echo "\$ PLWUTILS=$REGISTRY qxregsvr $MODULE"
PLWUTILS="$REGISTRY" build/release/tools/qxregsvr "$MODULE"
echo
echo "\$ cat $REGISTRY/CLSIDs"
cat "$REGISTRY/CLSIDs"
