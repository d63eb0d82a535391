#!/usr/bin/env bash
# registry-sandbox.sh COMMAND [ARGS...]
#
# Runs a command with a class registry of its own: in a private mount
# namespace where /opt is an overlay whose changes land in a temporary
# folder, so that registering into /opt/QueltoVideo/PLW.utils changes
# nothing outside the command. Exits 77 where no such namespace can be made.
set -euo pipefail
if [ -z "${QXBASE_REGISTRY_SANDBOX:-}" ]; then
  args=(--mount --propagation private)
  if [ "$(id -u)" -ne 0 ]; then args+=(--map-root-user); fi
  if ! unshare "${args[@]}" true 2>/dev/null; then
    echo "registry-sandbox: unshare --mount is not available here" >&2
    exit 77
  fi
  dir=$(mktemp -d)
  status=0
  QXBASE_REGISTRY_SANDBOX="$dir" unshare "${args[@]}" -- "$0" "$@" || status=$?
  rm -rf "$dir"
  exit "$status"
fi
mkdir -p "$QXBASE_REGISTRY_SANDBOX/upper" "$QXBASE_REGISTRY_SANDBOX/work"
if ! mount -t overlay overlay \
    -o "lowerdir=/opt,upperdir=$QXBASE_REGISTRY_SANDBOX/upper,workdir=$QXBASE_REGISTRY_SANDBOX/work" /opt; then
  echo "registry-sandbox: cannot mount an overlay on /opt" >&2
  exit 77
fi
mkdir -p /opt/QueltoVideo/PLW.utils
unset QXBASE_REGISTRY_SANDBOX
exec "$@"
