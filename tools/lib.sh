# shellcheck shell=bash
# What every part of the entry script uses. Messages go to standard error, so that standard output
# belongs to the results.
# shellcheck disable=SC2154 # `log` is set by the part that has steps to run

say() {
    printf 'dev: %s\n' "$*" >&2
}

# Ends the script with one sentence.
die() {
    say "$*"
    exit 1
}

# Ends the script because of its command line.
bad_usage() {
    say "$* (./dev ${command:-} --help explains)"
    exit 2
}

# Free space in MB of the file system that holds a path; the path need not exist yet.
free_mb() {
    local path=$1
    while [ ! -e "$path" ]; do path=$(dirname -- "$path"); done
    df -Pk -- "$path" | awk 'NR == 2 { print int($4 / 1024) }'
}

# step TEXT COMMAND...
# Runs a command with its output in the file $log: one line with the time it took, and on failure the
# name of the log and its last lines.
step() {
    local text=$1 start=$SECONDS code=0
    shift
    printf 'dev: %s ... ' "$text" >&2
    printf '\n== %s\n' "$text" >>"$log"
    "$@" >>"$log" 2>&1 </dev/null || code=$?
    if [ "$code" -eq 0 ]; then
        printf '%d s\n' $((SECONDS - start)) >&2
        return 0
    fi
    printf 'failed after %d s; the end of %s:\n' $((SECONDS - start)) "$log" >&2
    tail -n 40 -- "$log" | sed 's/^/    /' >&2
    return "$code"
}

# with_lock FILE TEXT COMMAND...
# Runs a command while no other run holds the same lock; TEXT is said when that means waiting. The
# lock is free again whenever its holder is gone, however it ended.
with_lock() {
    local file=$1 text=$2 fd code=0
    shift 2
    mkdir -p -- "$(dirname -- "$file")"
    exec {fd}>"$file"
    if ! flock --nonblock "$fd"; then
        say "$text"
        flock "$fd"
    fi
    "$@" || code=$?
    exec {fd}>&-
    return "$code"
}
