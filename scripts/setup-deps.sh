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
  dpkg-dev desktop-file-utils appstream file lintian
  util-linux procps git
)

# The commands the scripts and CI stages call, each with the package that brings it: a
# package can read as installed while its command is gone, and a minimal Debian lacks
# some that a desktop has (CPack's Debian generator runs `file`).
COMMANDS=(
  cmake:cmake ninja:ninja-build c++:g++ clang++:clang clang-format:clang-format
  ctest:cmake cpack:cmake dpkg-deb:dpkg dpkg-shlibdeps:dpkg-dev file:file
  desktop-file-validate:desktop-file-utils appstreamcli:appstream lintian:lintian
  rigctld:libhamlib-utils dbus-daemon:dbus-daemon xvfb-run:xvfb unshare:util-linux
  pkg-config:pkg-config ccache:ccache git:git
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

for entry in "${COMMANDS[@]}"; do
  command -v "${entry%%:*}" >/dev/null 2>&1 || missing+=("${entry#*:}")
done
if [ ${#missing[@]} -gt 0 ]; then
  mapfile -t missing < <(printf '%s\n' "${missing[@]}" | sort -u)
fi

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
for entry in "${COMMANDS[@]}"; do
  command -v "${entry%%:*}" >/dev/null 2>&1 ||
    { echo "error: ${entry%%:*} is still missing after installing ${entry#*:}" >&2; exit 1; }
done
echo "==> Dependencies installed."
