#!/bin/sh
# usage: check-layers.sh [ROOT]
# Fails when a file includes a header of a layer above its own.
# Layers, lowest first: runtime/vek runtime/tarn runtime/model statemachines introspection agent.
set -eu
cd "${1:-.}"
status=0
seen=0

# forbid LAYER PATTERN: no file of LAYER may include a header that matches PATTERN.
forbid() {
  [ -d "$1" ] || return 0
  seen=$((seen + 1))
  found=$(grep -rnE "^#include \"($2)/" --include='*.h' --include='*.cpp' "$1") || true
  [ -z "$found" ] || { printf '%s must not include %s:\n%s\n' "$1" "$2" "$found"; status=1; }
}
forbid runtime/vek   'runtime/tarn|runtime/model|statemachines|introspection|agent|tools|tests|bench'
forbid runtime/tarn  'runtime/model|statemachines|introspection|agent|tools|tests|bench'
forbid runtime/model 'statemachines|introspection|agent|tools|tests|bench'
forbid statemachines 'introspection|agent|tools|tests|bench'
forbid introspection 'agent|tools|tests|bench'
forbid agent         'tools|tests|bench'

# The library stands on the standard library alone.
found=$(grep -rnE '^#include <(linux|sys|net|libmnl|arpa|unistd|boost|gtest)' runtime statemachines \
  --include='*.h' --include='*.cpp') || true
[ -z "$found" ] || { printf 'the library must not include:\n%s\n' "$found"; status=1; }

[ "$seen" -ge 4 ] || { echo "check-layers: the layers were not found in $(pwd)"; status=1; }
exit $status
