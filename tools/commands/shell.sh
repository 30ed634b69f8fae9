# shellcheck shell=bash
usage() {
    cat <<'HELP'
usage: ./dev shell [--real] [COMMAND...]

Enters the build environment: a shell, or one command. It has the simulated cameras' private network (the
program's side is 10.77.0.1, the cameras' addresses are 10.77.0.2 and 10.77.0.3; `ip address add
10.77.0.4/24 brd + dev vesk1` makes one more) and a home and a /tmp of its own, which are gone afterwards.

  --real   the machine's own network and your own home folder
HELP
}

real=private
shell_command=()

parse() {
    while [ $# -gt 0 ]; do
        case "$1" in
        --real) real=real ;;
        --) shift; shell_command=("$@"); break ;;
        -*) bad_usage "'$1' is no option of it" ;;
        *) shell_command=("$@"); break ;;
        esac
        shift
    done
}

network() { echo "$real"; }

work() {
    if [ ${#shell_command[@]} -gt 0 ]; then exec "${shell_command[@]}"; fi
    exec bash -i
}
