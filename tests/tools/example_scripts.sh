#!/usr/bin/env bash
# example_scripts.sh ORBEL FOLDER: fails when a script in the folder is not what `orbel jsx` makes of the preset that it
# is named after.
set -euo pipefail
shopt -s failglob
for script in "$2"/*.jsx; do
  preset=$(basename "$script" .jsx)
  "$1" jsx -p "${preset//-/ }" | diff -u "$script" - || {
    echo "make it anew: orbel jsx -p '${preset//-/ }' -f -o $script" >&2
    exit 1
  }
done
