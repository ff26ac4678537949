#!/bin/sh
# installed.sh BUILD CMAKE CC CXX SOURCE: installs into a folder of its own, moves that elsewhere, and uses what is there:
# the front door from C and from C++ and the toolkit, by find_package and by pkg-config, each header alone, and the
# program with its module and presets.
set -eu
build=$1 cmake=$2 cc=$3 cxx=$4 source=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for component in orbel module door dev; do
  "$cmake" --install "$build" --prefix "$work/first" --component $component >"$work/log"
done
mv "$work/first" "$work/prefix"
prefix=$work/prefix

# The pages that tell how show these very texts.
shows() {
  case $(cat "$source/../../$1") in
    *"$2"*) ;;
    *) echo "$1 shows another text than:"; echo "$2"; exit 1 ;;
  esac
}
shows README.md "$(cat "$source/uses_orbel.c")"
shows docs/packages.md "$(cat "$source/uses_orbel.c")"
shows docs/packages.md "$(cat "$source/uses_band_equalizer.cpp")"
shows docs/packages.md "$(tail -n +2 "$source/CMakeLists.txt")"

"$cmake" -S "$source" -B "$work/found" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_C_COMPILER="$cc" \
  -DCMAKE_CXX_COMPILER="$cxx" >"$work/log"
"$cmake" --build "$work/found" >"$work/log"
"$work/found/uses_orbel"
"$work/found/uses_band_equalizer"
echo "find_package: good"

libraries=$(dirname "$(find "$prefix" -name 'liborbel.so')")
PKG_CONFIG_PATH=$libraries/pkgconfig
export PKG_CONFIG_PATH
# The flags are words.
# shellcheck disable=SC2046
{
  "$cc" -std=c99 -Wall -Wextra -Wpedantic -Werror "$source/uses_orbel.c" $(pkg-config --cflags --libs orbel) -o "$work/c"
  "$cxx" -std=c++17 -Wall -Wextra -Wpedantic -Werror -x c++ "$source/uses_orbel.c" -x none \
    $(pkg-config --cflags --libs orbel) -o "$work/c++"
  "$cxx" -std=c++17 "$source/uses_band_equalizer.cpp" $(pkg-config --cflags --libs band_equalizer) -o "$work/toolkit"
}
for program in c c++ toolkit; do LD_LIBRARY_PATH=$libraries "$work/$program"; done
echo "pkg-config: good"

# What the library exports is what its header declares.
nm -D --defined-only "$libraries/liborbel.so" | sed 's/.* //' | sort >"$work/exported"
sed -n 's/^ORBEL_API .*[ *]\(orbel_[a-z_]*\)(.*/\1/p' "$prefix/include/orbel.h" | sort >"$work/declared"
diff "$work/declared" "$work/exported"
echo "exports: good"

headers=$prefix/include/band_equalizer
(cd "$headers" && find . -name '*.h') | while read -r header; do
  echo "#include \"$header\"" >"$work/header.cpp"
  "$cxx" -std=c++17 -fsyntax-only "-I$headers" "$work/header.cpp"
done
echo "headers: good"

"$prefix/bin/orbel" "$source/../../examples/chelsea.png" "$work/out.png" -p landscape --quiet
test -s "$work/out.png"
echo "orbel: good"
