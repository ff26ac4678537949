#!/usr/bin/env bash
# scripts/release.sh VERSION [--try]: makes all that people download, from the commit that is checked out, into
# build/downloads/VERSION; with --try, which needs root, each of it is used on a bare system as its readers would.
# docs/releasing.md has the rest.
. "$(dirname "$(readlink -f "$0")")/build.sh"
. "$root/scripts/release/pack.sh"
set -o pipefail
cd "$root"

refuse() {
  say "$*"
  exit 1
}

version=${1-}
case "$version:${2-}:$#" in
  [0-9]*:--try:2) try=yes ;;
  [0-9]*::1) try=no ;;
  *)
    say "usage: scripts/release.sh VERSION [--try]"
    exit 2
    ;;
esac
for tool in git dpkg-query apt-get; do
  command -v $tool >/dev/null || refuse "$tool is missing: releases are made in a git repository on Debian 12"
done
there=$(sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
[ "$version" = "$there" ] || refuse "the version is $there, in the project() line of CMakeLists.txt, and not $version"
[ ! -e "build/downloads/$version" ] || refuse "build/downloads/$version stands already; remove it to make it again"
! git rev-parse -q --verify "refs/tags/v$version" >/dev/null || refuse "the tag v$version stands already"
changed=$(git status --porcelain)
[ -z "$changed" ] || refuse "what is here differs from the commit: $(head -n 5 <<<"$changed" | tr -s '\n ' ' ')"
[ -n "$(changes_of "$version" CHANGELOG.md)" ] || refuse "CHANGELOG.md has no section \"## $version\""
if [ $try = yes ]; then
  [ "$(id -u)" -eq 0 ] || refuse "--try needs root: it makes bare systems with debootstrap"
fi

require_packages $build_packages $gegl_packages $windows_packages $aarch64_packages $release_packages \
  emscripten node-acorn esbuild
[ $try = no ] || require_packages $try_packages $(command -v npm >/dev/null || echo npm)
[ $try = no ] || "$root/scripts/release/run_arm64.sh" true || exit 1

# What is made is the commit, whatever else lies in the folder; and from the same commit the same, at any place and
# time.
making=$root/build/making
source=$making/source
out=$making/downloads/$version
rm -rf "$making"
mkdir -p "$source" "$out"
umask 022
unset CC CXX CPPFLAGS LDFLAGS ROOT OBJDUMP CCACHE_BASEDIR # each would leave its trace
git archive HEAD | tar -x --no-same-permissions -C "$source"
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct)
export SOURCE_DATE_EPOCH TZ=UTC LC_ALL=C.UTF-8
export CFLAGS="-ffile-prefix-map=$making=." CXXFLAGS="-ffile-prefix-map=$making=."
cd "$source"

made() { say "$1, $SECONDS s"; }

# made_by PRESET "TARGETS" ARGUMENTS...: in build/PRESET of the commit.
made_by() {
  run_logged "release-$1-configure" cmake --preset "$1" "${@:3}"
  run_logged "release-$1-build" ninja -C "build/$1" $2
}

programs="orbel_texts OrbelBandEqualizer orbel_shared band_equalizer orbel_gegl"
bill=scripts/release/bill.py

say "making $version; about half an hour on two processors without what earlier runs compiled"
made_by release "$programs orbel_python module_runs" -DORBEL_BENCH=OFF
bills_of_packages build/release amd64
(cd build/release && run_logged release-packages cpack -G DEB)
linux_archive build/release x64
made "x86-64"

export ROOT=$making/arm64-root
run_logged release-arm64-root scripts/release/arm64_root.sh "$ROOT" libc6-dev libstdc++-12-dev $library_packages \
  libgegl-dev
made_by aarch64 "$programs module_runs" -DORBEL_PROGRAMS=ON -DORBEL_SYSROOT="$ROOT"
OBJDUMP=aarch64-linux-gnu-objdump bills_of_packages build/aarch64 arm64
(cd build/aarch64 && DPKG_ADMINDIR=$ROOT/var/lib/dpkg DEB_HOST_ARCH=arm64 run_logged release-arm64-packages cpack -G DEB)
linux_archive build/aarch64 arm64
unset ROOT
made "64-bit ARM"

made_by windows "OrbelBandEqualizer module_runs"
OBJDUMP=x86_64-w64-mingw32-objdump $bill "OrbelBandEqualizer $version for Windows" build/windows build/windows/bills \
  OrbelBandEqualizer.8bf
windows_archive
made "Windows"

made_by web page
$bill "orbel.html $version" build/web build/web/bills fronts/web/engine.wasm
page_with_licences
made "the page"

run_logged release-wheel /usr/bin/python3 -m pip wheel --no-index --no-build-isolation --no-deps -w build/wheel ./fronts/python
$bill "the package orbel $version for Python" "$(echo build/python-package/cmake-*)" build/wheel/bills \
  "$(cd build/python-package/cmake-* && ls python/orbel/_engine.*.so)"
wheel_with_licences
made "the wheel"

cp build/release/*.deb build/aarch64/*.deb "$out"
release_notes >"$out/release-notes.md"
(cd "$out" && find . -type f -printf '%P\n' | sort | xargs sha256sum >"$making/SHA256SUMS") # not a sum of itself
mv "$making/SHA256SUMS" "$out"
made "all made"
if [ $try = yes ]; then
  say "trying; a try that fails leaves all of it in $out"
  scripts/release/run_arm64.sh scripts/release/try.sh "$out"
fi
mkdir -p "$root/build/downloads"
mv "$out" "$root/build/downloads/$version"
(cd "$root/build/downloads/$version" && find . -maxdepth 1 -type f -printf '%s %P\n' | sort -k 2)
say "build/downloads/$version, $SECONDS s"
