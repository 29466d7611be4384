#!/usr/bin/env bash
# Sourced by run.sh and test.sh: installs what is missing and configures the
# build directory. Sets $root and $build.
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TALLIS_BUILD_DIR:-$root/build}"

echo "==> Checking build dependencies"
bash "$root/scripts/setup-deps.sh"

echo "==> Configuring ($build)"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
