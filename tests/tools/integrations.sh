#!/usr/bin/env bash
# integrations.sh ORBEL INTEGRATIONS PICTURE: the scripts for digiKam and RawTherapee, as these call them.
set -eu
PATH=$(dirname "$1"):$PATH
integrations=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp "$3" "$folder/it's a \$1 picture.png"
cd "$folder"
picture=$folder/it\'s\ a\ \$1\ picture
unset DISPLAY WAYLAND_DISPLAY
export ORBEL_VIEWER="printf %s\n"

# expect STATUS COMMAND...: that it ends with that status.
expect() {
  local status=0
  "${@:2}" >said 2>&1 || status=$?
  [ $status -eq "$1" ] || { echo "status $status: ${*:2}"; cat said; exit 1; }
}
# same OUTPUT PICTURE OPTIONS...: that it is what orbel makes of the picture.
same() {
  orbel apply "$2" -o expected.ppm -f -q "${@:3}"
  orbel apply "$1" -o given.ppm -f -q
  cmp <(tail -c 100000 expected.ppm) <(tail -c 100000 given.ppm)
}

# digiKam makes an empty file for the result, and delivers what isn't empty, whatever the status.
digikam=$integrations/digikam/orbel-digikam
: >temporary.png
expect 127 "$digikam" "$picture.png" temporary.png -p nonsense
expect 127 "$digikam" "$picture.jpg" temporary.png
expect 127 env ORBEL_SECONDS=0.001 "$digikam" "$picture.png" temporary.png -p clarity
grep -q 'longer than digiKam waits' said
expect 127 "$digikam" "$picture.png"
[ ! -s temporary.png ]
expect 0 "$digikam" "$picture.png" temporary.png -p clarity
same temporary.png "$picture.png" -p clarity

rawtherapee=$integrations/rawtherapee/orbel-rawtherapee
expect 0 "$rawtherapee" "$picture.png"
grep -qFx "$picture-orbel.png" said
same "$picture-orbel.png" "$picture.png" -p clarity
expect 0 "$rawtherapee" -p crisp --mix 50 "$picture.png"
same "$picture-orbel-2.png" "$picture.png" -p crisp --mix 50
same "$picture-orbel.png" "$picture.png" -p clarity
expect 1 "$rawtherapee" -p nonsense "$picture.png"
grep -q "no preset 'nonsense'" said
expect 2 "$rawtherapee" missing.png
