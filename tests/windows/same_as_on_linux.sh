#!/usr/bin/env bash
# Runs random documents through the Linux and the Windows module and compares every sample.
# Usage: same_as_on_linux.sh LINUX_BUILD WINDOWS_BUILD
set -euo pipefail
linux=$1 windows=$2
for program in tests/programs/module_runs OrbelBandEqualizer.so; do
  [ -e "$linux/$program" ] || { echo "$linux/$program is missing: build for Linux first" >&2; exit 1; }
done
cd "$windows"
"$linux/tests/programs/module_runs" "$linux/OrbelBandEqualizer.so" >runs-on-linux.txt
"$(dirname "$0")/../../scripts/under_wine.sh" tests/programs/module_runs.exe OrbelBandEqualizer.8bf |
  tr -d '\r' >runs-on-windows.txt
diff -u runs-on-linux.txt runs-on-windows.txt
count=$(grep -c 'result 0' runs-on-windows.txt)
[ "$count" -gt 150 ] || { echo "only $count runs went through" >&2; exit 1; }
echo "$(wc -l <runs-on-windows.txt) runs, $count of them with result 0, are the same to the last bit"
