#!/bin/sh
# usage: check-manifest.sh CXX MANIFEST_SOURCE OBJECT...
# The names of the library's types stay in it even when it is linked with --gc-sections, though
# nothing refers to them. The control, without the attribute that says so, loses them.
set -eu
cxx=$1 source=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
manifest() { readelf -p .vek.type "$1" 2>/dev/null | grep -c 'LinkFlap::' || true; }

"$cxx" -shared -Wl,--gc-sections "$@" -o "$work/library.so"
[ "$(manifest "$work/library.so")" = 4 ] || { echo "lost by --gc-sections"; exit 1; }

"$cxx" -std=c++20 -fPIC -Dretain=used -c "$source" -o "$work/control.o"
"$cxx" -shared -Wl,--gc-sections "$work/control.o" -o "$work/control.so"
[ "$(manifest "$work/control.so")" = 0 ] || { echo "the control kept it: the check shows nothing"; exit 1; }
echo "4 names kept; the control lost them"
