#!/usr/bin/env bash
# Runs one fuzz target for some seconds, from its committed seeds.
#
#   scripts/fuzz.sh TARGET [SECONDS]     e.g. scripts/fuzz.sh fuzz_match_state 600
#
# Build first: cmake --preset fuzz && cmake --build --preset fuzz
# New inputs go to build/fuzz/corpus/TARGET; a finding stays in build/fuzz/findings and is repeated
# with build/fuzz/bin/TARGET FILE. The seeds are read, never written.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

target=${1:-}
seconds=${2:-60}
program=build/fuzz/bin/$target
if [[ -z $target || ! -x $program ]]; then
    echo "usage: scripts/fuzz.sh TARGET [SECONDS], TARGET one of those in build/fuzz/bin:" >&2
    ls build/fuzz/bin 2>/dev/null | grep ^fuzz_ >&2 || echo "(none is built)" >&2
    exit 2
fi
name=${target#fuzz_}
corpus=build/fuzz/corpus/$name
findings=build/fuzz/findings
mkdir -p "$corpus" "$findings"
dictionary=()
[[ -f fuzz/$name.dict ]] && dictionary=(-dict="fuzz/$name.dict")
log=$findings/$target.log
export ASAN_OPTIONS=quarantine_size_mb=16:detect_leaks=1

echo "$target: $seconds s"
# An input may take ten seconds by the clock, for other work may keep the target waiting; a parser
# that is truly slow takes longer than that on some input soon enough.
# The targets print the parsers' own messages, so standard error goes to a file; what libFuzzer
# concludes is shown.
if "$program" "$corpus" "fuzz/corpus/$name" "${dictionary[@]}" -max_len=4096 -timeout=10 \
    -rss_limit_mb=256 -max_total_time="$seconds" -print_final_stats=1 -close_fd_mask=3 \
    -artifact_prefix="$findings/$target-" >"$log" 2>&1; then
    grep -aE '^stat::(number_of_executed_units|average_exec_per_sec|peak_rss_mb)' "$log"
else
    tail -n 60 "$log"
    echo "$target: a finding, kept in $findings"
    exit 1
fi
