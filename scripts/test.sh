#!/usr/bin/env bash
# test.sh [linux|windows|asan|tsan|all] - sets the machine up, builds, and runs the tests; default linux.
#
# The tests of the Windows build run under Wine, followed by the demo with the Windows client, and by a database
# that clients of both platforms use in turn.
#
# Its last line counts the tests of all the builds that were asked for: "N passed, N failed", and
# ", N skipped" behind it where tests were skipped, each of which is named with its reason before.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

case ${1:-linux} in
  linux) presets=(release) ;;
  windows | asan | tsan) presets=("$1") ;;
  all) presets=(release asan tsan windows) ;;
  *)
    echo "usage: test.sh [linux|windows|asan|tsan|all]" >&2
    exit 2
    ;;
esac

passed=0
failed=0
skipped=0
broken=0

# The value of one attribute of the report's root element.
report_value() { # REPORT ATTRIBUTE
  sed -n '/<testsuite/,/>/s/.*[[:space:]]'"$2"'="\([0-9]*\)".*/\1/p' "$1" | head -n 1
}

# What was skipped, with the reasons that the test programs gave, and the size of a DLL.
show_remarks() { # PRESET
  tr -d '\r' <"build/$1/Testing/Temporary/LastTest.log" |
    awk '/: Skipped$/ { getline reason } /^\[  SKIPPED \] .* ms\)$/ { print "skipped: " $4 ": " reason }
      /^drivelog\.dll: / { print }'
}

# A test that is a command of this machine.
run_command_test() { # NAME COMMAND...
  local name=$1
  shift
  echo "== $name"
  if "$@"; then
    passed=$((passed + 1))
  else
    echo "$name failed" >&2
    failed=$((failed + 1))
  fi
}

run_preset() { # PRESET
  local preset=$1 setup=linux launcher=() runner=()
  [ "$preset" != windows ] || setup=windows
  scripts/setup.sh "$setup" || return 1

  ! command -v ccache >/dev/null || launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  cmake --preset "$preset" "${launcher[@]}" || return 1
  cmake --build --preset "$preset" || return 1

  [ "$preset" != windows ] || runner=(scripts/with-wine.sh)
  if [ "$preset" = tsan ]; then
    # ThreadSanitizer sleeps for a second at the end of a process, which is what some tests measure.
    export TSAN_OPTIONS=atexit_sleep_ms=0${TSAN_OPTIONS:+:$TSAN_OPTIONS}
    # Its fixed memory layout collides with strong address randomisation.
    ! setarch --addr-no-randomize true 2>/dev/null || runner=(setarch --addr-no-randomize)
  fi
  local report=$root/build/$preset/test-report.xml result=0
  rm -f "$report"
  "${runner[@]}" ctest --test-dir "build/$preset" --parallel 2 --output-on-failure --no-tests=error \
    --output-junit "$report" || result=1
  [ -s "$report" ] || return 1

  local all bad left_out
  all=$(report_value "$report" tests)
  bad=$(report_value "$report" failures)
  left_out=$(($(report_value "$report" skipped) + $(report_value "$report" disabled)))
  passed=$((passed + all - bad - left_out))
  failed=$((failed + bad))
  skipped=$((skipped + left_out))
  show_remarks "$preset"
  if [ "$preset" = windows ]; then
    echo "left out: XdgTest.*: folders of other systems; proof.network_faults: its peer uses POSIX sockets;" \
      "memcheck.endtoend: valgrind runs no Windows programs"
    run_command_test windows.demo scripts/demo.sh examples --windows
    # The demo has built what this needs.
    run_command_test windows.exchange scripts/with-wine.sh tests/windows/exchange.sh build/release build/windows
  fi
  return $result
}

for preset in "${presets[@]}"; do
  echo "== $preset"
  run_preset "$preset" || broken=1
done

line="$passed passed, $failed failed"
[ "$skipped" -eq 0 ] || line+=", $skipped skipped"
[ "$broken" -eq 0 ] || [ "$failed" -ne 0 ] || echo "not everything was built or run" >&2
echo "$line"
[ "$broken" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
