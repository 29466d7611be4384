#!/usr/bin/env bash
# Fails when any tracked C++ file differs from what clang-format makes of it.
# It also fails, saying why, when it cannot check: without git, outside a git
# work tree, or without clang-format 14 (other versions format differently).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

cannot_check() {
  echo "error: cannot check the formatting: $1" >&2
  exit 2
}

command -v git >/dev/null 2>&1 || cannot_check "git is not installed"
git rev-parse --is-inside-work-tree >/dev/null 2>&1 || cannot_check "$(pwd) is not a git work tree"
formatter=""
for candidate in clang-format-14 clang-format; do
  if command -v "$candidate" >/dev/null 2>&1 &&
    "$candidate" --version 2>/dev/null | grep -Eq 'clang-format version 14\.'; then
    formatter="$candidate"
    break
  fi
done
if [ -z "$formatter" ]; then
  found="$(clang-format --version 2>/dev/null || echo none)"
  cannot_check "clang-format 14 is needed (found: $found; bash scripts/setup-deps.sh installs it)"
fi

files=()
while IFS= read -r file; do
  files+=("$file")
done < <(git ls-files '*.cpp' '*.h')
[ ${#files[@]} -gt 0 ] || cannot_check "git lists no C++ files"

bad=0
for file in "${files[@]}"; do
  [ -f "$file" ] || continue # removed in the work tree, not yet in git
  if ! "$formatter" --dry-run --Werror "$file" >/dev/null 2>&1; then
    echo "needs clang-format: $file" >&2
    bad=1
  fi
done
if [ "$bad" -ne 0 ]; then
  echo "error: run $formatter -i on the files above" >&2
  exit 1
fi
echo "==> Formatting is clean (${#files[@]} files, $("$formatter" --version | sed 's/.*version //'))."
