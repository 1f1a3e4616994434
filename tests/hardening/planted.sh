#!/bin/sh
# usage: planted.sh HERE HEADERS COMPILER CXX COMPILE_OPTIONS LINK_OPTIONS FORTIFY_OPTIONS
# The checks of this folder must pass a small program that is built with the project's options, and
# must find each fault that is planted in it by taking one of them back.
set -eu
here=$1 headers=$2 compiler=$3 cxx=$4 compile=$5 link=$6 fortify=$7
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
planted=0

# build NAME EXTRA_COMPILE EXTRA_LINK: the options' words are meant to be split.
build() {
  # shellcheck disable=SC2086
  "$cxx" -std=c++20 -O2 -fPIE $compile $fortify $2 -c "$here/probe.cpp" -o "$work/$1.o"
  # shellcheck disable=SC2086
  "$cxx" "$work/$1.o" -pie $link $3 -o "$work/$1"
}
# found MESSAGE COMMAND...: the command must fail, and for that reason.
found() {
  message=$1
  shift
  if "$@" >"$work/said" 2>&1 || ! grep -qF "$message" "$work/said"; then
    echo "not found: $message"
    cat "$work/said"
    exit 1
  fi
  planted=$((planted + 1))
}
fault() {
  build bad "$2" "$3"
  found "$1" sh "$here/check-file.sh" program "$compiler" "$work/bad"
}

build good '' ''
sh "$here/check-file.sh" program "$compiler" "$work/good"
nm -D "$work/good" | grep -q '__memcpy_chk' || { echo "the options do not fortify"; exit 1; }
# The optimiser knows the buffer, the program does not know its input.
if "$work/good" "$(printf '%0100d' 0)" >"$work/said" 2>&1; then
  echo "a buffer was overrun"
  exit 1
fi

fault 'not position-independent' '-fno-pie -fplt' '-no-pie'
fault 'no RELRO' '' '-Wl,-z,norelro'
fault 'no BIND_NOW' '' '-Wl,-z,lazy'
fault 'executable stack' '' '-Wl,-z,execstack'
fault 'no stack protector' '-fno-stack-protector' ''
fault 'not fortified: calls' '-U_FORTIFY_SOURCE' ''
printf '.section .both,"awx",@progbits\n.long 0\n.section .note.GNU-stack,"",@progbits\n' \
  >"$work/both.s"
# The linker warns of it.
fault 'memory both writable and executable' '' "$work/both.s"

# A library that exports what it should not: everything, as it would be without the options.
awk 'BEGIN {
  print "#include <string>\n#include <vector>\nnamespace Vek {\ndouble now() { return 0; }"
  print "namespace { struct Inner {}; }\ntemplate <typename T> void fatal(T) {}"
  print "void use() { fatal(Inner{}); }"
  for (i = 0; i < 120; ++i) print "void f" i "() {}"
  print "}\nint stray() { std::vector<std::string> v; v.emplace_back(); return int(v.size()); }"
}' >"$work/wide.cpp"
"$cxx" -std=c++20 -fPIC -shared "$work/wide.cpp" -o "$work/wide.so"
exports() { sh "$here/check-exports.sh" "$headers" "$work/wide.so" "$@"; }
found 'what is not ours:' exports
found 'stray()' exports
found 'std::vector' exports
found 'what no header declares:' exports
found 'f17' exports
found 'does not export Vek::traceSinkIs' exports 'Vek::now()' 'Vek::traceSinkIs'
echo "$planted planted faults found"
