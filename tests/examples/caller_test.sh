#!/usr/bin/env bash
# docs/examples/caller.sh plays a match without a fault and does nothing but call.
set -euo pipefail
tamarin=$1 tree=$2
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cp "$tree/games/kuhn.limit.3p.game" "$directory"
cd "$directory"
result=$("$tamarin" match kuhn.limit.3p.game --hands 90 --seed 1 --quiet \
    --seat me="$tree/docs/examples/caller.sh" --seat rule=bot:rule --seat random=bot:random)
echo "$result"
# Columns: name, chips, chips/hand +- interval, mbb/hand +- interval, fold, call, raise, times, faults.
awk '$1 == "me" { seen = 1; if ($NF != "none" || $9 != 0 || $10 == 0 || $11 != 0) exit 1 }
     END { exit !seen }' <<<"$result"
