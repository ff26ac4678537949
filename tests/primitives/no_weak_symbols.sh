#!/bin/sh
# Fails when an object file of a row's bodies holds a weak symbol. The linker keeps one of several weak symbols of a
# name, and might serve old processors the one that was compiled for new ones.
# Usage: no_weak_symbols.sh NM OBJECT...
nm=$1
shift
[ $# -gt 0 ] || { echo "no object files given" >&2; exit 2; }
symbols=$("$nm" -A -C "$@") || exit 2
weak=$(printf '%s\n' "$symbols" | grep -E '(^|[^[:alnum:]])[uvVwW] ')
[ -z "$weak" ] || { printf 'weak symbols in bodies:\n%s\n' "$weak" >&2; exit 1; }
echo "no weak symbol in $# object files"
