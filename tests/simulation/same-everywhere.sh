#!/bin/sh
# usage: same-everywhere.sh [DECISIONS [BUILD_DIRECTORY]]
# Builds the library and the digest program with g++ and clang++, -O0, -O2 and -O3, for 64 and for
# 32 bits, lets each make DECISIONS decisions (10 million by default), and fails unless there is one
# digest. A control run, in which one program is told to reckon a little differently, must make a
# second one. What 32 bits give with the old floating-point unit is shown for information.
# Needs gcc-multilib for 32 bits: without it, those builds fail, and so does this script.
set -eu
cd "$(dirname "$0")/../.."
decisions=${1:-10000000}
build=${2:-build/same-everywhere}
mkdir -p "$build"
launcher=$(command -v ccache || true)
sources="$(find runtime statemachines introspection -name '*.cpp' | sort) tests/simulation/DecisionDigest.cpp"

# program NAME COMPILER FLAGS...: builds $build/NAME/decision-digest.
program() {
  out=$build/$1
  compiler=$2
  shift 2
  mkdir -p "$out"
  # shellcheck disable=SC2086
  printf '%s\n' $sources | xargs -P 2 -I SOURCE sh -ec '
    object=$1/$(printf %s "$2" | tr / -).o; shift 2
    "$@" -c "$0" -o "$object"' SOURCE "$out" SOURCE $launcher "$compiler" -std=c++20 -I. "$@" \
    >"$out/build.log" 2>&1 &&
    "$compiler" "$@" "$out"/*.o -o "$out/decision-digest" >>"$out/build.log" 2>&1 || {
    cat "$out/build.log"
    echo "$compiler $*: does not build"
    exit 1
  }
}

digests=$build/digests
: >"$digests"
for compiler in g++ clang++; do
  for optimisation in -O0 -O2 -O3; do
    for bits in 64 32; do
      flags="$optimisation -m$bits"
      [ "$bits" = 64 ] || flags="$flags -msse2 -mfpmath=sse"
      # Optimised builds have the pool, and use recorded flaps again; the others do not.
      [ "$optimisation" = -O0 ] || flags="$flags -DLINKFLAP_POOL"
      name=$compiler$optimisation-$bits
      # shellcheck disable=SC2086
      program "$name" "$compiler" $flags
      result=$("$build/$name/decision-digest" "$decisions")
      printf '%-8s %-34s %s\n' "$compiler" "$flags" "$result"
      echo "${result##*digest }" >>"$digests"
    done
  done
done

# Controls.
planted=$("$build/g++-O2-64/decision-digest" "$decisions" 1 --planted)
printf '%-8s %-34s %s\n' control 'one build reckons differently' "$planted"
program x87 g++ -O2 -m32 -mfpmath=387
printf '%-8s %-34s %s\n' info '-O2 -m32 -mfpmath=387' "$("$build/x87/decision-digest" "$decisions")"

builds=$(wc -l <"$digests")
different=$(sort -u "$digests" | wc -l)
if grep -q "${planted##*digest }" "$digests"; then
  echo "the control made no difference: this comparison cannot fail"
  exit 1
fi
echo "$builds builds, $decisions decisions each, $different digest(s): $(sort -u "$digests" | tr '\n' ' ')"
[ "$builds" = 12 ] && [ "$different" = 1 ]
