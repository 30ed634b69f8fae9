#!/usr/bin/env bash
# tst_dev_script.sh CHECKOUT
# What the entry script does before it enters the build environment, and its helpers.
set -u
checkout=$1
dev=$checkout/dev
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT
failures=0

# check NAME CONDITION-COMMAND...
check() {
    local name=$1
    shift
    if "$@"; then
        echo "PASS   : $name"
    else
        echo "FAIL!  : $name"
        failures=$((failures + 1))
    fi
}

# ends CODE PATTERN COMMAND...: the command ends with the code and says something that matches.
ends() {
    local code=0 expected=$1 pattern=$2
    shift 2
    "$@" >"$scratch/said" 2>&1 </dev/null || code=$?
    [ "$code" -eq "$expected" ] && grep -Eq -- "$pattern" "$scratch/said" && return
    echo "code $code instead of $expected, said:" && cat "$scratch/said"
    return 1
}

check helpListsEveryCommand ends 0 '^  shell ' "$dev" --help
check noCommandIsAnError ends 2 '^usage: ./dev COMMAND' "$dev"
check unknownCommandIsNamed ends 2 "no command 'biuld'" "$dev" biuld
for command in run test bench lint fuzz shell; do
    check "helpExplains_$command" ends 0 "^usage: ./dev $command" "$dev" "$command" --help
    check "unknownOptionIsNamed_$command" ends 2 "'--wrong'" "$dev" "$command" --wrong
done
check unknownPresetIsNamed ends 2 "no preset 'fast'" "$dev" test --preset fast
check missingPresetIsAnError ends 2 "no preset ''" "$dev" test --preset
check secondsAreANumber ends 2 "'soon' is no number" "$dev" run --seconds soon
check noSecondsIsAnError ends 2 "no number of seconds" "$dev" run --seconds 0
check secondsOfFuzzingAreANumber ends 2 "'soon' is no number" "$dev" fuzz --seconds soon
check fuzzingTakesTime ends 2 "'00' is no number of seconds" "$dev" fuzz --seconds 00
check unknownHarnessIsNamed ends 2 "no harness 'nothing'" "$dev" fuzz --only nothing
check camerasAreLimitedByTheirAddresses ends 2 "'17' is no number of cameras" "$dev" run --cameras 17
check helpBehindTheDashesBelongsToTheProgram ends 2 "'soon'" "$dev" run --seconds soon -- --help
ln -s "$dev" "$scratch/link"
check worksThroughALinkFromAnywhere ends 0 '^usage: ./dev test' sh -c "cd / && '$scratch/link' test --help"

# shellcheck source=tools/lib.sh
. "$checkout/tools/lib.sh"
log=$scratch/log

check stepSaysItsTime ends 0 'counting \.\.\. [0-9]+ s$' step counting true
check failedStepKeepsItsCode ends 7 'failed after' step failing sh -c 'exit 7'
check failedStepShowsTheEndOfItsLog ends 1 'cannot find the paint' step painting sh -c 'echo cannot find the paint; exit 1'
check failedStepNamesItsLog ends 1 "$scratch/log" step painting false
check freeSpaceOfAFolderThatIsNotYet test "$(free_mb "$scratch/not/yet")" -gt 0

# Two runs: the second one has to wait until the first has written.
(with_lock "$scratch/lock" "" sh -c "touch '$scratch/held'; sleep 1; echo first >>'$scratch/order'") &
until [ -e "$scratch/held" ]; do sleep 0.05; done
check lockIsWaitedFor ends 0 'in use' with_lock "$scratch/lock" "in use" sh -c "echo second >>'$scratch/order'"
wait
check lockedCommandsFollowEachOther test "$(tr '\n' ' ' <"$scratch/order")" = "first second "
check lockedCommandKeepsItsCode ends 5 told with_lock "$scratch/lock" "" sh -c 'echo told; exit 5'

[ "$failures" -eq 0 ]
