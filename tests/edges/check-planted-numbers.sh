#!/bin/sh
# usage: check-planted-numbers.sh PROGRAM
# The build's sanitizers must report each planted mistake, and pass the wrap that is named.
set -eu
said=$(mktemp)
trap 'rm -f "$said"' EXIT
for kind in conversion division wrap; do
  if "$1" $kind >"$said" 2>&1 || ! grep -q 'runtime error' "$said"; then
    echo "$kind: not reported"
    cat "$said"
    exit 1
  fi
  sed -n 's/.*runtime error: //p' "$said"
done
"$1" named
