#!/usr/bin/env bash
# Builds the libFuzzer harnesses (clang, ASan + UBSan) and runs each for
# SECONDS on its seeds, one after the other. Fails when any finds a crash, leak,
# timeout or broken property; the input that did it is left in the build
# folder as crash-*, leak-* or timeout-*.
#   bash scripts/fuzz.sh [SECONDS] [harness...]     (default 20 s, all)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TALLIS_FUZZ_BUILD_DIR:-$root/build-fuzz}"
seconds="${1:-20}"
shift || true
harnesses=("$@")
if [ ${#harnesses[@]} -eq 0 ]; then
  harnesses=(pota sota wwff wwbota gma zlota parksnpeaks dxcluster rbn settings contactstatus coordcache api lwclient adif outbox)
fi
case "$seconds" in
  '' | *[!0-9]*) echo "error: SECONDS must be a whole number, not '$seconds'" >&2; exit 2 ;;
esac
if ! command -v clang++ >/dev/null 2>&1; then
  echo "error: clang++ is missing (bash scripts/setup-deps.sh installs it)" >&2
  exit 1
fi

# A folder configured already (the sanitizer build, say) keeps its other
# choices; a new one builds only the libraries and the harnesses.
if [ -f "$build/CMakeCache.txt" ]; then
  echo "==> Reusing the build folder $build"
  cmake -S "$root" -B "$build" -DTALLIS_FUZZ=ON >/dev/null
else
  echo "==> Configuring the fuzzing build ($build)"
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_COMPILER=clang++ -DTALLIS_FUZZ=ON -DTALLIS_BUILD_TESTS=OFF -DTALLIS_BUILD_BENCH=OFF >/dev/null
fi
targets=()
for h in "${harnesses[@]}"; do targets+=("fuzz_$h"); done
echo "==> Building ${targets[*]}"
cmake --build "$build" -j"$(nproc)" --target "${targets[@]}"

# Leaks and undefined behaviour are failures; the loaders may write their
# files many thousand times a minute, so give them room.
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
export QT_QPA_PLATFORM=offscreen
summary=()
status=0
for h in "${harnesses[@]}"; do
  corpus="$build/fuzz-corpus/$h"
  mkdir -p "$corpus" "$build/fuzz-artifacts/$h"
  log="$build/fuzz-artifacts/$h/run.log"
  echo "==> fuzz_$h for ${seconds}s"
  # New inputs go to the scratch corpus; the seeds in the tree stay as they are.
  if "$build/fuzz/fuzz_$h" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
      -print_final_stats=1 -artifact_prefix="$build/fuzz-artifacts/$h/" \
      "$corpus" "$root/fuzz/corpus/$h" >"$log" 2>&1; then
    execs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)"
    summary+=("$(printf '%-14s %10s runs in %ss' "$h" "${execs:-?}" "$seconds")")
  else
    status=1
    summary+=("$(printf '%-14s FAILED (see %s)' "$h" "$log")")
    tail -n 60 "$log" >&2
  fi
done
echo "==> Fuzzing summary"
printf '  %s\n' "${summary[@]}"
exit "$status"
