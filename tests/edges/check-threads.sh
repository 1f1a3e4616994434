#!/bin/sh
# usage: check-threads.sh PROGRAM COPIES
# With the reference-count switch on, the thread sanitizer must report nothing while sixteen threads
# make that many copies; with the switch off (the control) it must report a race.
set -eu
program=$1 copies=$2
said=$(mktemp)
trap 'rm -f "$said"' EXIT

TSAN_OPTIONS='halt_on_error=0 exitcode=66' "$program" on "$copies" >"$said" 2>&1 || {
  cat "$said"
  exit 1
}
cat "$said"
reports=$(grep -c 'WARNING: ThreadSanitizer' "$said" || true)
[ "$reports" = 0 ] || { echo "$reports reports with the switch on"; exit 1; }

# It stops at the first.
if TSAN_OPTIONS='halt_on_error=1 exitcode=66' "$program" off 100000 >"$said" 2>&1; then
  echo "the control was not reported"
  exit 1
fi
grep -q 'WARNING: ThreadSanitizer: data race' "$said" || { cat "$said"; exit 1; }
echo "0 reports with the switch on; the control, with it off, was reported"
