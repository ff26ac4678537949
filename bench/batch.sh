#!/usr/bin/env bash
# How long orbel takes for a folder of photographs, one after the other and two at a time. Arguments: the picture (default
# examples/raccoon.png, enlarged to 6 megapixels), and how many copies of it (default 12). Needs a built orbel and the
# program vips (libvips-tools).
set -eu
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
orbel=$root/build/release/orbel
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/in"
if [ $# -gt 0 ]; then
  vips copy "$1" "$folder/in/1.jpg"
else
  vips resize "$root/examples/raccoon.png" "$folder/in/1.jpg" 2.76
fi
for i in $(seq 2 "${2:-12}"); do cp "$folder/in/1.jpg" "$folder/in/$i.jpg"; done

TIMEFORMAT="%U + %S s of processor time, %R s"
for jobs in "-j 1 -t 1" "-j 1" "-j 2" "-j 1" "-j 2"; do
  rm -rf "$folder/out"
  printf '%-10s ' "$jobs"
  # shellcheck disable=SC2086
  time "$orbel" apply -r "$folder/in" -o "$folder/out" -p clarity -q $jobs
done
nproc
