#!/bin/sh
# usage: check-headers.sh LIST
# LIST names the installed headers, one to a line.
# What an installed header declares is public. The compilers hide everything that does not say
# so, therefore each header says it, once, for all that stands between its includes and its end.
set -eu
push='#pragma GCC visibility push(default)'
pop='#pragma GCC visibility pop'
status=0
count=0
while read -r header; do
  count=$((count + 1))
  order=$(grep -nxF -e "$push" -e "$pop" "$header" | cut -d: -f2- | paste -sd'|')
  included=$(grep -n '^#include' "$header" | tail -n 1 | cut -d: -f1)
  pushed=$(grep -nxF -e "$push" "$header" | head -n 1 | cut -d: -f1)
  if [ "$order" != "$push|$pop" ] || [ "${included:-0}" -gt "$pushed" ] ||
     [ "$(tail -n 1 "$header")" != "$pop" ]; then
    echo "$header does not declare its interface public"
    status=1
  fi
done <"$1"
[ "$count" -ge 40 ] || { echo "only $count headers found"; exit 1; }
[ $status != 0 ] || echo "$count headers"
exit $status
