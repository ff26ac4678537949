#!/bin/sh
# installed.sh BUILD CMAKE CXX SOURCE: installs into a folder of its own, moves that elsewhere, and uses what is there:
# the library by find_package and by pkg-config, each header alone, and the program with its module and presets.
set -eu
build=$1 cmake=$2 cxx=$3 source=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for component in orbel module dev; do
  "$cmake" --install "$build" --prefix "$work/first" --component $component >"$work/log"
done
mv "$work/first" "$work/prefix"
prefix=$work/prefix

# The page that tells how shows these very texts.
page=$(cat "$source/../../docs/packages.md")
for text in "$(cat "$source/uses_band_equalizer.cpp")" "$(tail -n +2 "$source/CMakeLists.txt")"; do
  case $page in
    *"$text"*) ;;
    *) echo "docs/packages.md shows another text than:"; echo "$text"; exit 1 ;;
  esac
done

"$cmake" -S "$source" -B "$work/found" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" >"$work/log"
"$cmake" --build "$work/found" >"$work/log"
"$work/found/uses_band_equalizer"
echo "find_package: good"

PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name band_equalizer.pc)")
export PKG_CONFIG_PATH
# The flags are words.
# shellcheck disable=SC2046
"$cxx" -std=c++17 "$source/uses_band_equalizer.cpp" $(pkg-config --cflags --libs band_equalizer) -o "$work/by_pkg_config"
"$work/by_pkg_config"
echo "pkg-config: good"

headers=$prefix/include/band_equalizer
(cd "$headers" && find . -name '*.h') | while read -r header; do
  echo "#include \"$header\"" >"$work/header.cpp"
  "$cxx" -std=c++17 -fsyntax-only "-I$headers" "$work/header.cpp"
done
echo "headers: good"

"$prefix/bin/orbel" "$source/../../examples/chelsea.png" "$work/out.png" -p landscape --quiet
test -s "$work/out.png"
echo "orbel: good"
