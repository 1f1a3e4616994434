#!/bin/sh
# usage: run-fuzzers.sh [--planted] SECONDS [TARGET...]
# Builds the fuzzers (preset fuzz) and runs each, or those named, for that many seconds, two at a
# time. What they learn is kept in build/fuzz/corpus/TARGET and taken up by the next run; an input on
# which one fails is kept in build/fuzz/findings. Fails when there is a finding.
# With --planted each target misreads one thing and runs until that is found, from the seeds alone;
# fails when it is not found within SECONDS. Nothing of such a run is kept.
# Targets: values paths manifest scenario
set -eu
cd "$(dirname "$0")/../.."

usage() {
  sed -n '2,8s/^# \{0,1\}//p' tests/fuzz/run-fuzzers.sh >&2
  exit 2
}

planted=
if [ "${1-}" = --planted ]; then
  planted=-planted
  LINKFLAP_FUZZ_PLANTED=1
  export LINKFLAP_FUZZ_PLANTED
  shift
fi
case "${1-}" in
  '' | 0 | *[!0-9]*) usage ;;
esac
seconds=$1
shift
[ $# -gt 0 ] || set -- values paths manifest scenario
for target in "$@"; do
  case $target in
    values | paths | manifest | scenario) ;;
    *) usage ;;
  esac
done

build=${LINKFLAP_FUZZ_BUILD:-build/fuzz}
mkdir -p "$build"
{ cmake --preset fuzz -B "$build" &&
  cmake --build "$build" -j 2 --target $(printf ' fuzz-%s' "$@"); } >"$build/build.log" 2>&1 || {
  cat "$build/build.log"
  exit 1
}

findings=$build/findings$planted
# What was planted is no finding that anyone looks for.
[ -z "$planted" ] || rm -rf "$build/corpus$planted" "$findings"
mkdir -p "$findings"

# Runs one target and leaves what is to be printed in its .result, the first word of which is the
# verdict.
fuzz() {
  target=$1
  corpus=$build/corpus$planted/$target
  seeds=$build/seeds/$target
  mkdir -p "$corpus" "$seeds"
  case $target in
    manifest) "$build/tests/fuzz/manifest-seeds" "$seeds" ;;
    scenario) cp tests/scenarios/*.txt "$seeds/" ;;
    *)  # one seed to a line
      number=0
      while IFS= read -r line; do
        number=$((number + 1))
        printf '%s' "$line" >"$seeds/$number"
      done <"tests/fuzz/$target.seeds"
      ;;
  esac
  case $target in  # what is longer than this only takes longer
    values) length=128 ;;
    paths) length=256 ;;
    *) length=4096 ;;
  esac
  log=$build/$target$planted.log
  dictionary=
  [ ! -f "tests/fuzz/$target.dict" ] || dictionary=-dict=tests/fuzz/$target.dict
  # One run for a planted fault is much like another, so that finding it is no luck.
  seed=0
  [ -z "$planted" ] || seed=1
  # An input counts as a hang after half a minute, which a busy machine does not make of one.
  status=0
  "$build/tests/fuzz/fuzz-$target" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=2048 \
    -seed="$seed" -max_len="$length" -print_final_stats=1 -artifact_prefix="$findings/$target-" $dictionary \
    "$corpus" "$seeds" >"$log" 2>&1 || status=$?
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  found=$(find "$findings" -name "$target-*" -newer "$build/build.log" | wc -l)
  # A run that executed next to nothing has shown nothing.
  if [ -n "$planted" ]; then
    verdict=FAILED
    [ "$status" -eq 0 ] || [ "$found" -eq 0 ] || verdict=ok
    text="the planted fault found: $found"
  else
    verdict=ok
    [ "$status" -eq 0 ] && [ "$found" -eq 0 ] && [ "${executions:-0}" -ge 100 ] || verdict=FAILED
    text="$found findings"
  fi
  echo "$verdict $target: ${executions:-no} executions in at most $seconds s, $text" \
    >"$build/$target.result"
}

status=0
while [ $# -gt 0 ]; do
  pair="$1 ${2-}"
  shift
  [ $# -eq 0 ] || shift
  for target in $pair; do
    rm -f "$build/$target.result"
    fuzz "$target" &
  done
  wait
  for target in $pair; do
    read -r verdict text <"$build/$target.result" || verdict=FAILED
    echo "$text: $verdict"
    [ "$verdict" = ok ] || {
      tail -n 40 "$build/$target$planted.log"
      status=1
    }
  done
done
exit $status
