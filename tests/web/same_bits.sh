#!/bin/sh
# same_bits.sh NATIVE NODE SCRIPT: the hashes of 720 runs of the native library and of its WebAssembly, under node.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$1" 720 >"$folder/native"
"$2" --no-experimental-fetch "$3" 720 >"$folder/web"
[ "$(wc -l <"$folder/native")" -eq 720 ]
diff "$folder/native" "$folder/web"
