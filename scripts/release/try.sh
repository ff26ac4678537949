#!/usr/bin/env bash
# try.sh DOWNLOADS: uses each of the files that scripts/release.sh made as its readers would, where they would: bare
# systems for x86-64 and, by scripts/release/run_arm64.sh, 64-bit ARM; Wine; Chromium. Needs root, and the builds beside
# this script.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
. "$root/scripts/release/bare.sh"
downloads=$(readlink -f "$1")
work=$(mktemp -d /var/tmp/orbel-try-XXXXXX)
export bare_copies=$work/bare
leave() {
  leave_bare
  rm -rf --one-file-system "$work"
}
trap leave EXIT

# What each file's reader sees first is five lines of what to do.
five_lines() {
  [ "$(wc -l <"$1")" -eq 5 ] || { echo "$(basename "$1") has not five lines" >&2; exit 1; }
}

# The archive as its first file says: the libraries, a picture, a sheet, and for all users. Then the module in a host
# that is not linked with it, which writes what came out.
try_linux_archive() { # PROCESSOR ARCHITECTURE BUILD
  echo "== $(basename "$downloads"/orbel-*-linux-"$1".tar.gz)"
  bare_system "$2"
  tar -xf "$downloads"/orbel-*-linux-"$1".tar.gz -C "$bare/tmp/try" --strip-components=1
  five_lines "$bare/tmp/try/README.txt"
  install $(sed -n 's/^1\..*: sudo apt-get install //p' "$bare/tmp/try/README.txt")
  cp "$root/examples/chelsea.png" "$bare/tmp/try/PICTURE.png"
  cp "$root/build/$3/tests/programs/module_runs" "$bare/tmp/try"
  inside sh -ec 'cd /tmp/try
    bin/orbel PICTURE.png result.png -p clarity
    bin/orbel sheet PICTURE.png -o sheet.jpg
    cp -r bin lib share /usr/local
    cd /
    orbel --version
    orbel info /tmp/try/result.png
    test -s /usr/local/share/man/man1/orbel.1
    test -s /usr/local/share/bash-completion/completions/orbel'
  inside /tmp/try/module_runs /usr/local/lib/orbel/OrbelBandEqualizer.so >"$work/runs-$1.txt"
  echo "the module: $(wc -l <"$work/runs-$1.txt") runs"
  leave_bare
}

try_packages() { # ARCHITECTURE
  echo "== packages for $1"
  "$root/scripts/try_packages.sh" "$downloads" "$1"
}

try_windows() {
  echo "== $(basename "$downloads"/*-windows-x64.zip)"
  unzip -q "$downloads"/*-windows-x64.zip -d "$work"
  cd "$work"/*-windows-x64
  five_lines README.txt
  find . -type f | sort
  ORBEL_WINE_FOLDER=$work/wine "$root/scripts/under_wine.sh" "$root/build/windows/tests/programs/module_runs.exe" \
    OrbelBandEqualizer.8bf | tr -d '\r' >"$work/runs-windows.txt"
  cd "$work"
}

same_runs() {
  local runs
  runs=$(grep -c 'result 0' "$work/runs-x64.txt")
  [ "$runs" -gt 150 ] || { echo "only $runs runs of the module went through" >&2; exit 1; }
  for other in arm64 windows; do diff "$work/runs-x64.txt" "$work/runs-$other.txt"; done
  echo "== the module on x86-64, 64-bit ARM and Windows: $(wc -l <"$work/runs-x64.txt") runs, the same to the last bit"
}

try_page() {
  echo "== orbel.html"
  npm ci --prefix "$root/tests/web" --no-audit --no-fund >"$work/npm.log" 2>&1 || { cat "$work/npm.log"; exit 1; }
  ORBEL=$root/build/release/orbel ORBEL_PAGE=$downloads/orbel.html node --test \
    --test-name-pattern='saves what orbel makes|works by mouse' "$root/tests/web/page.test.mjs" >"$work/page.log" ||
    { cat "$work/page.log"; exit 1; }
  grep -E '^ *(ok|✔) ' "$work/page.log" | grep -v SKIP
  grep -Eq '^(#|ℹ) pass 2$' "$work/page.log" || { echo "those two tests of the page were not there" >&2; exit 1; }
}

try_wheel() {
  echo "== $(basename "$downloads"/*.whl)"
  bare_system
  install python3-venv python3-numpy
  cp "$downloads"/*.whl "$bare/tmp/try"
  inside sh -ec 'cd /tmp/try
    python3 -m venv --system-site-packages there
    there/bin/pip install -q --no-index *.whl
    there/bin/pip show orbel
    there/bin/python -c "import numpy, orbel
print(orbel.equalize(numpy.eye(64, dtype=\"f\"), **orbel.preset(\"clarity\")).mean(), *orbel.presets(), sep=\", \")"'
  leave_bare
}

(cd "$downloads" && sha256sum --quiet -c SHA256SUMS && echo "SHA256SUMS: good")
for text in "$root"/docs/downloads/*.txt; do five_lines "$text"; done
try_linux_archive x64 amd64 release
try_windows
try_linux_archive arm64 arm64 aarch64
same_runs
try_page
try_wheel
try_packages amd64
try_packages arm64
echo "all tried, $SECONDS s"
