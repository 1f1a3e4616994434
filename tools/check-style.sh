#!/bin/sh
# Fails when a source file is not formatted as .clang-format says, or includes upward.
set -eu
cd "$(dirname "$0")/.."
files=$(git ls-files '*.h' '*.cpp')
[ -n "$files" ] || { echo "check-style: no source files found"; exit 1; }
# shellcheck disable=SC2086
clang-format --dry-run --Werror $files
sh tools/check-layers.sh .
echo "style: $(echo "$files" | wc -l) files formatted, layers hold"
