#!/bin/sh
# in_tree.sh ROOT COMMAND...
# Runs a command with ROOT as its root, in the mount namespace that the caller made for it.
set -eu
root=$1
shift
mount -t proc proc "$root/proc"
mount --rbind /sys "$root/sys"
mount --rbind /dev "$root/dev"
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 HOME=/root TMPDIR=/tmp
export PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin
exec chroot "$root" "$@"
