#!/usr/bin/env bash
# Shows what the module imports and exports. Fails when it needs more than the system's own DLLs, or exports other than
# its entry.
# Usage: imports_and_exports.sh OBJDUMP MODULE
set -euo pipefail
headers=$("$1" -p "$2")
imports=$(sed -n 's/^\s*DLL Name: //p' <<<"$headers" | sort)
exports=$(sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\s*\[ *[0-9]*\] //p' <<<"$headers")
printf 'imports:\n%s\nexports:\n%s\n' "$imports" "$exports"
[ "$imports" = $'KERNEL32.dll\nmsvcrt.dll' ] && [ "$exports" = PluginMain ]
