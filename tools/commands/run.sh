# shellcheck shell=bash
# shellcheck disable=SC2154 # `here` comes from the entry script
usage() {
    cat <<'HELP'
usage: ./dev run [--seconds N] [--cameras N] [--real] [-- PROGRAM-ARGUMENT...]

Sets up what is needed, builds, and starts the program together with simulated cameras on a private
network. Without a display it starts a virtual one and writes a picture of the window every second to
build/run/window.png.

  --seconds N   end by itself after N seconds; the exit code is 0 if the program was still running
  --cameras N   number of simulated cameras, 0 to 16 (default 2: one in colour, one monochrome with old
                firmware)
  --real        the machine's own network, no simulated camera, and your own settings. Without it the
                settings lie in the cache folder.
  -- ARGUMENTS  go to the program
HELP
}

seconds=""
cameras=2
real=private
program_arguments=()

parse() {
    while [ $# -gt 0 ]; do
        case "$1" in
        --seconds) seconds=${2:-none}; shift ;;
        --seconds=*) seconds=${1#*=} ;;
        --cameras) cameras=${2:-none}; shift ;;
        --cameras=*) cameras=${1#*=} ;;
        --real) real=real ;;
        --) shift; program_arguments=("$@"); break ;;
        *) bad_usage "'$1' is no option of it" ;;
        esac
        shift || break
    done
    [[ "$seconds" =~ ^([1-9][0-9]{0,5})?$ ]] || bad_usage "'$seconds' is no number of seconds"
    [[ "$cameras" =~ ^([0-9]|1[0-6])$ ]] || bad_usage "'$cameras' is no number of cameras from 0 to 16"
}

network() { echo "$real"; }

# A folder for what this run writes; a second run at the same time gets build/run-2.
claim_results() {
    local n=1 claim
    results=$here/build/run
    while exec {claim}>"$results.lock" && ! flock --nonblock "$claim"; do
        exec {claim}>&-
        n=$((n + 1))
        results=$here/build/run-$n
    done
    mkdir -p -- "$results"
    rm -f -- "$results"/{window.png,window.png.part,display,q4sim.log}
}

# Cameras take turns: colour with new firmware, monochrome with old firmware.
start_cameras() {
    local n tries flags serving=0
    for ((n = 1; n <= cameras; n++)); do
        if ((n % 2)); then flags=(--pattern rggb --firmware new); else flags=(--pattern mono --firmware old); fi
        [ "$n" -le 2 ] || ip address add "10.77.0.$((n + 1))/24" brd + dev vesk1
        "$here/build/dev/sim/q4sim" --address "10.77.0.$((n + 1))" --name "Simulated $n" \
            --serial "Q4-0000$n" --seed "$n" "${flags[@]}" >>"$results/q4sim.log" 2>&1 &
    done
    [ "$cameras" -gt 0 ] || return 0
    # Each says what it serves once it does.
    for tries in {1..100}; do
        serving=$(grep -c '^q4sim: camera ' "$results/q4sim.log" || true)
        [ "$serving" -lt "$cameras" ] || return 0
        sleep 0.1
    done
    tail -n 5 "$results/q4sim.log" >&2
    die "only $serving of $cameras simulated cameras started within $((tries / 10)) s"
}

# A display that can be reached from here: on the private network only one with a socket in the file system.
has_display() {
    local number=${DISPLAY:-none}
    case "$number" in
    none) ;;
    :* | unix:*)
        number=${number#*:}
        [ -S "/tmp/.X11-unix/X${number%%.*}" ] && return 0 ;;
    *)
        [ "$VESK_ENVIRONMENT" = real ] && return 0
        say "the display $DISPLAY cannot be reached from the private network" ;;
    esac
    [ -n "${WAYLAND_DISPLAY:-}" ] && [ -S "${XDG_RUNTIME_DIR:-}/$WAYLAND_DISPLAY" ] || return 1
    unset DISPLAY
    export QT_QPA_PLATFORM=wayland
}

start_virtual_display() {
    local tries
    unset WAYLAND_DISPLAY XAUTHORITY
    Xvfb -displayfd 3 -screen 0 1280x800x24+32 -nolisten tcp 3>"$results/display" 2>"$results/xvfb.log" &
    for tries in {1..100}; do
        [ ! -s "$results/display" ] || break
        sleep 0.1
    done
    [ "$tries" -lt 100 ] || die "the virtual display did not start; see $results/xvfb.log"
    DISPLAY=:$(cat "$results/display")
    export DISPLAY QT_QPA_PLATFORM=xcb
}

take_pictures() {
    while sleep 1; do
        import -silent -window root "png:$results/window.png.part" 2>/dev/null &&
            mv -f -- "$results/window.png.part" "$results/window.png"
    done
}

# Waits for the end of the program, at most for the given time, and gives the exit code of the run.
wait_for_program() {
    local started=$SECONDS code=0
    if [ -n "$seconds" ]; then
        while [ $((SECONDS - started)) -lt "$seconds" ] && kill -0 "$program" 2>/dev/null; do sleep 0.2; done
        if kill -0 "$program" 2>/dev/null; then
            kill -TERM "$program"
            wait "$program" || true
            say "ended after $seconds s; the program was running"
            return 0
        fi
    fi
    wait "$program" || code=$?
    [ "$code" -eq 0 ] || say "the program ended with code $code"
    return "$code"
}

work() {
    local code=0
    build dev vesk q4sim
    claim_results
    if [ "$VESK_ENVIRONMENT" = private ]; then
        start_cameras
        export HOME=$VESK_CACHE/home
        mkdir -p -- "$HOME"
    fi
    if ! has_display; then
        start_virtual_display
        take_pictures &
        say "no display: a picture of the window is written every second to $results/window.png"
    fi
    cd "$here" || return # the program looks for CREDITS.txt where it is started
    "$here/build/dev/app/vesk" ${program_arguments[@]+"${program_arguments[@]}"} &
    program=$!
    trap 'kill -TERM "$program" 2>/dev/null; exit 143' TERM INT
    wait_for_program || code=$?
    exit "$code"
}
