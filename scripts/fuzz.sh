#!/usr/bin/env bash
# scripts/fuzz.sh [SECONDS]: builds the fuzz target in build/fuzz and runs it, 600 seconds if nothing else is said. What
# it finds is kept in build/fuzz/corpus and goes on from there next time; an input that fails is left in build/fuzz.
. "$(dirname "$(readlink -f "$0")")/build.sh"

seconds=${1:-600}
case $seconds in
  *[!0-9]* | "")
    say "usage: scripts/fuzz.sh [SECONDS]"
    exit 2
    ;;
esac

require_packages $check_packages
build fuzz run_fuzz -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ -DORBEL_FUZZ=ON

cd "$root/build/fuzz"
# A run takes some hundred bytes; to come upon them from nothing takes long.
if [ ! -d corpus ]; then
  mkdir corpus
  for i in $(seq 100); do head -c 768 /dev/urandom >corpus/seed-"$i"; done
fi
# No run above 10 seconds, 1 GB in all or 256 MB in one block. Two threads suffice for what threads can do wrong.
export OMP_NUM_THREADS=2 OMP_WAIT_POLICY=passive
exec nice -n 10 tests/fuzz/run_fuzz -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 -malloc_limit_mb=256 \
  -max_len=1024 -len_control=0 -print_final_stats=1 corpus
