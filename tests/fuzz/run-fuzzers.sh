#!/bin/sh
# usage: run-fuzzers.sh SECONDS [TARGET...]
# Builds the fuzzers (preset fuzz) and runs each, or those named, for that many seconds. What they
# learn is kept in build/fuzz/corpus/TARGET and taken up by the next run; an input on which one
# fails is kept in build/fuzz/findings. Fails when there is a finding.
# Targets: values paths manifest scenario
set -eu
cd "$(dirname "$0")/../.."

case "${1-}" in
  '' | 0 | *[!0-9]*)
    sed -n '2,6s/^# \{0,1\}//p' tests/fuzz/run-fuzzers.sh >&2
    exit 2
    ;;
esac
seconds=$1
shift
[ $# -gt 0 ] || set -- values paths manifest scenario

build=${LINKFLAP_FUZZ_BUILD:-build/fuzz}
mkdir -p "$build"
{ cmake --preset fuzz -B "$build" &&
  cmake --build "$build" -j 2 --target $(printf ' fuzz-%s' "$@"); } >"$build/build.log" 2>&1 || {
  cat "$build/build.log"
  exit 1
}

findings=$build/findings
mkdir -p "$findings"
status=0
for target in "$@"; do
  corpus=$build/corpus/$target
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
  log=$build/$target.log
  dictionary=
  [ ! -f "tests/fuzz/$target.dict" ] || dictionary=-dict=tests/fuzz/$target.dict
  result=ok
  "$build/tests/fuzz/fuzz-$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
    -max_len="$length" -print_final_stats=1 -artifact_prefix="$findings/$target-" $dictionary \
    "$corpus" "$seeds" >"$log" 2>&1 || result=FAILED
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  found=$(find "$findings" -name "$target-*" -newer "$build/build.log" | wc -l)
  [ "$found" -eq 0 ] || result=FAILED
  echo "$target: ${executions:-no} executions in $seconds s, $found findings: $result"
  [ "$result" = ok ] || {
    tail -n 40 "$log"
    status=1
  }
done
exit $status
