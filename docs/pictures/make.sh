#!/usr/bin/env bash
# Makes the pictures of the README and of presets.md from examples/raccoon.png, and where a folder of photographs is given,
# those of each preset on two of them. Needs vips (apt-get install libvips-tools) and a built program:
# make.sh [ORBEL [PHOTOS]].
set -euo pipefail
cd "$(dirname "$0")"
root=$(cd ../.. && pwd)
orbel=${1:-$root/build/release/orbel}
photo=$root/examples/raccoon.png
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# part FROM TO X Y WIDTH HEIGHT
part() { vips crop "$1" "$2[Q=88]" "${@:3}"; }

"$orbel" "$photo" "$work/after.png" -p landscape --quiet
part "$photo" raccoon-before.jpg 250 140 640 480
part "$work/after.png" raccoon-after.jpg 250 140 640 480

"$orbel" bands "$photo" -o "$work/bands" >/dev/null
vips copy "$work/bands/contact-sheet.png" raccoon-bands.jpg[Q=88]

# label CELL TEXT: the picture CELL.png as CELL-cell.v, with the text below.
label() {
  vips text "$1-ink.v" "$2" --font "sans 11" --dpi 96
  vips invert "$1-ink.v" "$1-label.v"
  vips colourspace "$1-label.v" "$1-label-rgb.v" srgb
  vips join "$1.png" "$1-label-rgb.v" "$1-cell.v" vertical --expand --shim 8 --background 255
}

# Every preset on the same part, under its name.
cells=()
for name in neutral clarity crisp "soft skin" "protect grain" landscape "detail map"; do
  cell=$work/${#cells[@]}
  "$orbel" "$photo" "$cell.png" -p "$name" --quiet
  vips crop "$cell.png" "$cell-part.png" 330 180 400 360
  mv "$cell-part.png" "$cell.png"
  label "$cell" "$name"
  cells+=("$cell-cell.v")
done
vips arrayjoin "${cells[*]}" "$work/presets.v" --across 4 --shim 16 --background 255
vips copy "$work/presets.v" raccoon-presets.jpg[Q=88]

# photograph NAME X Y: the original and each preset, as a whole and a part of it at 1:1.
photograph() {
  cells=()
  for name in "the original" clarity landscape crisp "soft skin" "protect grain"; do
    cell=$work/$1-${#cells[@]}
    if [ "$name" = "the original" ]; then
      vips copy "$photos/$1.jpg" "$cell-whole.png"
    else
      "$orbel" apply "$photos/$1.jpg" -o "$cell-whole.png" -p "$name" --quiet
    fi
    vips thumbnail "$cell-whole.png" "$cell-fit.png" 440 --height 440
    vips crop "$cell-whole.png" "$cell-part.png" "$2" "$3" 440 300
    vips join "$cell-fit.png" "$cell-part.png" "$cell.png" vertical --expand --shim 8 --background 255 --align centre
    label "$cell" "$name"
    cells+=("$cell-cell.v")
  done
  vips arrayjoin "${cells[*]}" "$work/$1.v" --across 3 --shim 16 --background 255
  vips copy "$work/$1.v" "presets-$1.jpg[Q=85]"
}
photos=${2:-}
if [ -n "$photos" ]; then
  photograph mountains 1350 560
  photograph dogs 700 900
fi
