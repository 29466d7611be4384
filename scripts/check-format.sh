#!/usr/bin/env bash
# Fails when any tracked C++ file differs from what clang-format makes of it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
bad=0
while IFS= read -r file; do
  if ! clang-format --dry-run --Werror "$file" >/dev/null 2>&1; then
    echo "needs clang-format: $file" >&2
    bad=1
  fi
done < <(git ls-files '*.cpp' '*.h')
if [ "$bad" -ne 0 ]; then
  echo "error: run clang-format -i on the files above" >&2
  exit 1
fi
echo "==> Formatting is clean."
