# A bare Debian 12 to use things in as people do who have nothing else. To be sourced; needs root and debootstrap.

# bare_system [ARCHITECTURE]: makes one, `bare` is its root; leave_bare removes it, which whoever sources this has to
# see to. A folder `bare_copies` keeps one of each architecture for the next, since debootstrap takes minutes under an
# emulator.
bare_system() {
  local kept architecture=${1:-$(dpkg --print-architecture)}
  bare_folder=$(mktemp -d /var/tmp/orbel-bare-XXXXXX)
  bare=$bare_folder/$architecture
  kept=${bare_copies:-$bare_folder}/$architecture
  if [ ! -e "$kept.made" ]; then
    mkdir -p "$kept"
    debootstrap --variant=minbase --arch="$architecture" bookworm "$kept" \
      "${DEBIAN_MIRROR:-http://deb.debian.org/debian}" >"$kept.log" 2>&1 || { tail -n 40 "$kept.log"; exit 1; }
    touch "$kept.made"
  fi
  if [ "$kept" != "$bare" ]; then cp -a "$kept" "$bare"; fi
  chmod 755 "$bare_folder" "$bare"
  mount -t proc proc "$bare/proc" # orbel finds its module by it
  inside apt-get update -q >/dev/null
  mkdir "$bare/tmp/try"
}

leave_bare() {
  [ -n "${bare_folder-}" ] || return 0
  if mountpoint -q "$bare/proc"; then umount "$bare/proc"; fi
  rm -rf --one-file-system "$bare_folder"
  bare_folder=""
}

# Nothing of this machine's surroundings goes in.
inside() {
  chroot "$bare" env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive "$@"
}

install() {
  inside apt-get install -q -y --no-install-recommends "$@" >"$bare/tmp/log" 2>&1 || { cat "$bare/tmp/log"; exit 1; }
}
