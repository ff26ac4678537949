#!/usr/bin/env bash
# bench/side_by_side.sh [LINUX_BUILD [WINDOWS_BUILD [WIDTH HEIGHT]]]: the Linux module, the same without large pages, and
# the Windows module under Wine, which has none, on the same picture in turns. Both builds have to be there; the machine
# should have nothing else to do.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
linux=${1:-$root/build/release}
windows=${2:-$root/build/windows}
rounds=(7 "${3:-4000}" "${4:-3000}")

# The command where the system backs nothing with large pages (prctl PR_SET_THP_DISABLE).
in_small_pages() {
  python3 -c 'import ctypes, os, sys; ctypes.CDLL(None).prctl(41, 1, 0, 0, 0); os.execv(sys.argv[1], sys.argv[1:])' "$@"
}

for turn in 1 2 3; do
  echo "Linux:              $("$linux/bench/module_speed" "$linux/OrbelBandEqualizer.so" "${rounds[@]}")"
  echo "Linux, small pages: $(in_small_pages "$linux/bench/module_speed" "$linux/OrbelBandEqualizer.so" "${rounds[@]}")"
  echo "Windows:            $("$root/scripts/under_wine.sh" "$windows/bench/module_speed.exe" "$windows/OrbelBandEqualizer.8bf" "${rounds[@]}")"
done
