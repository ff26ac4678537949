#!/usr/bin/env bash
# bench/side_by_side.sh [LINUX_BUILD [WINDOWS_BUILD]]: the Linux module and the Windows module under Wine on the same
# picture, in turns. Both builds have to be there; the machine should have nothing else to do.
set -euo pipefail
export OMP_WAIT_POLICY=passive  # threads that spin while others want the processor would measure that
root=$(cd "$(dirname "$0")/.." && pwd)
linux=${1:-$root/build/release}
windows=${2:-$root/build/windows}
for turn in 1 2 3; do
  echo "Linux:   $("$linux/bench/module_speed" "$linux/OrbelBandEqualizer.so")"
  echo "Windows: $("$root/scripts/under_wine.sh" "$windows/bench/module_speed.exe" "$windows/OrbelBandEqualizer.8bf")"
done
