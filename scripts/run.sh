#!/usr/bin/env bash
# Installs what is missing, builds Tallis and starts it.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/prepare.sh"

echo "==> Building"
cmake --build "$build" -j"$(nproc)" --target tallis

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "error: no display available (neither DISPLAY nor WAYLAND_DISPLAY is set)." >&2
  echo "       Start Tallis from a desktop session, or under a virtual one: xvfb-run bash $0" >&2
  exit 1
fi

echo "==> Starting Tallis"
exec "$build/tallis" "$@"
