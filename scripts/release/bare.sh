# A bare Debian 12 to use things in as people do who have nothing else. To be sourced; needs root and debootstrap.

# bare_system [ARCHITECTURE]: makes one, `bare` is its root; leave_bare removes it, which whoever sources this has to see
# to. A folder `bare_copies` keeps one of each architecture for the next, since debootstrap takes minutes under an emulator.
bare_system() {
  local kept
  bare=$(mktemp -d /var/tmp/orbel-bare-XXXXXX)
  kept=${bare_copies:-$bare}/${1:-$(dpkg --print-architecture)}
  if [ ! -e "$kept.made" ]; then
    mkdir -p "$kept"
    debootstrap --variant=minbase ${1:+--arch=$1} bookworm "$kept" "${DEBIAN_MIRROR:-http://deb.debian.org/debian}" \
      >"$kept.log" 2>&1 || { tail -n 40 "$kept.log"; exit 1; }
    touch "$kept.made"
  fi
  if [ -n "${bare_copies-}" ]; then cp -a "$kept" "$bare"; fi
  bare=$bare/$(basename "$kept")
  chmod 755 "${bare%/*}" "$bare"
  mount -t proc proc "$bare/proc" # orbel finds its module by it
  inside apt-get update -q >/dev/null
  mkdir "$bare/tmp/try"
}

leave_bare() {
  [ -n "${bare-}" ] || return 0
  if mountpoint -q "$bare/proc"; then umount "$bare/proc"; fi
  rm -rf --one-file-system "${bare%/*}"
  bare=""
}

inside() { chroot "$bare" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
install() { inside apt-get install -q -y --no-install-recommends "$@" >"$bare/tmp/log" 2>&1 || { cat "$bare/tmp/log"; exit 1; }; }
