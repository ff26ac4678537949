#!/usr/bin/env bash
# same_text.sh FILE COMMAND...: fails, and shows the difference, when the command writes other lines than the file has.
set -euo pipefail
file=$1
shift
"$@" | diff -u "$file" -
