#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer
# (clang) in a build folder of its own and runs the whole test suite there.
# The fuzz harnesses are built in the same folder, from the same instrumented
# libraries, so scripts/fuzz.sh can run them without a second build:
#   TALLIS_FUZZ_BUILD_DIR=build-asan bash scripts/fuzz.sh 20
# Undefined behaviour stops a test as a crash would; the only suppressions
# are for faults inside Hamlib itself (tests/asan.supp, tests/lsan.supp).
#   bash scripts/sanitize.sh [BUILD_DIR]      (default: build-asan)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-${TALLIS_ASAN_BUILD_DIR:-$root/build-asan}}"
command -v clang++ >/dev/null 2>&1 ||
  { echo "error: clang++ is missing (bash scripts/setup-deps.sh installs it)" >&2; exit 1; }

echo "==> Configuring the sanitizer build ($build)"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DTALLIS_SANITIZE=ON -DTALLIS_FUZZ=ON -DTALLIS_BUILD_TESTS=ON -DTALLIS_BUILD_BENCH=OFF >/dev/null

start=$SECONDS
echo "==> Building with ASan + UBSan"
cmake --build "$build" -j"$(nproc)"
built=$((SECONDS - start))

echo "==> Running the tests under ASan + UBSan"
start=$SECONDS
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
log="$build/sanitizer-tests.log"
set +e
(cd "$build" && QT_QPA_PLATFORM=offscreen ctest --output-on-failure --timeout 600 -j"$(nproc)") | tee "$log"
rc=${PIPESTATUS[0]}
set -e
ran=$((SECONDS - start))
summary="$(grep -E 'tests passed|tests failed' "$log" | tail -1)"
echo "==> Sanitizer stage: build ${built} s, tests ${ran} s; ${summary:-no ctest summary}"
exit "$rc"
