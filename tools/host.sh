# shellcheck shell=bash
# Outside of the build environment: make sure that it is there, and enter it.
# shellcheck disable=SC2154 # `here` comes from the entry script

# A service or a plain `su` may leave out the home folder and the paths of root's programs.
HOME=${HOME:-$(getent passwd "$(id -u)" | cut -d : -f 6)}
PATH=$PATH:/usr/local/sbin:/usr/sbin:/sbin
export HOME PATH
cache=${XDG_CACHE_HOME:-$HOME/.cache}/vesk
log=$cache/provision.log
release=trixie
tree_mb=4000
build_mb=2000

packages() {
    sed 's/#.*//' "$here/tools/packages.txt" | tr -s ' \n' ' '
}

# What the environment is made of, as text: a change of it gives the environment another name.
ingredients() {
    packages
    uname -m
    cat -- "$here/tools/ffmpeg.sh"
}

make_ffmpeg() {
    step "FFmpeg with the encoders of the program" "$@" sh -c "$(cat -- "$here/tools/ffmpeg.sh")" ffmpeg.sh "$ffmpeg" ||
        die "FFmpeg could not be fetched and built; is there a network?"
}

# The host itself serves when it is Debian 13 or later (a release in the making has no number).
host_serves() {
    local ID="" VERSION_ID=""
    # shellcheck source=/dev/null
    [ -r /etc/os-release ] && . /etc/os-release
    [ "$ID" = debian ] && [ "${VERSION_ID:-99}" -ge 13 ]
}

is_root() {
    [ "$(id -u)" -eq 0 ]
}

# What unshare is to separate; a user who is not root gets it through a user namespace.
namespaces() {
    local options="--mount --pid --fork --kill-child --propagation private"
    is_root || options="--user --map-root-user $options"
    echo "$options"
}

check_namespaces() {
    local program
    for program in unshare setpriv flock; do
        command -v "$program" >/dev/null || die "the program '$program' (Debian package util-linux) is missing"
    done
    # shellcheck disable=SC2046
    unshare $(namespaces) --net true 2>/dev/null && return
    if is_root; then
        die "this system does not let root make namespaces (a container needs to be started with --privileged)"
    fi
    die "the build environment needs root, or a kernel that lets users make namespaces"
}

# The processes of a namespace end with `unshare`, `unshare` with this script, however that ends.
# Interrupts reach the command as if it ran in the foreground.
supervise() {
    local code=0
    env --default-signal=INT,QUIT setpriv --pdeathsig KILL "$@" <&0 &
    child=$!
    trap 'stop_child 130' INT
    trap 'stop_child 143' TERM
    trap 'stop_child 129' HUP
    wait "$child" || code=$?
    trap - INT TERM HUP
    return "$code"
}

# Asks what runs in the namespace to end, gives it three seconds, and ends it.
stop_child() {
    local inner n
    trap '' INT TERM HUP
    inner=$(cat "/proc/$child/task/$child/children" 2>/dev/null || true)
    # shellcheck disable=SC2086
    [ -z "$inner" ] || kill -TERM $inner 2>/dev/null || true
    for n in {1..30}; do
        kill -0 "$child" 2>/dev/null || break
        sleep 0.1
    done
    [ "$n" -lt 30 ] || kill -KILL "$child" 2>/dev/null || true
    wait "$child" 2>/dev/null || true
    printf '\n' >&2
    say "stopped"
    exit "$1"
}

isolated() {
    # shellcheck disable=SC2046
    supervise unshare $(namespaces) --mount-proc "$@"
}

# ---- the host as the environment

missing_on_host() {
    local package
    for package in $(packages); do
        case $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true) in
        installed) ;;
        *) printf '%s ' "$package" ;;
        esac
    done
}

provide_host() {
    local missing
    tree=/
    missing=$(missing_on_host)
    [ -n "$missing" ] || return 0
    is_root || die "these packages are missing and only root can install them: apt-get install $missing"
    [ "$(free_mb /usr)" -ge "$tree_mb" ] || die "the packages need $tree_mb MB in /usr, $(free_mb /usr) MB are free"
    export DEBIAN_FRONTEND=noninteractive
    step "package lists" supervise apt-get update || die "the package lists could not be fetched; is there a network?"
    # shellcheck disable=SC2086
    step "installing $(echo $missing | wc -w) packages" supervise apt-get install -y --no-install-recommends $missing ||
        die "the packages could not be installed"
}

# The libraries that the encoders are in may change with every upgrade of the host.
provide_host_ffmpeg() {
    local hash
    hash=$({ ingredients; dpkg-query -W libopenh264-dev libsvtav1enc-dev; } | sha256sum | cut -c 1-12)
    ffmpeg=$cache/ffmpeg-$hash
    [ -d "$ffmpeg" ] && return
    with_lock "$ffmpeg.lock" "another run builds FFmpeg; waiting for it" make_host_ffmpeg
}

make_host_ffmpeg() {
    [ -d "$ffmpeg" ] && return 0
    log=$ffmpeg.log
    : >"$log"
    make_ffmpeg supervise
}

# ---- a private tree as the environment

# The mirror in the host's own sources, empty when none names one. Debian's mirrors carry all releases.
host_mirror() {
    local ID="" VERSION_CODENAME=""
    # shellcheck source=/dev/null
    [ -r /etc/os-release ] && . /etc/os-release
    [ "$ID" = debian ] || return 0
    # shellcheck disable=SC2016
    apt-get indextargets --format '$(REPO_URI) $(COMPONENT) $(RELEASE)' 'Created-By: Packages' 2>/dev/null |
        awk -v release="$VERSION_CODENAME" '$1 ~ /^https?:/ && $2 == "main" && $3 == release { print $1; exit }'
}

use_host_proxy() {
    command -v apt-config >/dev/null || return 0
    local proxy=""
    eval "$(apt-config shell proxy Acquire::http::Proxy)"
    case "$proxy" in
    "" | DIRECT) ;;
    *) export http_proxy="${http_proxy:-$proxy}" ;;
    esac
}

install_debootstrap() {
    command -v debootstrap >/dev/null && return
    command -v apt-get >/dev/null || die "the program 'debootstrap' is missing and this host has no apt to install it"
    export DEBIAN_FRONTEND=noninteractive
    step "package lists of the host" supervise apt-get update ||
        die "the host's package lists could not be fetched; is there a network?"
    step "debootstrap on the host" supervise apt-get install -y --no-install-recommends debootstrap ||
        die "debootstrap could not be installed"
}

in_part() {
    isolated sh "$here/tools/in_tree.sh" "$part" "$@"
}

# The base system, made from nothing; what an interrupted run left of it is removed.
make_base() {
    rm -rf --one-file-system -- "$part"
    mkdir -p -- "$part"
    # shellcheck disable=SC2046
    step "base system of Debian 13" isolated debootstrap --variant=minbase --include=ca-certificates \
        "$release" "$part" $(host_mirror) ||
        die "the base system could not be fetched; is there a network?"
    touch -- "$part/.base-done"
}

# The packages; an interrupted installation goes on where it was.
fill_base() {
    [ -e /etc/resolv.conf ] && cp -L -- /etc/resolv.conf "$part/etc/resolv.conf"
    step "package lists" in_part apt-get update || die "the package lists could not be fetched; is there a network?"
    # shellcheck disable=SC2046
    step "packages (2.7 GB)" in_part sh -c 'dpkg --configure -a && apt-get -y --fix-broken install &&
        apt-get install -y --no-install-recommends "$@" && apt-get clean' sh $(packages) || {
        rm -f -- "$part/.base-done"
        die "the packages could not be installed; the next run begins anew"
    }
    [ -d "$part$ffmpeg" ] || make_ffmpeg in_part
}

make_tree() {
    [ -d "$tree" ] && return 0
    is_root || die "setting up the build environment needs root once: sudo env XDG_CACHE_HOME=${cache%/vesk} ./dev shell true"
    local free
    free=$(free_mb "$cache")
    [ "$free" -ge "$tree_mb" ] || die "the build environment needs $tree_mb MB in $cache, $free MB are free"
    say "setting up a Debian 13 environment in $tree (once, a few minutes)"
    : >"$log"
    use_host_proxy
    install_debootstrap
    [ -e "$part/.base-done" ] || make_base
    fill_base
    mv -T -- "$part" "$tree"
}

provide_tree() {
    local hash
    hash=$(ingredients | sha256sum | cut -c 1-12)
    tree=$cache/$release-$hash
    part=$tree.part
    ffmpeg=/opt/vesk-ffmpeg
    [ -d "$tree" ] && return
    with_lock "$tree.lock" "another run is setting up the environment; waiting for it" make_tree
}

# ---- entering

# Scratch folders of runs that were killed have no living owner.
remove_stale_scratch() {
    local folder
    for folder in "$cache"/scratch/*; do
        [ -d "$folder" ] || continue
        kill -0 "${folder##*/}" 2>/dev/null || [ -d "/proc/${folder##*/}" ] || rm -rf --one-file-system -- "$folder"
    done
}

# enter NETWORK COMMAND...
# Runs a command in the environment. NETWORK is "private" (the simulated cameras' own) or "real".
enter() {
    local net="--net --ipc" code=0 free
    mkdir -p -- "$cache/scratch" 2>/dev/null || die "the cache folder $cache cannot be written"
    check_namespaces
    if host_serves; then
        provide_host
        provide_host_ffmpeg
    else
        provide_tree
    fi
    free=$(free_mb "$here")
    [ -d "$here/build" ] || [ "$free" -ge "$build_mb" ] ||
        die "building needs $build_mb MB in $here, $free MB are free"

    remove_stale_scratch
    scratch=$cache/scratch/$$
    rm -rf --one-file-system -- "$scratch"
    mkdir -p -- "$scratch/tmp" "$scratch/home" "$scratch/root"
    chmod 1777 -- "$scratch/tmp"
    trap 'rm -rf --one-file-system -- "$scratch"' EXIT

    export VESK_FFMPEG=$ffmpeg
    export VESK_NETWORK=$1 VESK_TREE=$tree VESK_SCRATCH=$scratch VESK_CACHE=$cache VESK_CHECKOUT=$here
    shift
    # A real display shares pictures through the host's shared memory.
    [ -z "${DISPLAY:-}" ] || net="--net"
    [ "$VESK_NETWORK" = private ] || net=""
    # shellcheck disable=SC2046,SC2086
    supervise unshare $(namespaces) $net bash "$here/tools/enter.sh" "$@" || code=$?
    exit "$code"
}
