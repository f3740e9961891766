#!/usr/bin/env bash
# A whole player for three-player Kuhn poker: it checks and calls, whatever its card.
#
#   docs/examples/caller.sh GAME HOST PORT
#
# One round, at most one raise, and everybody acts in turn until the hand is over; so whose turn it
# is can be read off the length of the betting.
exec 3<>"/dev/tcp/$2/$3"
printf 'VERSION:2.0.0\n' >&3
while read -r line <&3; do
    line=${line%$'\r'}
    [[ $line == [#\;]* ]] && continue
    IFS=: read -r _ seat _ betting _ <<<"$line"
    [[ $betting == ccc || $betting == *r[cf][cf] ]] && continue # the hand is over
    ((${#betting} % 3 == seat)) && printf '%s:c\r\n' "$line" >&3
done
exit 0
