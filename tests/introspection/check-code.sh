#!/bin/sh
# usage: check-code.sh PAGE.md SOURCE.cpp
# Every line of C++ that the page shows stands in the source, in the same order. A page without any
# fails.
set -eu
awk '
  { line = $0; gsub(/^[ \t]+|[ \t]+$/, "", line) }
  NR == FNR && /^```cpp$/ { inside = 1; next }
  NR == FNR && /^```$/    { inside = 0; next }
  NR == FNR               { if (inside && line != "") wanted[++count] = line; next }
  found < count && line == wanted[found + 1] { ++found }
  END {
    if (count == 0) { print "the page shows no C++"; exit 1 }
    if (found < count) { print "not in the source, or not in this order: " wanted[found + 1]; exit 1 }
    print count " lines as in the source"
  }
' "$1" "$2"
