#!/bin/sh
# same_lines.sh NATIVE COMMAND...: a program of this machine and the same program built for another one, which the
# command runs, write the same lines, and at least 300 of them.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
native=$1
shift
"$native" >"$folder/native"
"$@" >"$folder/other"
[ "$(wc -l <"$folder/native")" -ge 300 ]
diff "$folder/native" "$folder/other"
