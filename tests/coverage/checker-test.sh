#!/bin/sh
# The checker on a sample with three ways and two lines that no test takes: it fails when one of them
# is not listed, when one is listed that is covered, and passes when the list is right.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$here/sample"

check() {
  python3 ../check.py Sample.json "$1" . >"$work/out" 2>&1
}
fail() {
  echo "$1"
  cat "$work/out"
  exit 1
}

cat >"$work/right" <<'END'
# A comment.

file: Sample.cpp
text: if (marks < 0) {
way: marks < 0, true
reason: made up,
  on two lines

file: Sample.cpp
text: return "none";
way: line
reason: made up

file: Sample.cpp
text: }
way: line
reason: made up

file: Sample.cpp
text: return marks > 2 && marks < 5 ? "passed" : "failed";
way: marks > 2, false
reason: made up

file: Sample.cpp
text: return marks > 2 && marks < 5 ? "passed" : "failed";
way: marks < 5, false
reason: made up
END
check "$work/right" || fail "the right list is refused"
[ "$(tail -n 1 "$work/out")" = "lines 4 of 6, branches 3 of 6, 5 exceptions: ok" ] ||
  fail "another figure"

: >"$work/empty"
! check "$work/empty" || fail "passes although nothing is listed"
[ "$(grep -c 'NOT COVERED' "$work/out")" -eq 5 ] || fail "not all five are named"
grep -q 'Sample.cpp:6: NOT COVERED: return "none";' "$work/out" || fail "the line is not named"

sed '/way: marks < 5/s/5, false/5, true/' "$work/right" >"$work/covered"
! check "$work/covered" || fail "passes although a covered way is listed"
grep -q 'covered after all' "$work/out" || fail "the covered way is not named"
grep -q 'way: marks < 5, false' "$work/out" || fail "the uncovered way is not named"

sed '$d' "$work/right" >"$work/unreasoned"
! check "$work/unreasoned" || fail "passes although a reason is missing"
grep -q 'without reason' "$work/out" || fail "the missing reason is not named"
echo "the checker finds what is planted"
