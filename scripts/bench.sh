#!/usr/bin/env bash
# bench.sh [--json FILE] - builds Release and runs the benchmarks, each beside its limit.
#
# With --json the results of all programs are written to FILE as well, as one JSON array.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

json=
if [ "${1:-}" = --json ] && [ $# -eq 2 ]; then
  json=$(realpath -m "$2")
elif [ $# -ne 0 ]; then
  echo "usage: bench.sh [--json FILE]" >&2
  exit 2
fi
cd "$root"

scripts/setup.sh bench
launcher=()
! command -v ccache >/dev/null || launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake --preset bench "${launcher[@]}" >/dev/null
cmake --build --preset bench

results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
count=0
for program in build/bench/bench/*_bench; do
  [ -x "$program" ] || continue
  echo "== $(basename "$program")"
  "$program" --benchmark_out="$results/$(basename "$program").json" --benchmark_out_format=json
  count=$((count + 1))
done
if [ "$count" -eq 0 ]; then
  echo "bench: there is no benchmark" >&2
  exit 1
fi
if [ -n "$json" ]; then
  { printf '['; separator=; for file in "$results"/*.json; do
      printf '%s' "$separator"; cat "$file"; separator=,; done; printf ']\n'; } >"$json"
  echo "bench: results are in $json"
fi
