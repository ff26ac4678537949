# What ./equalize and ./check share: finding packages, configuring and building. To be sourced; sets `root`.
set -eu

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

library_packages="libvips-dev libtiff-dev libcli11-dev nlohmann-json3-dev libfmt-dev libtomlplusplus-dev"
build_packages="g++ cmake ninja-build pkg-config python3 $library_packages libgtest-dev libgmock-dev libbenchmark-dev pybind11-dev python3-dev"
test_packages="libimage-exiftool-perl exiv2 pybind11-dev python3-dev python3-numpy python3-hypothesis mypy"
gegl_packages="libgegl-dev gegl"
gimp_packages="gimp xvfb openbox xdotool python3-tifffile"
check_packages="clang clang-format clang-tidy"
web_packages="emscripten node-acorn esbuild chromium firefox-esr"
aarch64_packages="g++-aarch64-linux-gnu qemu-user googletest"
release_packages="dpkg-dev file zip python3-pip python3-setuptools python3-wheel"
try_packages="debootstrap qemu-user-static unzip chromium"
windows_packages="g++-mingw-w64-x86-64-posix wine64 icoutils googletest"

say() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; }

# Those of the packages that are not installed, each after a blank.
missing_packages() {
  local package
  for package in "$@"; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok' || printf ' %s' "$package"
  done
}

# Installs those of the packages that are missing, or says how to.
require_packages() {
  local missing
  missing=$(missing_packages "$@")
  [ -n "$missing" ] || return 0

  local as_root=""
  if [ "$(id -u)" -ne 0 ]; then
    as_root="sudo -n"
    if ! sudo -n true 2>/dev/null; then
      say "some packages are missing. Please run: sudo apt-get update && sudo apt-get install$missing"
      exit 1
    fi
  fi
  say "installing$missing"
  run_logged packages $as_root sh -c \
    'apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@"' sh $missing
}

# run_logged NAME COMMAND...: the output goes to build/NAME.log, and is shown when the command fails.
run_logged() {
  local log="$root/build/$1.log"
  mkdir -p "$root/build"
  shift
  "$@" >"$log" 2>&1 </dev/null && return 0
  tail -n 60 "$log" >&2
  say "failed: $*; all of the output is in $log"
  exit 1
}

# build FOLDER TARGET CMAKE_ARGUMENTS...: configures build/FOLDER once and builds the target in it. One at a time: two
# builds in one folder would spoil it.
build() {
  local folder="$root/build/$1" target=$2
  mkdir -p "$folder"
  exec 9>"$folder/.lock"
  flock 9
  if [ ! -e "$folder/configured" ]; then
    require_packages $build_packages
    say "building $target for the first time, about 3 minutes"
    run_logged "$1-configure" cmake -S "$root" -B "$folder" "${@:3}"
    touch "$folder/configured"
  fi
  run_logged "$1-build" ninja -C "$folder" "$target"
  exec 9>&-
}
