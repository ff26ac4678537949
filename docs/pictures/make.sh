#!/usr/bin/env bash
# Makes the pictures of the README and of presets.md from examples/raccoon.png. Needs vips (apt-get install
# libvips-tools) and a built program: make.sh [ORBEL].
set -euo pipefail
cd "$(dirname "$0")"
root=$(cd ../.. && pwd)
orbel=${1:-$root/build/release/orbel}
photo=$root/examples/raccoon.png
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# part FROM TO X Y WIDTH HEIGHT
part() { vips crop "$1" "$2[Q=88]" "${@:3}"; }

"$orbel" "$photo" "$work/after.png" --contrast 100,140,160,130,110 --quiet
part "$photo" raccoon-before.jpg 250 140 640 480
part "$work/after.png" raccoon-after.jpg 250 140 640 480

# Three times their strength, to be seen.
"$orbel" bands "$photo" -o "$work/bands" --contrast 300 >/dev/null
vips copy "$work/bands/contact-sheet.png" raccoon-bands.jpg[Q=88]

# Every preset on the same part, under its name.
cells=()
for name in neutral clarity crisp "soft skin" "protect grain" landscape "detail map"; do
  cell=$work/${#cells[@]}
  "$orbel" "$photo" "$cell.png" -p "$name" --quiet
  part "$cell.png" "$cell-part.png" 330 180 400 360
  vips text "$cell-ink.v" "$name" --font "sans 11" --dpi 96
  vips invert "$cell-ink.v" "$cell-label.v"
  vips colourspace "$cell-label.v" "$cell-label-rgb.v" srgb
  vips join "$cell-part.png" "$cell-label-rgb.v" "$cell-cell.v" vertical --expand --shim 8 --background 255
  cells+=("$cell-cell.v")
done
vips arrayjoin "${cells[*]}" "$work/presets.v" --across 4 --shim 16 --background 255
vips copy "$work/presets.v" raccoon-presets.jpg[Q=88]
