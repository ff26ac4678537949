# How scripts/release.sh packs what was built: the same files become the same bytes. To be sourced.

# changes_of VERSION CHANGELOG: the section of that version, without its heading.
changes_of() { awk -v head="## $1" '/^## / { on = $0 == head || index($0, head " ") == 1; next } on' "$2"; }

bills_of_packages() { # BUILD ARCHITECTURE
  local package
  for package in orbel liborbel-dev libband-equalizer-dev gegl-orbel python3-orbel; do
    local holds
    case $package in
      orbel) holds="orbel OrbelBandEqualizer.so" ;;
      liborbel-dev) holds=src/liborbel.so.$version ;;
      libband-equalizer-dev) holds=src/libband_equalizer.a ;;
      gegl-orbel) holds=gegl/orbel-band-equalizer.so ;;
      python3-orbel) holds=$(cd "$1" && find . -path './python/orbel/_engine*.so' -printf '%P\n') ;;
    esac
    [ -n "$holds" ] || continue # none for another processor
    $bill "$package $version ($2)" "$1" "$1/bills/$package" $holds
    beside "${package}_${version}_$2.deb" "$1/bills/$package"
  done
}

# A copy of the bill for those who look before they download.
beside() { # ARCHIVE BILLS
  mkdir -p "$out/bills-of-materials"
  cp "$2/bill-of-materials.txt" "$out/bills-of-materials/$1.txt"
}

# Times and rights are the commit's; owners and the file system's order stay out.
even_out() { # FOLDER
  chmod -R u=rwX,go=rX "$1"
  find "$1" -exec touch -h -d "@$SOURCE_DATE_EPOCH" {} +
}

linux_archive() { # BUILD PROCESSOR
  local name=orbel-$version-linux-$2 component libraries
  local stage=$1/archive/$name
  for component in orbel module; do
    run_logged "release-$2-install" cmake --install "$1" --prefix "$stage" --component $component --strip
  done
  libraries=$(sed -n '/^Used from/,$s/^  \(lib[^ ]*\) .*/\1/p' "$1/bills/orbel/bill-of-materials.txt" | tr '\n' ' ')
  sed "s/@LIBRARIES@/${libraries% }/" docs/downloads/linux.txt >"$stage/README.txt"
  rm "$stage/share/doc/orbel/README.txt" # it is about the package
  even_out "$stage"
  tar -C "$1/archive" --sort=name --format=gnu --owner=0 --group=0 --numeric-owner -c "$name" |
    gzip -9n >"$out/$name.tar.gz"
  beside "$name.tar.gz" "$1/bills/orbel"
}

windows_archive() {
  local name=OrbelBandEqualizer-$version-windows-x64
  local stage=build/windows/archive/$name
  mkdir -p "$stage/scripts" "$stage/licences"
  x86_64-w64-mingw32-strip build/windows/OrbelBandEqualizer.8bf -o "$stage/OrbelBandEqualizer.8bf"
  cp docs/downloads/windows.txt "$stage/README.txt"
  cp docs/plug-in.md "$stage/the-plug-in.txt"
  cp examples/photoshop/*.jsx "$stage/scripts"
  cp LICENSE build/windows/bills/*.txt "$stage/licences"
  mv "$stage/licences/LICENSE" "$stage/licences/orbel.txt"
  even_out "$stage"
  (cd build/windows/archive && find "$name" | sort | zip -X -9 -q -@ "$out/$name.zip")
  beside "$name.zip" build/windows/bills
}

# The page is one file, so the texts go into a comment at its end.
page_with_licences() {
  {
    cat build/web/orbel.html
    printf '\n<!-- \n'
    cat LICENSE build/web/bills/bill-of-materials.txt build/web/bills/licences.txt | sed 's/--/- -/g; s/--/- -/g'
    printf -- '-->\n'
  } >"$out/orbel.html"
  beside orbel.html build/web/bills
}

wheel_with_licences() {
  local wheel texts
  wheel=$(echo build/wheel/*.whl)
  run_logged release-wheel-unpack /usr/bin/python3 -m wheel unpack -d build/wheel/unpacked "$wheel"
  texts=$(echo build/wheel/unpacked/*/*.dist-info)/licences
  mkdir "$texts"
  cp LICENSE "$texts/orbel.txt"
  cp build/wheel/bills/*.txt "$texts"
  even_out build/wheel/unpacked
  run_logged release-wheel-pack /usr/bin/python3 -m wheel pack -d "$out" build/wheel/unpacked/*
  beside "$(basename "$wheel")" build/wheel/bills
}

release_notes() {
  sed "s/@VERSION@/$version/g" docs/downloads/release-notes.md
  printf '\n## What is new\n'
  changes_of "$version" CHANGELOG.md
}
