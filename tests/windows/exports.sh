#!/usr/bin/env bash
# exports.sh DLL TOOLS [--update] - compares what the DLL exports and imports with exports.txt; prints its size.
#
# TOOLS is what the names of the binary utilities begin with. With --update the list is written anew. The
# several names of a constructor or destructor have one text.
set -euo pipefail
dll=$1 tools=$2
list=$(dirname "$0")/exports.txt
export LC_ALL=C

describe() {
  "$tools"objdump -p "$dll" | sed -n 's/^[[:space:]]*DLL Name: /imports /p' | tr '[:upper:]' '[:lower:]' | sort -u
  "$tools"objdump -p "$dll" |
    awk '/\[Ordinal\/Name Pointer\] Table/ { on = 1; next } on && !NF { exit } on { print $NF }' |
    "$tools"c++filt | sed -E 's/std::__cxx11::basic_string<wchar_t, [^<]*<wchar_t>, [^<]*<wchar_t> >/std::wstring/g
      s/std::__cxx11::basic_string<char, [^<]*<char>, [^<]*<char> >/std::string/g
      s/^/exports /' | sort -u
}

if [ "${3:-}" = --update ]; then
  describe >"$list"
else
  stripped=$(mktemp)
  trap 'rm -f "$stripped"' EXIT
  "$tools"strip -o "$stripped" "$dll"
  echo "$(basename "$dll"): $(stat -c %s "$stripped") bytes without debug information"
  diff "$list" <(describe)
fi
