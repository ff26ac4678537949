#!/usr/bin/env bash
# example_scripts.sh ORBEL FOLDER: fails when a script in the folder is not what `orbel jsx` makes of the settings file
# beside it, or of the preset that it is named after where there is none.
set -euo pipefail
shopt -s failglob
for script in "$2"/*.jsx; do
  settings=${script%.jsx}.toml
  if [ ! -e "$settings" ]; then settings=$(basename "$script" .jsx); fi
  "$1" jsx -p "$settings" | diff -u "$script" - || {
    echo "make it anew: orbel jsx -p $settings -f -o $script" >&2
    exit 1
  }
done
