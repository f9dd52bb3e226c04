#!/usr/bin/env bash
# bench.sh [--json FILE] - builds Release, runs the benchmarks, and prints each figure beside its limit.
#
# With --json the results of all programs are written to FILE as well, as one JSON array.
#
# A benchmark reports counters, by whose names the table is made: NAME is a figure, with its unit; limit_NAME its
# limit, measured in the same run; ratio the one to the other; aim_NAME and aim_ratio the most, and least_NAME
# and least_ratio the least that they should be. Each aim makes a line of the table. A benchmark without one
# makes one line, of its first figure that has a limit, or its first.
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
[ -z "$json" ] || jq -s . "$results"/*.json >"$json"

echo "== figures, limits and aims"
jq -rs '
  def short: if . == null then "-" elif . >= 100 then round else (. * 100 | round) / 100 end | tostring;
  def line($name; $figure; $counters; $aim; $holds):
    ($counters["limit_" + $figure]) as $limit
    | [$name, $figure, ($counters[$figure] | short), ($limit | short),
       (if $limit then $counters.ratio // ($counters[$figure] / $limit) else null end | short), $aim, $holds];
  ["benchmark", "figure", "value", "limit", "ratio", "aim", "holds"],
  (.[].benchmarks[] | (.name | sub("/iterations.*"; "")) as $name
   | with_entries(select((.value | type) == "number" and
       (.key | test("^(family_index|per_family.*|repetition.*|threads|iterations|(real|cpu)_time)$") | not))) as $c
   | if .error_occurred then [$name, .error_message, "-", "-", "-", "-", "no"]
     else
       ([$c | keys_unsorted[] | select(test("^(limit|aim|least)_|^ratio$") | not)]) as $figures
       | ([$figures[] | select($c["limit_" + .] != null)] + $figures)[0] as $first
       | ([$c | keys_unsorted[] | select(test("^(aim|least)_"))]) as $aims
       | if $aims == [] then line($name; $first; $c; "-"; "-")
         else $aims[] | capture("^(?<kind>aim|least)_(?<of>.*)$") as $a
           | $c[.] as $bound | $c[$a.of] as $value | ($a.kind == "aim") as $most
           | line($name; (if $a.of == "ratio" then $first else $a.of end); $c;
                  (if $a.of == "ratio" then "ratio " else "" end) + (if $most then "<= " else ">= " end)
                    + ($bound | short);
                  if ($most and $value <= $bound) or ($most | not) and $value >= $bound then "yes" else "NO" end)
         end
     end)
  | @tsv' "$results"/*.json |
  awk -F '\t' '{ printf "%-40s %-16s %10s %10s %7s  %-14s %s\n", $1, $2, $3, $4, $5, $6, $7 }'
[ -z "$json" ] || echo "bench: results are in $json"
