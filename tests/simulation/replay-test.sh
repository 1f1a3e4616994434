#!/bin/sh
# usage: replay-test.sh SIMULATE
# A seed replays to the same digest, alone or among others; another seed or one event more does not.
set -eu
simulate=$1

digest() {
  "$simulate" "$@" | sed -n 's/.* 0 differences, digest //p'
}
first=$(digest --seeds 7..7 --events 100000)
[ -n "$first" ] || { echo "no digest"; exit 1; }
again=$(digest --seeds 7..7 --events 100000)
[ "$first" = "$again" ] || { echo "seed 7 gave $first, then $again"; exit 1; }
[ "$first" != "$(digest --seeds 8..8 --events 100000)" ] || { echo "two seeds, one digest"; exit 1; }
[ "$first" != "$(digest --seeds 7..7 --events 100001)" ] || { echo "one event more, one digest"; exit 1; }
alone=$(digest --seeds 7..10 --events 20000)
shared=$(digest --seeds 7..10 --events 20000 --jobs 2)
[ "$alone" = "$shared" ] || { echo "one worker gave $alone, two gave $shared"; exit 1; }
echo "seed 7 twice: digest $first"
