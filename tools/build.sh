# shellcheck shell=bash
# Inside the build environment: configuring and building.
# shellcheck disable=SC2154 # `here` comes from the entry script

configure_and_build() {
    local preset=$1
    shift
    local folder=$here/build/$preset
    # Configuring again is ninja's own business once there is a build file.
    [ -e "$folder/build.ninja" ] ||
        step "configuring build/$preset" cmake -S "$here" --preset "$preset" ||
        die "the configuration failed"
    step "building build/$preset" ninja -C "$folder" -j "$(nproc)" "$@" || die "the build failed"
}

# build PRESET [TARGET...]
build() {
    local preset=$1
    mkdir -p -- "$here/build"
    log=$here/build/$preset.log
    : >"$log"
    with_lock "$here/build/.$preset.lock" "another run builds build/$preset; waiting for it" configure_and_build "$@"
}
