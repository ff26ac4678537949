#!/usr/bin/env bash
# release_refusals.sh SCRIPTS: what can't become a release is refused before any work, and the reason is said.
set -euo pipefail
command -v git >/dev/null || { echo "SKIPPED. For it: apt-get install git"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$1" "$work/scripts"
cd "$work"
as_somebody() { git -c user.name=somebody -c user.email=somebody@localhost -c init.defaultBranch=main "$@"; }
echo "project(Small VERSION 1.2.3 LANGUAGES CXX)" >CMakeLists.txt
printf '# Changelog\n\n## 1.2.30\n\n- Another one.\n' >CHANGELOG.md
echo /build/ >.gitignore
as_somebody init -q
as_somebody add .
as_somebody commit -qm "Begun"

refused() { # CODE "PART OF THE REASON" ARGUMENTS...
  local code=0 said
  said=$(scripts/release.sh "${@:3}" 2>&1) || code=$?
  if [ "$code" != "$1" ] || [[ $said != *"$2"* ]] || [ -e build/making ]; then
    echo "release.sh ${*:3}: expected code $1 and '$2', got $code and: $said"
    exit 1
  fi
}
refused 2 "usage"
refused 2 "usage" 1.2.3 --tried
refused 1 "the version is 1.2.3" 1.2.4
refused 1 'no section "## 1.2.3"' 1.2.3
touch CMakeLists.old
refused 1 "CMakeLists.old" 1.2.3
rm CMakeLists.old
as_somebody tag v1.2.3
refused 1 "the tag v1.2.3 stands already" 1.2.3
mkdir -p build/downloads/1.2.3
refused 1 "build/downloads/1.2.3 stands already" 1.2.3
echo "good"
