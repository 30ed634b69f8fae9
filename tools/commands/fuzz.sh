# shellcheck shell=bash
# shellcheck disable=SC2154 # `here` comes from the entry script
usage() {
    cat <<'HELP'
usage: ./dev fuzz [--seconds N] [--only NAME]

Builds the harnesses of fuzz/ with address and undefined-behaviour sanitizers and gives each of them invented
inputs, starting from its corpus in fuzz/corpus. An input that ends a harness, or takes 10 seconds or 64 MB at
once, is a finding: it is kept in build/fuzz/findings, and the exit code is 1.

  --seconds N   how long each harness runs (600)
  --only NAME   only this harness, for example vesk_file
HELP
}

seconds=600
only=""

parse() {
    while [ $# -gt 0 ]; do
        case "$1" in
        --seconds) seconds=${2:-}; shift ;;
        --only) only=${2:-}; [ -n "$only" ] || bad_usage "--only needs the name of a harness"; shift ;;
        *) bad_usage "'$1' is no option of it" ;;
        esac
        shift || break
    done
    case "$seconds" in
    "" | *[!0-9]*) bad_usage "'$seconds' is no number of seconds" ;;
    *[1-9]*) ;;
    *) bad_usage "'$seconds' is no number of seconds that a harness could run" ;;
    esac
    [ -z "$only" ] || [ -e "$here/fuzz/fuzz_$only.cpp" ] || bad_usage "there is no harness '$only'"
}

network() { echo private; }

# What was found interesting before is kept in build/fuzz/corpus and used again.
run_harness() {
    local name=$1 folder=$here/build/fuzz
    local options=(-max_total_time="$seconds" -timeout=10 -malloc_limit_mb=64 -max_len=8192
        -print_final_stats=1 -artifact_prefix="$folder/findings/$name-")
    [ ! -e "$here/fuzz/$name.dict" ] || options+=(-dict="$here/fuzz/$name.dict")
    mkdir -p -- "$folder/corpus/$name" "$folder/findings"
    "$folder/fuzz/fuzz_$name" "${options[@]}" "$folder/corpus/$name" "$here/fuzz/corpus/$name"
}

work() {
    local harness name failed=""
    build fuzz fuzz/all
    log=$here/build/fuzz.run.log
    : >"$log"
    export ASAN_OPTIONS=strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1 QT_QPA_PLATFORM=offscreen
    for harness in "$here"/fuzz/fuzz_*.cpp; do
        name=${harness##*/fuzz_}
        name=${name%.cpp}
        [ -z "$only" ] || [ "$only" = "$name" ] || continue
        step "fuzzing $name for $seconds s" run_harness "$name" || failed+=" $name"
    done
    [ -z "$failed" ] || die "found something in:$failed; the inputs are in build/fuzz/findings"
}
