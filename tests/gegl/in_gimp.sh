#!/bin/sh
# in_gimp.sh PYTHON ORBEL GEGL_PATH EXAMPLES: gimp_test.py; ends with 77 where it can't be run.
for program in gimp Xvfb openbox xdotool; do
  command -v $program >/dev/null || missing=$program
done
for package in numpy tifffile; do
  "$1" -c "import $package" 2>/dev/null || missing=python3-$package
done
if [ -n "${missing-}" ]; then
  echo "SKIPPED, there is no $missing. For it: apt-get install gimp xvfb openbox xdotool python3-numpy python3-tifffile"
  exit 77
fi
exec "$1" "$(dirname "$0")/gimp_test.py" "$2" "$3" "$4"
