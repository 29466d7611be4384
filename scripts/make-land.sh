#!/usr/bin/env bash
# Remakes resources/land-110m.bin, the land outlines the map draws, from
# Natural Earth's 1:110m land as the npm package world-atlas carries it
# (TopoJSON). Needs node and npm; the package is fetched into a temporary
# directory and nothing is installed. The same package version makes the
# same file, byte for byte.
#
# Format (big-endian): "TLND", quint16 version 1, quint16 points per degree
# (100), quint32 ring count; then per ring a quint32 point count and that many
# qint16 pairs (longitude, latitude) in hundredths of a degree. Rings are
# closed implicitly (the first point is not repeated); holes are rings too and
# are told apart by the even-odd rule.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
version="2.0.2"
for tool in node npm; do
  if ! command -v "$tool" >/dev/null; then
    echo "error: $tool is missing (apt-get install nodejs npm)" >&2
    exit 1
  fi
done
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
(cd "$work" && npm pack --silent "world-atlas@$version" >/dev/null && tar xzf "world-atlas-$version.tgz")
node - "$work/package/land-110m.json" "$root/resources/land-110m.bin" <<'JS'
const fs = require("fs");
const [input, output] = process.argv.slice(2);
const topo = JSON.parse(fs.readFileSync(input, "utf8"));
const [sx, sy] = topo.transform.scale;
const [tx, ty] = topo.transform.translate;
// Arcs are delta-encoded in quantised units.
const arcs = topo.arcs.map((arc) => {
  let x = 0, y = 0;
  return arc.map(([dx, dy]) => {
    x += dx; y += dy;
    return [x * sx + tx, y * sy + ty];
  });
});
const ringPoints = (indices) => {
  const points = [];
  for (const index of indices) {
    const arc = index < 0 ? arcs[~index].slice().reverse() : arcs[index];
    // Consecutive arcs share their end points.
    points.push(...(points.length ? arc.slice(1) : arc));
  }
  return points;
};
// A ring that goes all the way round a pole (Antarctica) jumps from one edge
// of the map to the other; it is led down the edge, along the pole and back,
// so that the ring encloses the polar cap as a plain polygon.
const aroundPole = (ring) => {
  const out = [];
  for (let i = 0; i < ring.length; ++i) {
    const a = ring[i], b = ring[(i + 1) % ring.length];
    out.push(a);
    if (Math.abs(b[0] - a[0]) <= 18000) continue;
    const edge = a[0] > 0 ? 18000 : -18000;
    const span = Math.abs(edge - a[0]) + Math.abs(b[0] + edge);
    const lat = Math.round(a[1] + ((b[1] - a[1]) * Math.abs(edge - a[0])) / span);
    const pole = a[1] < 0 ? -9000 : 9000;
    for (const q of [[edge, lat], [edge, pole], [-edge, pole], [-edge, lat]]) {
      const last = out[out.length - 1];
      if (last[0] !== q[0] || last[1] !== q[1]) out.push(q);
    }
  }
  const first = out[0], last = out[out.length - 1];
  if (first[0] === last[0] && first[1] === last[1]) out.pop();
  return out;
};
const rings = [];
for (const geometry of topo.objects.land.geometries) {
  const polygons = geometry.type === "Polygon" ? [geometry.arcs] : geometry.arcs;
  for (const polygon of polygons) {
    for (const indices of polygon) {
      const quantised = [];
      for (const [lon, lat] of ringPoints(indices)) {
        const q = [Math.round(lon * 100), Math.round(lat * 100)];
        const last = quantised[quantised.length - 1];
        if (!last || last[0] !== q[0] || last[1] !== q[1]) quantised.push(q);
      }
      const first = quantised[0];
      const last = quantised[quantised.length - 1];
      if (quantised.length > 1 && first[0] === last[0] && first[1] === last[1]) quantised.pop();
      if (quantised.length >= 3) rings.push(aroundPole(quantised));
    }
  }
}
const size = 12 + rings.reduce((n, ring) => n + 4 + ring.length * 4, 0);
const out = Buffer.alloc(size);
let at = out.write("TLND", 0, "latin1");
at = out.writeUInt16BE(1, at);
at = out.writeUInt16BE(100, at);
at = out.writeUInt32BE(rings.length, at);
for (const ring of rings) {
  at = out.writeUInt32BE(ring.length, at);
  for (const [lon, lat] of ring) {
    at = out.writeInt16BE(lon, at);
    at = out.writeInt16BE(lat, at);
  }
}
fs.writeFileSync(output, out);
console.log(`==> ${rings.length} rings, ${size} bytes written to ${output}`);
JS
