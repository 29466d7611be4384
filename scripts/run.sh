#!/usr/bin/env bash
# Installs what is missing, builds Tallis and starts it.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TALLIS_BUILD_DIR:-$root/build}"

echo "==> Checking build dependencies"
bash "$root/scripts/setup-deps.sh"

echo "==> Configuring ($build)"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

echo "==> Building"
cmake --build "$build" -j"$(nproc)" --target tallis

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ] && [ -z "${QT_QPA_PLATFORM:-}" ]; then
  echo "error: no display available (neither DISPLAY nor WAYLAND_DISPLAY is set)." >&2
  echo "       Start Tallis from a desktop session, or under a virtual one: xvfb-run $0" >&2
  exit 1
fi

echo "==> Starting Tallis"
exec "$build/tallis" "$@"
