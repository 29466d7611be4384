#!/usr/bin/env bash
# The soak: builds the program and tallis_soak, then
#   1. 5,000 web spots, a cluster node sending 200 lines/s over 500 calls for
#      60 s, 8 API clients asking, marking and logging;
#   2. the same flood over 20,000 distinct calls on 8,000 web spots (20,000 rows),
#      once with every client on whole tables and once with every client on deltas;
#   3. RBN: two local skimmer feeds sending 1,000 lines/s over 3,000 stations,
#      each heard by up to 40 skimmers, on 8,000 web spots, for twice SECONDS:
#      all 8 clients on deltas, then 4 on whole tables and 4 on deltas;
#   4. the real program's start-up to its first API "hello", 5 runs, in an
#      empty network namespace where the system allows one.
# Prints every figure; fails when a reply, mark or log line was lost.
#   bash scripts/soak.sh [SECONDS] [--docks]   (default 60 s; --docks shows the map and band map)
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/prepare.sh"
seconds=60
docks=()
for arg in "$@"; do
  case "$arg" in
    --docks) docks=(--docks) ;;
    *) seconds="$arg" ;;
  esac
done

echo "==> Building tallis and tallis_soak"
cmake --build "$build" -j"$(nproc)" --target tallis tallis_soak
soak="$build/bench/soak/tallis_soak"
[ -x "$soak" ] || { echo "error: tallis_soak was not built (is Google Benchmark installed?)" >&2; exit 1; }

echo "==> Soak 1: 500 calls"
"$soak" --spots 5000 --calls 500 --seconds "$seconds" "${docks[@]}"
echo "==> Soak 2: 20,000 calls"
"$soak" --spots 8000 --calls 20000 --seconds "$seconds" "${docks[@]}"
echo "==> Soak 2, every client on deltas"
"$soak" --spots 8000 --calls 20000 --seconds "$seconds" --delta 8 "${docks[@]}"
echo "==> Soak 3: RBN, every client on deltas"
"$soak" --spots 8000 --rate 0 --rbn 1000 --rbn-calls 3000 --seconds $((seconds * 2)) --delta 8 "${docks[@]}"
echo "==> Soak 3: RBN, 4 clients on whole tables, 4 on deltas"
"$soak" --spots 8000 --rate 0 --rbn 1000 --rbn-calls 3000 --seconds $((seconds * 2)) --delta 4 "${docks[@]}"

echo "==> Start-up time"
if unshare -rn sh -c 'ip link set lo up' >/dev/null 2>&1; then
  echo "    (in an empty network namespace)"
  unshare -rn sh -c 'ip link set lo up && exec "$0" --startup "$1" --runs 5' "$soak" "$build/app/tallis"
else
  echo "    (no network namespace here: on the host's network)"
  "$soak" --startup "$build/app/tallis" --runs 5
fi
