#!/bin/sh
# Runs scenario files and compares what the library did with what is expected.
#
#     run-scenarios.sh SCENARIO_PROGRAM [FILE.txt ...]
#
# Without files: all scenarios of the folder of this script. For NAME.txt the expected standard output
# stands in NAME.out beside it. The program must end with status 0, or, where a NAME.abort stands
# beside it, by SIGABRT with the line of NAME.abort as the last one on standard error.
#
# A scenario with the comment line "# any-order" leaves the order within a command open: the lines of
# each command are sorted, on both sides, before they are compared.
#
# Prints a unified diff for each difference, and at the end how many passed and failed. The status is
# 0 only if there was at least one scenario and all of them passed.

set -u
LC_ALL=C
export LC_ALL

if [ $# -lt 1 ]; then
  echo "usage: $0 SCENARIO_PROGRAM [FILE.txt ...]" >&2
  exit 2
fi
program=$1
shift

# A bare name is looked up like any command; a path must not depend on the current folder below.
case $program in
  /*) ;;
  */*) program=$PWD/$program ;;
  *) program=$(command -v -- "$program" || echo "$PWD/$program") ;;
esac
if [ ! -x "$program" ] || [ -d "$program" ]; then
  echo "$0: cannot run $program" >&2
  exit 2
fi

if [ $# -eq 0 ]; then
  folder=$(cd "$(dirname "$0")" && pwd) || exit 2
  set -- "$folder"/[a-z]*.txt
  [ -e "$1" ] || set --
fi
if [ $# -eq 0 ]; then
  echo "$0: no scenario found" >&2
  exit 1
fi

work=$(mktemp -d) || exit 2
trap 'rm -rf "$work"' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM
mkdir "$work/expected" "$work/actual"

# Expected aborts leave no core files behind, where the shell can say so.
# shellcheck disable=SC3045
ulimit -c 0 2>/dev/null || true

# Sorts the lines of each command; its echo ("> ...") stays in front of them.
sort_commands() {
  awk '/^> / { ++command; printf "%09d0%s\n", command, $0; next }
       { printf "%09d1%s\n", command, $0 }' "$1" | sort | cut -c 11-
}

# Runs one scenario; prints what is wrong with it and returns 1, or returns 0.
check() {
  scenario=$1
  base=${scenario%.txt}
  name=${base##*/}
  verdict=0

  if [ "$base" = "$scenario" ] || [ ! -f "$scenario" ]; then
    echo "FAIL $scenario: not a scenario file (NAME.txt)"
    return 1
  fi
  if [ ! -f "$base.out" ]; then
    echo "FAIL $name: $base.out is missing"
    return 1
  fi

  # The innermost shell becomes the program, so that the shell around it is the one that would report
  # an abort, and that one has nowhere to say so: "Aborted" must not mix with the program's own words.
  (
    (exec "$program" <"$scenario" >"$work/stdout" 2>"$work/stderr")
    exit $?
  ) 2>/dev/null
  status=$?

  if grep -q '^# any-order[[:blank:]]*$' "$scenario"; then
    sort_commands "$base.out" >"$work/expected/$name.out"
    sort_commands "$work/stdout" >"$work/actual/$name.out"
  else
    cp "$base.out" "$work/expected/$name.out"
    cp "$work/stdout" "$work/actual/$name.out"
  fi
  if ! (cd "$work" && diff -u "expected/$name.out" "actual/$name.out") >"$work/difference"; then
    echo "FAIL $name: the output differs"
    cat "$work/difference"
    verdict=1
  fi

  wanted=0
  [ -f "$base.abort" ] && wanted=134
  if [ "$status" -ne "$wanted" ]; then
    echo "FAIL $name: ended with status $status instead of $wanted"
    sed -n '$p' "$work/stderr"
    verdict=1
  elif [ "$wanted" -ne 0 ]; then
    cp "$base.abort" "$work/expected/$name.abort"
    tail -n 1 "$work/stderr" >"$work/actual/$name.abort"
    if ! (cd "$work" && diff -u "expected/$name.abort" "actual/$name.abort") >"$work/difference"; then
      echo "FAIL $name: the last line on standard error differs"
      cat "$work/difference"
      verdict=1
    fi
  fi
  return $verdict
}

passed=0
failed=0
for file in "$@"; do
  if check "$file"; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
  fi
done

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
