#!/bin/sh
# usage: install-test.sh CMAKE BUILD_DIR EXAMPLE_DIR CXX
# Installs a built tree into a folder of its own, moves it, builds the example host against it once
# through CMake's and once through pkg-config's package configuration, and runs both.
set -eu
cmake=$1 build=$2 example=$3 cxx=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$cmake" --install "$build" --prefix "$work/first" >/dev/null
mv "$work/first" "$work/prefix"  # package configuration must not remember where it was put first
for program in linkflapd scenario; do
  [ ! -e "$build/$program" ] || [ "$program" = scenario ] || "$work/prefix/bin/$program" --version
done

expected='Ethernet1 err-disabled at 6 s
Ethernet1 enabled again'
check() {
  [ "$2" = "$expected" ] || { printf '%s printed:\n%s\nexpected:\n%s\n' "$1" "$2" "$expected"; exit 1; }
  echo "$1: ok"
}

"$cmake" -S "$example" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
"$cmake" --build "$work/cmake" >"$work/log" || { cat "$work/log"; exit 1; }
check 'host built through CMake' "$("$work/cmake/host")"

pc=$(find "$work/prefix" -name linkflap.pc)
libdir=$(dirname "$(dirname "$pc")")
flags=$(PKG_CONFIG_PATH=$(dirname "$pc") pkg-config --cflags --libs linkflap)
# shellcheck disable=SC2086
"$cxx" "$example/main.cpp" $flags -Wl,-rpath,"$libdir" -o "$work/host"
check 'host built through pkg-config' "$("$work/host")"
