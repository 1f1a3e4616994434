#!/bin/sh
# usage: check-page.sh SCENARIO_PROGRAM PAGE.md
# Every block of the page that is marked as a scenario is run from its command lines and must print
# the block itself. A page without such a block fails.
set -eu
program=$1 page=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

awk -v out="$work/block" '
  /^```scenario$/ { n++; inside = 1; next }
  /^```$/         { inside = 0; next }
  inside          { print > (out n) }
' "$page"

count=0
for block in "$work"/block*; do
  [ -e "$block" ] || { echo "$page has no scenario block"; exit 1; }
  sed -n 's/^> //p' "$block" | "$program" >"$work/printed"
  diff -u "$block" "$work/printed" || { echo "$page: a block is not what the program prints"; exit 1; }
  count=$((count + 1))
done
echo "$count blocks as printed"
