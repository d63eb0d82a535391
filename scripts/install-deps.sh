#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the comparisons use.
set -euo pipefail
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
PACKAGES=(cmake ninja-build pkg-config
          libgtest-dev libgmock-dev libbenchmark-dev
          libyuv-dev libswscale-dev libavcodec-dev libavutil-dev libpng-dev)
missing=()
for p in "${PACKAGES[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ "${#missing[@]}" -gt 0 ]; then
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
if [ ! -x /opt/swift/usr/bin/clang++ ] && ! command -v clang++ >/dev/null; then
  echo "install-deps: no clang++ found; qxbase needs clang with -fblocks (a Swift toolchain for Linux ships one)" >&2
  exit 1
fi
