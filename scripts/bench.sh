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
