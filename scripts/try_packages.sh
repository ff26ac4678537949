#!/usr/bin/env bash
# scripts/try_packages.sh [BUILD]: makes the Debian packages of a finished build (build/release), installs them on a bare
# Debian system that debootstrap makes in a temporary folder, and uses them there. Needs root and a Debian mirror, and
# some 1.5 GB.
# scripts/try_packages.sh FOLDER ARCHITECTURE: the same with packages that are made already.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/release/bare.sh"
build=${1:-$root/build/release}
architecture=${2-}
[ -n "$architecture" ] || (cd "$build" && cpack -G DEB >/dev/null)
trap leave_bare EXIT
bare_system $architecture
cp "$build"/orbel_*"$architecture".deb "$bare/tmp/try/orbel.deb"
cp "$build"/liborbel-dev_*"$architecture".deb "$bare/tmp/try/door.deb"
cp "$build"/libband-equalizer-dev_*"$architecture".deb "$bare/tmp/try/dev.deb"
cp "$build"/gegl-orbel_*"$architecture".deb "$bare/tmp/try/gegl.deb"
cp "$root/examples/chelsea.png" "$bare/tmp/try"
cp -r "$root/tests/packaging" "$bare/tmp/try"

echo "== gegl-orbel, with gegl alone"  # first, while nothing else of ours has brought a library
install gegl
inside dpkg -i /tmp/try/gegl.deb
inside gegl --exists orbel:band-equalizer
inside gegl /tmp/try/chelsea.png -o /tmp/try/gegl.png -- orbel:band-equalizer gain-4=225
inside gegl /tmp/try/chelsea.png -o /tmp/try/plain.png
if inside cmp -s /tmp/try/gegl.png /tmp/try/plain.png; then
  echo "gegl-orbel changed nothing"
  exit 1
fi

echo "== orbel, with its dependencies alone"
install /tmp/try/orbel.deb
inside orbel --version
inside orbel presets list
inside orbel apply /tmp/try/chelsea.png -o /tmp/try/out.png -p clarity
inside orbel bands /tmp/try/chelsea.png -o /tmp/try/bands

echo "== liborbel-dev and libband-equalizer-dev, by CMake and by pkg-config"
install /tmp/try/door.deb /tmp/try/dev.deb g++ cmake make pkg-config
inside sh -ec '
  cd /tmp/try
  cmake -S packaging -B found >/dev/null
  cmake --build found >/dev/null
  found/uses_orbel
  found/uses_band_equalizer
  cc packaging/uses_orbel.c $(pkg-config --cflags --libs orbel) -o door_by_pkg_config
  ./door_by_pkg_config
  g++ -std=c++17 packaging/uses_band_equalizer.cpp $(pkg-config --cflags --libs band_equalizer) -o by_pkg_config
  ./by_pkg_config
  ldd by_pkg_config'

packages="orbel liborbel-dev libband-equalizer-dev gegl-orbel"
if cp "$build"/python3-orbel_*"$architecture".deb "$bare/tmp/try/python.deb" 2>/dev/null; then # none for 64-bit ARM
  echo "== python3-orbel, with its dependencies alone"
  install /tmp/try/python.deb
  inside python3 -c 'import numpy, orbel
print(orbel.equalize(numpy.eye(64, dtype="f"), **orbel.preset("clarity")).mean(), *orbel.presets(), sep=", ")'
  packages="$packages python3-orbel"
fi

echo "== and away again"
inside apt-get purge -q -y $packages >/dev/null
if inside find /usr -iname '*orbel*' -o -iname '*band*equalizer*' | grep .; then
  echo "left behind"
  exit 1
fi
echo "good"
