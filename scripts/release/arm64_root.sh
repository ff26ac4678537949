#!/usr/bin/env bash
# arm64_root.sh ROOT PACKAGES...: unpacks Debian 12's packages for 64-bit ARM, and what they depend on, into the folder
# ROOT: what a cross-compiler needs. libvips-dev can't be installed for two architectures at once, and nothing of it
# has to run. ROOT/var/lib/dpkg knows for each file where it lies here, so that dpkg's tools can be asked about it.
set -euo pipefail
root=$(readlink -m "$1")
shift
state=$root/var/lib/dpkg
rm -rf "$root"
mkdir -p "$root"/etc/apt/{apt.conf.d,preferences.d} "$state/info" "$root"/var/lib/apt/lists/partial \
  "$root"/var/cache/apt/archives/partial "$root"/usr/{bin,sbin,lib}
ln -s usr/bin usr/sbin usr/lib "$root"
touch "$state/status"
echo 1 >"$state/info/format"  # names of files have an architecture
echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg]" \
  "${DEBIAN_MIRROR:-http://deb.debian.org/debian} bookworm main" >"$root/etc/apt/sources.list"
cat >"$root/apt.conf" <<END
Dir "$root";
Dir::State::status "$state/status";
APT::Architecture "arm64";
APT::Architectures "arm64";
APT::Install-Recommends "false";
APT::Sandbox::User "";
Acquire::Languages "none";
END
export APT_CONFIG=$root/apt.conf
apt-get -q update
apt-get -q -y --download-only install "$@"

for deb in "$root"/var/cache/apt/archives/*.deb; do
  control=$(dpkg-deb -f "$deb")
  name=$(sed -n 's/^Package: //p' <<<"$control")
  if grep -q '^Multi-Arch: same' <<<"$control"; then name=$name:arm64; fi
  printf '%s\n\n' "$control" | sed '/^Package: /a Status: install ok installed' >>"$state/status"
  dpkg-deb --fsys-tarfile "$deb" | tar -xv -C "$root" --keep-directory-symlink |
    sed -E "s,^\./,,; s,/$,,; s,^(bin|sbin|lib)/,usr/&,; s,^,$root/," >"$state/info/$name.list"
  dpkg-deb --ctrl-tarfile "$deb" | tar -x -C "$state/info" --transform "s,^\./,$name.," --wildcards './s[yh]*s' \
    2>/dev/null || true  # symbols and shlibs, where it has them
done
rm "$root"/var/cache/apt/archives/*.deb

# Links from / would lead to this machine's files.
find "$root" -lname '/*' -printf '%p\t%l\n' | while IFS=$'\t' read -r link target; do
  ln -sfnr "$root$target" "$link"
done
