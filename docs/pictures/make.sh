#!/usr/bin/env bash
# Makes the pictures of the README from examples/raccoon.png. Needs ImageMagick (apt-get install imagemagick).
set -euo pipefail
cd "$(dirname "$0")"
root=../..
photo=$root/examples/raccoon.png
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

equalize() { "$root/equalize" "$@" --quiet; }

equalize "$photo" "$work/after.png" --contrast 100,140,160,130,110
convert "$photo" -crop 640x480+250+140 +repage -quality 88 raccoon-before.jpg
convert "$work/after.png" -crop 640x480+250+140 +repage -quality 88 raccoon-after.jpg

# A band alone: every other gain and the residual at 0, around mid-grey. Three times its strength, to be seen.
for band in 1 2 3 4 5; do
  equalize "$photo" "$work/band$band.png" --planes --half --factor 0 --contrast 0 --set "CON$band=300"
done
equalize "$photo" "$work/residual.png" --planes --contrast 0
montage -label 'band 1 (finest)' "$work/band1.png" -label 'band 2' "$work/band2.png" -label 'band 3' "$work/band3.png" \
  -label 'band 4' "$work/band4.png" -label 'band 5' "$work/band5.png" -label 'residual' "$work/residual.png" \
  -tile 3x2 -resize 420x -geometry +4+4 -pointsize 16 -quality 88 raccoon-bands.jpg
