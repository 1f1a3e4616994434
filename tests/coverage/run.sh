#!/bin/sh
# usage: run.sh [--planted]
# Builds the library and its tests with counters (preset coverage), runs the tests of the runtime, of
# the state machines and of the reflection, the scenarios and, in a second build without the pool, the
# test of memory that runs out; and reports what of `runtime/`, `statemachines/` and `introspection/`
# none of them runs: lines, and the two ways of each branch.
# Fails when that is not exactly what exceptions.txt lists (check.py has the rules). The figure comes
# last.
# With --planted the first exception is taken for covered: what it lists must then be found.
set -eu
cd "$(dirname "$0")/../.."
sh tools/require-packages.sh clang llvm python3 cmake ninja-build libgtest-dev libgmock-dev \
  nlohmann-json3-dev

build=${LINKFLAP_COVERAGE_BUILD:-build/coverage}
mkdir -p "$build"
build=$(cd "$build" && pwd)
{ cmake --preset coverage -B "$build" &&
  cmake --build "$build" -j 2 --target runtime_tests statemachines_tests introspection_tests \
    introspection_load_probe scenario vek-types &&
  cmake --preset coverage -B "$build/without-pool" -DLINKFLAP_POOL=OFF &&
  cmake --build "$build/without-pool" -j 2 --target reliability-memory; } \
  >"$build/build.log" 2>&1 || {
  cat "$build/build.log"
  exit 1
}

# Counters are kept in the files themselves (%c), so that those of a process that is ended by an
# assertion count as well; each process and each library has its own file.
rm -rf "$build/profiles"
mkdir -p "$build/profiles"
LLVM_PROFILE_FILE=$build/profiles/%p-%m%c.profraw
export LLVM_PROFILE_FILE
ran() {
  "$@" >"$build/tests.log" 2>&1 || {
    cat "$build/tests.log"
    exit 1
  }
}
for part in runtime statemachines introspection; do
  ran "$build/tests/$part/${part}_tests" --gtest_brief=1
done
ran "$build/tests/introspection/introspection_load_probe" "$build/statemachines/liblinkflap.so"
ran sh tests/scenarios/run-scenarios.sh "$build/scenario"
ran "$build/without-pool/tests/reliability/reliability-memory" 1000 1
unset LLVM_PROFILE_FILE

"$(clang++ -print-prog-name=llvm-profdata)" merge -sparse "$build"/profiles/*.profraw \
  -o "$build/all.profdata"
rm -rf "$build/profiles"
# The tests count too, as objects: they hold the instantiations of the templates. A function that
# one of them has and does not use is warned of as mismatched; it is the same as another's that does.
"$(clang++ -print-prog-name=llvm-cov)" export -format=text -skip-functions \
  -instr-profile="$build/all.profdata" "$build/runtime/libvek.so" \
  -object "$build/statemachines/liblinkflap.so" -object "$build/tests/runtime/runtime_tests" \
  -object "$build/tests/statemachines/statemachines_tests" \
  -object "$build/tests/introspection/introspection_tests" -object "$build/scenario" \
  -object "$build/without-pool/runtime/libvek.so" \
  -object "$build/without-pool/statemachines/liblinkflap.so" \
  "$PWD/runtime" "$PWD/statemachines" "$PWD/introspection" >"$build/export.json" \
  2>"$build/export.log" || {
  cat "$build/export.log"
  exit 1
}

exceptions=tests/coverage/exceptions.txt
if [ "${1-}" = --planted ]; then
  awk '!done && /^file:/ { skip = 1 } skip && /^$/ { skip = 0; done = 1 } !skip' "$exceptions" \
    >"$build/planted.txt"
  exceptions=$build/planted.txt
fi
python3 tests/coverage/check.py "$build/export.json" "$exceptions" "$PWD"
