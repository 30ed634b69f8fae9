#!/usr/bin/env bash
# enter.sh COMMAND...
# First process of the namespaces that tools/host.sh makes. It puts together a root of bind mounts on a
# file system in memory, so that the tree needs no mount points and stays as it is, brings up the
# private network, and runs the command with that root.
set -eu -o pipefail

new=$VESK_SCRATCH/root
mount -t tmpfs -o mode=755 vesk "$new"

# The system's own folders, as the tree has them.
for name in usr etc var opt bin sbin lib lib32 lib64; do
    source=${VESK_TREE%/}/$name
    if [ -L "$source" ]; then
        cp -P -- "$source" "$new/$name"
    elif [ -d "$source" ]; then
        mkdir -- "$new/$name"
        mount --rbind -- "$source" "$new/$name"
    fi
done
mkdir -- "$new"/{proc,sys,dev,run,tmp,root,home}
mount -t proc proc "$new/proc" 2>/dev/null || mount --rbind /proc "$new/proc"
mount -t sysfs sysfs "$new/sys" 2>/dev/null || mount --rbind /sys "$new/sys"
mount --rbind /dev "$new/dev"
mount -t tmpfs -o mode=1777 vesk "$new/dev/shm"
mount --bind "$VESK_SCRATCH/tmp" "$new/tmp"
[ ! -d "$new/var/tmp" ] || mount --bind "$VESK_SCRATCH/tmp" "$new/var/tmp"

# The same path inside as outside.
reach() {
    mkdir -p -- "$new$1" || { echo "dev: $1 cannot be reached from the build environment" >&2; exit 1; }
    mount --rbind -- "$1" "$new$1"
}
home=$VESK_SCRATCH/home
if [ "$VESK_NETWORK" = real ]; then
    home=$HOME
    reach "$HOME"
fi
reach "$VESK_CHECKOUT"
reach "$VESK_CACHE"
[ ! -d /tmp/.X11-unix ] || [ -z "${DISPLAY:-}" ] || reach /tmp/.X11-unix
[ ! -d "${XDG_RUNTIME_DIR:-}" ] || reach "$XDG_RUNTIME_DIR"
cookie=${XAUTHORITY:-$HOME/.Xauthority}
if [ -r "$cookie" ]; then
    cp -- "$cookie" "$VESK_SCRATCH/Xauthority"
    XAUTHORITY=$VESK_SCRATCH/Xauthority
fi
for name in usr etc var opt; do
    [ ! -d "$new/$name" ] || mount -o remount,bind,ro "$new/$name" 2>/dev/null || true
done

# One interface for the program, one for two cameras. The program announces itself from every address that
# it finds, so that more addresses are added only where there are more cameras.
private_network() {
    ip link set lo up
    ip link add vesk0 type veth peer name vesk1
    ip address add 10.77.0.1/24 brd + dev vesk0
    ip address add 10.77.0.2/24 brd + dev vesk1
    ip address add 10.77.0.3/24 brd + dev vesk1
    ip link set vesk0 up
    ip link set vesk1 up
}
ip() { chroot "$new" /usr/bin/env PATH=/usr/sbin:/sbin:/usr/bin ip "$@"; }
if [ "$VESK_NETWORK" = private ]; then
    private_network || { echo "dev: the kernel gives no private network (is the module veth there?)" >&2; exit 1; }
fi

# A compiler or a Qt of the host must not be found by way of its variables.
variables=("VESK_ENVIRONMENT=$VESK_NETWORK" "HOME=$home" LC_ALL=C.UTF-8 "VESK_CACHE=$VESK_CACHE" "VESK_FFMPEG=$VESK_FFMPEG"
    PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin
    "CCACHE_DIR=$VESK_CACHE/ccache" "CCACHE_BASEDIR=$VESK_CHECKOUT" CCACHE_NOHASHDIR=1)
while IFS='=' read -r -d '' name value; do
    case "$name" in
    TERM | COLORTERM | CI | USER | LOGNAME | DISPLAY | WAYLAND_DISPLAY | XDG_RUNTIME_DIR | XDG_SESSION_TYPE | \
        XDG_CURRENT_DESKTOP | DBUS_SESSION_BUS_ADDRESS | QT_* | QSG_* | QML_* | CTEST_*)
        variables+=("$name=$value") ;;
    XDG_CONFIG_HOME) [ "$VESK_NETWORK" != real ] || variables+=("$name=$value") ;;
    esac
done < <(env -0)
[ -z "${XAUTHORITY:-}" ] || variables+=("XAUTHORITY=$XAUTHORITY")

directory=$VESK_CHECKOUT
case "$PWD/" in "$VESK_CHECKOUT"/*) directory=$PWD ;; esac
exec chroot "$new" /usr/bin/env -i -C "$directory" "${variables[@]}" "$@"
