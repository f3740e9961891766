#!/usr/bin/env bash
# A long match of one player over one connection, watched for what grows.
#
#   scripts/soak.sh GAME [HANDS] [DIRECTORY]     e.g. scripts/soak.sh kuhn.limit.3p.game 200000 run
#
# Seats `player` against built-in opponents in the playing directory (default: run) and looks once a
# second at the player's memory of its own (pages of mapped tables are the system's to keep or drop,
# and come one by one) and open descriptors. At the end it prints both as they
# were when the first hands had been played and at the last look, and the player's response times in
# the first and the last tenth of the hands. Exit status 1 when there was a fault, or when memory or
# descriptors grew (memory: by more than 1 MB).
# Build first: ./play or cmake --preset release && cmake --build --preset release
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

game=${1:-}
hands=${2:-200000}
directory=${3:-run}
programs=$PWD/build/release/bin
if [[ -z $game || ! -x $programs/tamarin ]]; then
    sed -n '2,12s/^# \{0,1\}//p' "$0" >&2
    exit 2
fi
PATH=$programs:$PATH
seats=(--seat player='exec player' --seat rule=bot:rule)
[[ $game == *.3p.* ]] && seats+=(--seat random=bot:random)

report=$(mktemp)
trap 'rm -f "$report"; kill "$match" 2>/dev/null || true' EXIT
tamarin match "$game" --dir "$directory" --hands "$hands" "${seats[@]}" --json >"$report" &
match=$!

# The player is the match's child of that name.
player=
for _ in $(seq 100); do
    player=$(pgrep -x player -P "$match" || true)
    [[ -n $player ]] && break
    sleep 0.1
done
[[ -n $player ]] || { echo "soak: the player did not start" >&2; exit 1; }

own_memory() { awk '/^RssAnon/ { print $2 }' "/proc/$player/status" 2>/dev/null; }
descriptors() { find "/proc/$player/fd" -mindepth 1 2>/dev/null | wc -l; }

sleep 3
memory=$(own_memory) open=$(descriptors)
first_memory=${memory:-0} first_open=$open last_memory=${memory:-0} last_open=$open most=$last_memory
while kill -0 "$match" 2>/dev/null; do
    memory=$(own_memory) open=$(descriptors)
    if [[ -n $memory && $open -gt 0 ]]; then
        last_memory=$memory last_open=$open
        [[ $memory -gt $most ]] && most=$memory
    fi
    sleep 1
done
wait "$match"

number() { # PLAYER'S OBJECT: the value of a key after another one, from the indented JSON
    awk -v part="\"$1\"" -v key="\"$2\"" '
        index($0, part) { inside = 1 }
        inside && index($0, key) { gsub(/[^0-9.]/, "", $2); print $2; exit }' "$report"
}
faults=$(awk '/"faults"/ { inside = 1; next } inside && /}/ { inside = 0 }
              inside { gsub(/[^0-9]/, "", $2); sum += $2 } END { print sum + 0 }' "$report")
rate=$(awk '/"seconds"/ { gsub(/[^0-9.]/, "", $2); print $2 }' "$report")
echo "$game: $hands hands in $rate s, $faults faults"
echo "own memory:      $first_memory kB early, $last_memory kB late, $most kB at most"
echo "descriptors:     $first_open early, $last_open late"
echo "first tenth:     median $(number firstTenth median) us, p99 $(number firstTenth p99) us"
echo "last tenth:      median $(number lastTenth median) us, p99 $(number lastTenth p99) us"
[[ $faults -eq 0 && $last_open -eq $first_open && $last_memory -le $((first_memory + 1000)) ]]
