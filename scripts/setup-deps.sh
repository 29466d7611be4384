#!/usr/bin/env bash
# Installs every Debian package needed to build, run and test Tallis.
# Idempotent: does nothing when everything is already present.
set -euo pipefail

PACKAGES=(
  build-essential g++ cmake ninja-build pkg-config clang-format
  qt6-base-dev qt6-base-dev-tools qt6-websockets-dev qt6-serialport-dev
  libqt6opengl6-dev libgl-dev
  libhamlib-dev libhamlib-utils
  libbenchmark-dev
  xvfb xauth ccache dbus dbus-daemon
  clang libclang-rt-14-dev
  dpkg-dev desktop-file-utils appstream
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "==> All build dependencies are present."
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1; then
    SUDO="sudo"
  else
    echo "error: need root or sudo to install: ${missing[*]}" >&2
    exit 1
  fi
fi

echo "==> Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -q
$SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
echo "==> Dependencies installed."
