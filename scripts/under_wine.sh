#!/usr/bin/env bash
# scripts/under_wine.sh PROGRAM ARGUMENTS...: runs a program for 64-bit Windows under Wine, in a Wine folder of the
# project's own and without a screen.
set -euo pipefail
export WINEPREFIX=${ORBEL_WINE_FOLDER:-$(cd "$(dirname "$0")/.." && pwd)/build/wine}
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml=;winemenubuilder.exe="
unset DISPLAY

# Debian's package wine64 has it apart from the path.
wine=$(command -v /usr/lib/wine/wine64 wine64 wine | head -n 1 || true)
[ -n "$wine" ] || { echo "under_wine.sh: no wine64" >&2; exit 1; }
mkdir -p "$WINEPREFIX"
# Two that make the folder at once would spoil it. Wine's server lives on for a moment; it may not inherit the lock.
(
  flock 9
  [ -e "$WINEPREFIX/ready" ] || "$wine" wineboot --init >"$WINEPREFIX/init.log" 2>&1 9>&- || {
    cat "$WINEPREFIX/init.log" >&2
    exit 1
  }
  touch "$WINEPREFIX/ready"
) 9>"$WINEPREFIX/.lock"
exec "$wine" "$@"
