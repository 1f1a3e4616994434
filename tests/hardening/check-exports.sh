#!/bin/sh
# usage: check-exports.sh HEADERS FILE NAME...
# Fails unless the library FILE exports names of our own namespaces alone, only such as the headers
# that the list HEADERS names declare, and among them each NAME (as nm prints it, demangled).
set -eu
headers=$1 file=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
nm -DC --defined-only "$file" | sed -E 's/^[0-9a-f]* +[A-Za-z] //' >"$work/exported"
count=$(grep -c . "$work/exported") || true
[ "$count" -ge 100 ] || { echo "$file: only $count names exported"; exit 1; }

# As the linker sees them: a template of the standard library may return something of ours.
ours='(3Vek|4Tarn|9Interface|10Errdisable|8LinkFlap)'
nm -D --defined-only "$file" | sed -E 's/^[0-9a-f]* +[A-Za-z] //' |
  { grep -vE "^_Z(T[ISTV]|Z|GV|GVZ|Th[^_]*_)?NK?$ours" || true; } | c++filt >"$work/foreign"
if [ -s "$work/foreign" ]; then
  echo "$file exports what is not ours:"
  cat "$work/foreign"
  status=1
fi

# Of "typeinfo for Vek::State<LinkFlap::Config>::~State()": State. The classes and functions that a
# source file keeps to itself stand in no header, or in no namespace that has a name.
xargs cat <"$headers" | grep -oE '[A-Za-z_][A-Za-z0-9_]*' | sort -u >"$work/declared"
sed -E ':more; s/<[^<>]*>//g; t more; /operator/d; s/\(anonymous namespace\)/anonymous/; s/\(.*//
        s/\[.*//; s/.*:://; s/^~//' "$work/exported" | sort -u >"$work/named"
if comm -23 "$work/named" "$work/declared" | grep . >"$work/internal" ||
   grep -F '(anonymous namespace)' "$work/exported" >>"$work/internal"; then
  echo "$file exports what no header declares:"
  cat "$work/internal"
  status=1
fi
for name; do
  grep -qxF "$name" "$work/exported" || { echo "$file does not export $name"; status=1; }
done
[ $status != 0 ] || echo "$(basename "$file"): $count names exported, all public"
exit $status
