#!/usr/bin/env bash
# Installs what is missing, builds Tallis and runs the whole test suite.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/prepare.sh"

echo "==> Building"
cmake --build "$build" -j"$(nproc)"

echo "==> Running the tests"
cd "$build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure --timeout 300 -j"$(nproc)"
