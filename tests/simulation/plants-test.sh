#!/bin/sh
# usage: plants-test.sh SIMULATE
# Plants each fault in the model: every one must be noticed, and nothing without one.
set -eu
simulate=$1
history='--seeds 1..12 --events 60000'

# shellcheck disable=SC2086
"$simulate" $history | grep -q ' 0 differences' || { echo "a difference without a planted fault"; exit 1; }
planted=0
noticed=0
for fault in $("$simulate" --list-plants | cut -d' ' -f1); do
  planted=$((planted + 1))
  status=0
  # shellcheck disable=SC2086
  output=$("$simulate" $history --plant "$fault") || status=$?
  if [ "$status" = 1 ] && printf '%s\n' "$output" | grep -q '^seed .*, event ' &&
    printf '%s\n' "$output" | grep -q ' 1 differences'; then
    noticed=$((noticed + 1))
  else
    echo "$fault: not noticed (exit $status): $output"
  fi
done
echo "$planted planted faults, $noticed noticed"
[ "$planted" -ge 8 ] && [ "$planted" = "$noticed" ]
