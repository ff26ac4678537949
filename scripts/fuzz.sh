#!/usr/bin/env bash
# scripts/fuzz.sh [SECONDS [TARGET]]: builds a fuzz target in build/fuzz and runs it, 600 seconds of run_fuzz if nothing
# else is said; the other one is text_image_fuzz. What it finds is kept in build/fuzz/TARGET-corpus and goes on from
# there next time; an input that fails is left in build/fuzz.
. "$(dirname "$(readlink -f "$0")")/build.sh"

usage() {
  say "usage: scripts/fuzz.sh [SECONDS [run_fuzz | text_image_fuzz]]"
  exit 2
}

seconds=${1:-600}
target=${2:-run_fuzz}
case $seconds in *[!0-9]*) usage ;; esac

# A first corpus: to come upon these from nothing takes long.
case $target in
  run_fuzz)  # a run takes some hundred bytes
    seed() { for i in $(seq 100); do head -c 768 /dev/urandom >"$1/seed-$i"; done; }
    ;;
  text_image_fuzz)
    seed() {
      printf '1\n2\n1\n0.5\n-0.25\n' >"$1/lf"
      printf '2\r\n1\r\n1\r\n1e-40\r\n+3.40282346638528859811704183484516925440e38\r\n\r\n' >"$1/crlf"
      printf '2\r2\r1\rinf\r-nan\r 0.1\t\r1E9' >"$1/cr"
    }
    ;;
  *) usage ;;
esac

require_packages $check_packages
build fuzz "$target" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++ -DORBEL_FUZZ=ON

cd "$root/build/fuzz"
corpus=$target-corpus
if [ ! -d "$corpus" ]; then
  mkdir "$corpus"
  seed "$corpus"
fi
# No run above 10 seconds, 1 GB in all or 256 MB in one block.
exec nice -n 10 "tests/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=1024 -malloc_limit_mb=256 \
  -max_len=1024 -len_control=0 -print_final_stats=1 "$corpus"
