#!/usr/bin/env bash
# Remakes the installed icons in resources/icons/ from resources/logo.jpg.
# Run after changing the logo; needs ImageMagick (apt-get install imagemagick).
# The PNGs carry no time stamps, so the same logo makes the same files.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
convert="/usr/bin/convert"
if [ ! -x "$convert" ] || ! "$convert" -version 2>/dev/null | grep -q ImageMagick; then
  echo "error: ImageMagick's convert is missing (apt-get install imagemagick)" >&2
  exit 1
fi
for size in 16 24 32 48 64 128 256; do
  dir="$root/resources/icons/${size}x${size}"
  mkdir -p "$dir"
  "$convert" "$root/resources/logo.jpg" -resize "${size}x${size}" -strip \
    -define png:exclude-chunks=date,time "PNG24:$dir/org.brightwater.Tallis.png"
done
echo "==> Icons written to resources/icons/"
