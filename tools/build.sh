# shellcheck shell=bash
# Inside the build environment: configuring and building.
# shellcheck disable=SC2154 # `here` comes from the entry script

# Passes lines on to the log and says one a minute aloud, so that a long build is seen to go on.
pass_on() {
    local line last=$SECONDS
    while IFS= read -r line; do
        printf '%s\n' "$line"
        if [ $((SECONDS - last)) -ge 60 ]; then
            last=$SECONDS
            printf '%s ... ' "${line%% *}" >&"$aloud"
        fi
    done
}

run_ninja() {
    ninja "$@" 2>&1 | pass_on
}

configure_and_build() {
    local preset=$1
    shift
    : >"$log"
    local folder=$here/build/$preset
    # Configuring again is ninja's own business once there is a build file.
    [ -e "$folder/build.ninja" ] ||
        step "configuring build/$preset" cmake -S "$here" --preset "$preset" ||
        die "the configuration failed"
    exec {aloud}>&2
    step "building build/$preset" run_ninja -C "$folder" -j "$(nproc)" "$@" || die "the build failed"
    exec {aloud}>&-
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    mkdir -p -- "$here/build"
    log=$here/build/$preset.log
    with_lock "$here/build/.$preset.lock" "another run builds build/$preset; waiting for it" configure_and_build "$@"
}
