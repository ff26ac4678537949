#!/usr/bin/env bash
# run_arm64.sh COMMAND...: runs the command with the kernel handing 64-bit ARM programs to qemu, in other roots, too, as
# long as it runs. Needs root and qemu-user-static.
set -euo pipefail
formats=/proc/sys/fs/binfmt_misc
[ -e $formats/register ] || mount -t binfmt_misc binfmt_misc $formats || {
  echo "run_arm64.sh: no binfmt_misc here: the kernel can't be told how to run 64-bit ARM programs" >&2
  exit 1
}
if ! grep -q -s '^flags:.*F' $formats/qemu-aarch64; then
  # An ELF file of 64 bits, little-endian, executable or shared, of machine 183.
  magic='\x7fELF\x02\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\xb7\x00'
  mask='\xff\xff\xff\xff\xff\xff\xff\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff'
  # F: the emulator is opened now, so that it needn't stand in the other root.
  mine=orbel-aarch64-$$
  printf '%s' ":$mine:M::$magic:$mask:$(command -v qemu-aarch64-static):F" >$formats/register
  trap 'echo -1 >$formats/$mine' EXIT
fi
"$@"
