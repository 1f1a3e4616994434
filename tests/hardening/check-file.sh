#!/bin/sh
# usage: check-file.sh program|library COMPILER|no FILE...
# Fails unless each built FILE is hardened as cmake/Hardening.cmake says. The second word is "no"
# where the files were built without the C library's own checks (fortify), which take an optimiser.
set -eu
kind=$1 fortified=$2
shift 2
[ $# -gt 0 ] || { echo "no file given"; exit 2; }
status=0
fail() { echo "$file: $1"; status=1; }

# What the C library's headers replace by a checking form wherever the optimiser is on; the last row
# needs what g++ alone has.
replaced='vprintf|vfprintf|vsprintf|vsnprintf|vdprintf|vasprintf|vsyslog|gets|longjmp'
[ "$fortified" != GNU ] ||
  replaced="$replaced|printf|fprintf|sprintf|snprintf|dprintf|asprintf|syslog"

for file in "$@"; do
  header=$(readelf -hW "$file")
  segments=$(readelf -lW "$file")
  dynamic=$(readelf -dW "$file")
  imports=$(nm -D --undefined-only "$file" | sed 's/.* [Uw] //; s/@.*//')

  echo "$header" | grep -q 'Type: *DYN' || fail 'not position-independent'
  if [ "$kind" = program ]; then
    echo "$dynamic" | grep -q 'FLAGS_1.* PIE' || fail 'not a position-independent executable'
  fi
  if echo "$dynamic" | grep -q 'TEXTREL'; then fail 'relocates its code'; fi
  echo "$segments" | grep -q 'GNU_RELRO' || fail 'no RELRO'
  echo "$dynamic" | grep -qE 'BIND_NOW|FLAGS_1.* NOW' || fail 'no BIND_NOW'
  echo "$segments" | grep -qE 'GNU_STACK .* RW +0x' || fail 'executable stack'
  if echo "$segments" | grep -qE 'LOAD .* RWE'; then fail 'memory both writable and executable'; fi
  echo "$imports" | grep -qx '__stack_chk_fail' || fail 'no stack protector'
  checked=$(echo "$imports" | grep -c '_chk$' || true)
  if [ "$fortified" != no ]; then
    plain=$(echo "$imports" | grep -xE "$replaced" | paste -sd' ') || true
    [ -z "$plain" ] || fail "not fortified: calls $plain"
  fi
  [ $status != 0 ] || echo "$(basename "$file"): hardened ($checked fortified functions)"
done
exit $status
