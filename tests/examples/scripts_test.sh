#!/usr/bin/env bash
# The scripts parse, explain themselves, and refuse what they do not know before they do anything.
set -uo pipefail
cd "$1" || exit 1
failures=0

# expect STATUS TEXT COMMAND...: the exit status, and a text somewhere in what is printed.
expect() {
    local status=$1 text=$2 output got
    shift 2
    output=$("$@" 2>&1 </dev/null)
    got=$?
    if [[ $got -ne $status || $output != *"$text"* ]]; then
        echo "$*: status $got, not $status with '$text':"
        echo "$output"
        failures=$((failures + 1))
    fi
}

for script in play check bench .ci/run scripts/*.sh docs/examples/*.sh; do
    expect 0 "" bash -n "$script"
    [[ -x $script ]] || { echo "$script is not executable" && failures=$((failures + 1)); }
done
expect 0 "kuhn.limit.3p.game" ./play --help
expect 2 "there is no game chess; the games are: " ./play chess
# Every game that is offered can be dealt, and every one that can be dealt is offered.
offered=$(./play --help 2>&1 | sed -n 's/^  \([^ ]*\.game\)$/\1/p')
dealt=$(cd games && ls ./*.game | sed 's#^\./##' | grep -v '^kuhn\.\(flop\|turn\|river\)\.')
[[ -n $offered && $offered == "$dealt" ]] ||
    { echo "./play offers $offered" && failures=$((failures + 1)); }
expect 2 "there is no game kuhn.flop.2p; the games are: " ./play kuhn.flop.2p
expect 2 "--hands needs a number" ./play --hands many
expect 2 "unknown option --fast" ./play --fast
expect 2 "--quality is quick, good or best" ./play holdem.limit.2p.reverse_blinds --quality great
expect 2 "--quality is of hold'em" ./play --quality quick
expect 0 "--full" ./check --help
expect 2 "unknown option --fast" ./check --fast
expect 2 "--fuzz needs a number" ./check --fuzz
expect 0 "./bench" ./bench --help
expect 2 "no benchmarks for chess" ./bench chess
expect 2 "usage" scripts/install-packages.sh everything
expect 2 "usage" scripts/fuzz.sh
exit $((failures > 0))
