#!/bin/sh
# usage: needed-test.sh LIBVEK LIBLINKFLAP
# The runtime needs the C++ standard library alone; the library needs that and the runtime.
set -eu
language='libstdc\+\+\.so\.6|libm\.so\.6|libgcc_s\.so\.1|libc\.so\.6|ld-linux[^ ]*'
check() {
  needed=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
  [ -n "$needed" ] || { echo "$1: nothing read"; exit 1; }
  foreign=$(echo "$needed" | grep -vxE "$2" || true)
  [ -z "$foreign" ] || { printf '%s needs:\n%s\n' "$1" "$foreign"; exit 1; }
}
check "$1" "$language"
check "$2" "$language|libvek\.so\.0"
echo ok
