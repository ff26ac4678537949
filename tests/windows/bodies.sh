#!/usr/bin/env bash
# Fails when an object file of a row's bodies holds
# - an aligned move between memory and a vector register: vectors of 32 and 64 bytes on the stack may not be aligned;
# - code that the linker keeps one copy of, perhaps the one that was compiled for new processors.
# Usage: bodies.sh OBJDUMP OBJECT...
set -euo pipefail
objdump=$1
shift
[ $# -gt 0 ] || { echo "no object files given" >&2; exit 2; }

# Non-temporal moves are aligned, and have no other form.
aligned_moves() {
  grep -P '\tv?mov(aps|apd|dqa|dqa32|dqa64|nt[a-z]+)\s.*\(' || true
}
for example in 'vmovaps 0x40(%rsp),%ymm1' 'vmovdqa64 %zmm0,(%rax){%k1}' 'movaps 0x10(%rip),%xmm0' 'vmovntps %zmm0,(%rax)'; do
  [ -n "$(printf ' 5:\t%s\n' "$example" | aligned_moves)" ] || { echo "not recognised: $example" >&2; exit 2; }
done

code=$("$objdump" -d --no-show-raw-insn "$@")
unaligned=$(grep -cP '\tv?mov(ups|upd|dqu|dqu8|dqu16|dqu32|dqu64)\s.*\(' <<<"$code")
[ "$unaligned" -gt 1000 ] || { echo "no disassembly as expected" >&2; exit 2; }
aligned=$(aligned_moves <<<"$code")
[ -z "$aligned" ] || { printf 'aligned moves in bodies:\n%s\n' "$aligned" >&2; exit 1; }

shared=$("$objdump" -h "$@" | grep -P '\.text\$' || true)
[ -z "$shared" ] || { printf 'code in bodies that the linker may share:\n%s\n' "$shared" >&2; exit 1; }
echo "no aligned move among $unaligned, and no shared code, in $# object files"
