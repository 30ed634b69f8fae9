# shellcheck shell=bash
# shellcheck disable=SC2154 # `here` comes from the entry script
usage() {
    cat <<'HELP'
usage: ./dev bench [--json] [--only TEXT]

Builds the release preset, runs the benchmark programs and the whole-program measurements listed in
bench/rows.json, and prints one table: what, ratio, bound, holds or not. The exit code is 1 when a bound
does not hold.

  --json        prints the rows as JSON
  --only TEXT   measures only the rows whose name holds TEXT
HELP
}

bench_arguments=()

parse() {
    while [ $# -gt 0 ]; do
        case "$1" in
        --json) bench_arguments+=(--json) ;;
        --only) [ -n "${2:-}" ] || bad_usage "--only needs a text"; bench_arguments+=(--only "$2"); shift ;;
        *) bad_usage "'$1' is no option of it" ;;
        esac
        shift
    done
}

network() { echo private; }

work() {
    build release bench/all vesk q4sim
    exec python3 "$here/tools/bench.py" --rows "$here/bench/rows.json" --build "$here/build/release" \
        ${bench_arguments[@]+"${bench_arguments[@]}"}
}
