#!/usr/bin/env bash
# Makes batch.png: a terminal in which orbel goes through a folder of pictures, one of them damaged. Needs vips and a
# terminal to photograph (apt-get install libvips-tools xvfb xterm imagemagick): batch.sh [ORBEL].
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
orbel=${1:-$root/build/release/orbel}
work=$(mktemp -d)
trap 'kill "${screen-}" 2>/dev/null; rm -rf "$work"' EXIT

mkdir -p "$work/shoot/second day"
photo=$root/examples/raccoon.png
vips resize "$photo" "$work/shoot/raccoon 1.jpg[Q=95]" 5
vips resize "$photo" "$work/shoot/raccoon 2.jpg[Q=95]" 4
vips resize "$root/examples/coffee.png" "$work/shoot/second day/coffee.tif" 8
head -c 400000 "$work/shoot/raccoon 1.jpg" >"$work/shoot/second day/card error.jpg"
cp "$photo" "$work/shoot/second day/"

cat >"$work/session" <<EOF
cd "$work"
PATH=$(dirname "$orbel"):\$PATH
PS1='$ '
show() { printf '\033[1m\$ %s\033[0m\n' "\$*"; "\$@"; }
show orbel apply -r shoot -o done -p clarity -j 2 --dry-run
echo
show orbel apply -r shoot -o done -p clarity -j 2
echo
show orbel apply -r shoot -o done -p clarity -j 2 -u
touch finished
sleep 60
EOF
display=:77
Xvfb $display -screen 0 1000x520x24 >/dev/null 2>&1 &
screen=$!
sleep 1
DISPLAY=$display xterm -geometry 112x27+0+0 -fa "DejaVu Sans Mono" -fs 10 -bg '#101418' -fg '#d8dee9' -e bash "$work/session" 2>/dev/null &
for _ in $(seq 240); do
  [ -e "$work/finished" ] && break
  sleep 0.5
done
sleep 1
DISPLAY=$display import -window root -trim "$root/docs/pictures/batch.png"
