# shellcheck shell=bash
# shellcheck disable=SC2154 # `here` comes from the entry script
usage() {
    cat <<'HELP'
usage: ./dev test [--preset dev|asan|tsan|coverage] [-- CTEST-ARGUMENT...]

Sets up what is needed, builds everything and runs every test. The last thing printed is ctest's summary.

  --preset NAME   dev (default): as developed, with warnings as errors
                  asan: with address and undefined-behaviour sanitizers
                  tsan: with the thread sanitizer
                  coverage: counts which lines ran; gcov reads the counts in build/coverage
  -- ARGUMENTS    go to ctest, for example: ./dev test -- -R tst_discovery --repeat until-fail:20
HELP
}

preset=dev
ctest_arguments=()

parse() {
    while [ $# -gt 0 ]; do
        case "$1" in
        --preset) preset=${2:-}; shift ;;
        --preset=*) preset=${1#*=} ;;
        --) shift; ctest_arguments=("$@"); break ;;
        *) bad_usage "'$1' is no option of it" ;;
        esac
        shift || break
    done
    case "$preset" in dev | asan | tsan | coverage) ;; *) bad_usage "there is no preset '$preset' for tests" ;; esac
}

network() { echo private; }

# The sanitizers end a test at the first finding; leaks of libraries that are not ours are listed.
sanitizer_options() {
    local support=$here/tests/support
    export ASAN_OPTIONS=halt_on_error=1:detect_leaks=1:strict_string_checks=1
    export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
    export LSAN_OPTIONS=print_suppressions=0 TSAN_OPTIONS=halt_on_error=1
    [ ! -e "$support/lsan.supp" ] || LSAN_OPTIONS+=:suppressions=$support/lsan.supp
    [ ! -e "$support/tsan.supp" ] || TSAN_OPTIONS+=:suppressions=$support/tsan.supp
}

work() {
    build "$preset"
    sanitizer_options
    exec ctest --test-dir "$here/build/$preset" --output-on-failure --no-tests=error -j 2 \
        ${ctest_arguments[@]+"${ctest_arguments[@]}"}
}
