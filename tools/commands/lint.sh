# shellcheck shell=bash
# shellcheck disable=SC2154 # `here` comes from the entry script
usage() {
    cat <<'HELP'
usage: ./dev lint [--changed] [--fix]

Checks the formatting (clang-format), the views (qmllint) and the code (clang-tidy).

  --changed   only the C++ files that differ from the last commit
  --fix       puts the formatting right instead of complaining about it
HELP
}

changed=no
format_mode="--dry-run -Werror"

parse() {
    while [ $# -gt 0 ]; do
        case "$1" in
        --changed) changed=yes ;;
        --fix) format_mode=-i ;;
        *) bad_usage "'$1' is no option of it" ;;
        esac
        shift
    done
}

network() { echo private; }

source_files() {
    cd "$here" || return
    # A checkout may belong to another user than the one who builds.
    local git=(git -c safe.directory="$here")
    if [ "$changed" = yes ]; then
        { "${git[@]}" diff --name-only --diff-filter=d HEAD -- "$@"
          "${git[@]}" ls-files --others --exclude-standard -- "$@"; } | sort -u
    else
        "${git[@]}" ls-files --cached --others --exclude-standard -- "$@"
    fi | while IFS= read -r file; do [ ! -f "$file" ] || printf '%s\n' "$file"; done
}

check_format() {
    # shellcheck disable=SC2086
    source_files '*.cpp' '*.h' | (cd "$here" && xargs -r clang-format $format_mode)
}

check_views() {
    if ninja -C "$here/build/dev" -t query all_qmllint >/dev/null 2>&1; then
        ninja -C "$here/build/dev" all_qmllint
    fi
}

check_code() {
    source_files '*.cpp' | grep -v -e '^res/' | (cd "$here" && xargs -r -n 1 -P "$(nproc)" \
        clang-tidy -p build/dev --quiet --warnings-as-errors='*')
}

work() {
    local failed=""
    build dev
    log=$here/build/lint.log
    : >"$log"
    step "formatting" check_format || failed+=" formatting"
    step "views" check_views || failed+=" views"
    step "code" check_code || failed+=" code"
    [ -z "$failed" ] || die "lint found something in:$failed; all of it is in $log"
}
