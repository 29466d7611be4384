#!/usr/bin/env bash
# Builds the Debian package from a configured build folder, unpacks it into a
# scratch root and checks that the program, its desktop entry, icons and
# AppStream metainfo are where the desktop looks for them, that they validate,
# that the package depends on the libraries the program links and that lintian
# finds no error in it (its warnings are printed).
#   bash scripts/check-package.sh [BUILD_DIR]      (default: build)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-${TALLIS_BUILD_DIR:-$root/build}}"
app_id=org.brightwater.Tallis

for tool in cpack dpkg-deb dpkg-shlibdeps desktop-file-validate appstreamcli lintian; do
  command -v "$tool" >/dev/null 2>&1 ||
    { echo "error: $tool is missing (bash scripts/setup-deps.sh installs it)" >&2; exit 1; }
done
[ -f "$build/CMakeCache.txt" ] || { echo "error: $build is not a configured build folder" >&2; exit 1; }
build="$(cd "$build" && pwd)"

echo "==> Building the program and the package ($build)"
cmake --build "$build" -j"$(nproc)" --target tallis
out="$build/package"
rm -rf "$out"
(cd "$build" && cpack -G DEB -B "$out" >/dev/null)
deb="$(ls "$out"/tallis_*.deb)"
echo "    $(basename "$deb"), $(du -k "$deb" | cut -f1) KiB"

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
dpkg-deb -x "$deb" "$scratch"
fail=0
need() {
  if [ ! -e "$scratch/$1" ]; then
    echo "missing from the package: /$1" >&2
    fail=1
  fi
}
need usr/bin/tallis
need "usr/share/applications/$app_id.desktop"
need "usr/share/metainfo/$app_id.metainfo.xml"
need usr/share/doc/tallis/copyright
need usr/share/doc/tallis/changelog.gz
need usr/share/man/man1/tallis.1.gz
for size in 16 24 32 48 64 128 256; do
  need "usr/share/icons/hicolor/${size}x${size}/apps/$app_id.png"
done
[ "$fail" -eq 0 ] || exit 1

desktop-file-validate "$scratch/usr/share/applications/$app_id.desktop"
appstreamcli validate --no-net --explain "$scratch/usr/share/metainfo/$app_id.metainfo.xml" >/dev/null
# The entry starts what the package installs, under the icon it installs.
grep -qx 'Exec=tallis' "$scratch/usr/share/applications/$app_id.desktop"
grep -qx "Icon=$app_id" "$scratch/usr/share/applications/$app_id.desktop"

# The AppStream release and the About box date the release by the one build time.
build_time="$(sed -n 's/^TALLIS_BUILD_TIME:STRING=//p' "$build/CMakeCache.txt")"
release_date="$(date -u -d "@$build_time" +%F)"
grep -q "date=\"$release_date\"" "$scratch/usr/share/metainfo/$app_id.metainfo.xml" ||
  { echo "error: the AppStream release is not dated $release_date, the build time" >&2; exit 1; }
if dpkg-deb -f "$deb" Description | grep -qx '.*;.*'; then
  echo "error: a CMake list separator leaked into the package description" >&2
  exit 1
fi

# Under root lintian says it would rather not; the advice is noise here.
lint_rc=0
lint="$(lintian --fail-on error --tag-display-limit 0 "$deb" 2> >(grep -v 'root privileges' >&2))" || lint_rc=$?
echo "==> lintian: ${lint:-no errors, no warnings}"
[ "$lint_rc" -eq 0 ] || { echo "error: lintian finds errors in the package" >&2; exit 1; }

depends="$(dpkg-deb -f "$deb" Depends)"
echo "    Depends: $depends"
for lib in libqt6core6 libqt6widgets6 libqt6network6 libqt6websockets6 libhamlib4; do
  case "$depends" in
    *"$lib"*) ;;
    *) echo "error: the package does not depend on $lib" >&2; exit 1 ;;
  esac
done
# The unpacked program runs: its one argument answers without a display.
answer="$("$scratch/usr/bin/tallis" --text 2>&1 || true)"
if [[ "$answer" == *"compiled without ncurses"* ]]; then
  echo "==> Package is complete: $(basename "$deb")"
else
  echo "error: the packaged program does not run" >&2
  exit 1
fi
