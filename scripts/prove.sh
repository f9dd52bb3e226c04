#!/usr/bin/env bash
# prove.sh [SECONDS] - the long forms of the proofs, within SECONDS (default 600, 180 at least) after the build.
#
# Two lanes run side by side, and each gives its proofs the shares of the time that stand below. Its last lines
# are one of figures for each proof. Fails when one of them found something; what it found, with the seed to
# repeat it, stands before, and is kept with what the fuzzers found in build/prove.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

# NAME PERCENT; the rest of the time is for the round in which a share ends.
lane_one=(conservation 45 kill 35 storage_faults 5)
lane_two=(memcheck 25 network_faults 15 processes 10 fuzz_record_json 7 fuzz_stored_rows 7 fuzz_text 7
  fuzz_settings_file 7 fuzz_collector 7)

seconds=${1:-600}
if [ $# -gt 1 ] || ! [[ $seconds =~ ^[0-9]+$ ]] || [ "$seconds" -lt 180 ]; then
  echo "usage: prove.sh [SECONDS], 180 at least" >&2
  exit 2
fi

scripts/setup.sh prove
launcher=()
! command -v ccache >/dev/null || launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
for preset in release fuzz; do
  cmake --preset "$preset" "${launcher[@]}" >/dev/null
  cmake --build --preset "$preset"
done
logs=$root/build/prove
rm -rf "$logs"
mkdir -p "$logs"

# Each writes its output to a log, and the line of figures as that log's last line.
run_proof() { # NAME SECONDS
  build/release/proofs/prove_"$1" --seconds "$2"
}
run_fuzzer() { # NAME SECONDS
  local result=0
  mkdir "$logs/$1"
  build/fuzz/tests/fuzz/"$1" -max_total_time="$2" -timeout=20 -rss_limit_mb=4096 -artifact_prefix="$logs/$1/found-" \
    "$logs/$1" "tests/fuzz/corpus/${1#fuzz_}" 2>&1 || result=$?
  echo "$1: $(grep -a '^Done ' "$logs/$1.log" || echo 'ended early'), $(find "$logs/$1" -name 'found-*' | wc -l) findings"
  return $result
}
run_memcheck() {
  local result=0
  scripts/memcheck.sh build/release/tests/endtoend_tests \
    --gtest_filter='*.Delivers*AndDeletesWhatWasAccepted' 2>&1 || result=$?
  echo "memcheck: $(grep -ao '[0-9]* tests\?\.$' "$logs/memcheck.log" | tail -n 1)" \
    "$(grep -ao 'definitely lost: .*' "$logs/memcheck.log" || echo 'nothing lost');" \
    "$(grep -ao 'ERROR SUMMARY: [0-9]* errors' "$logs/memcheck.log")"
  return $result
}
run_lane() { # NAME PERCENT...
  local result=0 name share
  while [ $# -gt 0 ]; do
    name=$1 share=$((seconds * $2 / 100))
    shift 2
    case $name in
      memcheck) run_memcheck ;;
      fuzz_*) run_fuzzer "$name" "$share" ;;
      *) run_proof "$name" "$share" ;;
    esac >"$logs/$name.log" 2>&1 || result=1
    echo "$name has ended"
  done
  return $result
}

began=$SECONDS
result=0
run_lane "${lane_one[@]}" &
run_lane "${lane_two[@]}" || result=1
wait $! || result=1

[ "$result" -eq 0 ] || tail -n 40 "$logs"/*.log
echo "== $((SECONDS - began)) s"
for ((i = 0; i < ${#lane_one[@]}; i += 2)); do tail -n 1 "$logs/${lane_one[i]}.log"; done
for ((i = 0; i < ${#lane_two[@]}; i += 2)); do tail -n 1 "$logs/${lane_two[i]}.log"; done
exit $result
