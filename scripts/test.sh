#!/usr/bin/env bash
# Installs what is missing, builds Tallis and runs the whole test suite.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TALLIS_BUILD_DIR:-$root/build}"

echo "==> Checking build dependencies"
bash "$root/scripts/setup-deps.sh"

echo "==> Configuring ($build)"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null

echo "==> Building"
cmake --build "$build" -j"$(nproc)"

echo "==> Running the tests"
cd "$build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --timeout 300 -j"$(nproc)"
