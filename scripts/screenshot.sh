#!/usr/bin/env bash
# Draws docs/screenshot.png: the real main window, offscreen, with a few dozen
# spots of every programme served from a local HTTP server, a dummy rig
# following the selection and one station marked heard; then
# docs/screenshot-map.png: the same window with the map and the band map
# shown and a far station picked.
#
#   bash scripts/screenshot.sh [output.png]     (the map picture beside it, as *-map.png)
#
# Where user namespaces are allowed it runs in a private network namespace, so
# nothing (the update check, position look-ups) leaves the machine.
set -euo pipefail

if [ "${1:-}" = "--inside" ]; then
  # Second stage: $work holds the home and the served files.
  work="$2" tool="$3" out="$4" mapout="$5"
  ip link set lo up 2>/dev/null || true
  port="$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')"
  python3 -m http.server --bind 127.0.0.1 --directory "$work/www" "$port" >/dev/null 2>&1 &
  server=$!
  trap 'kill "$server" 2>/dev/null || true' EXIT
  for _ in $(seq 50); do
    python3 -c "import socket; socket.create_connection(('127.0.0.1', $port), 0.2)" 2>/dev/null && break
    sleep 0.1
  done
  HOME="$work/home" QT_QPA_PLATFORM=offscreen "$tool" "http://127.0.0.1:$port" "$out" "$mapout"
  exit
fi

source "$(dirname "${BASH_SOURCE[0]}")/prepare.sh"
out="$(realpath -m "${1:-$root/docs/screenshot.png}")"
mapout="${out%.png}-map.png"
echo "==> Building the screenshot tool"
cmake --build "$build" -j"$(nproc)" --target tallis_screenshot

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/home/.tallis"

echo "==> Writing spots and settings"
python3 - "$work" <<'PY'
import json, os, sys, time
from datetime import datetime, timezone

work = sys.argv[1]
now = time.time()

def at(minutes_ago):
    return datetime.fromtimestamp(now - minutes_ago * 60, timezone.utc)

def put(path, document):
    path = os.path.join(work, "www", path)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as f:
        json.dump(document, f)

pota = [  # call, park, name, kHz, mode, minutes ago, grid, location, spotter, comment
    ("K8MRD", "US-1954", "Hocking Hills State Park", "14062", "CW", 1, "EM89lm", "US-OH", "W3LPL-#", "RBN 18 dB 21 WPM"),
    ("VE3KTB", "CA-0117", "Algonquin Provincial Park", "14285", "SSB", 2, "FN05ok", "CA-ON", "VA3DF", "QRV 20m"),
    ("N4JQ", "US-2736", "Chattahoochee National Forest", "7032", "CW", 3, "EM84st", "US-GA", "K4BAI", "thanks for the park"),
    ("N4JQ", "US-4567", "Appalachian National Scenic Trail", "7032", "CW", 3, "EM84st", "US-GA", "K4BAI", "two-fer"),
    ("W7ORS", "US-0735", "Mount Hood National Forest", "14244", "SSB", 5, "CN85sh", "US-OR", "KJ7ABC", ""),
    ("KD2PXE", "US-2076", "Harriman State Park", "10112", "CW", 6, "FN21vg", "US-NY", "AA1BB-#", "RBN 12 dB 18 WPM"),
    ("G4XLP", "GB-0597", "Lake District National Park", "14312", "SSB", 8, "IO84jk", "GB-ENG", "M0HCU", ""),
    ("KB1YNT", "US-0593", "Acadia National Park", "18085", "CW", 9, "FN54so", "US-ME", "VE1WT", ""),
    ("DL2ZMP", "DE-0044", "Naturpark Schwarzwald Mitte/Nord", "14070", "FT8", 11, "JN48eo", "DE-BW", "DL1QWE", "FT8 -12"),
    ("KE0OGU", "US-3311", "Rocky Mountain National Park", "21065", "CW", 12, "DN70jh", "US-CO", "KC0WX", "QSB"),
    ("VK3ANP", "AU-0021", "Alpine National Park", "14310", "SSB", 14, "QF32ts", "AU-VIC", "VK2IO", ""),
    ("W5TXA", "US-1467", "Big Bend Ranch State Park", "7185", "SSB", 17, "DL89ho", "US-TX", "N5UWY", "strong here"),
    ("NJ9Q", "US-0810", "Indiana Dunes National Park", "28460", "SSB", 21, "EN61ep", "US-IN", "KB9ZZ", "10m open"),
    ("AB1QP", "US-1616", "White Mountain National Forest", "3555", "CW", 26, "FN44dg", "US-NH", "W1AW-#", ""),
]
put("spot/index.html", [
    {"activator": c, "reference": r, "name": n, "frequency": f, "mode": m,
     "spotTime": at(a).strftime("%Y-%m-%dT%H:%M:%S"), "grid6": g, "locationDesc": l,
     "spotter": s, "comments": t}
    for c, r, n, f, m, a, g, l, s, t in pota])

sota = [  # call, summit, name, MHz, mode, minutes ago, spotter, comment
    ("G4OBK/P", "G/LD-003", "Helvellyn", 14.0615, "CW", 1, "M0MDA", "QRV now"),
    ("HB9/DL3TU/P", "HB/BE-123", "Niesen", 7.032, "CW", 4, "HB9BIN", "5W to a wire"),
    ("W7JZU", "W7A/AP-005", "Four Peaks", 14.3425, "SSB", 7, "KD7ZZ", ""),
    ("EA2BD/P", "EA2/NV-084", "Monte Arrigorrieta", 10.118, "CW", 10, "EA2LU", ""),
    ("VK2IO/P", "VK2/HU-093", "Mount Sugarloaf", 7.09, "SSB", 13, "VK3ZPF", "QRT 10 min"),
    ("OE5JFL/P", "OE/OO-237", "Schoberstein", 18.086, "CW", 16, "DL4MFM", ""),
    ("K1ABC", "W1/HA-001", "Mount Washington", 146.52, "FM", 19, "N1XYZ", "2m FM"),
    ("GM4ZFZ/P", "GM/SS-030", "Ben Lomond", 5.3665, "CW", 24, "MM0XPZ", "60m"),
]
summits = {  # where the map's position look-up finds them
    "G/LD-003": (54.527, -3.016), "HB/BE-123": (46.645, 7.651), "W7A/AP-005": (33.684, -111.325),
    "EA2/NV-084": (42.95, -1.62), "VK2/HU-093": (-32.89, 151.54), "OE/OO-237": (47.78, 13.50),
    "W1/HA-001": (44.271, -71.303), "GM/SS-030": (56.190, -4.633),
}
for ref, (lat, lon) in summits.items():
    put("api/summits/" + ref, {"latitude": lat, "longitude": lon})
put("api/spots/epoch", "screenshot")
put("api/spots/-72", [
    {"activatorCallsign": c, "summitCode": r, "summitName": n, "frequency": f, "mode": m,
     "timeStamp": at(a).strftime("%Y-%m-%dT%H:%M:%SZ"), "callsign": s, "comments": t, "type": "NORMAL"}
    for c, r, n, f, m, a, s, t in sota])

wwff = [  # call, reference, name, kHz, mode, minutes ago, spotter, remarks
    ("ON4BB/P", "ONFF-0123", "Hoge Venen", 14244.0, "SSB", 2, "DL1XYZ", "loud in JO31"),
    ("F4HZN", "FFF-0112", "Parc naturel régional du Vercors", 7144.0, "SSB", 6, "F5UKL", ""),
    ("SP9MOV", "SPFF-0012", "Babiogórski Park Narodowy", 10121.0, "CW", 9, "SQ9KEJ", ""),
    ("I1WKN", "IFF-0370", "Parco Nazionale Gran Paradiso", 14013.0, "CW", 15, "IK2XYZ", "tnx 599"),
    ("OH2NOS", "OHFF-0054", "Nuuksio", 21280.0, "SSB", 20, "OH7BX", ""),
    ("S57S", "S5FF-0001", "Triglavski narodni park", 18140.0, "SSB", 27, "S51DX", ""),
]
put("static/spots.json", [
    {"activator": c, "reference": r, "reference_name": n, "frequency_khz": f, "mode": m,
     "spot_time": int(now - a * 60), "spotter": s, "remarks": t}
    for c, r, n, f, m, a, s, t in wwff])

wwbota = [  # call, references, MHz, mode, minutes ago, spotter, comment
    ("G0ABC/P", [("B/G-0001", "Pillbox at Dover"), ("B/G-0002", "Coastal battery")], 7.144, "SSB", 3, "M0XYZ", "cq cq"),
    ("ON4ABC", [("B/ON-0042", "Fort Eben-Emael")], 14.062, "CW", 8, "ON3ZZ", ""),
    ("M0WBB", [("B/G-1207", "Type 24 pillbox, Rye")], 14.285, "SSB", 18, "G4ABC", "QRV 20"),
]
put("spots/index.html", [
    {"call": c, "references": [{"reference": r, "name": n} for r, n in refs], "freq": f, "mode": m,
     "time": at(a).strftime("%Y-%m-%dT%H:%M:%SZ"), "spotter": s, "comment": t, "type": "Live"}
    for c, refs, f, m, a, s, t in wwbota])

gma = [  # call, reference, name, kHz, mode, minutes ago, spotter, text
    ("DL1ABC", "DM/BW-001", "Feldberg", "7032", "CW", 4, "DL2XYZ", "tnx fer QSO"),
    ("OE5XYZ/P", "OE/OO-123", "Traunstein", "14285.0", "SSB", 10, "OE3ABC", ""),
    ("DM5GG/P", "DM/SX-012", "Fichtelberg", "10118", "CW", 22, "DL7UXG", "sunny"),
]
put("api/spots/gma/index.html", {"RCD": [
    {"ACTIVATOR": c, "REF": r, "NAME": n, "QRG": f, "MODE": m, "SPOTTER": s, "TEXT": t,
     "DATE": at(a).strftime("%Y%m%d"), "TIME": at(a).strftime("%H%M")}
    for c, r, n, f, m, a, s, t in gma]})

settings = {
    "callsign": "K1TLS",
    "hamlib": {"rigModel": 1},  # Hamlib's dummy rig: no port, opened by the tool
    "hasUserLocation": True, "latitude": 42.36, "longitude": -71.06,
    "watchCallsigns": ["W7ORS"],
    "wsEnabled": False, "alertsEnabled": False,
}
with open(os.path.join(work, "home/.tallis/settings.json"), "w") as f:
    json.dump(settings, f, indent=4)
PY

echo "==> Drawing $out"
tool="$build/tools/tallis_screenshot"
self="$(realpath "${BASH_SOURCE[0]}")"
if unshare -rn true 2>/dev/null; then
  unshare -rn bash "$self" --inside "$work" "$tool" "$out" "$mapout"
else
  echo "    (no private network namespace here: running in the ordinary one)"
  bash "$self" --inside "$work" "$tool" "$out" "$mapout"
fi
echo "==> Wrote $out and $mapout"
